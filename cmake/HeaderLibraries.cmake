# Header-only libraries of the tests, tools and development siblings. A folder of links in the build tree keeps the host's own include
# folder off the path of a cross compiler.

# Several folders may ask for the same library.
function(kelutils_add_header_library target header)
  if(TARGET ${target})
    return()
  endif()
  find_path(KELUTILS_${target}_DIR ${header} HINTS /usr/include NO_CMAKE_FIND_ROOT_PATH REQUIRED
    DOC "Folder that holds ${header}")
  get_filename_component(_top ${header} DIRECTORY)
  set(_links ${CMAKE_BINARY_DIR}/headers/${target})
  file(MAKE_DIRECTORY ${_links})
  file(CREATE_LINK ${KELUTILS_${target}_DIR}/${_top} ${_links}/${_top} SYMBOLIC COPY_ON_ERROR)
  add_library(${target} INTERFACE)
  set_target_properties(${target} PROPERTIES KELUTILS_HEADER ${KELUTILS_${target}_DIR}/${header})  # for the bill of materials
  target_include_directories(${target} SYSTEM INTERFACE ${_links})
endfunction()
