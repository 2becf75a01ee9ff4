# What every target of the program shares, and the functions that make them.

add_library(kestrano_options INTERFACE)
target_include_directories(kestrano_options INTERFACE "${PROJECT_SOURCE_DIR}" "${PROJECT_BINARY_DIR}/generated")
target_compile_definitions(
  kestrano_options INTERFACE QT_NO_CAST_TO_ASCII QT_NO_URL_CAST_FROM_STRING QT_NO_FOREACH
                             QT_DISABLE_DEPRECATED_BEFORE=0x060400)
if(MSVC)
  target_compile_options(kestrano_options INTERFACE /W4 /utf-8 $<$<BOOL:${KESTRANO_WARNINGS_AS_ERRORS}>:/WX>)
else()
  target_compile_options(
    kestrano_options
    INTERFACE $<$<COMPILE_LANGUAGE:CXX>:-Wall
              -Wextra
              -Wpedantic
              -Wshadow
              -Wnon-virtual-dtor
              -Woverloaded-virtual
              -Wcast-align
              -Wformat=2
              -Wduplicated-cond
              -Wlogical-op>
              $<$<BOOL:${KESTRANO_WARNINGS_AS_ERRORS}>:-Werror>)
endif()
if(KESTRANO_SANITIZERS)
  target_compile_options(kestrano_options INTERFACE -fsanitize=address,undefined -fno-omit-frame-pointer
                                                    -fno-sanitize-recover=undefined)
  target_link_options(kestrano_options INTERFACE -fsanitize=address,undefined)
endif()
if(WIN32)
  target_compile_definitions(kestrano_options INTERFACE UNICODE _UNICODE NOMINMAX WIN32_LEAN_AND_MEAN
                                                        _WIN32_WINNT=0x0A00)
  set(KESTRANO_PLATFORM_SUFFIX win)
else()
  # Crash reports name functions from the dynamic symbol table.
  target_link_options(kestrano_options INTERFACE -rdynamic)
  set(KESTRANO_PLATFORM_SUFFIX x11)
endif()

# kestrano_add_library(<folder> SOURCES <files> [LINKS <libraries>])
# Makes the static library kestrano_<folder>. LINKS are public: they are the arrows of docs/architecture.md.
function(kestrano_add_library folder)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "SOURCES;LINKS")
  add_library(kestrano_${folder} STATIC ${arg_SOURCES})
  target_link_libraries(kestrano_${folder} PUBLIC kestrano_options ${arg_LINKS})
endfunction()

# kestrano_platform_sources(<variable> <name>...)
# For each <name>: the header and the one implementation that this system needs (<name>_win.cpp or <name>_x11.cpp).
function(kestrano_platform_sources variable)
  set(files)
  foreach(name IN LISTS ARGN)
    list(APPEND files ${name}.h ${name}_${KESTRANO_PLATFORM_SUFFIX}.cpp)
  endforeach()
  set(${variable} ${files} PARENT_SCOPE)
endfunction()

# The program itself; app/main.cpp is all that is not in a library.
function(kestrano_add_executable)
  add_executable(kestrano WIN32 app/main.cpp)
  target_link_libraries(kestrano PRIVATE kestrano_mainwindow)
  set_target_properties(kestrano PROPERTIES RUNTIME_OUTPUT_DIRECTORY "${PROJECT_BINARY_DIR}")
  kestrano_add_windows_resources(kestrano)
  kestrano_install(kestrano)
endfunction()

# kestrano_add_test(<name> KIND unit|engine|desktop|recording|windows SOURCES <files> [LINKS <libraries>]
#                   [DESKTOP_ARGS <arguments>] [TIMEOUT <seconds>] [WHOLE_STACKS])
# windows: run on Linux, on a private desktop, and drive the Windows program in Wine (tools/test-windows).
# unit: run without a display, also under Wine. engine, desktop and recording: run on a private desktop of their own
# (tools/private-desktop, Linux only). Each kind is a CTest label. WHOLE_STACKS is for tests that run into leaks which only
# the far end of their stacks tells from ours: the leak sanitizer then walks all of it (tests/support/lsan-whole-stacks.supp).
function(kestrano_add_test name)
  cmake_parse_arguments(PARSE_ARGV 1 arg "WHOLE_STACKS" "KIND;TIMEOUT" "SOURCES;LINKS;DESKTOP_ARGS")
  if(NOT arg_KIND STREQUAL "unit" AND WIN32)
    return()
  endif()
  if(NOT arg_TIMEOUT)
    set(arg_TIMEOUT 120)
  endif()
  add_executable(${name} ${arg_SOURCES})
  target_link_libraries(${name} PRIVATE kestrano_test_support ${arg_LINKS})
  target_compile_definitions(${name} PRIVATE KESTRANO_SOURCE_DIR="${PROJECT_SOURCE_DIR}"
                                             KESTRANO_BINARY_DIR="${PROJECT_BINARY_DIR}")
  set_target_properties(${name} PROPERTIES RUNTIME_OUTPUT_DIRECTORY "${PROJECT_BINARY_DIR}")
  set(environment "")
  if(KESTRANO_SANITIZERS)
    set(suppressions lsan.supp)
    set(asan_options detect_leaks=1)
    if(arg_WHOLE_STACKS)
      set(suppressions lsan-whole-stacks.supp)
      string(APPEND asan_options :fast_unwind_on_malloc=0)
    endif()
    list(APPEND environment
         "LSAN_OPTIONS=suppressions=${PROJECT_SOURCE_DIR}/tests/support/${suppressions}:print_suppressions=0"
         "UBSAN_OPTIONS=print_stacktrace=1" "ASAN_OPTIONS=${asan_options}")
  endif()
  if(arg_KIND STREQUAL "unit")
    add_test(NAME ${name} COMMAND ${name})
    list(APPEND environment "QT_QPA_PLATFORM=offscreen")
    # What the desktop of whoever runs them is like is none of their business. Wine cannot do without one.
    if(NOT WIN32)
      list(APPEND environment "DISPLAY=")
    endif()
  else()
    add_test(NAME ${name} COMMAND "${PROJECT_SOURCE_DIR}/tools/private-desktop" ${arg_DESKTOP_ARGS} --
                                  $<TARGET_FILE:${name}>)
    # One desktop at a time: two of them would steal each other's processor time.
    set_tests_properties(${name} PROPERTIES RUN_SERIAL ON)
  endif()
  set_tests_properties(${name} PROPERTIES LABELS ${arg_KIND} TIMEOUT ${arg_TIMEOUT} ENVIRONMENT "${environment}")
endfunction()
