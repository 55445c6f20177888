#include <ostream>

#include "code_page.h"
#include "command_line.h"
#include "commands.h"
#include "frame/os_identification.h"

namespace kelctl {
namespace {

void ShowOs(Session& session) {
  if (!frame::IdentifyOs()) {
    session.err << "kelctl: the release of Windows could not be identified\n";
    session.exitCode = kCallFailed;
    return;
  }
  const frame::OsRecord os = frame::IdentifiedOs();
  session.out << Utf8FromWide(os.displayName) << "\n"
              << "release code 0x" << std::hex << os.code << std::dec << ", " << (os.is64Bit ? "64-bit" : "32-bit")
              << (os.isServer ? ", server" : ", workstation") << "\n";
}

}  // namespace

void AddOsCommand(CLI::App& kelctl, Session& session) {
  CLI::App* const command = kelctl.add_subcommand("os", "Shows the release of Windows as the library identifies it");
  command->footer("Example: kelctl os");
  command->callback([&session] { ShowOs(session); });
}

}  // namespace kelctl
