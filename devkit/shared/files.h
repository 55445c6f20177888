// Files next to a module of the development kit, shared by processes: locking, reading, logs and settings. Paths are in
// the system's code page. Functions that are not noexcept throw when memory runs out.
#pragma once

#include <windows.h>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "shared/results.h"
#include "win/owner.h"

namespace devkit {

/// The shape of an exported function: keeps the last-error value and lets no exception out.
template <typename Body>
Result Guarded(Body body) noexcept {
  const win::KeptLastError kept;
  try {
    return body();
  } catch (...) {
    return kUnexpected;
  }
}

/// The full path of the DLL or program that this is linked into. Throws when it is too long.
std::string OwnPath();

/// The file `name` in the folder of `OwnPath`.
std::string NextToModule(std::string_view name);

/// The path of `OwnPath` with another extension, which begins with a dot.
std::string WithExtension(std::string_view extension);

/// Locks a file among all threads of all processes that lock the same path, in any letter case, for a scope: a named
/// mutex, which Windows releases when its owner ends. The file itself is not touched.
class SharedFileLock {
 public:
  /// Waits at most so many milliseconds.
  SharedFileLock(const char* path, DWORD milliseconds) noexcept;
  ~SharedFileLock();
  SharedFileLock(const SharedFileLock&) = delete;
  SharedFileLock& operator=(const SharedFileLock&) = delete;

  /// False when another thread held the lock too long, or it is another account's.
  bool Held() const noexcept { return held_; }

 private:
  win::MutexHandle mutex_;
  bool held_ = false;
};

/// The name of a machine-wide kernel object for a path: `kind`, and 16 digits derived from the path.
std::string ObjectName(const char* kind, const char* path);

/// Reads a file of at most `longest` bytes; one that is longer is cut to one byte more. None when it cannot be read,
/// with the reason in the last-error value. Retries for a second while another program holds the file.
std::optional<std::string> ReadShared(const std::string& path, std::size_t longest);

/// Replaces the content of a file as win::ReplaceContent does, and removes temporary files of killed processes. False,
/// with the reason in the last-error value, when that fails.
bool ReplaceShared(const std::string& path, std::string_view content) noexcept;

// Logs.

struct LogFile {
  char path[MAX_PATH] = {};  // full path, with space for ".old"
  std::uint32_t maximumSize = 0;
};

/// Fills `file` from a path of at most `size` bytes. False, with `file` unchanged, when the path is empty, not
/// terminated or too long, or `maximumSize` is 0.
bool LocateLog(const char* path, std::size_t size, std::uint32_t maximumSize, LogFile& file) noexcept;

/// Appends one line in a single write; false when the file cannot be opened or written. A file that would grow beyond
/// its maximum size is renamed to `<path>.old` first, replacing the previous one; a line above the maximum gets a file
/// of its own.
///
/// Writers of one file lock it, for a second at most. Without the lock the line is appended, but the file not renamed.
/// Nor is a file renamed while another program holds it open: a later line does it.
bool AppendLine(const LogFile& file, const char* line, std::uint32_t length) noexcept;

/// Appends the line `<local time>;<process>;<path of the module>;<text>` to the log of the module: its path, with the
/// extension ".log", 64 KB at most.
bool LogCall(const std::string& text);

/// Logs `<function>;<result>;<detail>`, and returns the result; kNotLogged instead of kSuccess when that fails.
Result Logged(const char* function, Result result, const std::string& detail = {});

// Settings: the INI file of the module, its path with the extension ".ini". It is read for each value: a change takes
// effect at once.

/// The longest text of a setting in bytes.
inline constexpr std::size_t kLongestSetting = 1023;

/// A setting; empty when it is missing, none when it is longer than `longest`.
std::optional<std::string> ReadSetting(const char* section, const char* key, std::size_t longest = kLongestSetting);

/// A number; `fallback` when it is missing, none when it is not a number between the bounds.
std::optional<std::int32_t> ReadNumber(const char* section, const char* key, std::int32_t fallback,
                                       std::int32_t lowest = INT32_MIN, std::int32_t highest = INT32_MAX);

}  // namespace devkit
