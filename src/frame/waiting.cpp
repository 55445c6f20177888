#include "frame/waiting.h"

namespace frame {
namespace {

void PauseThread(DWORD milliseconds) { Sleep(milliseconds); }

DWORD WaitForProcess(const win::Process& process, DWORD milliseconds) { return process.Wait(milliseconds); }

}  // namespace

Waiting g_waiting{PauseThread, WaitForProcess};

}  // namespace frame
