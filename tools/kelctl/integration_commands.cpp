#include <ctime>
#include <ostream>

#include "KELUtils.h"
#include "calls.h"
#include "command_line.h"
#include "commands.h"
#include "rendering.h"
#include "store_access.h"

namespace kelctl {
namespace {

void Integrate(Session& session) {
  const std::time_t now = std::time(nullptr);
  const std::tm* const local = std::localtime(&now);
  const KE_TIME time = {local->tm_sec, local->tm_min, local->tm_hour, local->tm_mday, local->tm_mon, local->tm_year};
  const auto library = session.OpenTheLibrary();
  ThrowUnlessSuccess("KE_Integrate", KELCTL_EXPORT(*library, KE_Integrate)(&time));
}

void Deintegrate(Session& session) {
  const auto library = session.OpenTheLibrary();
  ThrowUnlessSuccess("KE_DeIntegrate", KELCTL_EXPORT(*library, KE_DeIntegrate)());
}

void ShowStatus(Session& session) {
  const auto library = session.OpenTheLibrary();
  std::vector<ReadStoreValue> values;
  for (const char* name : {"integrated", "device-id", "install-state", "install-complete", "agent-version"}) {
    const StoreValue& value = FindStoreValue(name);
    values.push_back({&value, ReadValue(*library, value)});
  }
  session.out << RenderTable(values, false);
  const bool password = KELCTL_EXPORT(*library, KE_IsNeededInstallationPassw)() != 0;
  session.out << "uninstall password is " << (password ? "configured" : "not configured") << "\n";
  if (AnyFailure(values)) session.exitCode = kCallFailed;
}

}  // namespace

void AddIntegrationCommands(CLI::App& kelctl, Session& session) {
  const auto add = [&](const char* name, const char* description, void (*work)(Session&), const char* footer) {
    CLI::App* const command = kelctl.add_subcommand(name, description);
    command->footer(footer);
    command->callback([&session, work] { work(session); });
  };
  add("integrate", "Records the integration into the console, as of now in local time", Integrate,
      "The computer counts as integrated when it also has a device-id.\nExample: kelctl integrate");
  add("deintegrate", "Clears the integration date and the device identifier", Deintegrate,
      "Example: kelctl deintegrate");
  add("status", "Shows integration, installation and whether there is an uninstall password", ShowStatus,
      "Example: kelctl status");
}

}  // namespace kelctl
