# The contents of an installation and of the package: docs/package.md.
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

# The bill of materials comes last, for it lists all other files. It needs the maps of the linker and the distribution's package database.
if(CMAKE_CROSSCOMPILING)
  set(_headers)
  foreach(_target KELUtils kelctl)
    if(TARGET ${_target})
      target_link_options(${_target} PRIVATE LINKER:-Map=${CMAKE_BINARY_DIR}/generated/${_target}.map)
    endif()
  endforeach()
  foreach(_library cli11 nlohmann_json)
    if(TARGET ${_library})
      get_target_property(_header ${_library} KELUTILS_HEADER)
      list(APPEND _headers ${_header})
    endif()
  endforeach()
  list(JOIN _headers , _headers)
  install(CODE "execute_process(COMMAND_ERROR_IS_FATAL ANY COMMAND ${KELUTILS_PYTHON} ${CMAKE_SOURCE_DIR}/cmake/bill_of_materials.py
    \$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX} ${PROJECT_VERSION} ${CMAKE_BINARY_DIR}/generated ${_headers} \${CMAKE_INSTALL_MANIFEST_FILES})")
endif()

set(CPACK_GENERATOR ZIP)
set(CPACK_PACKAGE_VENDOR "Tavrin Security")
set(CPACK_PACKAGE_FILE_NAME KELUtils-${PROJECT_VERSION}-win32)
set(CPACK_PACKAGE_DIRECTORY ${CMAKE_BINARY_DIR}/package)
set(CPACK_VERBATIM_VARIABLES ON)
# CPack takes the files in the order of the folder, and stores dates and the user.
if(CMAKE_CROSSCOMPILING)
  file(CONFIGURE OUTPUT ${CMAKE_BINARY_DIR}/generated/sort_archive.cmake @ONLY CONTENT
    "execute_process(COMMAND_ERROR_IS_FATAL ANY COMMAND @KELUTILS_PYTHON@ @CMAKE_SOURCE_DIR@/cmake/sort_archive.py \${CPACK_PACKAGE_FILES})")
  set(CPACK_POST_BUILD_SCRIPTS ${CMAKE_BINARY_DIR}/generated/sort_archive.cmake)
endif()
include(CPack)
