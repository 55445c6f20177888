// Tables of functions that are looked up at run time: a list of names for each table, one engine for all.
#pragma once

#include <windows.h>

#include <cstddef>
#include <span>

namespace win {

enum Presence { kOptional, kRequired };

/// One name to look up: where in the table its pointer is stored, and whether the table is of use without it.
struct BoundName {
  const char* name;
  std::size_t offset;
  Presence presence;
};

/// A row for the member `function` of `Table`, which has the name of the function it holds.
#define KE_BOUND_NAME(Table, function, presence) \
  ::win::BoundName { #function, offsetof(Table, function), ::win::presence }

/// Looks the names up in their order and stores the functions in `table`. At the first required name that is missing it
/// stops and returns false; the functions stored before it stay for the caller to clear. Traces nothing.
bool BindNames(HMODULE module, void* table, std::span<const BoundName> names) noexcept;

}  // namespace win

// Members of a table, for a list of rows (name, presence): a function that is declared, or one that is never called.
#define KE_CALLED_MEMBER(name, presence) decltype(&::name) name;
#define KE_UNCALLED_MEMBER(name, presence) KE_UncalledFunction name;
