// KEPLPMNG.exe and KepWInst.exe, and any program of the agent as a copy of them: notes how it was started, and ends.
#include "shared/files.h"
#include "shared/texts.h"

using namespace devkit;

int WINAPI WinMain(HINSTANCE, HINSTANCE, LPSTR, int) {
  return Guarded([] {
    const auto code = ReadNumber("EXIT", "Code", kSuccess);
    const auto delay = ReadNumber("EXIT", "DelayMilliseconds", 0, 0, 10 * 60 * 1000);
    const int exitCode = code && delay ? *code : kBadSettings;
    if (!LogCall(std::to_string(exitCode) + ";" + OneLine(GetCommandLineA()))) return kNotLogged;
    Sleep(static_cast<DWORD>(delay.value_or(0)));
    return static_cast<Result>(exitCode);
  });
}
