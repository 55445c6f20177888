// Binding of modules that are loaded at run time: one list of names per table of function pointers, one engine for all.
#pragma once

#include <windows.h>

#include <cstddef>
#include <span>

namespace frame {

enum Presence { kOptional, kRequired };

/// One name to look up: where in the table its pointer is stored, and whether the table is of use without it.
struct BoundName {
  const char* name;
  std::size_t offset;
  Presence presence;
};

/// A row for the member `function` of `Table`, which has the name of the function it holds.
#define KE_BOUND_NAME(Table, function, presence) \
  ::frame::BoundName { #function, offsetof(Table, function), ::frame::presence }

/// Loads `file` from `folder`, which ends in a backslash, with the altered search path, so that the module's own
/// dependencies come from its folder. Null for a null folder, for a path of more than 2047 characters and when the load
/// fails; the last-error value tells why.
HMODULE LoadSibling(const char* folder, const char* file) noexcept;

/// Looks the names up in their order and stores what is found in `table`. At the first required name that is missing it
/// stops and returns false; what was stored so far stays for the caller to clear.
bool BindNames(HMODULE module, void* table, std::span<const BoundName> names) noexcept;

}  // namespace frame
