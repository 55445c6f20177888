// Modules: the loaded module itself, with its directory and its lock, and the functions of other modules.
#pragma once

#include <windows.h>

#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "win/owner.h"

namespace win {

/// Records the module whose directory all paths start from, and works the directory out. Called once, at process
/// attach; throws when memory runs out, after the handle is recorded.
void AttachModule(HMODULE module);

/// Forgets the kept directory. The last call of a loaded module's life.
void DetachModule() noexcept;

/// The folder that holds the module, without a trailing backslash. Empty when it is unknown, which it also is when its
/// 8-bit form would stand for another folder: when the code page of Windows lacks a character, and for characters other
/// than ASCII in a process whose file functions are set to the OEM code page. Determined again on every call.
std::string GetModuleDirectory();

/// The folder of a component, next to the module directory, or the module directory itself for an empty name; with a
/// trailing backslash. None before attach, after detach and when the module directory is unknown.
std::optional<std::string> FolderOf(std::string_view component);

/// The path of a file in the folder of a component; empty when the module directory is unknown.
std::string ComponentFile(std::string_view component, std::string_view file);

/// The copy of that text kept at attach; empty before attach, after detach and when the directory is unknown.
std::string_view KeptModuleDirectory() noexcept;

/// The global lock: guards the cached integration store, its file stamp and every read, write and repair of its files.
/// Re-entrant. Exists from `Create`, at process attach, to `Destroy`, at process detach.
extern ManualCriticalSection IntegraLock;

/// True for the first byte of a character of two bytes in the code page of Windows.
inline bool IsLeadByte(char byte) noexcept { return IsDBCSLeadByte(static_cast<BYTE>(byte)) != 0; }

/// Loads a module by its full path, whose folder its own dependencies come from; with `flags` 0 by a file name, in the
/// normal search order. Empty on failure, with the last-error value.
ModuleHandle LoadModule(const char* path, DWORD flags = LOAD_WITH_ALTERED_SEARCH_PATH) noexcept;

/// A function of a module; null, with the last-error value, when it is missing.
FARPROC FunctionOf(HMODULE module, const char* name) noexcept;

enum Presence { kOptional, kRequired };

/// A function to look up by name: the place of its pointer in a table, and whether the table is useless without it.
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

// A table of functions and its names, from a list of rows (name, presence): of functions that are declared, and of
// functions that are never called.
#define KE_CALLED_MEMBER(name, presence) decltype(&::name) name;
#define KE_UNCALLED_MEMBER(name, presence) KE_UncalledFunction name;
#define KE_NAME_ROW(name, presence) KE_BOUND_NAME(Self, name, presence),
#define KE_FUNCTION_TABLE(Table, FUNCTIONS)                                               \
  struct Table {                                                                          \
    FUNCTIONS(KE_CALLED_MEMBER, KE_UNCALLED_MEMBER)                                       \
    static std::span<const ::win::BoundName> Names() noexcept {                           \
      using Self = Table;                                                                 \
      static constexpr ::win::BoundName kNames[] = {FUNCTIONS(KE_NAME_ROW, KE_NAME_ROW)}; \
      return kNames;                                                                      \
    }                                                                                     \
  }

// The product's name and install path, as the registry and the environment give them.

namespace kelcrt {

/// The environment variable that names the install path for tests; empty in builds for customers: modules are loaded
/// from that path, possibly into a program with more rights than the user who sets the variable.
extern const char kTestingPathVariable[];

/// The product's name and install path, read at construction.
class CProductInfo {
 public:
  /// The environment variable counts unless its name is empty. Throws when memory runs out.
  explicit CProductInfo(const char* testingPathVariable = kTestingPathVariable);

  /// The name in the registry, or the default name when that is missing or empty.
  const char* GetProductName() const noexcept { return productName_.c_str(); }

  /// The path in the environment variable when that is set, else the registry's, which may be empty. A path of 260
  /// characters or more counts as not set. It ends in a backslash.
  const char* GetInstallPath() const noexcept { return installPath_.c_str(); }

 private:
  std::string productName_;
  std::string installPath_;
};

}  // namespace kelcrt
