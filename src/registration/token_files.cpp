#include "registration/token_files.h"

#include <string>

#include "frame/export_call.h"
#include "frame/paths.h"
#include "frame/settings_file.h"
#include "registration/token_text.h"
#include "win/code_page.h"
#include "win/file.h"

namespace registration {
namespace {

using frame::Export;
using frame::ExportCall;
using frame::FileIn;

// Creates a folder of the installation folder and, in it, "Config"; answers with the latter.
std::string MakeConfigFolder(const std::string& root, const char* folder) {
  const std::string host = FileIn(root, folder);
  win::MakeFolder(host);
  std::string config = FileIn(host, "Config");
  win::MakeFolder(config);
  return config;
}

// Writes a whole file. A write that fails, as on a full disk, is not told.
KE_RESULT WriteText(const char* function, const std::string& path, const std::string& text) {
  const win::FileHandle file = win::CreateForUpdate(path);
  if (!file) {
    Trace(frame::kDetail, function, "Could not open %s. Error %d", path.c_str(), static_cast<int>(GetLastError()));
    return KE_STORE_UNUSABLE;
  }
  win::Write(file, text.data(), text.size());
  return KE_SUCCESS;
}

KE_RESULT WritePluginTokens(const char* function, const std::string& root) {
  return WriteText(function, FileIn(MakeConfigFolder(root, "KESLPMNG"), "plugins.tok"), PluginTokens(root));
}

KE_RESULT WriteSchedulerTokens(const char* function, const std::string& root) {
  const std::string config = MakeConfigFolder(root, "Scheduler");
  const KE_RESULT result = WriteText(function, FileIn(config, "tokens.tok"), SchedulerTokens(root));
  if (result != KE_SUCCESS) return result;
  for (const auto& program : kScheduledPrograms) win::MakeFolder(FileIn(root, program.folder));
  return KE_SUCCESS;
}

KE_RESULT WriteWatchdogServices(const char* function, const std::string& root) {
  const std::string folder = FileIn(root, "KESWD");
  win::MakeFolder(folder);
  const std::string file = FileIn(folder, "KesWD.conf");
  for (const auto& service : kWatchedServices) {
    win::MakeFolder(FileIn(root, service.folder));
    const std::string program = QuotedPath(root, service);
    if (!frame::WriteProfileValue(function, file, "SERVICES", service.name, program.c_str())) return KE_STORE_UNUSABLE;
  }
  return KE_SUCCESS;
}

KE_RESULT WriteBelow(const char* function, const char* root,
                     KE_RESULT (*write)(const char* function, const std::string& root)) {
  return ExportCall(function, [&](Export& self) -> KE_RESULT {
    const std::string folder = InstallRoot(root, win::IsLeadByte);
    if (folder.empty()) return KE_MISSING_ARGUMENT;
    return write(self.name, folder);
  });
}

}  // namespace

KE_RESULT MkKesLpMngTokens(const char* root) { return WriteBelow(__func__, root, WritePluginTokens); }

KE_RESULT MkSchedulerKepLpMngToken(const char* root) { return WriteBelow(__func__, root, WriteSchedulerTokens); }

KE_RESULT MkKesWdTokens(const char* root) { return WriteBelow(__func__, root, WriteWatchdogServices); }

}  // namespace registration
