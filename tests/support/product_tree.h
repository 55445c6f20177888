// A temporary product tree with the real DLL in it, and the pieces that tests put there and take out again.
#pragma once

#include <windows.h>

#include <filesystem>
#include <iterator>
#include <string>

namespace support {

/// The folder of the running test program, and that of its build.
std::filesystem::path TestFolder();
inline std::filesystem::path BuildFolder() { return TestFolder().parent_path(); }

/// Content of a file; empty when it is missing.
std::string ReadFile(const std::filesystem::path& path);
void WriteFile(const std::filesystem::path& path, const std::string& content);

/// Starts a command line. The size in `how` is set here; handles are inherited if it has some for the output.
PROCESS_INFORMATION StartProgram(std::string commandLine, const STARTUPINFOA& how = {});

struct ProgramRun {
  unsigned long exitCode;
  std::string output;  // standard output and standard error, line ends as LF
};
/// Runs a command line and waits for its end, for at most a minute.
ProgramRun RunProgram(const std::string& commandLine);

/// Runs the case `name` of this test program, also a skipped one, in several processes at once; their exit codes,
/// combined.
unsigned long RunAtOnce(int processes, const std::string& name);

/// A new empty folder below the temporary folder, removed at the end of the scope.
class Folder {
 public:
  Folder();
  ~Folder();
  Folder(const Folder&) = delete;
  Folder& operator=(const Folder&) = delete;

  std::filesystem::path Path(const std::string& relative) const { return root_ / relative; }
  std::string operator/(const char* name) const { return Path(name).string(); }
  /// Copies a file of the development kit into a folder below this one, which is created.
  void AddDevkit(const std::string& file, const std::string& folder) const;
  auto FileCount() const { return std::distance(std::filesystem::directory_iterator(root_), {}); }

 private:
  std::filesystem::path root_;
};

/// KELUtils\KELUtils.dll, the folders Common, KESAgent and KELSysCf, and the crypto module of the development kit.
struct ProductTree : Folder {
  ProductTree();

  std::filesystem::path Store(const char* name) const { return Path("KESAgent") / name; }

  /// Turns the trace log of the library on.
  void TurnLogOn() const;
  std::string Log() const { return ReadFile(Path("KELUtils/KELUtils.log")); }
  /// True when the log has a line that ends in this function and description.
  bool Traced(const std::string& line) const { return Log().find(";KELUtils;" + line + "\r\n") != std::string::npos; }

  /// Copies a fake module of the tests into the tree.
  void AddFake(const std::string& fake, const std::string& relative) const;
};

/// A loaded DLL.
class LoadedDll {
 public:
  explicit LoadedDll(const std::filesystem::path& path);
  LoadedDll(LoadedDll&& other);
  ~LoadedDll();

  /// Loads a copy of the DLL and removes it at the end: an instance with state of its own, as in another process.
  static LoadedDll Separate(const std::filesystem::path& path);

  HMODULE Handle() const { return module_; }

  /// A function by its name; the test fails when it is missing.
  template <typename Function>
  Function Get(const char* name) const {
    return reinterpret_cast<Function>(reinterpret_cast<void*>(Find(name)));
  }

 private:
  FARPROC Find(const char* name) const;

  HMODULE module_;
  std::filesystem::path copy_;  // to be removed; empty for none
};

/// Calls the export `name` of the loaded DLL `dll`, with the type of its declaration.
#define CALL(dll, name) ((dll).Get<decltype(&::name)>(#name))

/// Sets an environment variable for the scope, or removes it with a null value.
struct EnvironmentVariable {
  EnvironmentVariable(const char* variable, const char* value) : name(variable) {
    SetEnvironmentVariableA(name, value);
  }
  ~EnvironmentVariable() { SetEnvironmentVariableA(name, nullptr); }
  const char* name;
};

/// Makes a folder the current one for the scope.
struct CurrentFolder {
  explicit CurrentFolder(const std::filesystem::path& folder) { std::filesystem::current_path(folder); }
  ~CurrentFolder() { std::filesystem::current_path(before); }
  const std::filesystem::path before = std::filesystem::current_path();
};

/// Holds a file open for the scope; others can open it only as `share` allows. For reading only, it behaves as a
/// read-only file, whose attribute does not stop an administrator under Wine.
struct LockedFile {
  explicit LockedFile(const std::filesystem::path& path, DWORD share = 0)
      : file(CreateFileW(path.c_str(), GENERIC_READ, share, nullptr, OPEN_EXISTING, 0, nullptr)) {}
  ~LockedFile() { CloseHandle(file); }
  HANDLE file;
};

}  // namespace support
