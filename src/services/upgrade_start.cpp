#include "services/upgrade_start.h"

#include <cstring>
#include <string>

#include "frame/paths.h"
#include "frame/settings_file.h"
#include "registration/token_files.h"
#include "registration/token_text.h"
#include "services/message_types.h"
#include "services/upgrade_settings.h"
#include "win/code_page.h"
#include "win/profile.h"

namespace services {
namespace {

constexpr std::size_t kLongestDirectory = 511;  // characters
constexpr std::size_t kTypeSize = 9;            // of the buffers for a message type and a server, with the terminator
constexpr std::size_t kServerSize = 512;

std::string PathOf(const std::string& root, const char* directory, const char* file) {
  return frame::FileIn(frame::FileIn(root, directory), file);
}

bool Write(const std::string& path, const char* section, const char* key, const char* value) {
  return frame::WriteProfileValue("KE_UpgradeStart", path, section, key, value);
}

// Messages

bool Exists(const std::string& path, const char* section, const char* key, std::size_t size) {
  return win::ReadProfile(path, section, key, "-1", size) != "-1";
}

bool Apply(const std::string& path, const MessageChange& change) {
  if (change.value) return Write(path, change.section, change.key, change.value);
  const std::string copied = win::ReadProfile(path, change.from, change.key, "", kServerSize);
  return Write(path, change.section, change.key, copied.c_str());
}

bool UpdateMessage(const std::string& path, const MessageType& row) {
  const bool listed = Exists(path, kTypesSection, row.message, kTypeSize);
  const bool hasServer =
      row.section.written == Written::kEveryRun && Exists(path, row.section.name, kServerKey, kServerSize);
  bool good = true;
  for (const MessageChange& change : ChangesOf(row, listed, hasServer)) good &= Apply(path, change);
  return good;
}

bool UpdateMessages(const std::string& root) {
  const std::string path = PathOf(root, "KESAgent", "KE_AGPRX.dat");
  bool good = true;
  for (const MessageType& row : MessageTypes()) good &= UpdateMessage(path, row);
  return good;
}

// Settings

bool Apply(const std::string& path, const Setting& row) {
  switch (row.change) {
    case Change::kSetWhenAbsent:
      if (win::ReadProfileNumber(path, row.section, row.key, -1) != -1) return true;
      break;
    case Change::kRemoveKey:  // by the settings functions, which trace it
      return frame::SetMyConfigIniValue(row.section, row.key, nullptr, path.c_str()) == KE_SUCCESS;
    case Change::kSet:
    case Change::kRemoveSection:
      break;
  }
  return Write(path, row.section, row.key, row.value);
}

bool UpdateSettings(const std::string& root, std::span<const Setting> rows) {
  bool good = true;
  for (const Setting& row : rows) {
    const bool applied = Apply(PathOf(root, row.directory, row.file), row);
    good &= applied || row.failure == Failure::kIgnored;
  }
  return good;
}

bool UpdateOptionalFiles(const std::string& root) {
  const std::string path = PathOf(root, "KELUpd", "KelUpd.ini");
  for (const OptionalFile& row : OptionalFiles()) {
    if (!Write(path, "OPTIONAL_FILES", row.name, row.value)) return false;
  }
  return true;
}

}  // namespace

KE_RESULT StartUpgrade(const char* installDir) {
  const std::string directory(installDir, strnlen(installDir, kLongestDirectory));
  const std::string root = registration::InstallRoot(directory.c_str(), win::IsLeadByte);
  if (root.empty()) return KE_MISSING_ARGUMENT;
  bool good = UpdateMessages(root);
  good &= UpdateSettings(root, EventAndTokenSettings());
  good &= UpdateOptionalFiles(root);
  good &= UpdateSettings(root, AgentSettings());
  good &= registration::MkKesLpMngTokens(directory.c_str()) == KE_SUCCESS;  // drops the backslash by itself
  good &= UpdateSettings(root, ModuleSettings());
  return good ? KE_SUCCESS : KE_STORE_UNUSABLE;
}

}  // namespace services
