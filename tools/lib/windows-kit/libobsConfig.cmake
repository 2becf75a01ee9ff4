# SPDX-License-Identifier: GPL-3.0-or-later
# OBS::libobs, as libobs' own package calls it.
get_filename_component(libobs_root "${CMAKE_CURRENT_LIST_DIR}/../../.." ABSOLUTE)
if(NOT TARGET OBS::libobs)
  add_library(OBS::libobs SHARED IMPORTED)
  set_target_properties(
    OBS::libobs
    PROPERTIES IMPORTED_IMPLIB "${libobs_root}/lib/libobs.dll.a" IMPORTED_LOCATION "${libobs_root}/bin/obs.dll"
               INTERFACE_INCLUDE_DIRECTORIES "${libobs_root}/include")
endif()
set(libobs_FOUND TRUE)
