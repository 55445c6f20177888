#include <nlohmann/json.hpp>
#include <ostream>
#include <vector>

#include "command_line.h"
#include "commands.h"
#include "rendering.h"

namespace kelctl {
namespace {

constexpr char kFooter[] =
    "Reading lets the library repair a damaged store from its copies, as any reading by the agent does.\n"
    "Example: kelctl show --json";

struct ShowOptions {
  bool reveal = false;
};

void Show(Session& session, const ShowOptions& options) {
  const auto library = session.OpenTheLibrary();
  std::vector<ReadStoreValue> values;
  for (const StoreValue& value : StoreValues()) values.push_back({&value, ReadValue(*library, value)});
  session.Show(RenderTable(values, options.reveal), JsonOf(values, options.reveal));
  if (!AnyFailure(values)) return;
  if (!session.json) session.err << "kelctl: the store, or a value of it, could not be read\n";
  session.exitCode = kCallFailed;
}

}  // namespace

void AddShowCommand(CLI::App& kelctl, Session& session) {
  CLI::App* const command = kelctl.add_subcommand("show", "Shows every value of the store");
  const auto options = std::make_shared<ShowOptions>();
  command->add_flag("--reveal", options->reveal, "Show secrets instead of ********");
  command->footer(kFooter);
  command->callback([&session, options] { Show(session, *options); });
}

}  // namespace kelctl
