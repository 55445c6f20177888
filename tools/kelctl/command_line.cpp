// The command line: which command it names, and how what a command throws ends the program.
#include <algorithm>
#include <nlohmann/json.hpp>
#include <ostream>

#include "commands.h"
#include "texts.h"

namespace kelctl {
namespace {

constexpr char kFooter[] =
    "Exit codes: 0 success, 1 an export failed or the answer is no, 2 KELUtils.dll cannot be used, 3 doctor found a\n"
    "failure, 4 refused, others: wrong usage. NO_COLOR in the environment switches colours off.\n"
    "Example: kelctl --dll C:\\Agent\\KELUtils\\KELUtils.dll show";

void AddCommands(CLI::App& kelctl, Session& session) {
  AddDiagnosisCommands(kelctl, session);
  AddRepairCommand(kelctl, session);
  AddLogCommand(kelctl, session);
  AddStoreCommands(kelctl, session);
  AddExportCommands(kelctl, session);
  AddJobCommands(kelctl, session);
  AddPolicyCommand(kelctl, session);
}

void SetUp(CLI::App& kelctl, Session& session) {
  kelctl.set_version_flag("--version", "kelctl " KELCTL_VERSION);
  kelctl
      .add_option("--dll", session.libraryPath,
                  "The library to use (default: KELUtils.dll in the folder of kelctl.exe)")
      ->type_name("PATH");
  kelctl.add_flag("--json", session.json, "Show results, and errors, as JSON");
  kelctl.footer(kFooter);
  kelctl.fallthrough();                       // --dll and --json may also stand behind the command
  kelctl.allow_windows_style_options(false);  // a value may begin with "/"
  kelctl.require_subcommand(1);
  AddCommands(kelctl, session);
}

int Fail(const Session& session, const std::exception& error, int exitCode, KE_RESULT result = KE_SUCCESS) {
  if (!session.json) {
    session.err << "kelctl: " << error.what() << "\n";
    return exitCode;
  }
  nlohmann::ordered_json document = {{"error", error.what()}, {"exitCode", exitCode}};
  if (result != KE_SUCCESS) {
    document["result"] = result;
    document["resultName"] = FindResultCode(result).name;
  }
  session.err << DumpJson(document);
  return exitCode;
}

}  // namespace

void Session::Show(const std::string& text, const nlohmann::ordered_json& document) const {
  out << (json ? DumpJson(document) : text);
}

int RunCommandLine(std::vector<std::string> arguments, Session session) {
  CLI::App kelctl("Shows and changes the state of the agent through KELUtils.dll, and examines its installation.",
                  "kelctl");
  SetUp(kelctl, session);
  try {
    std::ranges::reverse(arguments);  // the order in which CLI11 takes a vector
    kelctl.parse(std::move(arguments));
    return session.exitCode;
  } catch (const CLI::ParseError& error) {
    return kelctl.exit(error, session.out, session.err);
  } catch (const UsageError& error) {
    return Fail(session, error, static_cast<int>(CLI::ExitCodes::ValidationError));
  } catch (const CallError& error) {
    return Fail(session, error, kCallFailed, error.result);
  } catch (const LibraryError& error) {
    return Fail(session, error, kLibraryUnusable);
  } catch (const CommandError& error) {
    return Fail(session, error, error.exitCode);
  }
}

}  // namespace kelctl
