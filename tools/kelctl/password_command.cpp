#include <nlohmann/json.hpp>

#include "KELUtils.h"
#include "calls.h"
#include "command_line.h"
#include "commands.h"
#include "settings.h"

namespace kelctl {
namespace {

void Set(Session& session, const std::string& password) {
  const auto library = session.OpenTheLibrary();
  const std::string stored = password.empty() ? password : EncryptSetting(*library, password);
  ThrowUnlessSuccess("KE_SetUninstallPass", KELCTL_EXPORT(*library, KE_SetUninstallPass)(stored.c_str(), 0));
}

void Check(Session& session, const std::string& password) {
  const auto library = session.OpenTheLibrary();
  // A deciphered password is UTF-8, and so is what the user typed.
  const bool matches = KELCTL_EXPORT(*library, KE_CheckInstallationPassw)(password.c_str(), 0) != 0;
  session.Show(matches ? "the password matches\n" : "the password does not match\n", {{"matches", matches}});
  if (!matches) session.exitCode = kCallFailed;
}

}  // namespace

void AddPasswordCommand(CLI::App& kelctl, Session& session) {
  CLI::App* const command = kelctl.add_subcommand("password", "Sets or checks the uninstall password");
  command->require_subcommand(1);
  command->footer("Example: kelctl password check secret");
  const auto password = std::make_shared<std::string>();
  const auto add = [&](const char* name, const char* description, void (*work)(Session&, const std::string&),
                       const char* footer) {
    CLI::App* const action = command->add_subcommand(name, description);
    action->add_option("PASSWORD", *password, "The password in plain text")->required()->type_name("");
    action->footer(footer);
    action->callback([&session, password, work] { work(session, *password); });
  };
  add("set", "Stores the password enciphered; the empty password removes it", Set,
      "Example: kelctl password set secret");
  add("check", "Tells whether this is the password; exit code 1 when it is not", Check,
      "Example: kelctl password check secret");
}

}  // namespace kelctl
