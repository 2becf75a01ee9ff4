# SPDX-License-Identifier: GPL-3.0-or-later
# What a Linux installation has besides the program: desktop entry, AppStream metainfo, icons, man page, copyright. And the
# Debian package that CPack makes of it, where the program is configured for /usr:
#
#   cmake --preset package && cmake --build --preset package && cpack --config build-package/CPackConfig.cmake

set(KESTRANO_IS_DISTRIBUTION_PACKAGE OFF)
if(NOT WIN32 AND CMAKE_INSTALL_PREFIX STREQUAL "/usr")
  set(KESTRANO_IS_DISTRIBUTION_PACKAGE ON)
endif()

set(KESTRANO_ICON_SIZES 16 22 24 32 48 64 96 128 256 512)
set(KESTRANO_LINUX_FILES "${PROJECT_SOURCE_DIR}/packaging/linux")
set(KESTRANO_MAINTAINER "Tolvaran <packages@kestrano.example>" CACHE STRING "Who answers for a package")

# kestrano_read_os_release(<variable> <key>): a value of /etc/os-release; empty where there is none.
function(kestrano_read_os_release variable key)
  set(value "")
  if(EXISTS /etc/os-release)
    file(STRINGS /etc/os-release lines REGEX "^${key}=" LIMIT_COUNT 1)
    string(REGEX REPLACE "^${key}=\"?([^\"]*)\"?$" "\\1" value "${lines}")
  endif()
  set(${variable} "${value}" PARENT_SCOPE)
endfunction()

# Packages are made on the release that they are for, since libobs, FFmpeg and Qt have other names there. The newer
# release's package has the higher version: it replaces the older one's in an upgrade of the system.
function(kestrano_set_debian_version)
  kestrano_read_os_release(id ID)
  kestrano_read_os_release(release VERSION_ID)
  kestrano_read_os_release(name VERSION_CODENAME)
  set(revision 1)
  if(id STREQUAL "debian" AND release)
    set(revision "1~deb${release}u1")
  endif()
  if(NOT name)
    set(name unstable)
  endif()
  set(KESTRANO_DEBIAN_REVISION "${revision}" PARENT_SCOPE)
  set(KESTRANO_DEBIAN_SUITE "${name}" PARENT_SCOPE)
endfunction()

# kestrano_install_compressed(<file> <destination> <name>): with gzip, and without a time in it.
function(kestrano_install_compressed file destination name)
  find_program(KESTRANO_GZIP gzip REQUIRED)
  mark_as_advanced(KESTRANO_GZIP)
  set(compressed "${PROJECT_BINARY_DIR}/generated/${name}")
  execute_process(COMMAND "${KESTRANO_GZIP}" -9nc "${file}" OUTPUT_FILE "${compressed}" COMMAND_ERROR_IS_FATAL ANY)
  install(FILES "${compressed}" DESTINATION "${destination}")
endfunction()

# kestrano_configure_linux_file(<variable> <name>): the file made from packaging/linux/<name>.in.
function(kestrano_configure_linux_file variable name)
  configure_file("${KESTRANO_LINUX_FILES}/${name}.in" "${PROJECT_BINARY_DIR}/generated/${name}" @ONLY)
  set(${variable} "${PROJECT_BINARY_DIR}/generated/${name}" PARENT_SCOPE)
endfunction()

# Every size, drawn from the one image; a desktop that knows SVG takes that itself.
function(kestrano_install_icons)
  set(theme "${CMAKE_INSTALL_DATADIR}/icons/hicolor")
  install(FILES "${PROJECT_SOURCE_DIR}/resources/logo.svg" DESTINATION "${theme}/scalable/apps" RENAME kestrano.svg)
  find_program(KESTRANO_RSVG_CONVERT rsvg-convert)
  mark_as_advanced(KESTRANO_RSVG_CONVERT)
  if(NOT KESTRANO_RSVG_CONVERT)
    message(STATUS "Icons: SVG only (rsvg-convert, of the package librsvg2-bin, not found)")
    return()
  endif()
  set(icons)
  foreach(size IN LISTS KESTRANO_ICON_SIZES)
    set(icon "${PROJECT_BINARY_DIR}/icons/${size}.png")
    add_custom_command(
      OUTPUT "${icon}"
      COMMAND "${CMAKE_COMMAND}" -E make_directory "${PROJECT_BINARY_DIR}/icons"
      COMMAND "${KESTRANO_RSVG_CONVERT}" -w ${size} -h ${size} -o "${icon}" "${PROJECT_SOURCE_DIR}/resources/logo.svg"
      DEPENDS "${PROJECT_SOURCE_DIR}/resources/logo.svg"
      VERBATIM)
    install(FILES "${icon}" DESTINATION "${theme}/${size}x${size}/apps" RENAME kestrano.png)
    list(APPEND icons "${icon}")
  endforeach()
  add_custom_target(kestrano_icons DEPENDS ${icons})
  add_dependencies(kestrano kestrano_icons)
endfunction()

# Debian has the licence's text in a place of its own.
function(kestrano_install_licence)
  install(FILES "${KESTRANO_LINUX_FILES}/copyright" DESTINATION "${CMAKE_INSTALL_DOCDIR}")
  if(KESTRANO_IS_DISTRIBUTION_PACKAGE)
    kestrano_configure_linux_file(changelog changelog)
    kestrano_install_compressed("${changelog}" "${CMAKE_INSTALL_DOCDIR}" changelog.Debian.gz)
    install(FILES "${KESTRANO_LINUX_FILES}/kestrano.doc-base" DESTINATION "${CMAKE_INSTALL_DATADIR}/doc-base"
            RENAME kestrano)
  else()
    install(FILES "${PROJECT_SOURCE_DIR}/LICENSE" "${PROJECT_SOURCE_DIR}/COPYING"
            DESTINATION "${CMAKE_INSTALL_DOCDIR}")
  endif()
endfunction()

function(kestrano_install_desktop_files)
  set(link "${PROJECT_BINARY_DIR}/generated/bin/kestrano")
  file(MAKE_DIRECTORY "${PROJECT_BINARY_DIR}/generated/bin")
  file(CREATE_LINK "../${KESTRANO_INSTALL_PROGRAMDIR}/kestrano" "${link}" SYMBOLIC)
  install(FILES "${link}" DESTINATION "${CMAKE_INSTALL_BINDIR}")
  install(FILES "${KESTRANO_LINUX_FILES}/kestrano.desktop" DESTINATION "${CMAKE_INSTALL_DATADIR}/applications")
  kestrano_configure_linux_file(metainfo kestrano.metainfo.xml)
  install(FILES "${metainfo}" DESTINATION "${CMAKE_INSTALL_DATADIR}/metainfo"
          RENAME "${KESTRANO_APPSTREAM_ID}.metainfo.xml")
  kestrano_configure_linux_file(man_page kestrano.1)
  kestrano_install_compressed("${man_page}" "${CMAKE_INSTALL_MANDIR}/man1" kestrano.1.gz)
  kestrano_install_icons()
  kestrano_install_licence()
endfunction()

# What the program opens while it runs, so that no library says that it is needed: libobs' plug-ins, and Qt's for SVG and for
# cameras, which are in other packages in each release.
function(kestrano_find_run_time_packages variable)
  set(packages obs-studio "libqt6svg6 (<< 6.6) | qt6-svg-plugins" libegl1 libgl1 libgl1-mesa-dri)
  get_target_property(core Qt6::Core LOCATION)
  get_filename_component(folder "${core}" DIRECTORY)
  if(EXISTS "${folder}/qt6/plugins/multimedia/libgstreamermediaplugin.so")
    list(APPEND packages gstreamer1.0-plugins-base gstreamer1.0-plugins-good)
  endif()
  list(JOIN packages ", " packages)
  set(${variable} "${packages}" PARENT_SCOPE)
endfunction()

# A macro: what CPack reads are variables of the top folder.
macro(kestrano_define_debian_package)
  set(CPACK_GENERATOR DEB)
  set(CPACK_PACKAGE_NAME kestrano)
  set(CPACK_PACKAGE_VENDOR Tolvaran)
  set(CPACK_PACKAGE_HOMEPAGE_URL "${KESTRANO_WEB_HOME}")
  set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "screen recorder and screenshot tool for X11")
  set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
  set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE
                                                  WORLD_READ WORLD_EXECUTE)
  set(CPACK_STRIP_FILES ON)
  set(CPACK_VERBATIM_VARIABLES ON)
  set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
  set(CPACK_DEBIAN_COMPRESSION_TYPE xz)
  set(CPACK_DEBIAN_PACKAGE_RELEASE "${KESTRANO_DEBIAN_REVISION}")
  set(CPACK_DEBIAN_PACKAGE_MAINTAINER "${KESTRANO_MAINTAINER}")
  set(CPACK_DEBIAN_PACKAGE_SECTION video)
  set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
  kestrano_find_run_time_packages(CPACK_DEBIAN_PACKAGE_DEPENDS)
  # Where there is no browser, apt takes any package that calls itself one, unless the first alternative is a real package.
  set(CPACK_DEBIAN_PACKAGE_RECOMMENDS "pulseaudio | pipewire-pulse, xdg-utils, firefox-esr | www-browser")
  set(CPACK_DEBIAN_PACKAGE_SUGGESTS "fonts-noto-cjk")
  set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
  file(READ "${KESTRANO_LINUX_FILES}/description.txt" CPACK_DEBIAN_PACKAGE_DESCRIPTION)
  string(STRIP "${CPACK_DEBIAN_PACKAGE_DESCRIPTION}" CPACK_DEBIAN_PACKAGE_DESCRIPTION)
  include(CPack)
endmacro()

if(NOT WIN32)
  kestrano_set_debian_version()
endif()
