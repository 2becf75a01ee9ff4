# SPDX-License-Identifier: GPL-3.0-or-later
# Runs while installing for Windows, after everything else is in place: finds the DLLs that the installed programs and
# DLLs are linked with, and installs those that are not the system's. One that is found nowhere ends the installation.
#
# KESTRANO_DLL_FOLDERS     where they may be, besides the installation itself
# KESTRANO_FOREIGN_DLLS    regular expression: those that the user has to have
# KESTRANO_IS_CROSS_BUILD  Windows is not at hand; then also:
# KESTRANO_OBJDUMP         reads what a DLL is linked with
# KESTRANO_COMPILER        knows the names of the system's DLLs
# KESTRANO_SCRATCH_FOLDER  may be emptied and filled

cmake_minimum_required(VERSION 3.25)

set(folder "$ENV{DESTDIR}${CMAKE_INSTALL_PREFIX}")

# What this installation has put there so far: others' files in the same folder are none of its business. Left out are
# the helpers for 32-bit programs.
set(binaries ${CMAKE_INSTALL_MANIFEST_FILES})
list(FILTER binaries INCLUDE REGEX "\\.(dll|exe)$")
list(FILTER binaries EXCLUDE REGEX "32\\.(dll|exe)$")
list(TRANSFORM binaries PREPEND "$ENV{DESTDIR}")
set(installed)
foreach(file IN LISTS binaries)
  file(REAL_PATH "${file}" file)
  list(APPEND installed "${file}")
endforeach()

# The names in a DLL are looked for in lower case, which only Windows takes for the same. So each file gets a link of
# that name; what is installed comes first.
function(kestrano_link_in_lower_case)
  file(REMOVE_RECURSE "${KESTRANO_SCRATCH_FOLDER}")
  file(MAKE_DIRECTORY "${KESTRANO_SCRATCH_FOLDER}")
  list(TRANSFORM KESTRANO_DLL_FOLDERS APPEND "/*.dll" OUTPUT_VARIABLE patterns)
  file(GLOB others ${patterns})
  foreach(file IN LISTS installed others)
    get_filename_component(name "${file}" NAME)
    string(TOLOWER "${name}" name)
    if(NOT EXISTS "${KESTRANO_SCRATCH_FOLDER}/${name}")
      file(CREATE_LINK "${file}" "${KESTRANO_SCRATCH_FOLDER}/${name}" SYMBOLIC)
    endif()
  endforeach()
endfunction()

# kestrano_drop_system_dlls(<variable>): a DLL that the compiler can link with is one of the system's; so are some newer
# ones that it does not know.
function(kestrano_drop_system_dlls variable)
  set(kept)
  list(REMOVE_ITEM ${variable} coremessaging.dll)
  foreach(name IN LISTS ${variable})
    get_filename_component(stem "${name}" NAME_WLE)
    execute_process(COMMAND "${KESTRANO_COMPILER}" -print-file-name=lib${stem}.a OUTPUT_VARIABLE path
                    OUTPUT_STRIP_TRAILING_WHITESPACE)
    if(NOT IS_ABSOLUTE "${path}")
      list(APPEND kept "${name}")
    endif()
  endforeach()
  set(${variable} "${kept}" PARENT_SCOPE)
endfunction()

if(KESTRANO_IS_CROSS_BUILD)
  set(CMAKE_GET_RUNTIME_DEPENDENCIES_PLATFORM windows+pe)
  set(CMAKE_GET_RUNTIME_DEPENDENCIES_TOOL objdump)
  set(CMAKE_GET_RUNTIME_DEPENDENCIES_COMMAND "${KESTRANO_OBJDUMP}")
  kestrano_link_in_lower_case()
  set(KESTRANO_DLL_FOLDERS "${KESTRANO_SCRATCH_FOLDER}")
endif()
file(
  GET_RUNTIME_DEPENDENCIES
  LIBRARIES ${installed}
  DIRECTORIES ${KESTRANO_DLL_FOLDERS}
  PRE_EXCLUDE_REGEXES "^api-ms-win-" "^ext-ms-"
  POST_EXCLUDE_REGEXES "[/\\\\][Ss][Yy][Ss][Tt][Ee][Mm]32[/\\\\]"
  RESOLVED_DEPENDENCIES_VAR needed
  UNRESOLVED_DEPENDENCIES_VAR missing
  CONFLICTING_DEPENDENCIES_PREFIX several)

# The one beside the program is the one that it will load.
foreach(name IN LISTS several_FILENAMES)
  list(GET several_${name} 0 first)
  list(APPEND needed "${first}")
endforeach()
foreach(file IN LISTS needed)
  file(REAL_PATH "${file}" file)
  if(NOT file IN_LIST installed)
    file(INSTALL "${file}" DESTINATION "${folder}")
  endif()
endforeach()

if(KESTRANO_IS_CROSS_BUILD)
  kestrano_drop_system_dlls(missing)
endif()
if(KESTRANO_FOREIGN_DLLS)
  list(FILTER missing EXCLUDE REGEX "${KESTRANO_FOREIGN_DLLS}")
endif()
if(missing)
  list(JOIN missing ", " missing)
  message(FATAL_ERROR "The program needs DLLs that were not found: ${missing}")
endif()
