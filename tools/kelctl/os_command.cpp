#include <cstdio>
#include <nlohmann/json.hpp>

#include "code_page.h"
#include "command_line.h"
#include "commands.h"
#include "errors.h"
#include "policy/os_identification.h"

namespace kelctl {
namespace {

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

}  // namespace

void AddOsCommand(CLI::App& kelctl, Session& session) {
  CLI::App* const command = kelctl.add_subcommand("os", "Shows the release of Windows as the library identifies it");
  command->footer("Example: kelctl os");
  command->callback([&session] { ShowOs(session); });
}

}  // namespace kelctl
