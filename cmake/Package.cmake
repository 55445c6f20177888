# What an installation, and with it the package of scripts/package.sh, holds:
#   bin/      KELUtils.dll with its debug information, kelctl.exe
#   lib/      import libraries, KELUtils.def; cmake/KELUtils/ and pkgconfig/ for build systems
#   include/  KELUtils.h and the headers of the sibling modules
#   share/    doc/KELUtils/ with the bill of materials, KELUtils/samples/, licenses/KELUtils/
include(CMakePackageConfigHelpers)

install(TARGETS KELUtils RUNTIME DESTINATION bin ARCHIVE DESTINATION lib)
install(FILES src/KELUtils.def DESTINATION lib)
install(DIRECTORY include/ DESTINATION include)
if(MINGW)
  install(FILES $<TARGET_FILE:KELUtils>.debug DESTINATION bin)
  if(TARGET KELUtilsMsvcLibrary)
    install(FILES ${CMAKE_ARCHIVE_OUTPUT_DIRECTORY}/KELUtils.lib DESTINATION lib)
  endif()
endif()
if(TARGET kelctl)
  install(TARGETS kelctl RUNTIME DESTINATION bin)
  install(FILES tools/kelctl/kelctl.schema.json DESTINATION share/KELUtils)
endif()

configure_file(cmake/KELUtils.pc.in ${CMAKE_BINARY_DIR}/generated/KELUtils.pc @ONLY)
install(FILES ${CMAKE_BINARY_DIR}/generated/KELUtils.pc DESTINATION lib/pkgconfig)
# The version file also keeps programs of another word size away.
write_basic_package_version_file(${CMAKE_BINARY_DIR}/generated/KELUtilsConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES cmake/KELUtilsConfig.cmake ${CMAKE_BINARY_DIR}/generated/KELUtilsConfigVersion.cmake
  DESTINATION lib/cmake/KELUtils)

install(FILES CHANGELOG.md DESTINATION share/doc/KELUtils)
install(DIRECTORY docs/ DESTINATION share/doc/KELUtils FILES_MATCHING PATTERN "*.md")
install(DIRECTORY samples DESTINATION share/KELUtils)
install(FILES LICENSE DESTINATION share/licenses/KELUtils)

# The bill of materials stands last: it lists what was installed before it. What was linked in statically stands in the maps of the
# linker; what kelctl takes from header-only libraries, in its list of libraries.
set(_maps)
set(_headers)
if(MINGW)
  foreach(_target KELUtils kelctl)
    if(TARGET ${_target})
      target_link_options(${_target} PRIVATE LINKER:-Map=${CMAKE_BINARY_DIR}/generated/${_target}.map)
      list(APPEND _maps ${CMAKE_BINARY_DIR}/generated/${_target}.map)
    endif()
  endforeach()
  if(TARGET kelctl)
    get_target_property(_libraries kelctl LINK_LIBRARIES)
    foreach(_library IN LISTS _libraries)
      if(TARGET ${_library})
        get_target_property(_header ${_library} KELUTILS_HEADER)
        list(APPEND _headers ${_header})
      endif()
    endforeach()
    list(FILTER _headers EXCLUDE REGEX "-NOTFOUND$")
  endif()
  install(CODE "
    set(KELUTILS_VERSION ${PROJECT_VERSION})
    set(KELUTILS_LICENSE ${CMAKE_SOURCE_DIR}/LICENSE)
    set(KELUTILS_MAPS \"${_maps}\")
    set(KELUTILS_KELCTL_HEADERS \"${_headers}\")")
  install(SCRIPT cmake/InstallBillOfMaterials.cmake)
endif()

set(CPACK_GENERATOR ZIP)
set(CPACK_PACKAGE_VENDOR "Tavrin Security")
set(CPACK_PACKAGE_FILE_NAME KELUtils-${PROJECT_VERSION}-win32)
set(CPACK_PACKAGE_DIRECTORY ${CMAKE_BINARY_DIR}/package)
set(CPACK_VERBATIM_VARIABLES ON)
include(CPack)
