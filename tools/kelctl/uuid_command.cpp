#include <nlohmann/json.hpp>
#include <string>

#include "KELUtils.h"
#include "calls.h"
#include "commands.h"

namespace kelctl {
namespace {

void ShowUuid(Session& session) {
  const auto library = session.OpenTheLibrary();
  char uuid[256] = "";  // stays empty when the machine has none
  ThrowUnlessSuccess("KE_GetUUID", KELCTL_EXPORT(*library, KE_GetUUID)(uuid, sizeof uuid));
  const std::string text = library->FromCodePage(uuid);
  session.Show(text + "\n", {{"uuid", text}});
}

}  // namespace

void AddUuidCommand(CLI::App& kelctl, Session& session) {
  CLI::App* const command = kelctl.add_subcommand(
      "uuid", "Shows the hardware UUID of this machine; an empty line when there is none or the query is switched off");
  command->footer("Example: kelctl uuid");
  command->callback([&session] { ShowUuid(session); });
}

}  // namespace kelctl
