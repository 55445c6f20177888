#include <windows.h>

#include "KELUtils.h"
#include "calls.h"
#include "code_page.h"
#include "commands.h"

namespace kelctl {
namespace {

// The platform looks for settings files of relative paths in its own folder.
std::string FullPath(const std::string& path) {
  const std::wstring relative = WideFromUtf8(path);
  std::wstring full(GetFullPathNameW(relative.c_str(), 0, nullptr, nullptr), L'\0');
  full.resize(GetFullPathNameW(relative.c_str(), static_cast<DWORD>(full.size()), full.data(), nullptr));
  return Utf8FromWide(full);
}

void Start(Session& session, const std::string& directory) {
  const auto library = session.OpenTheLibrary();
  auto* const start = KELCTL_EXPORT(*library, KE_UpgradeStart);
  ThrowUnlessSuccess("KE_UpgradeStart", start(library->ToCodePage(FullPath(directory)).c_str()));
}

void AddStart(CLI::App* command, Session& session) {
  CLI::App* const start = command->add_subcommand("start", "Brings the configuration files up to the current layout");
  const auto directory = std::make_shared<std::string>();
  start->add_option("DIR", *directory, "The installation directory")
      ->required()
      ->type_name("")
      ->check(CLI::ExistingDirectory);
  start->footer("Example: kelctl upgrade start C:\\Agent");
  start->callback([&session, directory] { Start(session, *directory); });
}

}  // namespace

void AddUpgradeCommand(CLI::App& kelctl, Session& session) {
  CLI::App* const command = kelctl.add_subcommand("upgrade", "The steps of an upgrade");
  command->require_subcommand(1);
  command->footer("Example: kelctl upgrade start C:\\Agent");
  AddStart(command, session);
}

}  // namespace kelctl
