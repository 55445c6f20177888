#include <windows.h>

#include <nlohmann/json.hpp>

#include "arguments.h"
#include "code_page.h"
#include "command_line.h"
#include "commands.h"
#include "diagnosis/bundle.h"
#include "errors.h"
#include "win/file.h"

namespace kelctl {
namespace {

// A file of its own: an older one is never written over.
void WriteNewFile(const std::string& path, const std::string& bytes) {
  const std::wstring name = WideFromUtf8(path);
  win::FileHandle file(
      CreateFileW(name.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW, FILE_ATTRIBUTE_NORMAL, nullptr));
  DWORD error = file ? ERROR_SUCCESS : GetLastError();
  if (error == ERROR_FILE_EXISTS) throw CommandError(kRefused, path + " exists already");
  if (file && (win::Write(file, bytes.data(), bytes.size()) != bytes.size() || !win::Flush(file))) {
    error = GetLastError();
    file.Reset();
    DeleteFileW(name.c_str());
  }
  if (error == ERROR_SUCCESS) return;
  throw CommandError(kCallFailed, "cannot write " + path + " (Windows error " + std::to_string(error) + ")");
}

void Collect(Session& session, const std::string& path) {
  const Product product(LibraryPath(session.libraryPath));
  const Bundle bundle = MakeBundle(product);
  const std::string full = FullPath(path);
  WriteNewFile(full, bundle.bytes);
  std::string text = "wrote " + full + " (" + std::to_string(bundle.bytes.size()) + " bytes):\n";
  for (const std::string& name : bundle.names) text += name + "\n";
  session.Show(text, {{"file", full}, {"size", bundle.bytes.size()}, {"entries", bundle.names}});
}

}  // namespace

void AddDiagnosticsCommand(CLI::App& kelctl, Session& session) {
  CLI::App* const command = kelctl.add_subcommand(
      "diagnostics", "Packs status, examination, trace log, settings and a list of files for support, without secrets");
  const auto path = std::make_shared<std::string>();
  command->add_option("FILE", *path, "The ZIP archive to make; it must not exist")->required()->type_name("");
  command->footer(
      "Passwords, certificates, keys and the store's text in the trace log are left out; docs/kelctl.md says how "
      "they are known. Look the archive through before it leaves the machine.\n"
      "Example: kelctl diagnostics C:\\Temp\\agent.zip");
  command->callback([&session, path] { Collect(session, *path); });
}

}  // namespace kelctl
