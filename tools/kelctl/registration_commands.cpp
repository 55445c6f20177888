#include <nlohmann/json.hpp>
#include <optional>

#include "KELUtils.h"
#include "arguments.h"
#include "calls.h"
#include "command_line.h"
#include "commands.h"

namespace kelctl {
namespace {

struct RegistrationOptions {
  std::string key;
  std::string place;  // a host module, policy type, version or installation folder
  std::optional<std::string> value;
  bool rebootRequired = false;
};

void Initialise(Session& session, const RegistrationOptions& options) {
  const auto library = session.OpenTheLibrary();
  const auto root = library->ToCodePage(FullPath(options.place));
  if (options.rebootRequired) {
    ThrowUnlessSuccess("KE_InitializeSystemEx", KELCTL_EXPORT(*library, KE_InitializeSystemEx)(root.c_str(), "TRUE"));
  } else {
    ThrowUnlessSuccess("KE_InitializeSystem", KELCTL_EXPORT(*library, KE_InitializeSystem)(root.c_str()));
  }
}

void AddPlugin(Session& session, const RegistrationOptions& options) {
  CheckPropertyKey(options.key);
  const auto library = session.OpenTheLibrary();
  const auto key = library->ToCodePage(options.key), host = library->ToCodePage(options.place);
  const auto value = library->ToCodePage(options.value.value_or(""));
  CheckOneLine(value);
  ThrowUnlessSuccess("KE_AddPlugin", KELCTL_EXPORT(*library, KE_AddPlugin)(key.c_str(), host.c_str(),
                                                                           options.value ? value.c_str() : nullptr));
}

// Calls an export that takes a key and another text, neither of them empty or of several lines.
void CallWithKey(Session& session, const char* exportName, const std::string& key, const std::string& text) {
  CheckPropertyKey(key);
  CheckOneLine(text);
  const auto library = session.OpenTheLibrary();
  auto* const change = Typed<decltype(KE_SetVersion)>(*library, exportName);
  ThrowUnlessSuccess(exportName, change(library->ToCodePage(key).c_str(), library->ToCodePage(text).c_str()));
}

void ShowWhetherAllowed(Session& session, const std::string& command) {
  const auto library = session.OpenTheLibrary();
  std::uint32_t allowed = 0;
  ThrowUnlessSuccess("KE_CanRunCommand",
                     KELCTL_EXPORT(*library, KE_CanRunCommand)(library->ToCodePage(command).c_str(), &allowed));
  session.Show(allowed != 0 ? "yes\n" : "no\n", {{"allowed", allowed != 0}});
  if (allowed == 0) session.exitCode = kCallFailed;
}

// A command that is one call of `CallWithKey`.
struct KeyCommand {
  const char* name;
  const char* description;
  const char* text;  // the name of what follows the key
  const char* exportName;
  const char* example;
};

constexpr KeyCommand kRemovePlugin{"remove", "Takes a plug-in out, and tells its host KELUpg or KELUpd", "HOST",
                                   "KE_RemovePlugin", "Example: kelctl plugin remove KEC KELUpg"};
constexpr KeyCommand kSetVersion{"set", "Records the installed version of a component", "VERSION", "KE_SetVersion",
                                 "Example: kelctl version set KEAGENT 2.0.1"};
constexpr KeyCommand kSubscribe{"subscribe", "Subscribes a plug-in to a policy type", "TYPE",
                                "KE_AddPolicyTypeSuscription", "Example: kelctl subscribe KEC 101"};
constexpr KeyCommand kUnsubscribe{"unsubscribe", "Withdraws a plug-in from a policy type", "TYPE",
                                  "KE_RemovePolicyTypeSuscription", "Example: kelctl unsubscribe KEC 101"};

void AddKeyCommand(CLI::App& parent, Session& session, const KeyCommand& row) {
  CLI::App* const command = parent.add_subcommand(row.name, row.description);
  const auto options = std::make_shared<RegistrationOptions>();
  command->add_option("KEY", options->key, "The plug-in or component")->required()->type_name("");
  command->add_option(row.text, options->place)->required()->type_name("");
  command->footer(row.example);
  command->callback([&session, options, exportName = row.exportName] {
    CallWithKey(session, exportName, options->key, options->place);
  });
}

void AddInitCommand(CLI::App& kelctl, Session& session) {
  CLI::App* const command = kelctl.add_subcommand("init", "Writes the registration files of an installation");
  const auto options = std::make_shared<RegistrationOptions>();
  command->add_option("ROOT", options->place, "The installation folder")->required()->type_name("");
  command->add_flag("--reboot-required", options->rebootRequired, "Also record that a reboot is required");
  command->footer("Example: kelctl init C:\\Agent");
  command->callback([&session, options] { Initialise(session, *options); });
}

void AddPluginCommand(CLI::App& kelctl, Session& session) {
  CLI::App* const command = kelctl.add_subcommand("plugin", "Adds or removes a plug-in of a module");
  command->require_subcommand(1);
  command->footer("Example: kelctl plugin add KEC KELUpg C:\\Agent\\KEC\\KEC.dll");
  CLI::App* const add = command->add_subcommand("add", "Enters a plug-in; without VALUE it is taken out");
  const auto options = std::make_shared<RegistrationOptions>();
  add->add_option("KEY", options->key, "The plug-in")->required()->type_name("");
  add->add_option("HOST", options->place, "The module that hosts it")->required()->type_name("");
  add->add_option("VALUE", options->value, "The path of its library")->type_name("");
  add->footer("Example: kelctl plugin add KEC KELUpg C:\\Agent\\KEC\\KEC.dll");
  add->callback([&session, options] { AddPlugin(session, *options); });
  AddKeyCommand(*command, session, kRemovePlugin);
}

void AddVersionCommand(CLI::App& kelctl, Session& session) {
  CLI::App* const command = kelctl.add_subcommand("version", "Records installed versions");
  command->require_subcommand(1);
  command->footer("Example: kelctl version set KEAGENT 2.0.1");
  AddKeyCommand(*command, session, kSetVersion);
}

}  // namespace

void AddRegistrationCommands(CLI::App& kelctl, Session& session) {
  AddInitCommand(kelctl, session);
  AddPluginCommand(kelctl, session);
  AddVersionCommand(kelctl, session);
  AddKeyCommand(kelctl, session, kSubscribe);
  AddKeyCommand(kelctl, session, kUnsubscribe);
  CLI::App* const canRun = kelctl.add_subcommand(
      "can-run", "Tells whether a command may run in the present installation state; exit code 1 when it may not");
  const auto name = std::make_shared<std::string>();
  canRun->add_option("COMMAND", *name, "The command")->required()->type_name("");
  canRun->footer("Example: kelctl can-run KELUpd");
  canRun->callback([&session, name] { ShowWhetherAllowed(session, *name); });
}

}  // namespace kelctl
