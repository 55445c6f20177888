#include "piped_child.h"

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

}  // namespace kelctl
