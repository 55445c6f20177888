#include "registration/standard_plugins.h"

#include <cstring>
#include <initializer_list>
#include <span>
#include <string>

#include "frame/paths.h"
#include "frame/settings_file.h"
#include "registration/token_files.h"
#include "registration/token_text.h"
#include "win/code_page.h"
#include "win/file.h"

namespace registration {
namespace {

using frame::FileIn;

constexpr InstalledFile kConfigurationPlugins[] = {
    {"KELSYSCF", "KELSYSCF", "KELSYSCF.dll"},
    {"KELTASK", "KELTASK", "KELTASK.dll"},
};
constexpr InstalledFile kUpdatePlugins[] = {{"KEAGENT", "KELSYSUD", "KelSysUd.dll"}};
constexpr InstalledFile kUpgradePlugins[] = {{"KEAGENT", "KELSYSIN", "KelSysIn.dll"}};

// Characters: with the files below it, a path has fewer than the 32,767 that Windows may crash on.
constexpr std::size_t kLongestRoot = 32000;

/// A module that hosts plug-ins: its folder, its file in there, and the plug-ins it always has.
struct HostModule {
  const char* folder;
  const char* file;
  std::span<const InstalledFile> plugins;
};

constexpr HostModule kConfiguration{"KELCONF", "KELCONF.INI", kConfigurationPlugins};
constexpr HostModule kUpdate{"KELUPD", "KELUPD.INI", kUpdatePlugins};
constexpr HostModule kUpgrade{"KELUPG", "KELUPG.INI", kUpgradePlugins};

KE_RESULT Register(const char* function, const HostModule& host, const char* root) {
  const std::string installation = InstallRoot(root, win::IsLeadByte);
  if (installation.empty()) return KE_MISSING_ARGUMENT;
  const std::string folder = FileIn(installation, host.folder);
  win::MakeFolder(folder);
  for (const auto& plugin : host.plugins) win::MakeFolder(FileIn(installation, plugin.folder));
  const std::string file = FileIn(folder, host.file);
  for (const auto& plugin : host.plugins) {
    const std::string library = QuotedPath(installation, plugin);
    if (!frame::WriteProfileValue(function, file, "PLUGINS", plugin.name, library.c_str())) return KE_STORE_UNUSABLE;
  }
  return KE_SUCCESS;
}

}  // namespace

KE_RESULT RegisterStdKelConfPlugins(const char* root) { return Register(__func__, kConfiguration, root); }

KE_RESULT RegisterStdKelUpdPlugins(const char* root) { return Register(__func__, kUpdate, root); }

KE_RESULT RegisterStdKelUpgPlugins(const char* root) { return Register(__func__, kUpgrade, root); }

KE_RESULT WriteRegistrationFiles(const char* root) {
  if (strnlen(root, kLongestRoot + 1) > kLongestRoot) return KE_STORE_UNUSABLE;
  for (const auto write : {MkSchedulerKepLpMngToken, MkKesLpMngTokens, MkKesWdTokens, RegisterStdKelConfPlugins,
                           RegisterStdKelUpdPlugins, RegisterStdKelUpgPlugins}) {
    if (const KE_RESULT result = write(root); result != KE_SUCCESS) return result;
  }
  return KE_SUCCESS;
}

}  // namespace registration
