#include "support/product_tree.h"

#include <doctest/doctest.h>

#include <fstream>
#include <iterator>
#include <stdexcept>
#include <utility>
#include <vector>

namespace support {

namespace fs = std::filesystem;

fs::path TestFolder() {
  wchar_t name[MAX_PATH];
  GetModuleFileNameW(nullptr, name, MAX_PATH);
  return fs::path(name).parent_path();
}

std::string ReadFile(const fs::path& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

void WriteFile(const fs::path& path, const std::string& content) {
  std::ofstream file(path, std::ios::binary | std::ios::trunc);
  file << content;
  REQUIRE_MESSAGE(file.good(), path.string());
}

Folder::Folder() {
  // Folders of earlier runs may be left: a DLL in use cannot be removed, and process numbers repeat.
  static int count = 0;
  do {
    root_ = fs::temp_directory_path() / ("kelutils-" + std::to_string(++count));
  } while (!fs::create_directory(root_));
}

Folder::~Folder() {
  std::error_code ignored;
  fs::remove_all(root_, ignored);
}

ProductTree::ProductTree() {
  for (const char* folder : {"KELUtils", "Common", "KESAgent", "KELSysCf"}) fs::create_directories(Path(folder));
  fs::copy_file(BuildFolder() / "bin" / "KELUtils.dll", Path("KELUtils/KELUtils.dll"));
  AddDevkit("ApiCr.dll", "KELUtils");
  AddDevkit("ApiCr.dll", "Common");
}

void Folder::AddDevkit(const std::string& file, const std::string& folder) const {
  fs::create_directories(Path(folder));
  fs::copy_file(BuildFolder() / "devkit" / file, Path(folder) / file, fs::copy_options::overwrite_existing);
}

void ProductTree::TurnLogOn() const {
  AddDevkit("TvLogSys.dll", "Common");
  WriteFile(Path("KELUtils/KELUTILS.INI"), "[LOG]\r\nLEVELLOG=20\r\n");
}

void ProductTree::AddFake(const std::string& fake, const std::string& relative) const {
  const fs::path target = Path(relative);
  fs::create_directories(target.parent_path());
  fs::copy_file(TestFolder() / (fake + ".dll"), target, fs::copy_options::overwrite_existing);
}

PROCESS_INFORMATION StartProgram(std::string commandLine, const STARTUPINFOA& how) {
  STARTUPINFOA startup = how;
  startup.cb = sizeof startup;
  PROCESS_INFORMATION process{};
  const auto start = [&] {
    return CreateProcessA(nullptr, commandLine.data(), nullptr, nullptr, startup.dwFlags & STARTF_USESTDHANDLES, 0,
                          nullptr, nullptr, &startup, &process);
  };
  // Now and then Wine answers ERROR_INTERNAL_ERROR for a program that is there, on a busy machine.
  REQUIRE_MESSAGE((start() || (GetLastError() == ERROR_INTERNAL_ERROR && start())), commandLine);
  return process;
}

ProgramRun RunProgram(const std::string& commandLine) {
  SECURITY_ATTRIBUTES inherited{sizeof inherited, nullptr, TRUE};
  STARTUPINFOA startup{};
  startup.dwFlags = STARTF_USESTDHANDLES;
  HANDLE reader = nullptr;
  REQUIRE(CreatePipe(&reader, &startup.hStdOutput, &inherited, 1 << 20));
  SetHandleInformation(reader, HANDLE_FLAG_INHERIT, 0);
  startup.hStdError = startup.hStdOutput;
  const PROCESS_INFORMATION process = StartProgram(commandLine, startup);
  CloseHandle(startup.hStdOutput);
  ProgramRun run{};
  char buffer[4096];
  // To the end of the program: what Wine starts along with it holds the pipe open.
  for (DWORD got = 0, end = WAIT_TIMEOUT; PeekNamedPipe(reader, nullptr, 0, nullptr, &got, nullptr);) {
    if (got == 0 && end == WAIT_OBJECT_0) break;
    if (got != 0 && ::ReadFile(reader, buffer, sizeof buffer, &got, nullptr)) run.output.append(buffer, got);
    if (got == 0) end = WaitForSingleObject(process.hProcess, 5);
  }
  CHECK(WaitForSingleObject(process.hProcess, 60000) == WAIT_OBJECT_0);
  GetExitCodeProcess(process.hProcess, &run.exitCode);
  CloseHandle(reader);
  CloseHandle(process.hThread);
  CloseHandle(process.hProcess);
  std::erase(run.output, '\r');
  return run;
}

unsigned long RunAtOnce(int processes, const std::string& name) {
  char self[MAX_PATH];
  GetModuleFileNameA(nullptr, self, sizeof self);
  std::vector<PROCESS_INFORMATION> started;
  for (int i = 0; i < processes; ++i)
    started.push_back(StartProgram("\"" + std::string(self) + "\" --no-skip -tc=\"" + name + "\""));
  DWORD all = 0;
  for (const PROCESS_INFORMATION& process : started) {
    DWORD code = 0;
    CHECK(WaitForSingleObject(process.hProcess, 60000) == WAIT_OBJECT_0);
    GetExitCodeProcess(process.hProcess, &code);
    all |= code;
    CloseHandle(process.hThread);
    CloseHandle(process.hProcess);
  }
  return all;
}

LoadedDll::LoadedDll(const fs::path& path) : module_(LoadLibraryW(path.c_str())) {
  REQUIRE_MESSAGE(module_ != nullptr, path.string());
}

LoadedDll LoadedDll::Separate(const fs::path& path) {
  static int count = 0;
  const fs::path copy = path.parent_path() / ("copy" + std::to_string(++count) + ".dll");
  fs::copy_file(path, copy);
  LoadedDll dll(copy);
  dll.copy_ = copy;
  return dll;
}

LoadedDll::LoadedDll(LoadedDll&& other) : module_(std::exchange(other.module_, nullptr)) { copy_.swap(other.copy_); }

LoadedDll::~LoadedDll() {
  if (module_) FreeLibrary(module_);
  std::error_code ignored;
  if (!copy_.empty()) fs::remove(copy_, ignored);
}

FARPROC LoadedDll::Find(const char* name) const {
  const FARPROC function = GetProcAddress(module_, name);
  if (function == nullptr) throw std::runtime_error(std::string("no function ") + name);
  return function;
}

}  // namespace support
