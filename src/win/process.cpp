#include "win/process.h"

#include "win/gate.h"

namespace win {

Process::Process(const PROCESS_INFORMATION& started) noexcept
    : process_(started.hProcess),
      thread_(started.hThread),
      processId_(started.dwProcessId),
      threadId_(started.dwThreadId) {}

DWORD Process::Wait(DWORD milliseconds) const noexcept {
  return Passes(Call::kWait) ? WaitForSingleObject(process_.Get(), milliseconds) : WAIT_FAILED;
}

std::optional<DWORD> Process::ExitCode() const noexcept {
  DWORD code = 0;
  if (!Passes(Call::kWait) || !GetExitCodeProcess(process_.Get(), &code)) return std::nullopt;
  return code;
}

PROCESS_INFORMATION Process::Release() noexcept {
  return {process_.Release(), thread_.Release(), std::exchange(processId_, 0), std::exchange(threadId_, 0)};
}

Process StartProcess(std::string commandLine, const StartOptions& options) noexcept {
  STARTUPINFOA startup{};
  startup.cb = sizeof startup;
  startup.dwFlags = options.startupFlags;
  PROCESS_INFORMATION started{};
  if (!Passes(Call::kStart) || !CreateProcessA(options.application, commandLine.data(), nullptr, nullptr, FALSE,
                                               options.creationFlags, nullptr, nullptr, &startup, &started)) {
    return {};
  }
  return Process(started);
}

Process StartProcess(std::wstring commandLine, DWORD creationFlags) noexcept {
  STARTUPINFOW startup{};
  startup.cb = sizeof startup;
  PROCESS_INFORMATION started{};
  if (!Passes(Call::kStart) || !CreateProcessW(nullptr, commandLine.data(), nullptr, nullptr, FALSE, creationFlags,
                                               nullptr, nullptr, &startup, &started)) {
    return {};
  }
  return Process(started);
}

void SetNamedEvent(const char* name) noexcept {
  const EventHandle event(Passes(Call::kEvent) ? OpenEventA(EVENT_MODIFY_STATE, FALSE, name) : nullptr);
  if (event && Passes(Call::kEvent)) SetEvent(event.Get());
}

namespace {

void PauseThread(DWORD milliseconds) { Sleep(milliseconds); }

DWORD WaitForProcess(const Process& process, DWORD milliseconds) { return process.Wait(milliseconds); }

}  // namespace

Waiting g_waiting{PauseThread, WaitForProcess};

}  // namespace win
