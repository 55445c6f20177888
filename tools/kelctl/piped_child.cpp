#include "piped_child.h"

#include <algorithm>
#include <iterator>

namespace kelctl {

PipedChild StartPiped(std::wstring commandLine, bool errors) {
  PipedChild child;
  SECURITY_ATTRIBUTES inherited{sizeof inherited, nullptr, TRUE};
  HANDLE reading = nullptr, writing = nullptr;
  if (!CreatePipe(&reading, &writing, &inherited, 0)) {
    child.error = GetLastError();
    return child;
  }
  child.output.Reset(reading);
  const win::ProcessHandle input(writing);
  SetHandleInformation(reading, HANDLE_FLAG_INHERIT, 0);
  STARTUPINFOW startup{};
  startup.cb = sizeof startup;
  startup.dwFlags = STARTF_USESTDHANDLES;
  startup.hStdOutput = writing;
  startup.hStdError = errors ? writing : nullptr;
  PROCESS_INFORMATION started{};
  if (CreateProcessW(nullptr, commandLine.data(), nullptr, nullptr, TRUE, CREATE_NO_WINDOW, nullptr, nullptr, &startup,
                     &started)) {
    const win::ProcessHandle thread(started.hThread);
    child.process.Reset(started.hProcess);
  } else {
    child.error = GetLastError();
  }
  return child;
}

std::string NextOutput(const PipedChild& child, DWORD longestSilence) {
  constexpr DWORD kPause = 5;  // milliseconds
  const DWORD begin = GetTickCount();
  do {
    const bool ended = WaitForSingleObject(child.process.Get(), 0) == WAIT_OBJECT_0;  // before the last look
    DWORD count = 0;
    if (!PeekNamedPipe(child.output.Get(), nullptr, 0, nullptr, &count, nullptr)) return {};
    if (count > 0) {
      char part[4096];
      const DWORD size = std::min<DWORD>(count, std::size(part));
      return ReadFile(child.output.Get(), part, size, &count, nullptr) ? std::string(part, count) : std::string();
    }
    if (ended) return {};
    WaitForSingleObject(child.process.Get(), kPause);
  } while (longestSilence == INFINITE || GetTickCount() - begin < longestSilence);
  return {};
}

}  // namespace kelctl
