#include <ctime>

#include "KELUtils.h"
#include "calls.h"
#include "commands.h"

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
}

}  // namespace kelctl
