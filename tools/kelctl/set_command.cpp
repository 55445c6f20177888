#include "arguments.h"
#include "commands.h"
#include "errors.h"
#include "store_access.h"

namespace kelctl {
namespace {

constexpr char kFooter[] =
    "A value that begins with \"-\" goes behind \"--\". The value rcm-password is stored as it is given: enciphered "
    "text.\n"
    "Example: kelctl set container 17\n"
    "Example: kelctl set install-state 200 --only-forward\n"
    "Example: kelctl set property:Site -- -north";

struct SetOptions {
  std::string name;
  std::string value;
  bool onlyForward = false;
};

void Set(Session& session, const SetOptions& options) {
  const bool property = IsPropertyName(options.name);
  const StoreValue* const value = property ? nullptr : &FindStoreValue(options.name);
  if (value && value->setter.type == SetterType::kNone) throw UsageError(options.name + " is read only");
  if (options.onlyForward && (!value || value->setter.type != SetterType::kState)) {
    throw UsageError("--only-forward is for install-state");
  }
  const auto library = session.OpenTheLibrary();
  if (property) return WriteProperty(*library, PropertyKey(options.name), options.value);
  WriteValue(*library, *value, options.value, options.onlyForward);
}

}  // namespace

void AddSetCommand(CLI::App& kelctl, Session& session) {
  CLI::App* const command = kelctl.add_subcommand("set", "Sets one value of the store");
  const auto options = std::make_shared<SetOptions>();
  command->add_option("NAME", options->name, "property:KEY, or one of: " + WritableStoreValueNames())
      ->required()
      ->type_name("");
  command->add_option("VALUE", options->value, "The new value")->required()->type_name("");
  command->add_flag("--only-forward", options->onlyForward, "Leave an install-state alone that is not lower");
  command->footer(kFooter);
  command->callback([&session, options] { Set(session, *options); });
}

}  // namespace kelctl
