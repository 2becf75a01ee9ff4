# SPDX-License-Identifier: GPL-3.0-or-later
# What CPack makes. For Windows: a zip that runs from where it is unpacked, and an installer for the current user. On Debian:
# a package (KestranoLinuxPackage).
#
#   cpack -G "ZIP;NSIS" --config build-windows/CPackConfig.cmake

# A macro: what CPack reads are variables of the top folder.
macro(kestrano_define_packages)
  if(WIN32)
    set(CPACK_PACKAGE_NAME Kestrano)
    set(CPACK_PACKAGE_VENDOR Tolvaran)
    set(CPACK_PACKAGE_HOMEPAGE_URL "${KESTRANO_WEB_HOME}")
    set(CPACK_PACKAGE_INSTALL_DIRECTORY Kestrano)
    set(CPACK_PACKAGE_INSTALL_REGISTRY_KEY Kestrano)
    set(CPACK_RESOURCE_FILE_LICENSE "${PROJECT_SOURCE_DIR}/LICENSE")
    set(CPACK_GENERATOR "ZIP;NSIS")
    set(CPACK_VERBATIM_VARIABLES ON)

    # The name in the installer's windows and in the list of installed programs says so as well.
    set(CPACK_KESTRANO_SUFFIX "")
    set(CPACK_NSIS_PACKAGE_NAME "Kestrano ${PROJECT_VERSION}")
    if(KESTRANO_TEST_BUILD_REASONS)
      set(CPACK_KESTRANO_SUFFIX "-test-build")
      string(APPEND CPACK_NSIS_PACKAGE_NAME " (test build)")
      set(line_break "$\\r$\\n$\\r$\\n")
      list(JOIN KESTRANO_TEST_BUILD_REASONS "${line_break}" CPACK_KESTRANO_TEST_BUILD_TEXT)
      string(PREPEND CPACK_KESTRANO_TEST_BUILD_TEXT "This is a test build, not a release." "${line_break}")
    endif()
    set(CPACK_NSIS_DISPLAY_NAME "${CPACK_NSIS_PACKAGE_NAME}")
    set(CPACK_NSIS_INSTALL_ROOT "$LOCALAPPDATA\\Programs")
    set(CPACK_NSIS_UNINSTALL_NAME uninstall)
    set(CPACK_NSIS_COMPRESSOR "/SOLID lzma")
    set(CPACK_NSIS_MUI_ICON "${PROJECT_SOURCE_DIR}/resources/logo.ico")
    set(CPACK_NSIS_MUI_UNIICON "${CPACK_NSIS_MUI_ICON}")
    set(CPACK_NSIS_MUI_WELCOMEFINISHPAGE_BITMAP "${PROJECT_SOURCE_DIR}/packaging/windows/installer-side.bmp")
    set(CPACK_NSIS_URL_INFO_ABOUT "${KESTRANO_WEB_HOME}")
    set(CPACK_NSIS_HELP_LINK "${KESTRANO_WEB_SUPPORT}")
    set(CPACK_PROJECT_CONFIG_FILE "${PROJECT_SOURCE_DIR}/cmake/CPackProject.cmake")
    # CPack looks here first for the installer's script.
    set(CPACK_MODULE_PATH "${PROJECT_SOURCE_DIR}/packaging/windows")
    include(CPack)
  elseif(KESTRANO_IS_DISTRIBUTION_PACKAGE)
    kestrano_define_debian_package()
  endif()
endmacro()
