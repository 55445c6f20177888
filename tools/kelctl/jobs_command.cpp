// The commands below jobs that ask the scheduler: the library has no export for them.
#include <windows.h>

#include <ostream>

#include "commands.h"
#include "texts.h"
#include "win/process.h"

namespace kelctl {
namespace {

// The scheduler writes to this program's output.
void List(Session& session) {
  const auto library = session.OpenTheLibrary();
  const std::string scheduler = library->Folder() + "\\..\\Scheduler\\zumat.exe";
  session.out.flush();
  const win::Process process =
      win::StartProcess(WideFromUtf8("\"" + scheduler + "\" -list" + (session.json ? " --json" : "")), DWORD{0});
  if (!process) throw LibraryError("cannot start " + scheduler + " (" + WindowsError(GetLastError()) + ")");
  process.Wait(INFINITE);
  session.exitCode = static_cast<int>(process.ExitCode().value_or(1));
}

}  // namespace

void AddJobCommands(CLI::App& kelctl, Session& session) {
  CLI::App* const list = kelctl.get_subcommand("jobs")->add_subcommand("list", "Has the scheduler list its jobs");
  list->footer("Example: kelctl jobs list --json");
  list->callback([&session] { List(session); });
}

}  // namespace kelctl
