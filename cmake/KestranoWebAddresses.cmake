# SPDX-License-Identifier: GPL-3.0-or-later
# The maker's addresses, in one place. A packager sets them with -D; the defaults lie under a name that is reserved
# for examples and never resolves.
set(KESTRANO_WEB_FIRST_RUN "https://www.kestrano.example/installed" CACHE STRING "Page opened once, on the first run")
set(KESTRANO_WEB_GUIDE "https://www.kestrano.example/guide" CACHE STRING "Getting-started guide")
set(KESTRANO_WEB_SUPPORT "https://www.kestrano.example/support" CACHE STRING "Support centre with the FAQ")
set(KESTRANO_WEB_HOME "https://www.kestrano.example/" CACHE STRING "The maker's home page")
set(KESTRANO_UPDATE_HOST "download.kestrano.example" CACHE STRING "Host that serves the update document")
# The same name turned round names the program to software centres.
set(KESTRANO_APPSTREAM_ID "example.kestrano.kestrano" CACHE STRING "Identity in AppStream's catalogues")
