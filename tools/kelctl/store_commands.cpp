// The commands that read and change values of the store, and single encrypted settings.
#include <nlohmann/json.hpp>
#include <ostream>
#include <vector>

#include "commands.h"
#include "diagnosis/redaction.h"
#include "diagnosis/store_files.h"
#include "store_values.h"
#include "texts.h"

namespace kelctl {
namespace {

constexpr std::string_view kPropertyPrefix = "property:";

struct StoreOptions {
  std::string name, value;
  bool onlyForward = false, reveal = false, force = false;
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

// No export reads a free property: the copy that the library reads next is looked at.
void GetProperty(Session& session, const StoreOptions& options) {
  const std::string key = options.name.substr(kPropertyPrefix.size());
  CheckPropertyKey(key);
  const StoreCopies copies = ReadStoreCopies(Product(LibraryPath(session.libraryPath)));
  const StoreCopy* const used = FileOf(copies, ChooseCopy(copies).copy);
  if (!used) throw CommandError(kCallFailed, "no copy of the store can be read: kelctl doctor");
  if (!store::LookupEntry(used->store, "INTEGRATION", CodePageFromUtf8(key).c_str())) {
    throw CommandError(kCallFailed, "the store has no property " + key);
  }
  const std::string value = Utf8FromCodePage(used->Value("INTEGRATION", CodePageFromUtf8(key).c_str()));
  const bool masked = NamesSecret(key) && !options.reveal && !value.empty();
  nlohmann::ordered_json document = {{"value", masked ? kMask : value}, {"result", KE_SUCCESS}, {"name", options.name}};
  if (masked) document["masked"] = true;
  session.Show((masked ? kMask : value) + "\n", document);
}

void Get(Session& session, const StoreOptions& options) {
  if (IsPropertyName(options.name)) return GetProperty(session, options);
  const StoreValue& value = FindStoreValue(options.name);
  const auto library = session.OpenTheLibrary();
  const Reading reading = ReadValue(*library, value);
  if (reading.result != KE_SUCCESS) throw CallError(value.getter.name, reading.result);
  nlohmann::ordered_json document = JsonOf(reading, options.reveal);
  document["name"] = value.name;
  session.Show(PlainText(reading, options.reveal) + "\n", document);
}

void Warn(const Session& session, const std::string& text) {
  session.err << (session.json ? DumpJson({{"warning", text}}) : "kelctl: warning: " + text + "\n");
}

// A store of other key blobs is never replaced by an empty one unasked.
void CheckOverwritable(const Product& product, bool force) {
  const StoreCopy live = ReadStoreCopy(product, "INTEGRA.DAT");
  if (force || !IsNoise(live)) return;
  throw CommandError(kRefused, "refused: " + live.file + " " + Describe(live) + " --force writes over it");
}

// The value of INTEGRA.DAT must be the one that was set; a state that only goes forward may be higher.
void VerifyOnDisk(const Session& session, const Product& product, const StoreOptions& options) {
  const StoreCopy live = ReadStoreCopy(product, "INTEGRA.DAT");
  if (live.state != CopyState::kRead)
    return Warn(session, "the value cannot be verified: " + live.file + " " + Describe(live));
  std::string found;
  if (IsPropertyName(options.name)) {
    const std::string key = CodePageFromUtf8(options.name.substr(kPropertyPrefix.size()));
    found = Utf8FromCodePage(live.Value("INTEGRATION", key.c_str()));
  } else {
    for (const Reading& reading : ValuesIn(&live.store)) {
      if (options.name == reading.value->name && reading.result == KE_SUCCESS) found = PlainText(reading, true);
    }
  }
  const bool number = !IsPropertyName(options.name) && FindStoreValue(options.name).getter.type == GetterType::kNumber;
  const bool same = number ? ParseNumber(found) == ParseNumber(options.value) : found == options.value;
  if (!same && !(options.onlyForward && ParseNumber(found) > ParseNumber(options.value))) {
    throw CommandError(kCallFailed, "the value was set, but " + live.file + " does not hold it");
  }
  if (!live.marked) Warn(session, "the store is not encrypted: kelctl doctor");
}

void Set(Session& session, const StoreOptions& options) {
  const bool property = IsPropertyName(options.name);
  const StoreValue* const value = property ? nullptr : &FindStoreValue(options.name);
  if (value && value->setter.type == SetterType::kNone) throw UsageError(options.name + " is read only");
  if (options.onlyForward && (!value || value->setter.type != SetterType::kState)) {
    throw UsageError("--only-forward is for install-state");
  }
  const Product product(LibraryPath(session.libraryPath));
  const auto library = session.OpenTheLibrary();
  CheckOverwritable(product, options.force);
  if (property) {
    WriteProperty(*library, options.name.substr(kPropertyPrefix.size()), options.value);
  } else {
    WriteValue(*library, *value, options.value, options.onlyForward);
  }
  VerifyOnDisk(session, product, options);
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
  get->add_option("NAME", options->name, "property:KEY, or one of: " + StoreValueNames())->required()->type_name("");
  set->add_option("NAME", options->name, "property:KEY, or one of: " + WritableStoreValueNames())
      ->required()
      ->type_name("");
  set->add_option("VALUE", options->value, "The new value")->required()->type_name("");
  set->add_flag("--only-forward", options->onlyForward, "Never lower the install-state");
  set->add_flag("--force", options->force, "Also write over a store that decrypts to noise");
  for (CLI::App* const command : {show, get}) {
    command->add_flag("--reveal", options->reveal, "Show secrets instead of ********");
  }
  AddSettingCommand(kelctl, session);
}

}  // namespace kelctl
