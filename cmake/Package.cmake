# The contents of an installation and of the packages of scripts/package.sh: docs/package.md.
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
  install(FILES tools/kelctl/kelctl.schema.json DESTINATION docs)
  if(MINGW)
    install(FILES $<TARGET_FILE:kelctl>.debug DESTINATION bin)
  endif()
endif()

configure_file(cmake/KELUtils.pc.in ${CMAKE_BINARY_DIR}/generated/KELUtils.pc @ONLY)
install(FILES ${CMAKE_BINARY_DIR}/generated/KELUtils.pc DESTINATION lib/pkgconfig)
# The version file also keeps programs of another word size away.
write_basic_package_version_file(${CMAKE_BINARY_DIR}/generated/KELUtilsConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES cmake/KELUtilsConfig.cmake ${CMAKE_BINARY_DIR}/generated/KELUtilsConfigVersion.cmake
  DESTINATION lib/cmake/KELUtils)

# The package has the folders of the tree, so that links hold. Its README is that of the tree, about the package in place of the build.
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS README.md docs/package.md)
file(READ README.md _readme)
file(READ docs/package.md _package)
string(REGEX REPLACE "^.*(## Contents of the package\n.*)## Calling the library\n.*$" "\\1" _package "${_package}")
string(REPLACE "](security.md" "](docs/security.md" _package "${_package}")
string(REGEX REPLACE "\n## Two commands\n.*\n## The picture\n" "\n## The picture\n" _readme "${_readme}")
string(REGEX REPLACE "\\| \\[CONTRIBUTING[^\n]*\n" "" _readme "${_readme}")
string(REPLACE "## The picture\n" "${_package}## The picture\n" _readme "${_readme}")
file(WRITE ${CMAKE_BINARY_DIR}/generated/README.md "${_readme}")
install(FILES ${CMAKE_BINARY_DIR}/generated/README.md CHANGELOG.md LICENSE DESTINATION .)
install(DIRECTORY docs/ DESTINATION docs FILES_MATCHING PATTERN "*.md")
install(DIRECTORY build/reference/html/ DESTINATION docs/reference OPTIONAL)  # of scripts/reference.sh
install(DIRECTORY samples DESTINATION .)
install(FILES devkit/README.md DESTINATION devkit)

# The development siblings, laid out as a product tree.
set(_siblings)
if(KELUTILS_BUILD_DEVKIT)
  foreach(_place KELUtils/ApiCr Common/ApiCr Common/TvLogSys Common/KELAGAPI Common/KELMNAPI KELTVEVT/TvEvAPI KelConf/KELRCM KelUpg/KEC
                 KelUpg/KELUPG Protection/KERegister Scheduler/zumat KESAgent/KePIRes KesLpmng/KEPLPMNG KepWInst/KepWInst)
    get_filename_component(_target ${_place} NAME)
    get_filename_component(_folder ${_place} DIRECTORY)
    install(FILES $<TARGET_FILE:${_target}> DESTINATION devkit/${_folder} COMPONENT devkit)
    list(APPEND _siblings ${_target})
  endforeach()
  install(FILES LICENSE DESTINATION devkit/licences COMPONENT devkit)
endif()

# The bills of materials come last, for they list all other files. They need the maps of the linker, and the distribution's package
# database.
if(CMAKE_CROSSCOMPILING)
  set(_headers)
  foreach(_target KELUtils kelctl ${_siblings})
    if(TARGET ${_target})
      target_link_options(${_target} PRIVATE LINKER:-Map=${CMAKE_BINARY_DIR}/generated/${_target}.map)
    endif()
  endforeach()
  foreach(_use kelctl=cli11 kelctl=nlohmann_json zumat=nlohmann_json TvEvAPI=nlohmann_json)
    string(REGEX REPLACE ".*=" "" _library ${_use})
    if(TARGET ${_library})
      get_target_property(_header ${_library} KELUTILS_HEADER)
      string(REPLACE ${_library} ${_header} _use ${_use})
      list(APPEND _headers ${_use})
    endif()
  endforeach()
  list(JOIN _headers , _headers)
  foreach(_component library devkit)
    install(CODE "execute_process(COMMAND_ERROR_IS_FATAL ANY COMMAND ${KELUTILS_PYTHON} ${CMAKE_SOURCE_DIR}/cmake/bill_of_materials.py
      ${_component} \$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX} ${PROJECT_VERSION} ${CMAKE_BINARY_DIR}/generated ${_headers}
      \${CMAKE_INSTALL_MANIFEST_FILES})" COMPONENT ${_component})
  endforeach()
endif()

set(CPACK_GENERATOR ZIP)
set(CPACK_PACKAGE_VENDOR "Tavrin Security")
set(CPACK_PACKAGE_FILE_NAME KELUtils-${PROJECT_VERSION}-win32${KELUTILS_PACKAGE_SUFFIX})  # also the folder in both archives
set(CPACK_ARCHIVE_LIBRARY_FILE_NAME ${CPACK_PACKAGE_FILE_NAME})
set(CPACK_ARCHIVE_DEVKIT_FILE_NAME KELUtils-devkit-${PROJECT_VERSION}-win32${KELUTILS_PACKAGE_SUFFIX})
set(CPACK_ARCHIVE_COMPONENT_INSTALL ON)
set(CPACK_COMPONENT_INCLUDE_TOPLEVEL_DIRECTORY ON)
set(CPACK_COMPONENTS_GROUPING IGNORE)
set(CPACK_PACKAGE_DIRECTORY ${CMAKE_BINARY_DIR}/package)
set(CPACK_VERBATIM_VARIABLES ON)
# CPack takes the files in the order of the folder, and stores dates and the user.
if(CMAKE_CROSSCOMPILING)
  file(CONFIGURE OUTPUT ${CMAKE_BINARY_DIR}/generated/sort_archive.cmake @ONLY CONTENT
    "execute_process(COMMAND_ERROR_IS_FATAL ANY COMMAND @KELUTILS_PYTHON@ @CMAKE_SOURCE_DIR@/cmake/sort_archive.py \${CPACK_PACKAGE_FILES})")
  set(CPACK_POST_BUILD_SCRIPTS ${CMAKE_BINARY_DIR}/generated/sort_archive.cmake)
endif()
include(CPack)
