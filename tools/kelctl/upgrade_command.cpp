#include "KELUtils.h"
#include "arguments.h"
#include "calls.h"
#include "commands.h"

namespace kelctl {
namespace {

void Start(Session& session, const std::string& directory) {
  const auto library = session.OpenTheLibrary();
  auto* const start = KELCTL_EXPORT(*library, KE_UpgradeStart);
  ThrowUnlessSuccess("KE_UpgradeStart", start(library->ToCodePage(FullPath(directory)).c_str()));
}

struct CompletionOptions {
  std::uint32_t resultCode = 0;
  std::string version;
  bool onlyStart = false;
};

void Complete(Session& session, const CompletionOptions& options) {
  CheckOneLine(options.version);
  const auto library = session.OpenTheLibrary();
  const std::string version = library->ToCodePage(options.version);
  if (options.onlyStart) {
    auto* const start = KELCTL_EXPORT(*library, KE_ScheduleUpgradeComplete);
    return ThrowUnlessSuccess("KE_ScheduleUpgradeComplete",
                              start(static_cast<std::int32_t>(options.resultCode), version.c_str()));
  }
  auto* const complete = KELCTL_EXPORT(*library, KE_UpgradeComplete);
  ThrowUnlessSuccess("KE_UpgradeComplete", complete(options.resultCode, version.c_str()));
}

void AddStart(CLI::App* command, Session& session) {
  CLI::App* const start = command->add_subcommand("start", "Brings the configuration files up to the current layout");
  const auto directory = std::make_shared<std::string>();
  start->add_option("DIR", *directory, "The installation directory")
      ->required()
      ->type_name("")
      ->check(CLI::ExistingDirectory);
  start->footer("Example: kelctl upgrade start C:\\Agent");
  start->callback([&session, directory] { Start(session, *directory); });
}

void AddComplete(CLI::App* command, Session& session) {
  CLI::App* const complete = command->add_subcommand("complete", "Schedules the jobs anew and records the version");
  const auto options = std::make_shared<CompletionOptions>();
  complete->add_option("CODE", options->resultCode, "The installer's result code")->required()->type_name("");
  complete->add_option("VERSION", options->version, "The new version")->required()->type_name("");
  complete->add_flag("--only-start", options->onlyStart, "Only start the plug-in manager");
  complete->footer("Example: kelctl upgrade complete 0 2.1.0");
  complete->callback([&session, options] { Complete(session, *options); });
}

}  // namespace

void AddUpgradeCommand(CLI::App& kelctl, Session& session) {
  CLI::App* const command = kelctl.add_subcommand("upgrade", "The steps of an upgrade");
  command->require_subcommand(1);
  command->footer("Example: kelctl upgrade start C:\\Agent");
  AddStart(command, session);
  AddComplete(command, session);
}

}  // namespace kelctl
