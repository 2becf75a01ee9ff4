# SPDX-License-Identifier: GPL-3.0-or-later
# Makes a Windows installation complete: the Qt plug-ins that the program opens while it runs, and every DLL that it,
# the plug-ins and libobs are linked with. Elsewhere these come with the distribution.
#
# The same steps serve a build on Windows and one for Windows. Qt's own deployment tool is not used: it takes all the
# plug-ins of a kind along, and the FFmpeg one for multimedia brings DLLs with the names of those that libobs has.

# Folder of the plug-ins, by kind, and the names that Qt's CMake packages give them. Those that this Qt does not have are
# left out; what the program cannot do without is checked below.
set(KESTRANO_QT_PLUGINS
    platforms/QWindowsIntegrationPlugin
    styles/QModernWindowsStylePlugin
    styles/QWindowsVistaStylePlugin
    imageformats/QICOPlugin
    imageformats/QJpegPlugin
    imageformats/QSvgPlugin
    iconengines/QSvgIconPlugin
    tls/QSchannelBackendPlugin
    multimedia/QWindowsMediaPlugin)
set(KESTRANO_QT_PLUGINS_FOLDER plugins)

# What is missing in this installation, a sentence each; one with such reasons is a test build and says so.
set(KESTRANO_TEST_BUILD_REASONS "")
macro(kestrano_add_test_build_reason reason)
  list(APPEND KESTRANO_TEST_BUILD_REASONS "${reason}")
  message(STATUS "Packages are test builds: ${reason}")
endmacro()

# The DLLs of libobs come from Microsoft's compiler, and with a build by another one its run time does not come along.
set(KESTRANO_FOREIGN_DLLS "")
macro(kestrano_check_compiler_run_time)
  file(STRINGS "${KESTRANO_OBS_RUNTIME}/bin/obs.dll" KESTRANO_OBS_NEEDS_VC REGEX "VCRUNTIME140\\.dll" LIMIT_COUNT 1)
  if(NOT MSVC AND KESTRANO_OBS_NEEDS_VC AND NOT EXISTS "${KESTRANO_OBS_RUNTIME}/bin/vcruntime140.dll")
    set(KESTRANO_FOREIGN_DLLS "^(msvcp|vcruntime)140")
    kestrano_add_test_build_reason(
      "It needs the Microsoft Visual C++ Redistributable (x64), which is not included. Most computers have it already.")
  endif()
endmacro()

if(WIN32)
  # Looking for the module makes its plug-ins known.
  find_package(Qt6 6.4 QUIET OPTIONAL_COMPONENTS Svg)
  if(NOT TARGET Qt6::QSvgPlugin OR NOT TARGET Qt6::QSvgIconPlugin)
    kestrano_add_test_build_reason(
      "The Qt that it was made with has no SVG plug-ins: the icons on buttons are missing.")
  endif()
  kestrano_check_compiler_run_time()
  set(CMAKE_INSTALL_SYSTEM_RUNTIME_LIBS_SKIP ON)
  include(InstallRequiredSystemLibraries)
endif()

function(kestrano_install_qt_plugins)
  foreach(entry IN LISTS KESTRANO_QT_PLUGINS)
    get_filename_component(kind "${entry}" DIRECTORY)
    get_filename_component(name "${entry}" NAME)
    if(TARGET Qt6::${name})
      install(FILES $<TARGET_FILE:Qt6::${name}>
              DESTINATION "${CMAKE_INSTALL_BINDIR}/${KESTRANO_QT_PLUGINS_FOLDER}/${kind}")
    elseif(NOT name MATCHES "Svg|Style")
      message(WARNING "This Qt has no Qt6::${name}; an installed program will miss it.")
    endif()
  endforeach()
  # Without this file Qt would also look beside the folder that the program was put into.
  set(qt_conf "${PROJECT_BINARY_DIR}/generated/qt.conf")
  file(CONFIGURE OUTPUT "${qt_conf}" CONTENT "[Paths]\nPrefix = .\nPlugins = ${KESTRANO_QT_PLUGINS_FOLDER}\n")
  install(FILES "${qt_conf}" DESTINATION "${CMAKE_INSTALL_BINDIR}")
endfunction()

# kestrano_find_compiler_folders(<variable>): where the compiler keeps the DLLs of its run time, as quoted arguments.
function(kestrano_find_compiler_folders variable)
  get_filename_component(folder "${CMAKE_CXX_COMPILER}" DIRECTORY)
  set(folders "[[${folder}]]")
  if(MINGW)
    foreach(file libstdc++-6.dll libwinpthread-1.dll)
      execute_process(COMMAND "${CMAKE_CXX_COMPILER}" -print-file-name=${file} OUTPUT_VARIABLE path
                      OUTPUT_STRIP_TRAILING_WHITESPACE)
      if(IS_ABSOLUTE "${path}")
        get_filename_component(folder "${path}" DIRECTORY)
        string(APPEND folders " [[${folder}]]")
      endif()
    endforeach()
  endif()
  set(${variable} "${folders}" PARENT_SCOPE)
endfunction()

# Comes last of all: what is installed by then is searched for the DLLs that it needs.
function(kestrano_install_windows_run_time)
  if(NOT WIN32)
    return()
  endif()
  kestrano_install_qt_plugins()
  install(FILES "${PROJECT_SOURCE_DIR}/packaging/windows/THIRD-PARTY.txt" DESTINATION "${CMAKE_INSTALL_DOCDIR}")
  install(DIRECTORY "${PROJECT_SOURCE_DIR}/packaging/windows/licenses" DESTINATION "${CMAKE_INSTALL_DOCDIR}")
  if(KESTRANO_TEST_BUILD_REASONS)
    list(JOIN KESTRANO_TEST_BUILD_REASONS "\n\n" KESTRANO_TEST_BUILD_TEXT)
    set(notice "${PROJECT_BINARY_DIR}/generated/TEST-BUILD.txt")
    configure_file("${PROJECT_SOURCE_DIR}/packaging/windows/TEST-BUILD.txt.in" "${notice}" @ONLY NEWLINE_STYLE DOS)
    install(FILES "${notice}" DESTINATION "${CMAKE_INSTALL_DOCDIR}")
  endif()
  if(CMAKE_INSTALL_SYSTEM_RUNTIME_LIBS)
    install(PROGRAMS ${CMAKE_INSTALL_SYSTEM_RUNTIME_LIBS} DESTINATION "${CMAKE_INSTALL_BINDIR}")
  endif()
  kestrano_find_compiler_folders(compiler_folders)
  get_property(extra_folders GLOBAL PROPERTY KESTRANO_EXTRA_DLL_FOLDERS)
  list(TRANSFORM extra_folders REPLACE "(.+)" "[[\\1]]")
  list(JOIN extra_folders " " extra_folders)
  install(CODE "
    set(KESTRANO_DLL_FOLDERS [[$<TARGET_FILE_DIR:Qt6::Core>]] [[${KESTRANO_OBS_RUNTIME}/bin]] ${extra_folders}
        ${compiler_folders})
    set(KESTRANO_FOREIGN_DLLS [[${KESTRANO_FOREIGN_DLLS}]])
    set(KESTRANO_IS_CROSS_BUILD [[${CMAKE_CROSSCOMPILING}]])
    set(KESTRANO_OBJDUMP [[${CMAKE_OBJDUMP}]])
    set(KESTRANO_COMPILER [[${CMAKE_CXX_COMPILER}]])
    set(KESTRANO_SCRATCH_FOLDER [[${PROJECT_BINARY_DIR}/generated/dlls]])")
  install(SCRIPT "${PROJECT_SOURCE_DIR}/cmake/InstallDlls.cmake")
endfunction()
