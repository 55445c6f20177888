// The command line: which command it names, and how what a command throws ends the program.
#include <algorithm>
#include <nlohmann/json.hpp>
#include <numeric>
#include <optional>
#include <ostream>
#include <utility>

#include "commands.h"
#include "diagnosis/findings.h"
#include "diagnosis/log_file.h"
#include "diagnosis/store_files.h"
#include "text/paths.h"
#include "text/text.h"
#include "texts.h"
#include "win/profile.h"

namespace kelctl {
namespace {

constexpr char kFooter[] =
    "Exit codes: 0 success, 1 wrong usage, an export failed or the answer is no, 2 KELUtils.dll cannot be used, 3 "
    "doctor\n"
    "found a failure, 4 refused. NO_COLOR in the environment switches colours off.\n"
    "Example: kelctl --dll C:\\Agent\\KELUtils\\KELUtils.dll show";

// What a result code, its name, or a code of the doctor means, and what to do.
void Explain(Session& session, const std::string& typed) {
  for (const FindingCode& row : FindingCodes()) {
    if (!text::SameName(typed, row.code)) continue;
    return session.Show(std::string(row.code) + ": " + row.meaning + "\nwhat to do: " + row.remedy + "\n",
                        {{"code", row.code}, {"meaning", row.meaning}, {"remedy", row.remedy}});
  }
  ResultCode code = FindResultCode(KE_SUCCESS);
  const bool number = !typed.empty() && typed.find_first_not_of("0123456789") == typed.npos;
  if (number) {
    code = FindResultCode(static_cast<KE_RESULT>(ParseNumber(typed, 0, UINT32_MAX)));
  } else {
    constexpr KE_RESULT kFirst = KE_MISSING_ARGUMENT, kLast = KE_UPDATE_FAILED_1567;
    for (KE_RESULT each = kFirst; each <= kLast && !text::SameName(typed, code.name); ++each)
      code = FindResultCode(each);
    if (!text::SameName(typed, code.name)) {
      throw UsageError("\"" + typed + "\" is neither a result code, its name, nor a code of kelctl doctor");
    }
  }
  session.Show(DescribeResult(code.code) + "\nwhat to do: " + code.remedy + "\n",
               {{"code", code.code}, {"name", code.name}, {"meaning", code.text}, {"remedy", code.remedy}});
}

void AddExplainCommand(CLI::App& kelctl, Session& session) {
  CLI::App* const command = kelctl.add_subcommand("explain", "Says what a result or a code of doctor means");
  const auto code = std::make_shared<std::string>();
  command->add_option("CODE", *code, "A result code, its name, or a code of doctor")->required()->type_name("");
  command->footer("Example: kelctl explain 1782");
  command->callback([&session, code] { Explain(session, *code); });
}

void AddCommands(CLI::App& kelctl, Session& session) {
  // The commands that were added since the last call make a group of the help.
  const auto group = [&](const char* name) {
    for (CLI::App* const command : kelctl.get_subcommands([](const CLI::App*) { return true; })) {
      if (command->get_group() == "Subcommands") command->group(name);
    }
  };
  AddDiagnosisCommands(kelctl, session);
  AddExplainCommand(kelctl, session);
  AddRepairCommand(kelctl, session);
  AddLogCommand(kelctl, session);
  group("Support");
  AddStoreCommands(kelctl, session);
  group("Store");
  AddExportCommands(kelctl, session);
  AddJobCommands(kelctl, session);
  AddPolicyCommand(kelctl, session);
  group("Operations");
}

// The number of characters to insert, delete or replace to make one word of the other.
std::size_t DistanceOf(const std::string& left, const std::string& right) {
  std::vector<std::size_t> row(right.size() + 1);
  std::iota(row.begin(), row.end(), std::size_t{0});
  for (std::size_t i = 0; i < left.size(); ++i) {
    std::size_t diagonal = std::exchange(row[0], i + 1);
    for (std::size_t j = 0; j < right.size(); ++j) {
      const std::size_t replaced = diagonal + (left[i] == right[j] ? 0 : 1);
      diagonal = row[j + 1];
      row[j + 1] = std::min({replaced, row[j] + 1, diagonal + 1});
    }
  }
  return row.back();
}

// Throws UsageError for a word that should be a command and is not, with the nearest one.
void CheckCommands(CLI::App& kelctl, const std::vector<std::string>& arguments) {
  CLI::App* parent = &kelctl;
  for (std::size_t i = 0; i < arguments.size(); ++i) {
    const auto commands = parent->get_subcommands([](const CLI::App*) { return true; });
    const bool needed = parent->get_require_subcommand_min() > 0;
    if (arguments[i] == "--dll") ++i;
    if (i >= arguments.size() || commands.empty() || !needed) return;
    if (arguments[i].starts_with('-') || arguments[i - (i > 0 ? 1 : 0)] == "--dll") continue;
    const auto named = std::ranges::find(commands, arguments[i], &CLI::App::get_name);
    if (named != commands.end()) {
      parent = *named;
      continue;
    }
    const auto distance = [&](const CLI::App* command) {  // a hidden command is never suggested
      return command->get_group().empty() ? std::string::npos : DistanceOf(arguments[i], command->get_name());
    };
    const auto nearest = std::ranges::min_element(commands, {}, distance);
    const std::string hint = distance(*nearest) <= 3 ? "; did you mean \"" + (*nearest)->get_name() + "\"?"
                                                     : "; kelctl --help lists the commands";
    throw UsageError("no such command: " + arguments[i] + hint);
  }
}

/// Runs one command with the log at level 20, and shows its lines on standard error.
class TracedRun {
 public:
  explicit TracedRun(Session& session)
      : session_(session),
        product_(LibraryPath(session.libraryPath)),
        settings_(product_.Path({"", text::kSettingsFile})),
        level_(win::ReadProfile(settings_, kSection, kKey, "", 64)),
        follower_(product_.TraceLog()) {
    if (!win::WriteProfile(settings_, kSection, kKey, "20")) {
      throw CommandError(kCallFailed,
                         "cannot write " + Utf8FromCodePage(settings_) + " (" + WindowsError(GetLastError()) + ")");
    }
  }
  TracedRun(const TracedRun&) = delete;
  TracedRun& operator=(const TracedRun&) = delete;
  ~TracedRun() {
    win::WriteProfile(settings_, kSection, kKey, level_.empty() ? nullptr : level_.c_str());
    try {
      const Redactor redactor = MakeRedactor(product_, ReadStoreCopies(product_));
      for (TraceRecord& record : ParseTrace(follower_.NewText()).records) {
        session_.err << Utf8FromCodePage(TraceLine(redactor.Record(std::move(record)))) << "\n";
      }
    } catch (const std::exception& error) {
      session_.err << "kelctl: the log cannot be shown: " << error.what() << "\n";
    }
  }

 private:
  static constexpr char kSection[] = "LOG", kKey[] = "LEVELLOG";

  Session& session_;
  const Product product_;
  const std::string settings_, level_;
  LogFollower follower_;
};

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
  session.err << DumpJson(Answer(document));
  return exitCode;
}

}  // namespace

void Session::Show(const std::string& text, const nlohmann::ordered_json& document) const {
  out << (json ? DumpJson(Answer(document)) : text);
}

int RunCommandLine(std::vector<std::string> arguments, Session session) {
  CLI::App kelctl("Shows and changes the state of the agent through KELUtils.dll, and examines its installation.",
                  "kelctl");
  SetUp(kelctl, session);
  bool trace = false;
  std::optional<TracedRun> traced;
  kelctl.add_flag("--trace", trace, "Run the command with the log at level 20, and show its lines");
  kelctl.parse_complete_callback([&] {
    if (trace) traced.emplace(session);
  });
  session.json = std::ranges::find(arguments, "--json") != arguments.end();  // also for errors of the parser
  try {
    CheckCommands(kelctl, arguments);
    std::ranges::reverse(arguments);  // the order in which CLI11 takes a vector
    kelctl.parse(std::move(arguments));
    return session.exitCode;
  } catch (const CLI::ParseError& error) {
    if (error.get_exit_code() == 0) return kelctl.exit(error, session.out, session.err);
    return Fail(session, UsageError(std::string(error.what()) + "; kelctl COMMAND --help shows what it takes"),
                kCallFailed);
  } catch (const UsageError& error) {
    return Fail(session, error, kCallFailed);
  } catch (const CallError& error) {
    return Fail(session, error, kCallFailed, error.result);
  } catch (const LibraryError& error) {
    return Fail(session, error, kLibraryUnusable);
  } catch (const CommandError& error) {
    return Fail(session, error, error.exitCode);
  }
}

}  // namespace kelctl
