// What an upgrade sets in the settings files of the other components, in the order of writing.
#pragma once

#include <span>

namespace services {

/// What is done to a setting.
enum class Change {
  kSet,
  kSetWhenAbsent,  // a value that reads as the number -1 counts as absent
  kRemoveKey,
  kRemoveSection,
};

/// Whether a failure makes the upgrade fail.
enum class Failure { kCounted, kIgnored };

/// A row that is applied. Without a key or value where the change needs none.
struct Setting {
  const char* directory;  // below the installation directory
  const char* file;
  const char* section;
  const char* key;
  const char* value;
  Change change = Change::kSet;
  Failure failure = Failure::kCounted;
};

/// An optional signature file of the scan engine: its value in the section OPTIONAL_FILES of KelUpd.ini. These rows are
/// a chain: the first failure ends it.
struct OptionalFile {
  const char* name;
  const char* value;
};

/// The rows in the order in which they are applied: events and tokens, optional files, the agent's own settings, all
/// other modules.
std::span<const Setting> EventAndTokenSettings();
std::span<const OptionalFile> OptionalFiles();
std::span<const Setting> AgentSettings();
std::span<const Setting> ModuleSettings();

}  // namespace services
