# SPDX-License-Identifier: GPL-3.0-or-later
# What an executable and an installation carry besides code.

# Where the program, and obs-data beside it, is installed. On Windows that is a folder of its own, with the program at its
# top; elsewhere a link leads there.
if(WIN32)
  set(CMAKE_INSTALL_BINDIR .)
  set(CMAKE_INSTALL_DOCDIR .)
  set(KESTRANO_INSTALL_PROGRAMDIR .)
else()
  set(CMAKE_INSTALL_DOCDIR share/doc/kestrano)
  set(KESTRANO_INSTALL_PROGRAMDIR lib/kestrano)
endif()
include(GNUInstallDirs)

# kestrano_add_windows_resources(<target>): icon, manifest and version of a Windows executable; nothing elsewhere.
function(kestrano_add_windows_resources target)
  if(NOT WIN32)
    return()
  endif()
  set(KESTRANO_MANIFEST "${PROJECT_BINARY_DIR}/generated/kestrano.manifest")
  configure_file("${PROJECT_SOURCE_DIR}/packaging/windows/kestrano.manifest.in" "${KESTRANO_MANIFEST}" @ONLY)
  set(script "${PROJECT_BINARY_DIR}/generated/kestrano.rc")
  configure_file("${PROJECT_SOURCE_DIR}/packaging/windows/kestrano.rc.in" "${script}" @ONLY)
  set_source_files_properties(
    "${script}" PROPERTIES OBJECT_DEPENDS "${KESTRANO_MANIFEST};${PROJECT_SOURCE_DIR}/resources/logo.ico")
  target_sources(${target} PRIVATE "${script}")
endfunction()

# The program; KestranoObsData installs the folder beside it.
function(kestrano_install target)
  install(TARGETS ${target} RUNTIME DESTINATION "${KESTRANO_INSTALL_PROGRAMDIR}")
  if(WIN32)
    install(FILES "${PROJECT_SOURCE_DIR}/LICENSE" "${PROJECT_SOURCE_DIR}/COPYING"
            DESTINATION "${CMAKE_INSTALL_DOCDIR}")
  else()
    kestrano_install_desktop_files()
  endif()
endfunction()
