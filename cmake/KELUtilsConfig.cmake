# The packaged KELUtils. The package may lie in any folder: everything is found from this file.
#   KELUtils::KELUtils  the library, for programs that link it: KELUtils.dll must be where the loader finds it
#   KELUtils::Headers   the headers alone, for programs that load the library at run time

if(TARGET KELUtils::KELUtils)
  return()
endif()
get_filename_component(_KELUtils_prefix "${CMAKE_CURRENT_LIST_DIR}/../../.." ABSOLUTE)

add_library(KELUtils::Headers INTERFACE IMPORTED)
set_target_properties(KELUtils::Headers PROPERTIES INTERFACE_INCLUDE_DIRECTORIES "${_KELUtils_prefix}/include")

# GNU linkers take the long form of an import library, those of the MSVC family only the short one.
if(CMAKE_IMPORT_LIBRARY_SUFFIX STREQUAL ".dll.a")
  set(_KELUtils_import_library "${_KELUtils_prefix}/lib/libKELUtils.dll.a")
else()
  set(_KELUtils_import_library "${_KELUtils_prefix}/lib/KELUtils.lib")
endif()
add_library(KELUtils::KELUtils SHARED IMPORTED)
set_target_properties(KELUtils::KELUtils PROPERTIES
  IMPORTED_LOCATION "${_KELUtils_prefix}/bin/KELUtils.dll"
  IMPORTED_IMPLIB "${_KELUtils_import_library}"
  INTERFACE_INCLUDE_DIRECTORIES "${_KELUtils_prefix}/include")

if(NOT EXISTS "${_KELUtils_import_library}")
  set(KELUtils_FOUND FALSE)
  set(KELUtils_NOT_FOUND_MESSAGE "${_KELUtils_import_library} is missing")
endif()
