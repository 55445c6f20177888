# Writes the bill of materials of an installation, share/doc/KELUtils/KELUtils.spdx.json (SPDX 2.3), and installs the licences of
# what is linked into the binaries. Runs as the last step of an installation, with
#   KELUTILS_VERSION         the version of the project
#   KELUTILS_LICENSE         the project's licence file
#   KELUTILS_MAPS            the linker's map of each binary, NAME.map for bin/NAME.*
#   KELUTILS_KELCTL_HEADERS  a header of each header-only library in kelctl
# Versions and licence texts are those of the installed packages of the distribution. A library of which no licence is known here ends
# the installation. The only date is SOURCE_DATE_EPOCH, by default the earliest that a ZIP can hold.
cmake_minimum_required(VERSION 3.25)

find_program(_dpkg_query dpkg-query)
if(NOT _dpkg_query)
  message(STATUS "No bill of materials: the packages of the compiler are not those of a Debian distribution")
  return()
endif()
if(NOT DEFINED ENV{SOURCE_DATE_EPOCH})
  set(ENV{SOURCE_DATE_EPOCH} 315532800)
endif()
set(_gcc_licence "GPL-3.0-or-later WITH GCC-exception-3.1")
set(_mingw_licence "ZPL-2.1 AND LicenseRef-mingw-w64-parts")
set(_written share/doc/KELUtils/KELUtils.spdx.json)

# A text as a JSON string, with its quotes.
function(json_text text out)
  string(REPLACE "\\" "\\\\" text "${text}")
  string(REPLACE "\"" "\\\"" text "${text}")
  string(REPLACE "\n" "\\n" text "${text}")
  string(REPLACE "\t" "\\t" text "${text}")
  set(${out} "\"${text}\"" PARENT_SCOPE)
endfunction()

# The name of the component that the file of a library, or one of its headers, belongs to, and its licence.
function(identify file out_name out_licence)
  get_filename_component(name ${file} NAME)
  if(name MATCHES "^libgcc(_eh)?\\.a$|^crt(begin|end)\\.o$")
    set(found libgcc "${_gcc_licence}")
  elseif(name MATCHES "^lib(std|sup)c\\+\\+\\.a$")
    set(found libstdc++ "${_gcc_licence}")
  elseif(name MATCHES "^libssp(_nonshared)?\\.a$")
    set(found libssp "${_gcc_licence}")
  elseif(file MATCHES "^/usr/i686-w64-mingw32/lib/")
    set(found mingw-w64-runtime "${_mingw_licence}")
  elseif(name STREQUAL CLI.hpp)
    set(found CLI11 BSD-3-Clause)
  elseif(name STREQUAL json.hpp)
    set(found nlohmann-json MIT)
  else()
    message(FATAL_ERROR "${file} becomes part of a binary, but its licence is not known in ${CMAKE_CURRENT_LIST_FILE}")
  endif()
  list(GET found 0 name)
  list(GET found 1 licence)
  set(${out_name} ${name} PARENT_SCOPE)
  set(${out_licence} "${licence}" PARENT_SCOPE)
endfunction()

# The package of the distribution that a file comes from, and its version.
function(package_of file out_package out_version)
  execute_process(COMMAND ${_dpkg_query} -S ${file} OUTPUT_VARIABLE owner COMMAND_ERROR_IS_FATAL ANY)
  string(REGEX REPLACE "[:,].*" "" owner "${owner}")
  execute_process(COMMAND ${_dpkg_query} -W "-f=\${Version}" ${owner} OUTPUT_VARIABLE version COMMAND_ERROR_IS_FATAL ANY)
  set(${out_package} ${owner} PARENT_SCOPE)
  set(${out_version} ${version} PARENT_SCOPE)
endfunction()

# The files of libraries that the linker took something from: members of archives, and the start files.
function(linked_files map out)
  file(STRINGS ${map} lines REGEX "^/[^ (]+\\.a\\(|^LOAD /[^ ]+/crt[a-z0-9]*\\.o$|^LOAD /[^ ]+/dllcrt[0-9]\\.o$")
  list(TRANSFORM lines REPLACE "^LOAD |\\(.*" "")
  set(files)
  foreach(line IN LISTS lines)
    cmake_path(NORMAL_PATH line)
    list(APPEND files ${line})
  endforeach()
  list(REMOVE_DUPLICATES files)
  list(SORT files)
  if(files STREQUAL "")
    message(FATAL_ERROR "${map} names no library")
  endif()
  set(${out} "${files}" PARENT_SCOPE)
endfunction()

# Components: for each binary what it holds; for each component its licence, package and version.
set(_components)
foreach(_map IN LISTS KELUTILS_MAPS)
  get_filename_component(_binary ${_map} NAME_WE)
  linked_files(${_map} _files)
  if(_binary STREQUAL kelctl)
    list(APPEND _files ${KELUTILS_KELCTL_HEADERS})
  endif()
  set(_${_binary}_licence MIT)
  foreach(_file IN LISTS _files)
    identify(${_file} _name _licence)
    if(NOT _name IN_LIST _components)
      list(APPEND _components ${_name})
      set(_${_name}_licence "${_licence}")
      package_of(${_file} _${_name}_package _${_name}_version)
    endif()
    if(NOT _name IN_LIST _${_binary}_parts)
      list(APPEND _${_binary}_parts ${_name})
      string(FIND " AND ${_${_binary}_licence} AND " " AND ${_licence} AND " _known)
      if(_known EQUAL -1)
        string(APPEND _${_binary}_licence " AND ${_licence}")
      endif()
    endif()
  endforeach()
endforeach()
list(SORT _components)

# The licences of the components, as their packages state them: several packages may share one text.
set(_licences share/licenses/KELUtils)
foreach(_name IN LISTS _components)
  get_filename_component(_folder /usr/share/doc/${_${_name}_package} REALPATH)
  get_filename_component(_text ${_folder} NAME)
  set(_${_name}_text ${_text}.txt)
  file(INSTALL ${_folder}/copyright DESTINATION ${CMAKE_INSTALL_PREFIX}/${_licences} RENAME ${_text}.txt)
endforeach()
file(INSTALL /usr/share/common-licenses/GPL-3 DESTINATION ${CMAKE_INSTALL_PREFIX}/${_licences} RENAME GPL-3.txt)

# One element of the document for each installed file and each component, and their relationships.
file(STRINGS ${KELUTILS_LICENSE} _copyright REGEX "^Copyright")
json_text("${_copyright}" _copyright)
set(_file_elements)
set(_package_elements)
set(_relationships)
set(_checksums)
# Identifiers have no plus signs.
function(package_id name out)
  string(REPLACE "+" "x" name ${name})
  set(${out} SPDXRef-Package-${name} PARENT_SCOPE)
endfunction()
macro(relate from type to)
  list(APPEND _relationships "{\"spdxElementId\": \"${from}\", \"relationshipType\": \"${type}\", \"relatedSpdxElement\": \"${to}\"}")
endmacro()
relate(SPDXRef-DOCUMENT DESCRIBES SPDXRef-Package-KELUtils)

list(REMOVE_DUPLICATES CMAKE_INSTALL_MANIFEST_FILES)
list(SORT CMAKE_INSTALL_MANIFEST_FILES)
foreach(_file IN LISTS CMAKE_INSTALL_MANIFEST_FILES)
  file(RELATIVE_PATH _path ${CMAKE_INSTALL_PREFIX} ${_file})
  string(REGEX REPLACE "[^A-Za-z0-9.]" "-" _id "SPDXRef-File-${_path}")
  file(SHA1 $ENV{DESTDIR}${_file} _sha1)
  file(SHA256 $ENV{DESTDIR}${_file} _sha256)
  list(APPEND _checksums ${_sha1})
  get_filename_component(_binary ${_path} NAME_WE)
  set(_licence MIT)
  set(_rights "${_copyright}")
  set(_type SOURCE)
  if(_path MATCHES "^bin/")
    set(_licence "${_${_binary}_licence}")
    set(_rights "\"NOASSERTION\"")  # several owners
    set(_type BINARY)
    foreach(_name IN LISTS _${_binary}_parts)
      package_id(${_name} _part)
      relate(${_id} STATIC_LINK ${_part})
    endforeach()
  elseif(_path MATCHES "^share/licenses/.*\\.txt$")
    set(_licence NOASSERTION)
    set(_rights "\"NOASSERTION\"")
    set(_type TEXT)
  elseif(_path MATCHES "\\.(a|lib)$")
    set(_type BINARY)
  elseif(_path MATCHES "\\.md$|/LICENSE$")
    set(_type DOCUMENTATION)
  endif()
  list(APPEND _file_elements "{\"SPDXID\": \"${_id}\", \"fileName\": \"./${_path}\", \"fileTypes\": [\"${_type}\"],
     \"checksums\": [{\"algorithm\": \"SHA1\", \"checksumValue\": \"${_sha1}\"},
                   {\"algorithm\": \"SHA256\", \"checksumValue\": \"${_sha256}\"}],
     \"licenseConcluded\": \"${_licence}\", \"copyrightText\": ${_rights}}")
  relate(SPDXRef-Package-KELUtils CONTAINS ${_id})
endforeach()

foreach(_name IN LISTS _components)
  set(_package ${_${_name}_package})
  set(_version ${_${_name}_version})
  package_id(${_name} _id)
  string(REPLACE "+" "%2B" _url "pkg:deb/debian/${_package}@${_version}")
  list(APPEND _package_elements "{\"SPDXID\": \"${_id}\", \"name\": \"${_name}\", \"versionInfo\": \"${_version}\",
     \"supplier\": \"Organization: Debian\", \"downloadLocation\": \"NOASSERTION\", \"filesAnalyzed\": false,
     \"licenseConcluded\": \"${_${_name}_licence}\", \"licenseDeclared\": \"${_${_name}_licence}\", \"copyrightText\": \"NOASSERTION\",
     \"comment\": \"Licence texts: ${_licences}/${_${_name}_text}\",
     \"externalRefs\": [{\"referenceCategory\": \"PACKAGE-MANAGER\", \"referenceType\": \"purl\", \"referenceLocator\": \"${_url}\"}]}")
endforeach()

# The licence of the package as a whole, the checksum over all its files, and an identity that follows from it.
set(_licence MIT)
foreach(_name IN LISTS _components)
  string(FIND " AND ${_licence} AND " " AND ${_${_name}_licence} AND " _known)
  if(_known EQUAL -1)
    string(APPEND _licence " AND ${_${_name}_licence}")
  endif()
endforeach()
list(SORT _checksums)
string(JOIN "" _checksums ${_checksums})
string(SHA1 _verification "${_checksums}")
string(UUID _uuid NAMESPACE 6ba7b811-9dad-11d1-80b4-00c04fd430c8 NAME ${_verification} TYPE SHA1)
string(TIMESTAMP _created "%Y-%m-%dT%H:%M:%SZ" UTC)
set(_parts_text)
if(mingw-w64-runtime IN_LIST _components)
  file(READ /usr/share/doc/${_mingw-w64-runtime_package}/copyright _parts_text)
endif()
json_text("${_parts_text}" _parts_text)

string(JOIN ",\n    " _file_elements ${_file_elements})
string(JOIN ",\n    " _package_elements ${_package_elements})
string(JOIN ",\n    " _relationships ${_relationships})
set(_target ${CMAKE_INSTALL_PREFIX}/${_written})
message(STATUS "Installing: ${_target}")
file(CONFIGURE OUTPUT $ENV{DESTDIR}${_target} @ONLY CONTENT [[
{
  "spdxVersion": "SPDX-2.3",
  "dataLicense": "CC0-1.0",
  "SPDXID": "SPDXRef-DOCUMENT",
  "name": "KELUtils-@KELUTILS_VERSION@",
  "documentNamespace": "urn:uuid:@_uuid@",
  "creationInfo": {"created": "@_created@", "creators": ["Tool: KELUtils-@KELUTILS_VERSION@"]},
  "hasExtractedLicensingInfos": [
    {"licenseId": "LicenseRef-mingw-w64-parts", "name": "Parts of the MinGW-w64 runtime: public domain, and permissive licences",
     "extractedText": @_parts_text@}
  ],
  "packages": [
    {"SPDXID": "SPDXRef-Package-KELUtils", "name": "KELUtils", "versionInfo": "@KELUTILS_VERSION@",
     "supplier": "Organization: Tavrin Security", "downloadLocation": "NOASSERTION", "filesAnalyzed": true,
     "packageVerificationCode": {"packageVerificationCodeValue": "@_verification@",
                                 "packageVerificationCodeExcludedFiles": ["./@_written@"]},
     "licenseConcluded": "@_licence@", "licenseDeclared": "MIT", "copyrightText": @_copyright@,
     "comment": "Licence texts: @_licences@/LICENSE"},
    @_package_elements@
  ],
  "files": [
    @_file_elements@
  ],
  "relationships": [
    @_relationships@
  ]
}
]])
list(APPEND CMAKE_INSTALL_MANIFEST_FILES ${_target})
