#include "registration/token_files.h"

#include <string>

#include "frame/export_call.h"
#include "frame/paths.h"
#include "registration/token_text.h"
#include "win/file.h"
#include "win/profile.h"

namespace registration {
namespace {

using frame::Export;
using frame::ExportCall;
using frame::FileIn;

// Creates a folder of the installation folder and, in it, "Config"; answers with the latter.
std::string MakeConfigFolder(const std::string& root, const char* folder) {
  const std::string host = FileIn(root, folder);
  win::MakeFolder(host);
  const std::string config = FileIn(host, "Config");
  win::MakeFolder(config);
  return config;
}

// A write that fails, as on a full disk, is not told.
void WriteText(const win::FileHandle& file, const std::string& text) { win::Write(file, text.data(), text.size()); }

KE_RESULT WritePluginTokens(const std::string& root) {
  const std::string path = FileIn(MakeConfigFolder(root, "KESLPMNG"), "plugins.tok");
  const win::FileHandle file = win::CreateForUpdate(path);
  if (!file) return KE_STORE_UNUSABLE;
  WriteText(file, PluginTokens(root));
  return KE_SUCCESS;
}

KE_RESULT WriteSchedulerTokens(const std::string& root) {
  const std::string path = FileIn(MakeConfigFolder(root, "Scheduler"), "tokens.tok");
  const win::FileHandle file = win::CreateForUpdate(path);
  if (!file) return KE_STORE_UNUSABLE;
  for (const auto& program : kScheduledPrograms) win::MakeFolder(FileIn(root, program.folder));
  WriteText(file, SchedulerTokens(root));
  return KE_SUCCESS;
}

KE_RESULT WriteWatchdogServices(const std::string& root) {
  const std::string folder = FileIn(root, "KESWD");
  win::MakeFolder(folder);
  const std::string file = FileIn(folder, "KesWD.conf");
  for (const auto& service : kWatchedServices) {
    win::MakeFolder(FileIn(root, service.folder));
    const std::string program = QuotedPath(root, service);
    if (!win::WriteProfile(file, "SERVICES", service.name, program.c_str())) return KE_STORE_UNUSABLE;
  }
  return KE_SUCCESS;
}

KE_RESULT WriteBelow(const char* function, const char* root, KE_RESULT (*write)(const std::string& root)) {
  return ExportCall(function, [&](Export&) -> KE_RESULT {
    const std::string folder = InstallRoot(root);
    if (folder.empty()) return KE_MISSING_ARGUMENT;
    return write(folder);
  });
}

}  // namespace

KE_RESULT MkKesLpMngTokens(const char* root) { return WriteBelow(__func__, root, WritePluginTokens); }

KE_RESULT MkSchedulerKepLpMngToken(const char* root) { return WriteBelow(__func__, root, WriteSchedulerTokens); }

KE_RESULT MkKesWdTokens(const char* root) { return WriteBelow(__func__, root, WriteWatchdogServices); }

}  // namespace registration
