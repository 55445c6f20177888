#include "command_line.h"
#include "commands.h"
#include "diagnosis/status.h"
#include "diagnosis/store_files.h"

namespace kelctl {
namespace {

void ShowStatus(Session& session, std::size_t errorCount) {
  const Product product(LibraryPath(session.libraryPath));
  const StoreCopies copies = ReadStoreCopies(product);
  const Status status = GatherStatus(product, copies, MakeRedactor(product, copies), errorCount);
  session.Show(RenderStatus(status), JsonOf(status));
  if (status.choice.copy == CopyInUse::kNone) session.exitCode = kCallFailed;
}

}  // namespace

void AddStatusCommand(CLI::App& kelctl, Session& session) {
  CLI::App* const command = kelctl.add_subcommand(
      "status", "Shows the identity, which copy of the store is in use, versions, other modules and the last errors");
  const auto errorCount = std::make_shared<std::size_t>(5);
  command->add_option("--errors", *errorCount, "How many of the trace log's last errors (default: 5)")
      ->type_name("N")
      ->check(CLI::Range(0, 1000));
  command->footer(
      "Told from the files alone: nothing is changed, and nothing repaired. Exit code 1 when no copy of the store "
      "can be used.\n"
      "Example: kelctl status --json");
  command->callback([&session, errorCount] { ShowStatus(session, *errorCount); });
}

}  // namespace kelctl
