// The commands that examine an installation and change nothing.
#include <windows.h>

#include <cstdio>
#include <nlohmann/json.hpp>

#include "commands.h"
#include "diagnosis/bundle.h"
#include "diagnosis/examination.h"
#include "diagnosis/status.h"
#include "diagnosis/store_files.h"
#include "policy/os_identification.h"
#include "texts.h"
#include "win/file.h"

namespace kelctl {
namespace {

void ShowStatus(Session& session, std::size_t errorCount) {
  const Product product(LibraryPath(session.libraryPath));
  const StoreCopies copies = ReadStoreCopies(product);
  const Status status = GatherStatus(product, copies, MakeRedactor(product, copies), errorCount);
  session.Show(RenderStatus(status), JsonOf(status));
  if (status.choice.copy == CopyInUse::kNone) session.exitCode = kCallFailed;
}

void Diagnose(Session& session) {
  const Product product(LibraryPath(session.libraryPath));
  const Findings findings = Examine(product, ReadStoreCopies(product));
  session.Show(RenderFindings(findings, session.colours), JsonOf(findings));
  if (!IsHealthy(findings)) session.exitCode = kNotHealthy;
}

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
  throw CommandError(kCallFailed, "cannot write " + path + " (" + WindowsError(error) + ")");
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

void ShowOs(Session& session) {
  if (!policy::IdentifyOs()) throw CommandError(kCallFailed, "the release of Windows could not be identified");
  const policy::OsRecord os = policy::IdentifiedOs();
  const std::string name = Utf8FromWide(os.displayName);
  char code[16];
  std::snprintf(code, sizeof code, "0x%x", static_cast<unsigned>(os.code));
  session.Show(name + "\nrelease code " + code + ", " + (os.is64Bit ? "64-bit" : "32-bit") +
                   (os.isServer ? ", server" : ", workstation") + "\n",
               {{"name", name}, {"code", os.code}, {"is64Bit", os.is64Bit != 0}, {"isServer", os.isServer != 0}});
}

void AddStatusCommand(CLI::App& kelctl, Session& session) {
  CLI::App* const command = kelctl.add_subcommand(
      "status", "Shows the identity, which copy of the store is in use, versions, other modules and the last errors");
  const auto errorCount = std::make_shared<std::size_t>(5);
  command->add_option("--errors", *errorCount, "How many of the trace log's last errors (default: 5)")
      ->type_name("N")
      ->check(CLI::Range(0, 1000));
  command->footer(
      "Told from the files alone: nothing is changed, and nothing repaired. Exit code 1 when no copy of the store "
      "can be used.\n"
      "Example: kelctl status --json");
  command->callback([&session, errorCount] { ShowStatus(session, *errorCount); });
}

void AddDoctorCommand(CLI::App& kelctl, Session& session) {
  CLI::App* const command = kelctl.add_subcommand(
      "doctor",
      "Examines every module, program, store file and settings file of the installation, and changes nothing");
  command->footer(
      "Exit code 0 when the installation is healthy, warnings included, 3 when something failed. docs/operations.md "
      "lists the warnings.\n"
      "Example: kelctl doctor");
  command->callback([&session] { Diagnose(session); });
}

void AddDiagnosticsCommand(CLI::App& kelctl, Session& session) {
  CLI::App* const command = kelctl.add_subcommand(
      "diagnostics", "Packs status, examination, trace log, settings and a list of files for support, without secrets");
  const auto path = std::make_shared<std::string>();
  command->add_option("FILE", *path, "The ZIP archive to make; it must not exist")->required()->type_name("");
  command->footer(
      "Passwords, certificates, keys and the store's text in the trace log are left out; docs/operations.md says how "
      "they are known. Look the archive through before it leaves the machine.\n"
      "Example: kelctl diagnostics C:\\Temp\\agent.zip");
  command->callback([&session, path] { Collect(session, *path); });
}

void AddOsCommand(CLI::App& kelctl, Session& session) {
  CLI::App* const command = kelctl.add_subcommand("os", "Shows the release of Windows as the library identifies it");
  command->footer("Example: kelctl os");
  command->callback([&session] { ShowOs(session); });
}

}  // namespace

void AddDiagnosisCommands(CLI::App& kelctl, Session& session) {
  CLI::App* const child = kelctl.add_subcommand("examine-siblings")->group("");  // hidden: the doctor runs it
  const auto first = std::make_shared<std::size_t>();
  child->add_option("FIRST", *first)->required();
  child->callback(
      [&session, first] { ExamineSiblings(Product(LibraryPath(session.libraryPath)), *first, session.out); });
  AddStatusCommand(kelctl, session);
  AddDoctorCommand(kelctl, session);
  AddDiagnosticsCommand(kelctl, session);
  AddOsCommand(kelctl, session);
}

}  // namespace kelctl
