// The tables of the settings and message types that an upgrade writes, in the order of writing. No call of Windows.
#pragma once

#include <span>
#include <vector>

namespace upgrade {

/// The change of a setting.
enum class Change {
  kSet,
  kSetWhenAbsent,  // a value that reads as the number -1 counts as absent
  kRemoveKey,
  kRemoveSection,
};

/// Whether a failure makes the upgrade fail.
enum class Failure { kCounted, kIgnored };

/// A setting. Key and value are null where the change needs none.
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

// The message types of an installation after an upgrade, and their sections in KE_AGPRX.dat.

// Sections and keys of KE_AGPRX.dat. Besides these there is a section for each action.
inline constexpr char kTypesSection[] = "MESSAGE_TYPES";
inline constexpr char kActionsSection[] = "MESSAGE";
inline constexpr char kServerKey[] = "SERVER";
inline constexpr char kNamespaceKey[] = "SERVER_NS";
inline constexpr char kAddressKey[] = "SERVER_AP";

/// A flag of an action section.
enum class Flag { kNotWritten, kFalse, kTrue };

/// When an action section is written.
enum class Written {
  kWithNewMessage,  // only together with a new message
  kEveryRun,        // the flags always, the server whenever the section has none
};

/// The values copied from another action section.
enum class Copied { kServer, kServerAndNames };

/// An action section as an upgrade writes it.
struct ActionSection {
  const char* name = nullptr;  // null: none is written
  Flag encryptedUp = Flag::kNotWritten;
  Flag compressedUp = Flag::kNotWritten;
  Flag encryptedDown = Flag::kNotWritten;
  Flag compressedDown = Flag::kNotWritten;
  const char* serverFrom = nullptr;  // the action section that the server is copied from; null for none
  Written written = Written::kWithNewMessage;
  Copied copied = Copied::kServer;
};

struct MessageType {
  const char* message;
  const char* type;       // its number, in decimal
  const char* action;     // the action that carries it
  ActionSection section;  // deliberately not always that of the action
};

/// All rows, in the order in which they are handled.
std::span<const MessageType> MessageTypes();

/// One value to write.
struct MessageChange {
  const char* section;
  const char* key;
  const char* value;           // null: that of the same key in the section `from`
  const char* from = nullptr;  // null with a value of its own
};

/// The values to write for a message, in order. `listed`: MESSAGE_TYPES has the message. `hasServer`: its action
/// section has a server; this counts only for a section that is written on every run.
std::vector<MessageChange> ChangesOf(const MessageType& row, bool listed, bool hasServer);

}  // namespace upgrade
