#include "command_line.h"

#include <algorithm>
#include <ostream>

#include "errors.h"

namespace kelctl {
namespace {

constexpr char kFooter[] =
    "Exit codes: 0 success, 1 an export failed, 2 KELUtils.dll cannot be used, others: wrong usage.\n"
    "Example: kelctl --dll C:\\Agent\\KELUtils\\KELUtils.dll show";

void AddCommands(CLI::App& kelctl, Session& session) {
  AddShowCommand(kelctl, session);
  AddGetCommand(kelctl, session);
  AddSetCommand(kelctl, session);
  AddSettingCommand(kelctl, session);
  AddFileCommand(kelctl, session);
  AddIntegrationCommands(kelctl, session);
  AddPasswordCommand(kelctl, session);
  AddProxyCommand(kelctl, session);
  AddRegistrationCommands(kelctl, session);
  AddJobsCommand(kelctl, session);
  AddLauncherCommands(kelctl, session);
  AddOsCommand(kelctl, session);
  AddServerCommand(kelctl, session);
  AddUpgradeCommand(kelctl, session);
  AddEventCommand(kelctl, session);
  AddPolicyCommand(kelctl, session);
  AddPromptCommand(kelctl, session);
  AddUuidCommand(kelctl, session);
}

void SetUp(CLI::App& kelctl, Session& session) {
  kelctl.set_version_flag("--version", "kelctl " KELCTL_VERSION);
  kelctl.add_option("--dll", session.libraryPath, "The library to use (default: KELUtils.dll beside kelctl.exe)")
      ->type_name("PATH");
  kelctl.footer(kFooter);
  kelctl.fallthrough();                       // --dll may also stand behind the command
  kelctl.allow_windows_style_options(false);  // a value may begin with "/"
  kelctl.require_subcommand(1);
  AddCommands(kelctl, session);
}

int Failure(std::ostream& err, const std::exception& error, int exitCode) {
  err << "kelctl: " << error.what() << "\n";
  return exitCode;
}

}  // namespace

int RunCommandLine(std::vector<std::string> arguments, std::ostream& out, std::ostream& err) {
  Session session{.out = out, .err = err};
  CLI::App kelctl("Shows and changes the state of the agent through KELUtils.dll.", "kelctl");
  SetUp(kelctl, session);
  try {
    std::ranges::reverse(arguments);  // the order in which CLI11 takes a vector
    kelctl.parse(std::move(arguments));
    return session.exitCode;
  } catch (const CLI::ParseError& error) {
    return kelctl.exit(error, out, err);
  } catch (const UsageError& error) {
    return Failure(err, error, static_cast<int>(CLI::ExitCodes::ValidationError));
  } catch (const CallError& error) {
    return Failure(err, error, kCallFailed);
  } catch (const LibraryError& error) {
    return Failure(err, error, kLibraryUnusable);
  }
}

}  // namespace kelctl
