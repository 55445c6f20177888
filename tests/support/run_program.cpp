#include "support/run_program.h"

#include <doctest/doctest.h>
#include <windows.h>

namespace support {

ProgramRun RunProgram(std::string commandLine) {
  SECURITY_ATTRIBUTES inherited{sizeof inherited, nullptr, TRUE};
  STARTUPINFOA startup{};
  startup.cb = sizeof startup;
  startup.dwFlags = STARTF_USESTDHANDLES;
  HANDLE reader = nullptr;
  REQUIRE(CreatePipe(&reader, &startup.hStdOutput, &inherited, 1 << 20));
  SetHandleInformation(reader, HANDLE_FLAG_INHERIT, 0);
  startup.hStdError = startup.hStdOutput;
  PROCESS_INFORMATION process{};
  REQUIRE_MESSAGE(
      CreateProcessA(nullptr, commandLine.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr, &startup, &process),
      commandLine);
  CloseHandle(startup.hStdOutput);
  ProgramRun run{};
  char buffer[4096];
  for (DWORD got = 0; ReadFile(reader, buffer, sizeof buffer, &got, nullptr) && got > 0;)
    run.output.append(buffer, got);
  CHECK(WaitForSingleObject(process.hProcess, 60000) == WAIT_OBJECT_0);
  GetExitCodeProcess(process.hProcess, &run.exitCode);
  CloseHandle(reader);
  CloseHandle(process.hThread);
  CloseHandle(process.hProcess);
  std::erase(run.output, '\r');
  return run;
}

}  // namespace support
