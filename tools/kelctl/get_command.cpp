#include <nlohmann/json.hpp>

#include "arguments.h"
#include "commands.h"
#include "errors.h"
#include "rendering.h"

namespace kelctl {
namespace {

struct GetOptions {
  std::string name;
  bool reveal = false;
};

void Get(Session& session, const GetOptions& options) {
  if (IsPropertyName(options.name)) throw UsageError("a property can only be set");
  const StoreValue& value = FindStoreValue(options.name);
  const auto library = session.OpenTheLibrary();
  const ReadStoreValue read{&value, ReadValue(*library, value)};
  if (read.reading.result != KE_SUCCESS) throw CallError(value.getter.name, read.reading.result);
  nlohmann::ordered_json document = JsonOf(read, options.reveal);
  document["name"] = value.name;
  session.Show(PlainText(read, options.reveal) + "\n", document);
}

}  // namespace

void AddGetCommand(CLI::App& kelctl, Session& session) {
  CLI::App* const command = kelctl.add_subcommand("get", "Shows one value of the store");
  const auto options = std::make_shared<GetOptions>();
  command->add_option("NAME", options->name, "One of: " + StoreValueNames())->required()->type_name("");
  command->add_flag("--reveal", options->reveal, "Show a secret instead of ********");
  command->footer("Example: kelctl get agent-id");
  command->callback([&session, options] { Get(session, *options); });
}

}  // namespace kelctl
