#include "KELUtils.h"
#include "arguments.h"
#include "calls.h"
#include "commands.h"

namespace kelctl {
namespace {

constexpr std::size_t kLongestAddress = 511;  // characters; the library cuts a longer one

struct ServerOptions {
  std::string address;
  bool secure = false;
};

void Set(Session& session, const ServerOptions& options) {
  CheckOneLine(options.address);
  const auto library = session.OpenTheLibrary();
  const std::string address = library->ToCodePage(options.address);
  if (address.size() > kLongestAddress) throw UsageError("an address may have 511 characters");
  if (options.secure) {
    auto* const set = KELCTL_EXPORT(*library, KE_SetURLSecureServer);
    return ThrowUnlessSuccess("KE_SetURLSecureServer", set(address.c_str()));
  }
  ThrowUnlessSuccess("KE_SetURLServer", KELCTL_EXPORT(*library, KE_SetURLServer)(address.c_str()));
}

}  // namespace

void AddServerCommand(CLI::App& kelctl, Session& session) {
  CLI::App* const command = kelctl.add_subcommand("server", "Sets the address of the management server");
  command->require_subcommand(1);
  command->footer("Example: kelctl server set https://console.example --secure");
  const auto options = std::make_shared<ServerOptions>();
  CLI::App* const set = command->add_subcommand("set", "Sets the address that the agent module uses");
  set->add_option("ADDRESS", options->address, "The address")->required()->type_name("");
  set->add_flag("--secure", options->secure, "Set that of the integration messages instead, in KE_AGPRX.dat");
  set->footer("Example: kelctl server set https://console.example --secure");
  set->callback([&session, options] { Set(session, *options); });
}

}  // namespace kelctl
