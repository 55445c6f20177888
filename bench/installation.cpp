#include "bench/installation.h"

#include <algorithm>
#include <fstream>
#include <iterator>

#include "bench/build_folder.h"
#include "upgrade/settings.h"

namespace bench {
namespace {

namespace fs = std::filesystem;

constexpr const char* kListed[] = {"KE_AGM_ERRORINFO", "KE_AGM_NETINFO", "KE_AGM_EVENTINFO",
                                   "KE_AGM_GETUPDATEDPOLICIES"};
constexpr const char* kActions[] = {
    "SendMessage", "SendStateInfo", "IntegrationMessage", "CheckPolicy", "Action1", "Action2", "Action3", "Action4",
    "Action5",     "Action6"};
constexpr int kMessages = 65;  // with two entries each; an action has seven

std::string Entry(const std::string& key, const std::string& value) { return key + "=" + value + "\r\n"; }

std::string MessageName(int index) {
  return index < static_cast<int>(std::size(kListed)) ? kListed[index] : "KE_AGM_OTHER" + std::to_string(index);
}

std::string OldMessages() {
  std::string types = "[MESSAGE_TYPES]\r\n", actions = "[MESSAGE]\r\n", sections;
  for (int index = 0; index < kMessages; ++index) {
    types += Entry(MessageName(index), std::to_string(2000 + index));
    actions += Entry(MessageName(index), kActions[index % std::size(kActions)]);
  }
  for (const char* action : kActions) {
    sections += "[" + std::string(action) + "]\r\n";
    for (const char* key : {"SERVER", "SERVER_NS", "SERVER_AP"}) sections += Entry(key, ServerValue(key));
    for (const char* key : {"ENCRYPTED_UP", "COMPRESSED_UP", "ENCRYPTED_DOWN", "COMPRESSED_DOWN"}) {
      sections += Entry(key, "FALSE");
    }
  }
  return types + actions + sections;
}

std::string OldSettings() {
  std::string text;
  for (const char* section : {"GENERAL", "PLUGINS", "HOME_PROTECTIONS"}) {
    text += "[" + std::string(section) + "]\r\n";
    for (int index = 0; index < 10; ++index) text += Entry("Setting" + std::to_string(index), "an older value");
  }
  return text;
}

}  // namespace

bool IsListed(const std::string& message) {
  return std::find(kListed, std::end(kListed), message) != std::end(kListed);
}

bool HasServer(const std::string& section) {
  return std::find(kActions, std::end(kActions), section) != std::end(kActions);
}

const char* ServerValue(const std::string& key) {
  return key == upgrade::kServerKey ? "https://console.example/agents" : "https://console.example/Orvane/Services";
}

Installation::Installation() {
  int count = 0;
  do {
    root_ = fs::temp_directory_path() / ("kelutils-bench-" + std::to_string(++count));
  } while (!fs::create_directory(root_));
  const fs::path build = BuildFolder();
  for (const char* folder : {"KELUtils", "Common"}) fs::create_directory(root_ / folder);
  fs::copy_file(build / "bin" / "KELUtils.dll", Library());
  fs::copy_file(build / "devkit" / "TvLogSys.dll", TraceLibrary());
  before_["KESAgent\\KE_AGPRX.dat"] = OldMessages();
  before_["KELUpd\\KelUpd.ini"] = OldSettings();
  for (const auto rows : {upgrade::EventAndTokenSettings(), upgrade::AgentSettings(), upgrade::ModuleSettings()}) {
    for (const auto& row : rows) before_[std::string(row.directory) + "\\" + row.file] = OldSettings();
  }
  for (const auto& [path, content] : before_) fs::create_directories((root_ / path).parent_path());
}

Installation::~Installation() {
  std::error_code ignored;
  fs::remove_all(root_, ignored);
}

void Installation::Reset() const {
  for (const auto& [path, content] : before_) {
    std::ofstream file(root_ / path, std::ios::binary | std::ios::trunc);
    file << content;
  }
}

std::map<std::string, std::string> Installation::Files() const {
  std::map<std::string, std::string> files;
  for (const auto& [path, content] : before_) {
    std::ifstream file(root_ / path, std::ios::binary);
    files[path] = {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
  }
  return files;
}

}  // namespace bench
