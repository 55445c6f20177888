// Small forms of what GCC's static runtime does when something cannot go on. Linked into every DLL of the project,
// before the static libraries: the runtime's own forms make texts that nobody reads there, and bring some 130 KB of
// code for them.
#if defined(__MINGW32__)

#include <bits/functexcept.h>

#include <cstdlib>
#include <exception>
#include <new>

// For an exception that nobody catches. The runtime's form names the type of the exception, with a demangler.
namespace __gnu_cxx {
void __verbose_terminate_handler() { std::abort(); }
}  // namespace __gnu_cxx

// What the standard library's classes call. The runtime's forms throw exceptions that hold strings, of both of its
// kinds. A length that no container can have is memory that cannot be had; the others are mistakes in the program,
// which end at the export.
namespace std {
void __throw_bad_alloc() { throw bad_alloc(); }
void __throw_bad_array_new_length() { throw bad_array_new_length(); }
void __throw_length_error(const char*) { throw bad_alloc(); }
void __throw_logic_error(const char*) { throw exception(); }
void __throw_out_of_range(const char*) { throw exception(); }
void __throw_out_of_range_fmt(const char*, ...) { throw exception(); }
}  // namespace std

#endif
