// The commands that hand work to the launcher module and to the plug-ins.
#include <algorithm>
#include <map>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "KELUtils.h"
#include "arguments.h"
#include "calls.h"
#include "commands.h"

namespace kelctl {
namespace {

struct LauncherOptions {
  std::string section, key, value;
  std::vector<std::uint32_t> values;
  bool onlyIfExists = false;
  std::int32_t number = 0;
};

void UpdateNow(Session& session, const LauncherOptions& options) {
  const auto library = session.OpenTheLibrary();
  if (options.values.empty()) {
    return ThrowUnlessSuccess("KE_UpdateNow", KELCTL_EXPORT(*library, KE_UpdateNow)());
  }
  auto* const update = KELCTL_EXPORT(*library, KE_UpdateNowEx);
  ThrowUnlessSuccess("KE_UpdateNowEx", update(options.values[0], options.values[1]));
}

void GetUpdateConfig(Session& session, const LauncherOptions& options) {
  constexpr std::uint32_t kLongestValue = 64 * 1024;
  const auto library = session.OpenTheLibrary();
  const auto section = library->ToCodePage(options.section), key = library->ToCodePage(options.key);
  std::string value(kLongestValue, '\0');
  auto* const get = KELCTL_EXPORT(*library, KE_GetUpdateNowConfig);
  ThrowUnlessSuccess("KE_GetUpdateNowConfig", get(section.c_str(), key.c_str(), "", value.data(), kLongestValue));
  value.resize(std::min(value.find('\0'), value.size()));
  const std::string text = library->FromCodePage(value);
  session.Show(text + "\n", {{"value", text}});
}

void SetUpdateConfig(Session& session, const LauncherOptions& options) {
  CheckPropertyKey(options.key);
  CheckOneLine(options.section);
  if (options.section.empty() || options.section.find_first_of("[]") != std::string::npos) {
    throw UsageError("a section has a name, without \"[\" and \"]\"");
  }
  CheckOneLine(options.value);
  const auto library = session.OpenTheLibrary();
  auto* const set = KELCTL_EXPORT(*library, KE_SetUpdateNowConfig);
  ThrowUnlessSuccess("KE_SetUpdateNowConfig",
                     set(library->ToCodePage(options.section).c_str(), library->ToCodePage(options.key).c_str(),
                         library->ToCodePage(options.value).c_str(), options.onlyIfExists));
}

// A command that is a call of one export with a number.
void CallWithNumber(Session& session, const char* exportName, std::int32_t number) {
  const auto library = session.OpenTheLibrary();
  ThrowUnlessSuccess(exportName, Typed<decltype(KE_NotifyDeviceID)>(*library, exportName)(number));
}

// A command that is a call of one export.
void Call(Session& session, const char* exportName) {
  const auto library = session.OpenTheLibrary();
  ThrowUnlessSuccess(exportName, Typed<decltype(KE_SendReport)>(*library, exportName)());
}

void AddKey(CLI::App* command, const std::shared_ptr<LauncherOptions>& options) {
  command->add_option("SECTION", options->section)->required()->type_name("");
  command->add_option("KEY", options->key)->required()->type_name("");
}

void AddConfig(CLI::App& update, Session& session) {
  CLI::App* const config = update.add_subcommand("config", "Shows and changes the update settings, UPDNW.DAT");
  config->require_subcommand(1);
  const auto options = std::make_shared<LauncherOptions>();
  CLI::App* const get = config->add_subcommand("get", "Prints a setting");
  AddKey(get, options);
  get->footer("Example: kelctl update config get UPDATE SOURCE");
  get->callback([&session, options] { GetUpdateConfig(session, *options); });
  CLI::App* const set = config->add_subcommand("set", "Changes a setting");
  AddKey(set, options);
  set->add_option("VALUE", options->value)->required()->type_name("");
  set->add_flag("--only-if-exists", options->onlyIfExists, "Do not create the file");
  set->footer("Example: kelctl update config set UPDATE SOURCE server");
  set->callback([&session, options] { SetUpdateConfig(session, *options); });
  config->footer("Example: kelctl update config get UPDATE SOURCE");
}

void AddUpdate(CLI::App& kelctl, Session& session) {
  CLI::App* const update = kelctl.add_subcommand("update", "Updates the agent");
  update->require_subcommand(1);
  update->footer("Example: kelctl update now");
  const auto options = std::make_shared<LauncherOptions>();
  CLI::App* const now = update->add_subcommand("now", "Has the launcher update the agent; waits for the end");
  now->add_option("--values", options->values, "Two numbers for the launcher")->expected(2)->type_name("N N");
  now->footer("Example: kelctl update now --values 1 0");
  now->callback([&session, options] { UpdateNow(session, *options); });
  CLI::App* const beside = update->add_subcommand("beside-others", "Whether to install beside other products");
  beside->add_option("VALUE", options->number, "1 or 0")->required()->type_name("");
  beside->footer("Example: kelctl update beside-others 1");
  beside->callback([&session, options] { CallWithNumber(session, "KE_SetNoCheckAVValue", options->number); });
  AddConfig(*update, session);
}

void AddNotify(CLI::App& kelctl, Session& session) {
  static const std::map<std::string, std::int32_t> targets = {{"all", 0}, {"installer", 1}, {"remote-control", 2}};
  CLI::App* const notify = kelctl.add_subcommand("notify", "Tells the stored device identifier to the plug-ins");
  const auto options = std::make_shared<LauncherOptions>();
  notify->add_option("TARGET", options->number, "all, installer or remote-control")
      ->type_name("")
      ->transform(CLI::CheckedTransformer(targets));
  notify->footer("Example: kelctl notify remote-control");
  notify->callback([&session, options] { CallWithNumber(session, "KE_NotifyDeviceID", options->number); });
}

/// A command that is one call without arguments.
struct LaunchCommand {
  const char* name;
  const char* description;
  const char* exportName;
  const char* example;
};

constexpr LaunchCommand kLaunchCommands[] = {
    {"report", "Has the launcher send the report", "KE_SendReport", "Example: kelctl launch report"},
    {"rcm-config", "Has the launcher apply the remote-control configuration", "KE_AplyLocalRCMCfg",
     "Example: kelctl launch rcm-config"},
    {"install-helper", "Starts the installer helper", "KE_LaunchKEPWInst", "Example: kelctl launch install-helper"},
};

void AddLaunch(CLI::App& kelctl, Session& session) {
  CLI::App* const launch = kelctl.add_subcommand("launch", "Has other parts of the agent work");
  launch->require_subcommand(1);
  launch->footer("Example: kelctl launch report");
  for (const LaunchCommand& row : kLaunchCommands) {
    CLI::App* const command = launch->add_subcommand(row.name, row.description);
    command->footer(row.example);
    command->callback([&session, exportName = row.exportName] { Call(session, exportName); });
  }
}

}  // namespace

void AddLauncherCommands(CLI::App& kelctl, Session& session) {
  AddUpdate(kelctl, session);
  AddNotify(kelctl, session);
  AddLaunch(kelctl, session);
}

}  // namespace kelctl
