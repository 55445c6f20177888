// kelctl: the command-line tool of support over the exports of KELUtils.dll.
#include <windows.h>
// The declarations of shellapi.h build on those of windows.h.
#include <shellapi.h>

#include <iostream>

#include "commands.h"
#include "texts.h"

namespace {

// Shows UTF-8 on a console while the program runs. Without a console both calls do nothing.
class Utf8Console {
 public:
  Utf8Console() : before_(GetConsoleOutputCP()) { SetConsoleOutputCP(CP_UTF8); }
  ~Utf8Console() { SetConsoleOutputCP(before_); }

 private:
  UINT before_;
};

// Whether colours may be shown: on a console that understands their sequences, from Windows 10 on, unless the user
// wants none (https://no-color.org).
bool WantsColours() {
  const HANDLE output = GetStdHandle(STD_OUTPUT_HANDLE);
  DWORD mode = 0;
  return GetEnvironmentVariableW(L"NO_COLOR", nullptr, 0) <= 1 && GetConsoleMode(output, &mode) &&
         SetConsoleMode(output, mode | ENABLE_VIRTUAL_TERMINAL_PROCESSING);
}

// The arguments from the platform's wide command line: those of main have already lost what the code page does not
// hold.
std::vector<std::string> Arguments() {
  int count = 0;
  wchar_t** const words = CommandLineToArgvW(GetCommandLineW(), &count);
  std::vector<std::string> arguments;
  for (int index = 1; words && index < count; ++index) arguments.push_back(kelctl::Utf8FromWide(words[index]));
  LocalFree(words);
  return arguments;
}

}  // namespace

int main() {
  const Utf8Console console;
  try {
    return kelctl::RunCommandLine(Arguments(), {.out = std::cout, .err = std::cerr, .colours = WantsColours()});
  } catch (const std::exception& error) {
    std::cerr << "kelctl: " << error.what() << "\n";
    return kelctl::kCallFailed;
  }
}
