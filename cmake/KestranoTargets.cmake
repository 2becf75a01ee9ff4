# SPDX-License-Identifier: GPL-3.0-or-later
# What every target of the program shares, and the functions that make them.

# What the precompiled headers hold: what many sources include. Every source includes what it uses all the same;
# tools/lint --tidy compiles without precompiled headers.
set(KESTRANO_QT_HEADERS
    <algorithm>
    <chrono>
    <functional>
    <memory>
    <optional>
    <vector>
    <QtCore/QDateTime>
    <QtCore/QDir>
    <QtCore/QElapsedTimer>
    <QtCore/QFile>
    <QtCore/QHash>
    <QtCore/QList>
    <QtCore/QMap>
    <QtCore/QObject>
    <QtCore/QPointer>
    <QtCore/QSettings>
    <QtCore/QString>
    <QtCore/QStringList>
    <QtCore/QTimer>
    <QtCore/QVariant>
    <QtGui/QGuiApplication>
    <QtGui/QIcon>
    <QtGui/QImage>
    <QtGui/QMouseEvent>
    <QtGui/QPainter>
    <QtGui/QPixmap>
    <QtGui/QScreen>
    <QtWidgets/QApplication>
    <QtWidgets/QComboBox>
    <QtWidgets/QLabel>
    <QtWidgets/QPushButton>
    <QtWidgets/QWidget>)

add_library(kestrano_options INTERFACE)
target_include_directories(kestrano_options INTERFACE "${PROJECT_SOURCE_DIR}" "${PROJECT_BINARY_DIR}/generated")
target_compile_definitions(
  kestrano_options INTERFACE QT_NO_CAST_TO_ASCII QT_NO_URL_CAST_FROM_STRING QT_NO_FOREACH
                             QT_DISABLE_DEPRECATED_BEFORE=0x060400 QT_WARN_DEPRECATED_UP_TO=0x060400)
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
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
  # ccache needs it to see which precompiled header a source uses.
  target_compile_options(kestrano_options INTERFACE $<$<COMPILE_LANGUAGE:CXX>:-fpch-preprocess>)
endif()
if(KESTRANO_SANITIZERS)
  target_compile_options(kestrano_options INTERFACE -fsanitize=${KESTRANO_SANITIZERS} -fno-omit-frame-pointer
                                                    -fno-sanitize-recover=undefined)
  target_link_options(kestrano_options INTERFACE -fsanitize=${KESTRANO_SANITIZERS})
endif()
if(WIN32)
  target_compile_definitions(kestrano_options INTERFACE UNICODE _UNICODE NOMINMAX WIN32_LEAN_AND_MEAN
                                                        _WIN32_WINNT=0x0A00)
  set(KESTRANO_PLATFORM_SUFFIX win)
else()
  # Crash reports name functions from the dynamic symbol table.
  target_link_options(kestrano_options INTERFACE -rdynamic)
  if(KESTRANO_FAST_LINKER)
    find_program(KESTRANO_MOLD mold)
    find_program(KESTRANO_LLD ld.lld)
    mark_as_advanced(KESTRANO_MOLD KESTRANO_LLD)
    if(KESTRANO_MOLD)
      target_link_options(kestrano_options INTERFACE -fuse-ld=mold)
    elseif(KESTRANO_LLD)
      target_link_options(kestrano_options INTERFACE -fuse-ld=lld)
    endif()
  endif()
  set(KESTRANO_PLATFORM_SUFFIX x11)
endif()

# Owns the precompiled header of the libraries that use Qt only: GCC refuses one that was made with more definitions than
# its user has.
file(CONFIGURE OUTPUT "${PROJECT_BINARY_DIR}/generated/precompiled.cpp" CONTENT "")
add_library(kestrano_precompiled_qt OBJECT "${PROJECT_BINARY_DIR}/generated/precompiled.cpp")
target_link_libraries(kestrano_precompiled_qt PRIVATE kestrano_options Qt6::Core Qt6::Gui Qt6::Widgets)
target_precompile_headers(kestrano_precompiled_qt PRIVATE ${KESTRANO_QT_HEADERS})
set_target_properties(kestrano_precompiled_qt PROPERTIES AUTOMOC OFF)

# kestrano_add_library(<folder> SOURCES <files> [LINKS <libraries>] [PRECOMPILE <headers> | REUSE <library>])
# Makes the static library kestrano_<folder>. LINKS are public: they are the arrows of docs/architecture.md.
# PRECOMPILE makes a precompiled header; REUSE takes that of another target, by default kestrano_precompiled_qt's.
function(kestrano_add_library folder)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "REUSE" "SOURCES;LINKS;PRECOMPILE")
  add_library(kestrano_${folder} STATIC ${arg_SOURCES})
  target_link_libraries(kestrano_${folder} PUBLIC kestrano_options ${arg_LINKS})
  if(arg_PRECOMPILE)
    target_precompile_headers(kestrano_${folder} PRIVATE ${arg_PRECOMPILE})
  else()
    if(NOT arg_REUSE)
      set(arg_REUSE kestrano_precompiled_qt)
    endif()
    target_precompile_headers(kestrano_${folder} REUSE_FROM ${arg_REUSE})
  endif()
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
