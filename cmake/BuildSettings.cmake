# The build-time settings of the product, checked here, and the source file that carries them into the library.

# The development key blobs spell out that they are no secret: "KELUtils development key blob ..." in base64.
set(_development_file_blob
  "S0VMVXRpbHMgZGV2ZWxvcG1lbnQga2V5IGJsb2IgZm9yIGVuY2lwaGVyZWQgSU5JIGZpbGVzLCBub3QgYSBzZWNyZXQ6IHN1cHBseSBLRUxVVElMU19GSUxFX0tFWV9CTE9CIG9mIHlvdXIgb3duIGJlZm9yZSBzaGlwcGluZyBhIHByb2R1Y3QgLi4u")
set(_development_setting_blob
  "S0VMVXRpbHMgZGV2ZWxvcG1lbnQga2V5IGJsb2IgZm9yIHNpbmdsZSBzZXR0aW5ncywgbm90IGEgc2VjcmV0OiBzdXBwbHkgS0VMVVRJTFNfU0VUVElOR19LRVlfQkxPQiBvZiB5b3VyIG93biBiZWZvcmUgc2hpcHBpbmcgYSBwcm9kdWN0IC4uLi4u")

set(KELUTILS_FILE_KEY_BLOB "${_development_file_blob}" CACHE STRING
  "Key blob of the enciphered INI files: 188 base64 characters")
set(KELUTILS_SETTING_KEY_BLOB "${_development_setting_blob}" CACHE STRING
  "Key blob of single enciphered settings: 188 base64 characters, different from the file key blob")
set(KELUTILS_SERVICE_BASE_ADDRESS "https://console.invalid" CACHE STRING
  "Scheme and host of the management service, in front of the SOAP paths")

option(KELUTILS_TESTING_INSTALL_PATH
  "Let the environment variable VOSK_TESTING_INSTALLPATH name the install path; OFF for builds that go to customers" ON)

foreach(_setting KELUTILS_FILE_KEY_BLOB KELUTILS_SETTING_KEY_BLOB)
  string(LENGTH "${${_setting}}" _length)
  if(NOT _length EQUAL 188 OR NOT "${${_setting}}" MATCHES "^[A-Za-z0-9+/]+=?=?$")
    message(FATAL_ERROR "${_setting} must be 188 base64 characters (it has ${_length} characters)")
  endif()
endforeach()
if(KELUTILS_FILE_KEY_BLOB STREQUAL KELUTILS_SETTING_KEY_BLOB)
  message(FATAL_ERROR "KELUTILS_FILE_KEY_BLOB and KELUTILS_SETTING_KEY_BLOB must differ")
endif()
if(NOT KELUTILS_SERVICE_BASE_ADDRESS MATCHES "^https?://[^/\"\\]+$")
  message(FATAL_ERROR "KELUTILS_SERVICE_BASE_ADDRESS must be a scheme and a host without a path, such as https://console.example")
endif()
if(KELUTILS_FILE_KEY_BLOB STREQUAL _development_file_blob OR KELUTILS_SETTING_KEY_BLOB STREQUAL _development_setting_blob)
  set(KELUTILS_PACKAGE_SUFFIX -dev)
  message(STATUS "KELUtils: building with development key blobs: for development only, never ship this build")
endif()

set(_testing_path_variable "")
if(KELUTILS_TESTING_INSTALL_PATH)
  set(_testing_path_variable VOSK_TESTING_INSTALLPATH)
  message(STATUS "KELUtils: the environment can name the folder of code to load (KELUTILS_TESTING_INSTALL_PATH is ON): not for customers")
endif()

configure_file(${CMAKE_SOURCE_DIR}/cmake/build_settings.cpp.in ${CMAKE_BINARY_DIR}/generated/build_settings.cpp @ONLY)
