# SPDX-License-Identifier: GPL-3.0-or-later
# Assembles the folder "obs-data" beside the executable: the plug-ins of libobs that the program loads and their
# data. In the build folder it is made when configuring; install() gives the same layout.
#
#   obs-data/obs-plugins/64bit/<module>         the plug-ins
#   obs-data/data/obs-plugins/<module>/         their data
#   obs-data/data/libobs/                       the core library's data

set(KESTRANO_OBS_DATA "${PROJECT_BINARY_DIR}/obs-data")

# kestrano_link_into(<folder> <file>): a link in the folder to the file or folder of the same name.
function(kestrano_link_into folder file)
  get_filename_component(name "${file}" NAME)
  file(MAKE_DIRECTORY "${folder}")
  if(IS_DIRECTORY "${folder}/${name}" AND NOT IS_SYMLINK "${folder}/${name}")
    file(REMOVE_RECURSE "${folder}/${name}")
  endif()
  file(CREATE_LINK "${file}" "${folder}/${name}" SYMBOLIC)
endfunction()

# kestrano_find_in_obs(<variable> <what> <suffixes>...): the file or folder in the installed run time of libobs.
function(kestrano_find_in_obs variable what)
  find_file(${variable} NAMES "${what}" PATH_SUFFIXES ${ARGN} HINTS "${KESTRANO_OBS_PREFIX}"
            PATHS /usr /usr/local NO_CMAKE_FIND_ROOT_PATH)
  mark_as_advanced(${variable})
  if(NOT ${variable})
    message(FATAL_ERROR "\"${what}\" of the libobs run time was not found. Its plug-ins and their data are in the "
                        "package \"obs-studio\" and \"obs-plugins\" (apt-get install obs-studio obs-plugins); for a "
                        "run time elsewhere set KESTRANO_OBS_PREFIX to its prefix.")
  endif()
endfunction()

# kestrano_add_obs_module(<module>): one plug-in with its data, as links.
function(kestrano_add_obs_module module)
  string(MAKE_C_IDENTIFIER "${module}" id)
  kestrano_find_in_obs(KESTRANO_OBS_MODULE_${id} ${module}.so lib/${CMAKE_LIBRARY_ARCHITECTURE}/obs-plugins
                       lib/obs-plugins)
  kestrano_find_in_obs(KESTRANO_OBS_DATA_${id} ${module} share/obs/obs-plugins)
  kestrano_link_into("${KESTRANO_OBS_DATA}/obs-plugins/64bit" "${KESTRANO_OBS_MODULE_${id}}")
  kestrano_link_into("${KESTRANO_OBS_DATA}/data/obs-plugins" "${KESTRANO_OBS_DATA_${id}}")
endfunction()

# A package of the distribution has relative links: they stay right where the system is looked at from outside.
function(kestrano_install_relative_obs_links)
  set(copy "${PROJECT_BINARY_DIR}/generated/obs-data")
  file(REMOVE_RECURSE "${copy}")
  foreach(folder obs-plugins/64bit data/obs-plugins data)
    file(GLOB links "${KESTRANO_OBS_DATA}/${folder}/*")
    file(MAKE_DIRECTORY "${copy}/${folder}")
    foreach(link IN LISTS links)
      if(IS_SYMLINK "${link}")
        get_filename_component(name "${link}" NAME)
        file(READ_SYMLINK "${link}" target)
        file(RELATIVE_PATH target "/usr/${KESTRANO_INSTALL_PROGRAMDIR}/obs-data/${folder}" "${target}")
        file(CREATE_LINK "${target}" "${copy}/${folder}/${name}" SYMBOLIC)
      endif()
    endforeach()
  endforeach()
  install(DIRECTORY "${copy}" DESTINATION "${KESTRANO_INSTALL_PROGRAMDIR}")
endfunction()

# Links to the plug-ins of the distribution. Not the whole folder: it also holds plug-ins of the studio's window, which end
# a process that has none.
function(kestrano_link_obs_data)
  foreach(module obs-ffmpeg obs-filters obs-transitions linux-capture linux-pulseaudio)
    kestrano_add_obs_module(${module})
  endforeach()
  kestrano_find_in_obs(KESTRANO_OBS_CORE_DATA libobs share/obs)
  kestrano_link_into("${KESTRANO_OBS_DATA}/data" "${KESTRANO_OBS_CORE_DATA}")
  # Links stay links: what they point at comes with the distribution's package.
  if(KESTRANO_IS_DISTRIBUTION_PACKAGE)
    kestrano_install_relative_obs_links()
  else()
    install(DIRECTORY "${KESTRANO_OBS_DATA}" DESTINATION "${KESTRANO_INSTALL_PROGRAMDIR}")
  endif()
endfunction()

# The Windows run time brings a folder that is laid out already; beside it the DLLs that the executable is linked with.
function(kestrano_copy_obs_data)
  find_path(KESTRANO_OBS_RUNTIME obs-data/data/libobs/default.effect HINTS "${KESTRANO_OBS_PREFIX}" "${libobs_DIR}/../.."
            "${libobs_DIR}/../../.." "${libobs_DIR}/../../../.." NO_CMAKE_FIND_ROOT_PATH)
  if(NOT KESTRANO_OBS_RUNTIME)
    message(FATAL_ERROR "The folder \"obs-data\" of the libobs run time was not found near ${libobs_DIR}; set "
                        "KESTRANO_OBS_PREFIX to the folder that holds it.")
  endif()
  file(COPY "${KESTRANO_OBS_RUNTIME}/obs-data" DESTINATION "${PROJECT_BINARY_DIR}")
  file(GLOB runtime_files "${KESTRANO_OBS_RUNTIME}/bin/*.dll" "${KESTRANO_OBS_RUNTIME}/bin/*.exe")
  file(COPY ${runtime_files} DESTINATION "${PROJECT_BINARY_DIR}")
  install(DIRECTORY "${KESTRANO_OBS_RUNTIME}/obs-data" DESTINATION "${KESTRANO_INSTALL_PROGRAMDIR}")
  install(FILES ${runtime_files} DESTINATION "${KESTRANO_INSTALL_PROGRAMDIR}")
  if(EXISTS "${KESTRANO_OBS_RUNTIME}/licenses")
    install(DIRECTORY "${KESTRANO_OBS_RUNTIME}/licenses/" DESTINATION "${CMAKE_INSTALL_DOCDIR}/licenses/libobs")
  endif()
endfunction()

set(KESTRANO_OBS_PREFIX "" CACHE PATH "Where the run time of libobs is installed, if not where the system looks")
if(WIN32)
  kestrano_copy_obs_data()
else()
  kestrano_link_obs_data()
endif()
