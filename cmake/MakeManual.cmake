# SPDX-License-Identifier: GPL-3.0-or-later
# Makes the manual, one page of HTML, from the user guide. Run by the build:
#
#   cmake -DCMARK=... -DGUIDE=user-guide.md -DTEMPLATE=manual.html.in -DVERSION=1.0.0 -DPAGE=index.html -P MakeManual.cmake
cmake_minimum_required(VERSION 3.25)

execute_process(COMMAND "${CMARK}" --validate-utf8 --extension table "${GUIDE}" OUTPUT_VARIABLE BODY
                COMMAND_ERROR_IS_FATAL ANY)

# The guide's table of contents leads to names made from the headings, as in the places that show Markdown.
string(REGEX MATCHALL "<h2>[^<]*</h2>" headings "${BODY}")
foreach(heading IN LISTS headings)
  string(REGEX REPLACE "<h2>(.*)</h2>" "\\1" title "${heading}")
  string(TOLOWER "${title}" name)
  string(REGEX REPLACE "[^a-z0-9 -]" "" name "${name}")
  string(REPLACE " " "-" name "${name}")
  string(REPLACE "${heading}" "<h2 id=\"${name}\">${title}</h2>" BODY "${BODY}")
endforeach()
string(REPLACE "</h1>" "</h1>\n<p class=\"version\">Version ${VERSION}</p>" BODY "${BODY}")

string(REGEX MATCHALL "href=\"#[^\"]*\"" links "${BODY}")
foreach(link IN LISTS links)
  string(REGEX REPLACE "href=\"#(.*)\"" "id=\"\\1\"" target "${link}")
  string(FIND "${BODY}" "${target}" found)
  if(found EQUAL -1)
    message(FATAL_ERROR "${GUIDE}: ${link} leads to no heading")
  endif()
endforeach()
configure_file("${TEMPLATE}" "${PAGE}" @ONLY)
