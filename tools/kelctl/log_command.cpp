#include <windows.h>

#include <nlohmann/json.hpp>
#include <optional>
#include <ostream>

#include "commands.h"
#include "diagnosis/log_file.h"
#include "diagnosis/status.h"
#include "diagnosis/store_files.h"
#include "text/paths.h"
#include "texts.h"
#include "trace/log_configuration.h"
#include "win/profile.h"

namespace kelctl {
namespace {

constexpr DWORD kPauseMilliseconds = 250;

struct LogOptions {
  std::size_t lines = 20;
  bool follow = false;
  bool reveal = false;
};

/// Set by Ctrl+C and Ctrl+Break, from a thread of Windows.
HANDLE g_interrupted = nullptr;

BOOL WINAPI OnConsoleEvent(DWORD) { return SetEvent(g_interrupted); }

/// Prints records. A followed log has no end, so with --json each record is a document of one line.
class RecordPrinter {
 public:
  RecordPrinter(Session& session, const Product& product, const LogOptions& options)
      : session_(session), product_(product), options_(options) {}

  void Print(std::vector<TraceRecord> records) const {
    // Made again each time: the store may hold another secret by now.
    std::optional<Redactor> redactor;
    if (!options_.reveal) redactor = MakeRedactor(product_, ReadStoreCopies(product_));
    std::string text;
    auto list = nlohmann::ordered_json::array();
    for (TraceRecord& record : records) {
      if (redactor) record = redactor->Record(std::move(record));
      text += Utf8FromCodePage(TraceLine(record)) + "\n";
      list.push_back(JsonOf(record));
    }
    if (!options_.follow) return session_.Show(text, {{"records", list}});
    for (const auto& record : list) {
      if (session_.json)
        session_.out << Answer(record).dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace) << "\n";
    }
    if (!session_.json) session_.out << text;
    session_.out.flush();
  }

 private:
  Session& session_;
  const Product& product_;
  const LogOptions& options_;
};

void Follow(const RecordPrinter& printer, LogFollower& follower) {
  const win::ProcessHandle interrupted(CreateEventA(nullptr, TRUE, FALSE, nullptr));
  g_interrupted = interrupted.Get();
  SetConsoleCtrlHandler(OnConsoleEvent, TRUE);
  do {
    const std::string text = follower.NewText();
    if (!text.empty()) printer.Print(ParseTrace(text).records);
  } while (WaitForSingleObject(interrupted.Get(), kPauseMilliseconds) == WAIT_TIMEOUT);
  SetConsoleCtrlHandler(OnConsoleEvent, FALSE);
}

void ShowLog(Session& session, const LogOptions& options) {
  const Product product(LibraryPath(session.libraryPath));
  const RecordPrinter printer(session, product, options);
  LogFollower follower(product.TraceLog());  // before the end is read: a record in between is shown twice, not lost
  printer.Print(LastRecords(product.TraceLog(), options.lines, [](const TraceRecord&) { return true; }));
  if (options.follow) Follow(printer, follower);
}

void ShowOrSetLevel(Session& session, const std::string& level) {
  const Product product(LibraryPath(session.libraryPath));
  const std::string settings = product.Path({"", text::kSettingsFile});
  if (!level.empty()) {
    const std::string number = std::to_string(ParseNumber(level, 0, 100));
    if (!win::WriteProfile(settings, "LOG", "LEVELLOG", number.c_str())) {
      throw CommandError(kCallFailed,
                         "cannot write " + Utf8FromCodePage(settings) + " (" + WindowsError(GetLastError()) + ")");
    }
  }
  const auto now = trace::LogLevelFromText(win::ReadProfile(settings, "LOG", "LEVELLOG", "", 64).c_str());
  session.Show(std::to_string(now) + "\n", {{"level", now}});
}

}  // namespace

void AddLogCommand(CLI::App& kelctl, Session& session) {
  CLI::App* const command = kelctl.add_subcommand("log", "Shows the end of the trace log, KELUtils.log");
  const auto options = std::make_shared<LogOptions>();
  command->add_option("-n", options->lines, "How many records (default: 20)")
      ->type_name("N")
      ->check(CLI::Range(0, 100000));
  command->add_flag("-f,--follow", options->follow, "Go on with new records, until Ctrl+C");
  command->add_flag("--reveal", options->reveal, "Show secrets and the text of the store too");
  command->footer("Example: kelctl log -f -n 50");
  command->callback([&session, options, command] {
    if (command->get_subcommands().empty()) ShowLog(session, *options);
  });
  CLI::App* const level = command->add_subcommand("level", "Shows the level of the log, or sets it; 0 records nothing");
  const auto number = std::make_shared<std::string>();
  level->add_option("N", *number, "The new level; 20 records everything")->type_name("");
  level->footer("Example: kelctl log level 20");
  level->callback([&session, number] { ShowOrSetLevel(session, *number); });
}

}  // namespace kelctl
