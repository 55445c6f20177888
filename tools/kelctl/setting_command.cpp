#include <nlohmann/json.hpp>

#include "commands.h"
#include "settings.h"

namespace kelctl {

void AddSettingCommand(CLI::App& kelctl, Session& session) {
  CLI::App* const command = kelctl.add_subcommand("setting", "Enciphers or deciphers a single setting");
  command->require_subcommand(1);
  command->footer("Example: kelctl setting encrypt support");
  const auto text = std::make_shared<std::string>();
  const auto add = [&](const char* name, const char* description, std::string (*work)(Library&, const std::string&),
                       const char* footer) {
    CLI::App* const direction = command->add_subcommand(name, description);
    direction->add_option("TEXT", *text, "The text")->required()->type_name("");
    direction->footer(footer);
    direction->callback([&session, text, work] {
      const std::string result = work(*session.OpenTheLibrary(), *text);
      session.Show(result + "\n", {{"text", result}});
    });
  };
  add("encrypt", "Prints the setting text of a plain text, on one line", EncryptSetting,
      "Example: kelctl setting encrypt support");
  add("decrypt", "Prints the plain text of a setting text", DecryptSetting,
      "Example: kelctl setting decrypt 8mLr3cJf0T0yQf1nq2Z1xw==");
}

}  // namespace kelctl
