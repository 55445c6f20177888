// Calls of the platform's profile functions: those that an upgrade demands, and those that a module makes.
#pragma once

#include <windows.h>

#include <string>
#include <vector>

namespace bench {

/// One call.
struct ProfileCall {
  enum Kind { kReadText, kReadNumber, kWrite } kind;
  std::string file;
  const char* section;
  const char* key;    // null: the whole section
  const char* value;  // to write, null to remove; or the default of a reading
  DWORD size = 0;     // of the buffer of a reading
};

/// The calls that the rows of an upgrade demand for an installation as it was before.
std::vector<ProfileCall> DemandedCalls(const std::string& root);

/// Makes the call, whatever comes of it.
void Make(const ProfileCall& call);

/// Lets `module` count its calls of the profile functions, until it is unloaded. One module at a time.
void CountCallsOf(HMODULE module);

/// What was counted: calls on the library's own settings file, which are those of the trace system, and on all others.
struct CallCounts {
  unsigned own = 0;
  unsigned others = 0;
};
CallCounts CountedCalls();

}  // namespace bench
