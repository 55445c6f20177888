# Writes the function types of KELUtils.h from its declarations, between the two clang-format marks at its end:
#   cmake -P cmake/WriteFunctionTypes.cmake
# A declaration that cannot be read ends with an error, so that no export is left without its type.
cmake_minimum_required(VERSION 3.25)

set(_header ${CMAKE_CURRENT_LIST_DIR}/../include/KELUtils.h)
file(READ ${_header} _text)
string(REPLACE ";" "<semicolon>" _declared "${_text}") # a list would be split at them
string(REGEX MATCHALL "\n[^\n</]+ KE_API KE_[A-Za-z0-9_]+\\([^()]*\\)" _declarations "${_declared}")
string(REGEX MATCHALL " KE_API KE_[A-Za-z0-9_]+\\(" _names "${_declared}")
list(LENGTH _declarations _read)
list(LENGTH _names _expected)
if(NOT _read EQUAL _expected OR _read EQUAL 0)
  message(FATAL_ERROR "${_header} declares ${_expected} exports, but only ${_read} have the form RESULT KE_API KE_Name(PARAMETERS)")
endif()

set(_types)
foreach(_declaration IN LISTS _declarations)
  string(REGEX REPLACE "[ \n]+" " " _declaration "${_declaration}")
  string(REGEX REPLACE "^ (.*) KE_API (KE_[A-Za-z0-9_]+)(\\(.*\\))$" "typedef \\1(KE_API* \\2_t)\\3" _type "${_declaration}")
  string(APPEND _types "${_type};\n")
endforeach()

set(_begin "/* clang-format off */\n")
set(_end "/* clang-format on */\n")
string(FIND "${_text}" "${_begin}" _from)
string(FIND "${_text}" "${_end}" _to)
if(_from EQUAL -1 OR _to LESS _from)
  message(FATAL_ERROR "${_header} does not have the two marks between which its function types stand")
endif()
string(SUBSTRING "${_text}" 0 ${_from} _before)
string(SUBSTRING "${_text}" ${_to} -1 _after)
file(WRITE ${_header} "${_before}${_begin}${_types}${_after}")
