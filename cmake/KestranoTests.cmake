# SPDX-License-Identifier: GPL-3.0-or-later
# Tests. All tests of a kind are one executable, kestrano_<kind>_tests. Each source registers one class in it
# (tests/support/testregistry.h), and CTest starts the executable once for each class.
#
# unit       without a display; also under Wine, which keeps Qt's variables from programs, on a desktop
# engine     the real core of libobs, on a private desktop
# desktop    real windows, on a private desktop
# recording  the program from its start to its file, on a private desktop
# win32      Linux programs that drive the Windows program in Wine (tools/test-windows), on a private desktop and in a Wine
#            prefix of their own
#
# The kind is the CTest label. Further labels:
#
# alone      judges frames or timing: runs while no other test does
# smoke      belongs to the short run over everything (tools/test --smoke)
# excerpt    a part of another test, for the short run only
# threads    has threads: runs under the thread sanitizer (tools/test --tsan)

# Qt Test defines the folder of each target that links it. No test looks for data that way, and the definitions would
# keep targets of several folders from sharing one precompiled header.
get_target_property(definitions Qt6::Test INTERFACE_COMPILE_DEFINITIONS)
list(FILTER definitions EXCLUDE REGEX QT_TESTCASE_)
set_target_properties(Qt6::Test PROPERTIES INTERFACE_COMPILE_DEFINITIONS "${definitions}")

# kestrano_add_test_program(<kind> [SOURCES <files>] [LINKS <libraries>] [NEEDS <targets>])
# NEEDS are programs that the tests start.
function(kestrano_add_test_program kind)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "SOURCES;LINKS;NEEDS")
  kestrano_add_test_executable(kestrano_${kind}_tests SOURCES ${arg_SOURCES} LINKS ${arg_LINKS} NEEDS ${arg_NEEDS})
endfunction()

# A test executable of any name.
function(kestrano_add_test_executable target)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "SOURCES;LINKS;NEEDS")
  add_executable(${target} ${arg_SOURCES})
  target_link_libraries(${target} PRIVATE kestrano_test_main kestrano_test_support ${arg_LINKS})
  target_precompile_headers(${target} REUSE_FROM kestrano_test_support)
  set_target_properties(${target} PROPERTIES RUNTIME_OUTPUT_DIRECTORY "${PROJECT_BINARY_DIR}")
  if(arg_NEEDS)
    add_dependencies(${target} ${arg_NEEDS})
  endif()
endfunction()

# kestrano_add_tests(<kind> <name>... [<options of kestrano_add_test>])
# Each test test_<name> from test_<name>.cpp.
function(kestrano_add_tests kind)
  cmake_parse_arguments(PARSE_ARGV 1 arg "WHOLE_STACKS;ALONE" "TIMEOUT" "DESKTOP_ARGS;LABELS")
  set(options)
  foreach(option WHOLE_STACKS ALONE)
    if(arg_${option})
      list(APPEND options ${option})
    endif()
  endforeach()
  foreach(option TIMEOUT DESKTOP_ARGS LABELS)
    if(arg_${option})
      list(APPEND options ${option} ${arg_${option}})
    endif()
  endforeach()
  foreach(name IN LISTS arg_UNPARSED_ARGUMENTS)
    kestrano_add_test(${kind} test_${name} ${options})
  endforeach()
endfunction()

# kestrano_add_test(<kind> <name> [SOURCE <file>] [STANDALONE] [LINKS <libraries>] [SOURCES <files>] [VARIANT <name>]
#                   [FUNCTIONS <names>] [DESKTOP_ARGS <arguments>] [ENVIRONMENT <variables>] [TIMEOUT <seconds>] [ALONE]
#                   [LABELS <labels>] [WHOLE_STACKS])
# SOURCE        by default <name>.cpp.
# STANDALONE    an executable <name> of its own, with LINKS and further SOURCES: for a test that replaces a function of a
#               library.
# VARIANT       the test once more, as <name>_<variant>, in another environment: whole, or only FUNCTIONS.
# DESKTOP_ARGS  for tools/private-desktop.
# ALONE         judges frames or timing.
# WHOLE_STACKS  the leak sanitizer walks whole stacks: the test has leaks of libraries that only the far end of the stack
#               identifies (tests/support/lsan-whole-stacks.supp).
function(kestrano_add_test kind name)
  cmake_parse_arguments(PARSE_ARGV 2 arg "STANDALONE;ALONE;WHOLE_STACKS" "SOURCE;TIMEOUT;VARIANT"
                        "LINKS;SOURCES;FUNCTIONS;DESKTOP_ARGS;ENVIRONMENT;LABELS")
  if(NOT kind STREQUAL "unit" AND WIN32)
    return()
  endif()
  if(NOT arg_SOURCE)
    set(arg_SOURCE ${name}.cpp)
  endif()
  if(NOT arg_TIMEOUT)
    set(arg_TIMEOUT 120)
  endif()
  if(KESTRANO_SANITIZERS)
    math(EXPR arg_TIMEOUT "4 * ${arg_TIMEOUT}")
  endif()
  get_filename_component(stem ${arg_SOURCE} NAME_WE)
  set(target kestrano_${kind}_tests)
  if(TARGET ${name})
    set(target ${name})
  endif()
  set(test ${name})
  if(arg_VARIANT)
    set(test ${name}_${arg_VARIANT})
  elseif(arg_STANDALONE)
    set(target ${name})
    kestrano_add_test_executable(${target} SOURCES ${arg_SOURCE} ${arg_SOURCES} LINKS ${arg_LINKS})
  else()
    target_sources(${target} PRIVATE ${arg_SOURCE})
  endif()

  set(environment ${arg_ENVIRONMENT})
  if(KESTRANO_SANITIZERS STREQUAL "thread")
    string(JOIN ":" tsan_options ignore_noninstrumented_modules=1 die_after_fork=0 print_suppressions=0
           "suppressions=${PROJECT_SOURCE_DIR}/tests/support/tsan.supp")
    list(APPEND environment "TSAN_OPTIONS=${tsan_options}")
  elseif(KESTRANO_SANITIZERS)
    set(suppressions lsan.supp)
    # GCC 12 keeps the address of a library's thread-local storage when the library is unloaded. The leak check would read
    # it and crash.
    set(asan_options detect_leaks=1:intercept_tls_get_addr=0)
    if(arg_WHOLE_STACKS)
      set(suppressions lsan-whole-stacks.supp)
      string(APPEND asan_options :fast_unwind_on_malloc=0)
    endif()
    list(APPEND environment
         "LSAN_OPTIONS=suppressions=${PROJECT_SOURCE_DIR}/tests/support/${suppressions}:print_suppressions=0"
         "UBSAN_OPTIONS=print_stacktrace=1" "ASAN_OPTIONS=${asan_options}")
  endif()
  if(kind STREQUAL "unit")
    add_test(NAME ${test} COMMAND ${target} ${stem} ${arg_FUNCTIONS})
    list(APPEND environment "QT_QPA_PLATFORM=offscreen")
    # The tests must not see the caller's desktop. Wine cannot do without one.
    if(NOT WIN32)
      list(APPEND environment "DISPLAY=")
    endif()
  else()
    set(wrapper "")
    if(kind STREQUAL "win32")
      set(wrapper "${PROJECT_SOURCE_DIR}/tools/lib/with-wine")
    endif()
    add_test(NAME ${test} COMMAND "${PROJECT_SOURCE_DIR}/tools/private-desktop" ${arg_DESKTOP_ARGS} -- ${wrapper}
                                  $<TARGET_FILE:${target}> ${stem} ${arg_FUNCTIONS})
  endif()
  # Which executable a test is in: tools/test builds only what the tests that it runs need.
  set_property(GLOBAL APPEND_STRING PROPERTY KESTRANO_TEST_TARGETS "${test} ${target}\n")
  set_tests_properties(${test} PROPERTIES LABELS ${kind} TIMEOUT ${arg_TIMEOUT} ENVIRONMENT "${environment}")
  if(kind STREQUAL "unit")
    list(APPEND arg_LABELS smoke)
  endif()
  if(arg_LABELS)
    set_property(TEST ${test} APPEND PROPERTY LABELS ${arg_LABELS})
  endif()
  if(arg_ALONE)
    set_property(TEST ${test} APPEND PROPERTY LABELS alone)
    set_tests_properties(${test} PROPERTIES RUN_SERIAL ON)
  endif()
endfunction()

# Call it when all tests have been added.
function(kestrano_write_test_targets)
  get_property(targets GLOBAL PROPERTY KESTRANO_TEST_TARGETS)
  file(CONFIGURE OUTPUT "${PROJECT_BINARY_DIR}/test-targets.txt" CONTENT "${targets}" @ONLY)
endfunction()

# kestrano_label_tests(<label> <name>...): a further label for the tests test_<name>.
function(kestrano_label_tests label)
  foreach(name IN LISTS ARGN)
    set_property(TEST test_${name} APPEND PROPERTY LABELS ${label})
  endforeach()
endfunction()

# kestrano_add_excerpt(<kind> <name> <function> [<options of kestrano_add_test>]): a part of a test, for the short run.
function(kestrano_add_excerpt kind name function)
  kestrano_add_test(${kind} test_${name} VARIANT smoke FUNCTIONS ${function} LABELS smoke excerpt ${ARGN})
endfunction()
