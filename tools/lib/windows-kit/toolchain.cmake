# SPDX-License-Identifier: GPL-3.0-or-later
# CMake toolchain for Windows x64 with mingw-w64 and the kit that this file lies in. moc, uic and rcc are the host's Qt's,
# which has to be of the kit's version.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)
set(CMAKE_C_COMPILER x86_64-w64-mingw32-gcc-posix)
set(CMAKE_CXX_COMPILER x86_64-w64-mingw32-g++-posix)
set(CMAKE_RC_COMPILER x86_64-w64-mingw32-windres)

set(KESTRANO_WINDOWS_KIT "${CMAKE_CURRENT_LIST_DIR}" CACHE PATH "Folder of the unpacked Windows kit" FORCE)
set(QT_HOST_PATH "/usr" CACHE PATH "")
set(QT_HOST_PATH_CMAKE_DIR "/usr/lib/x86_64-linux-gnu/cmake" CACHE PATH "")

# QWindowKit and QHotkey stand apart: most builds are made without them.
set(KESTRANO_KIT_EXTRA OFF CACHE BOOL "Let find_package() see QWindowKit and QHotkey")
list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES KESTRANO_KIT_EXTRA)
set(kit_folders qt obs)
if(KESTRANO_KIT_EXTRA)
  list(APPEND kit_folders extra)
endif()
list(TRANSFORM kit_folders PREPEND "${CMAKE_CURRENT_LIST_DIR}/")
list(APPEND CMAKE_PREFIX_PATH ${kit_folders})
list(APPEND CMAKE_FIND_ROOT_PATH ${kit_folders} /usr/x86_64-w64-mingw32)
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
