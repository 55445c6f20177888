// The exports as KELUtils.json describes them, with arguments to call them with, and the results that they may return.
#pragma once

#include <windows.h>

#include <cstdint>
#include <set>
#include <string>
#include <vector>

namespace endurance {

enum class Kind { kText, kBuffer, kNumber, kNumberIn, kNumberOut, kTime, kProxy };

struct Parameter {
  Kind kind;
  std::string name;
};

struct ExportedFunction {
  std::string name;
  std::vector<Parameter> parameters;
  std::set<std::uint32_t> results;  // that its contract lists, and success
  bool otherResults;                // its contract lets results of other modules through

  bool MayReturn(std::uint32_t result) const { return otherResults || results.contains(result); }
};

/// All of them, in the order of the header.
const std::vector<ExportedFunction>& ExportedFunctions();

/// What lies in memory before a call, behind 16 bytes that nobody may change.
struct Fill {
  char* at;
  std::string content;
};

/// A value of a parameter, or of a pair such as a buffer and its size. What it points to ends where the next page
/// cannot be touched.
struct Value {
  std::string shown;
  std::vector<std::uint32_t> words;
  std::vector<Fill> fills;
};

/// For each parameter or pair, in their order: a good value, and then the bad ones. Good paths lie in `folder`, which
/// ends in a backslash; buffers hold what fits of `settingText` on entry.
std::vector<std::vector<Value>> ValuesOf(const ExportedFunction& function, const std::string& folder,
                                         const std::string& settingText);

struct Called {
  std::uint32_t result;
  std::uint32_t popped;  // bytes of arguments that the function took off the stack
  bool inBounds;         // the bytes before every buffer are as they were
  bool untouched;        // and so is all else that it might have written
};

/// Calls `function` of a loaded DLL, with a stack that is `offset` bytes off a multiple of 16, as callers of other
/// compilers do.
Called Call(HMODULE dll, const ExportedFunction& function, const std::vector<const Value*>& values, int offset);

}  // namespace endurance
