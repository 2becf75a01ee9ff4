# SPDX-License-Identifier: GPL-3.0-or-later
# The manual that F1 opens: the user guide as HTML, with its images, in the folder "manual" beside the executable. Without
# the converter there is none, and the program says so.

find_program(KESTRANO_CMARK cmark-gfm)
mark_as_advanced(KESTRANO_CMARK)

function(kestrano_add_manual)
  if(NOT KESTRANO_CMARK)
    message(STATUS "Manual: none (cmark-gfm not found)")
    return()
  endif()
  set(folder "${PROJECT_BINARY_DIR}/manual")
  set(guide "${PROJECT_SOURCE_DIR}/docs/user-guide.md")
  set(template "${PROJECT_SOURCE_DIR}/docs/manual/manual.html.in")
  set(script "${PROJECT_SOURCE_DIR}/cmake/MakeManual.cmake")
  # What the guide shows, and no more.
  file(STRINGS "${guide}" lines REGEX "!\\[.*\\]\\(images/")
  set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS "${guide}")
  list(TRANSFORM lines REPLACE ".*\\((images/[^)]*)\\).*" "${PROJECT_SOURCE_DIR}/docs/\\1" OUTPUT_VARIABLE images)
  add_custom_command(
    OUTPUT "${folder}/index.html"
    COMMAND "${CMAKE_COMMAND}" "-DCMARK=${KESTRANO_CMARK}" "-DGUIDE=${guide}" "-DTEMPLATE=${template}"
            "-DVERSION=${PROJECT_VERSION}" "-DPAGE=${folder}/index.html" -P "${script}"
    COMMAND "${CMAKE_COMMAND}" -E make_directory "${folder}/images"
    COMMAND "${CMAKE_COMMAND}" -E copy_if_different ${images} "${folder}/images"
    DEPENDS "${guide}" "${template}" "${script}" ${images}
    COMMENT "Making the manual"
    VERBATIM)
  add_custom_target(kestrano_manual ALL DEPENDS "${folder}/index.html")
  add_dependencies(kestrano kestrano_manual)
  install(DIRECTORY "${folder}" DESTINATION "${CMAKE_INSTALL_DOCDIR}")
endfunction()
