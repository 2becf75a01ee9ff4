# SPDX-License-Identifier: GPL-3.0-or-later
# CPack reads this once for each kind of package that it makes.
cmake_minimum_required(VERSION 3.25)
set(CPACK_PACKAGE_FILE_NAME "Kestrano-${CPACK_PACKAGE_VERSION}-windows-x64${CPACK_KESTRANO_SUFFIX}")
if(CPACK_GENERATOR STREQUAL "NSIS")
  string(APPEND CPACK_PACKAGE_FILE_NAME "-setup")
endif()
