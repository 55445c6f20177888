// The commands that read and change values of the store, and single encrypted settings.
#include <nlohmann/json.hpp>
#include <ostream>
#include <vector>

#include "commands.h"
#include "store_values.h"
#include "texts.h"

namespace kelctl {
namespace {

constexpr std::string_view kPropertyPrefix = "property:";

struct StoreOptions {
  std::string name, value;
  bool onlyForward = false, reveal = false;
};

// True for "property:KEY", which names a free property, whatever KEY is.
bool IsPropertyName(std::string_view name) { return name.starts_with(kPropertyPrefix); }

void Show(Session& session, const StoreOptions& options) {
  const auto library = session.OpenTheLibrary();
  std::vector<Reading> readings;
  for (const StoreValue& value : StoreValues()) readings.push_back(ReadValue(*library, value));
  session.Show(RenderTable(readings, options.reveal), JsonOf(readings, options.reveal));
  if (!AnyFailure(readings)) return;
  if (!session.json) session.err << "kelctl: the store, or a value of it, could not be read\n";
  session.exitCode = kCallFailed;
}

void Get(Session& session, const StoreOptions& options) {
  if (IsPropertyName(options.name)) throw UsageError("a property can only be set");
  const StoreValue& value = FindStoreValue(options.name);
  const auto library = session.OpenTheLibrary();
  const Reading reading = ReadValue(*library, value);
  if (reading.result != KE_SUCCESS) throw CallError(value.getter.name, reading.result);
  nlohmann::ordered_json document = JsonOf(reading, options.reveal);
  document["name"] = value.name;
  session.Show(PlainText(reading, options.reveal) + "\n", document);
}

void Set(Session& session, const StoreOptions& options) {
  const bool property = IsPropertyName(options.name);
  const StoreValue* const value = property ? nullptr : &FindStoreValue(options.name);
  if (value && value->setter.type == SetterType::kNone) throw UsageError(options.name + " is read only");
  if (options.onlyForward && (!value || value->setter.type != SetterType::kState)) {
    throw UsageError("--only-forward is for install-state");
  }
  const auto library = session.OpenTheLibrary();
  if (property) return WriteProperty(*library, options.name.substr(kPropertyPrefix.size()), options.value);
  WriteValue(*library, *value, options.value, options.onlyForward);
}

void AddSettingCommand(CLI::App& kelctl, Session& session) {
  CLI::App* const command = kelctl.add_subcommand("setting", "Encrypts or decrypts a single setting");
  command->require_subcommand(1);
  command->footer("Example: kelctl setting encrypt support");
  const auto text = std::make_shared<std::string>();
  const auto add = [&](const char* name, const char* description,
                       std::string (*work)(const Library&, const std::string&), const char* footer) {
    CLI::App* const direction = command->add_subcommand(name, description);
    direction->add_option("TEXT", *text, "The text")->required()->type_name("");
    direction->footer(footer);
    direction->callback([&session, text, work] {
      const std::string result = work(*session.OpenTheLibrary(), *text);
      session.Show(result + "\n", {{"text", result}});
    });
  };
  add("encrypt", "Shows the setting text of a plain text, on one line", EncryptSetting,
      "Example: kelctl setting encrypt support");
  add("decrypt", "Shows the plain text of a setting text", DecryptSetting,
      "Example: kelctl setting decrypt 8mLr3cJf0T0yQf1nq2Z1xw==");
}

}  // namespace

void AddStoreCommands(CLI::App& kelctl, Session& session) {
  const auto options = std::make_shared<StoreOptions>();
  const auto add = [&](const char* name, const char* description, void (*work)(Session&, const StoreOptions&),
                       const char* footer) {
    CLI::App* const command = kelctl.add_subcommand(name, description);
    command->footer(footer);
    command->callback([&session, options, work] { work(session, *options); });
    return command;
  };
  CLI::App* const show =
      add("show", "Shows every value of the store", Show,
          "Reading lets the library repair a damaged store from its copies, as any reading by the agent does.\n"
          "Example: kelctl show --json");
  CLI::App* const get = add("get", "Shows one value of the store", Get, "Example: kelctl get agent-id");
  CLI::App* const set = add(
      "set", "Sets one value of the store", Set,
      "A value that begins with \"-\" goes after \"--\". The value rcm-password is stored as it is given: encrypted "
      "text.\n"
      "Example: kelctl set container 17\n"
      "Example: kelctl set install-state 200 --only-forward\n"
      "Example: kelctl set property:Site -- -north");
  get->add_option("NAME", options->name, "One of: " + StoreValueNames())->required()->type_name("");
  set->add_option("NAME", options->name, "property:KEY, or one of: " + WritableStoreValueNames())
      ->required()
      ->type_name("");
  set->add_option("VALUE", options->value, "The new value")->required()->type_name("");
  set->add_flag("--only-forward", options->onlyForward, "Never lower the install-state");
  for (CLI::App* const command : {show, get}) {
    command->add_flag("--reveal", options->reveal, "Show secrets instead of ********");
  }
  AddSettingCommand(kelctl, session);
}

}  // namespace kelctl
