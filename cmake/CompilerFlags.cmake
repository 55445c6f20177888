# kelutils_flags: the options of every C++ file. A Windows program or DLL of the project needs no runtime DLL.

add_library(kelutils_flags INTERFACE)

if(MSVC)
  target_compile_options(kelutils_flags INTERFACE /W4 /WX /EHsc /utf-8 /permissive-)
  target_compile_definitions(kelutils_flags INTERFACE _CRT_SECURE_NO_WARNINGS)
  set(CMAKE_MSVC_RUNTIME_LIBRARY "MultiThreaded$<$<CONFIG:Debug>:Debug>")
else()
  target_compile_options(kelutils_flags INTERFACE -Wall -Wextra -Werror)
  set(CMAKE_CXX_FLAGS_RELEASE "-O2 -DNDEBUG")  # the library is small and called seldom: size counts
endif()

if(WIN32)
  # The oldest supported Windows is 7: newer functions are looked up at run time.
  target_compile_definitions(kelutils_flags INTERFACE WINVER=0x0601 _WIN32_WINNT=0x0601 NOMINMAX WIN32_LEAN_AND_MEAN)
endif()

if(MINGW)
  # -mstackrealign: callers built with other compilers enter with 4-byte stack alignment.
  # -fno-threadsafe-statics: the guards would need the thread library; there are no dynamically initialised local statics.
  # -fno-ident, -ffile-prefix-map: the same bytes from every folder.
  target_compile_options(kelutils_flags INTERFACE
    -mstackrealign -fno-threadsafe-statics -fstack-protector-strong -fno-ident -g "-ffile-prefix-map=${CMAKE_SOURCE_DIR}=.")
  target_link_options(kelutils_flags INTERFACE
    -static -fstack-protector-strong
    LINKER:--dynamicbase,--nxcompat,--no-seh,--disable-auto-import,--disable-auto-image-base,--no-insert-timestamp
    LINKER:--major-subsystem-version,6,--minor-subsystem-version,1)
endif()

if(KELUTILS_SANITIZE)
  if(WIN32)
    message(FATAL_ERROR "KELUTILS_SANITIZE is for native builds")
  endif()
  target_compile_options(kelutils_flags INTERFACE -fsanitize=address,undefined -fno-sanitize-recover=all -fno-omit-frame-pointer)
  target_link_options(kelutils_flags INTERFACE -fsanitize=address,undefined)
endif()

if(KELUTILS_FUZZ)
  target_compile_options(kelutils_flags INTERFACE -fsanitize=fuzzer-no-link)  # the fuzzer's coverage, without its main function
endif()

if(KELUTILS_CLANG_TIDY)
  # A changed configuration changes the command, so that every file is checked again.
  set_property(DIRECTORY ${CMAKE_SOURCE_DIR} APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS .clang-tidy)
  file(SHA1 ${CMAKE_SOURCE_DIR}/.clang-tidy _configuration)
  # Clang does not know the format attribute of GCC's own runtime, and does not search GCC's C++ headers. The functions here are short:
  # the analyzer would spend most of its time on headers of libraries.
  set(CMAKE_CXX_CLANG_TIDY clang-tidy --quiet --extra-arg=-DKELUTILS_TIDY_${_configuration} --extra-arg=--target=i686-w64-mingw32
    --extra-arg=-Wno-unused-command-line-argument --extra-arg=-Wno-ignored-attributes --extra-arg-before=-Xclang
    --extra-arg-before=-analyzer-config --extra-arg-before=-Xclang --extra-arg-before=max-nodes=20000)
  foreach(_folder IN LISTS CMAKE_CXX_IMPLICIT_INCLUDE_DIRECTORIES)
    if(_folder MATCHES "/c\\+\\+")
      list(APPEND CMAKE_CXX_CLANG_TIDY --extra-arg=-isystem${_folder})
    endif()
  endforeach()
endif()

# Moves the debug information of a linked MinGW binary into NAME.debug in the same folder, linked by name and checksum. Without
# SOURCE_DATE_EPOCH the tools write the time of day into their output.
function(kelutils_split_debug_information target)
  if(MINGW)
    set(_binary $<TARGET_FILE:${target}>)
    set(_timeless ${CMAKE_COMMAND} -E env SOURCE_DATE_EPOCH=0)
    add_custom_command(TARGET ${target} POST_BUILD
      COMMAND ${_timeless} ${CMAKE_OBJCOPY} --only-keep-debug ${_binary} ${_binary}.debug
      COMMAND ${_timeless} ${CMAKE_STRIP} --strip-all ${_binary}
      COMMAND ${_timeless} ${CMAKE_OBJCOPY} --add-gnu-debuglink=${_binary}.debug ${_binary}
      VERBATIM)
  endif()
endfunction()
