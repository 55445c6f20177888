// A program that stands in for one of the agent's: it appends its command line to "<its path>.txt" and ends with the
// exit code in "<its path>.ini", else with 0.
#include <windows.h>

#include <string>

int main() {
  char path[MAX_PATH];
  const std::string program(path, GetModuleFileNameA(nullptr, path, sizeof path));
  const std::string line = GetCommandLineA() + std::string("\r\n");
  DWORD written = 0;
  const HANDLE file = CreateFileA((program + ".txt").c_str(), FILE_APPEND_DATA, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                  nullptr, OPEN_ALWAYS, 0, nullptr);
  const bool noted = WriteFile(file, line.data(), static_cast<DWORD>(line.size()), &written, nullptr);
  CloseHandle(file);
  return noted ? static_cast<int>(GetPrivateProfileIntA("recorder", "ExitCode", 0, (program + ".ini").c_str())) : 99;
}
