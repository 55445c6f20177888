# Writes KELUtilsTypes.h: a function type for each export that KELUtils.h declares. Run as a script with
#   HEADER  KELUtils.h
#   OUTPUT  the header to write
# A declaration that cannot be read ends with an error, so that no export is left without its type.
cmake_minimum_required(VERSION 3.25)

file(READ ${HEADER} _text)
string(REGEX MATCHALL "\n[^\n;/]+ KE_API KE_[A-Za-z0-9_]+\\([^()]*\\)" _declarations "${_text}")
string(REGEX MATCHALL " KE_API KE_[A-Za-z0-9_]+\\(" _names "${_text}")
list(LENGTH _declarations _read)
list(LENGTH _names _expected)
if(NOT _read EQUAL _expected OR _read EQUAL 0)
  message(FATAL_ERROR "${HEADER} declares ${_expected} exports, but only ${_read} have the form RESULT KE_API KE_Name(PARAMETERS)")
endif()

set(_types)
foreach(_declaration IN LISTS _declarations)
  string(REGEX REPLACE "[ \n]+" " " _declaration "${_declaration}")
  string(REGEX REPLACE "^ (.*) KE_API (KE_[A-Za-z0-9_]+)(\\(.*\\))$" "typedef \\1(KE_API* \\2_t)\\3" _type "${_declaration}")
  string(APPEND _types "${_type};\n")
endforeach()

file(CONFIGURE OUTPUT ${OUTPUT} @ONLY CONTENT [[
/* KELUtils: the types of the exports, for programs that load KELUtils.dll at run time. Generated from KELUtils.h when
 * the library is built: the type of KE_Name is KE_Name_t.
 *
 *   KE_GetAgentID_t getAgentId = (KE_GetAgentID_t)(void (*)(void))GetProcAddress(module, "KE_GetAgentID");
 */
#ifndef KELUTILSTYPES_H
#define KELUTILSTYPES_H

#include "KELUtils.h"

#ifdef __cplusplus
extern "C" {
#endif

@_types@
#ifdef __cplusplus
}
#endif

#endif
]])
