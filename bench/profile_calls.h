// Calls of the profile functions of Windows: those that an upgrade needs, and those that a module makes.
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

/// The calls that the rows of an upgrade need for the installation before it.
std::vector<ProfileCall> DemandedCalls(const std::string& root);

/// Makes the call and ignores its result.
void Make(const ProfileCall& call);

/// Counts the calls that `module` makes of the profile functions until it is unloaded. One module at a time.
void CountCallsOf(HMODULE module);

/// The counts: calls on the library's own settings file, made by tracing, and calls on all other files.
struct CallCounts {
  unsigned own = 0;
  unsigned others = 0;
};
CallCounts CountedCalls();

}  // namespace bench
