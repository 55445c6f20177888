// A scheduler command, compared with bare CreateProcess, wait and exit code of the same command line.
#include <cstdio>
#include <filesystem>
#include <stdexcept>
#include <string>

#include "bench/build_folder.h"
#include "bench/measure.h"
#include "schedule/jobs.h"
#include "trace/trace.h"
#include "win/module.h"
#include "win/owner.h"

namespace {

namespace fs = std::filesystem;

constexpr std::size_t kRounds = 201;
constexpr double kLimit = 1.02;
constexpr char kCommand[] = "zumat -TaskID:9 -addjob:KEPLPMNG:\"KELUPD\" -EveryHoursMins:1:0 -Every:Su,M,T,W,Th,F,S";

// A product tree with a scheduler that ends at once. The linked-in code takes the DLL in it for its own module.
class Product {
 public:
  Product() {
    fs::create_directories(root_ / "KELUtils");
    fs::create_directories(root_ / "Scheduler");
    fs::copy_file(bench::BuildFolder() / "bin" / "KELUtils.dll", Dll(), fs::copy_options::overwrite_existing);
    fs::create_directories(root_ / "Common");
    fs::copy_file(bench::BuildFolder() / "devkit" / "TvLogSys.dll", root_ / "Common" / "TvLogSys.dll",
                  fs::copy_options::overwrite_existing);
    fs::copy_file(bench::BuildFolder() / "bench" / "idle_program.exe", root_ / "Scheduler" / "zumat.exe",
                  fs::copy_options::overwrite_existing);
    module_.Reset(LoadLibraryW(Dll().c_str()));
    win::AttachModule(module_.Get());
  }
  ~Product() {
    win::DetachModule();
    module_.Reset();
    std::error_code ignored;
    fs::remove_all(root_, ignored);
  }

  std::string BareCommand() const {
    return "\"" + win::GetModuleDirectory() + "\\..\\Scheduler\\zumat\"" + std::string(kCommand).substr(5);
  }

 private:
  fs::path Dll() const { return root_ / "KELUtils" / "KELUtils.dll"; }

  const fs::path root_ = fs::temp_directory_path() / ("kelutils-bench-" + std::to_string(GetCurrentProcessId()));
  win::ModuleHandle module_;
};

void RunBare(const std::string& command) {
  char line[8200] = {};
  command.copy(line, sizeof line - 1);
  STARTUPINFOA startup{};
  startup.cb = sizeof startup;
  startup.dwFlags = STARTF_FORCEOFFFEEDBACK;
  PROCESS_INFORMATION process{};
  if (!CreateProcessA(nullptr, line, nullptr, nullptr, FALSE, CREATE_NEW_PROCESS_GROUP | DETACHED_PROCESS, nullptr,
                      nullptr, &startup, &process)) {
    throw std::runtime_error("the program does not start");
  }
  DWORD exitCode = 1;
  WaitForSingleObject(process.hProcess, 90000);
  GetExitCodeProcess(process.hProcess, &exitCode);
  CloseHandle(process.hThread);
  CloseHandle(process.hProcess);
  if (exitCode != 0) throw std::runtime_error("the program fails");
}

}  // namespace

// NOLINTNEXTLINE(bugprone-exception-escape): a measurement that cannot be made ends with the exception's text
int main() {
  const Product product;
  const trace::TraceScope scope;  // as in the export around it
  const std::string bare = product.BareCommand();
  const auto nothing = [] {};
  const auto measured = [] {
    if (schedule::CallZumAT(kCommand) != KE_SUCCESS) throw std::runtime_error("the scheduler fails");
  };
  return bench::Compare(bench::Side{"CallZumAT", nothing, measured},
                        bench::Side{"bare CreateProcess", nothing, [&] { RunBare(bare); }}, kRounds, kLimit)
             ? 0
             : 1;
}
