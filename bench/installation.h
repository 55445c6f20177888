// An installation of the product in a temporary folder, as it is before an upgrade.
#pragma once

#include <filesystem>
#include <map>
#include <string>

namespace bench {

/// The built DLL with its trace library and an older version's configuration files: KE_AGPRX.dat with 200 entries, and
/// 30 entries in the file of each other module that an upgrade changes.
class Installation {
 public:
  Installation();
  ~Installation();
  Installation(const Installation&) = delete;
  Installation& operator=(const Installation&) = delete;

  std::string Root() const { return root_.string(); }
  std::filesystem::path Library() const { return root_ / "KELUtils" / "KELUtils.dll"; }
  std::filesystem::path TraceLibrary() const { return root_ / "Common" / "TvLogSys.dll"; }

  /// Writes all configuration files as they were before the upgrade.
  void Reset() const;

  /// The configuration files with their content.
  std::map<std::string, std::string> Files() const;

 private:
  std::filesystem::path root_;
  std::map<std::string, std::string> before_;  // by the path below the root
};

/// The content of KE_AGPRX.dat before the upgrade: whether a message is listed, whether an action section has a server.
bool IsListed(const std::string& message);
bool HasServer(const std::string& actionSection);

/// The value that SERVER, SERVER_NS or SERVER_AP has in every action section that has one.
const char* ServerValue(const std::string& key);

}  // namespace bench
