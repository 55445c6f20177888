// The files of the policy that name its scripts: scripts.ini and gpt.ini.
//
// Functions write to the sink, which may be null, and return KE_SUCCESS or KE_STORE_UNUSABLE: a file could not be read
// or written, or its text cannot be understood; it is left alone then.
#pragma once

#include <string>

#include "policy/gpt_ini.h"
#include "policy/log_sink.h"
#include "policy/places.h"
#include "policy/scripts_ini.h"

namespace policy {

/// scripts.ini as it was read. A missing file has no sections.
struct ScriptsFile {
  std::wstring path;
  std::string bytes;
  ScriptsIni ini;
};

/// Reads scripts.ini, in UTF-16 with a byte order mark or else in the system's code page.
KE_RESULT ReadScriptsFile(ILogSink* sink, const PolicyPlaces& places, ScriptsFile& file);

/// Removes what killed processes have left of writing scripts.ini and gpt.ini.
void RemoveLeftovers(const PolicyPlaces& places);

/// Checks that scripts.ini and gpt.ini can be written, where they exist, and that `StepPolicyVersion` understands
/// gpt.ini. Done before anything is changed: without the step of the version a changed scripts.ini would not be read
/// again, and a call that is repeated would find nothing left to do. Reads scripts.ini again at the end: a program that
/// held it may have changed it.
KE_RESULT PrepareChange(ILogSink* sink, const PolicyPlaces& places, ScriptsExtension extension, ScriptsFile& file);

/// Writes the changed `file.ini`, in UTF-16. When no section is left it deletes the file, or writes it without sections
/// while another program keeps it from being deleted. A new file is hidden, as the platform's editor makes it.
KE_RESULT WriteScriptsFile(ILogSink* sink, const ScriptsFile& file);

/// Steps the version in gpt.ini. A missing gpt.ini is created only for `kListed`: without it the platform has no policy
/// that it could read again.
KE_RESULT StepPolicyVersion(ILogSink* sink, const PolicyPlaces& places, ScriptsExtension extension);

/// Puts the scripts extension into gpt.ini, with a step of the version, unless it is there.
KE_RESULT ListScriptsExtension(ILogSink* sink, const PolicyPlaces& places);

}  // namespace policy
