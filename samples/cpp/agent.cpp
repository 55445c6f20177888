// KELUtils from C++, loaded at run time: reads the agent ID, encrypts a setting, schedules a job.
//
// The program is in a folder of the product, such as C:\Orvane\Sample\loading_agent.exe, and finds the library in the
// folder KELUtils next to its own. Another path may be given as its argument. A program of 64 bits cannot load the
// library.
#include <windows.h>

#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <memory>
#include <stdexcept>
#include <string>

#include "KELUtils.h"  // the type of KE_Name is KE_Name_t

namespace {

[[noreturn]] void Fail(const std::string& action, unsigned long code) {
  throw std::runtime_error(action + ": error " + std::to_string(code));
}

void Check(const char* call, KE_RESULT result) {
  if (result != KE_SUCCESS) Fail(call, result);
}

// The library, loaded by its full path: a bare name would be searched for in other places too.
class Library {
 public:
  explicit Library(const std::filesystem::path& path)
      : module_(LoadLibraryExW(path.c_str(), nullptr, LOAD_WITH_ALTERED_SEARCH_PATH)) {
    if (!module_) Fail("loading " + path.string(), GetLastError());
  }

  template <typename Function>
  Function Get(const char* name) const {
    const FARPROC found = GetProcAddress(module_.get(), name);
    if (found == nullptr) Fail(std::string("looking up ") + name, GetLastError());
    return reinterpret_cast<Function>(reinterpret_cast<void (*)()>(found));
  }

 private:
  struct Free {
    void operator()(HMODULE module) const { FreeLibrary(module); }
  };
  std::unique_ptr<std::remove_pointer_t<HMODULE>, Free> module_;
};

// The export of that name, with the type of its declaration.
#define KE_FUNCTION(library, name) ((library).Get<name##_t>(#name))

std::filesystem::path DefaultPath() {
  wchar_t own[32768];
  if (GetModuleFileNameW(nullptr, own, sizeof own / sizeof *own) == 0) Fail("own path", GetLastError());
  return std::filesystem::path(own).parent_path().parent_path() / "KELUtils" / "KELUtils.dll";
}

// A getter needs a buffer that is larger than its value, and does not return the value's length.
std::string AgentId(const Library& library) {
  const auto get = KE_FUNCTION(library, KE_GetAgentID);
  KE_RESULT result = KE_BUFFER_TOO_SMALL;
  std::string id;
  for (size_t size = 64; result == KE_BUFFER_TOO_SMALL && size <= 65536; size *= 4) {
    id.assign(size, '\0');
    result = get(id.data(), static_cast<int32_t>(size));
  }
  if (result == KE_STORE_UNUSABLE) throw std::runtime_error("this computer has no agent ID yet");
  Check("KE_GetAgentID", result);
  return id.c_str();
}

// With a null output the library returns the required size.
std::string Setting(const Library& library, const std::string& text) {
  const auto encrypt = KE_FUNCTION(library, KE_EncryptSetting);
  const auto length = static_cast<int32_t>(text.size());
  int32_t size = 0;
  if (const KE_RESULT result = encrypt(text.c_str(), length, nullptr, &size); result != KE_BUFFER_TOO_SMALL)
    Fail("KE_EncryptSetting", result);
  std::string setting(static_cast<size_t>(size), '\0');
  Check("KE_EncryptSetting", encrypt(text.c_str(), length, setting.data(), &size));
  setting.resize(static_cast<size_t>(size));
  return setting;
}

}  // namespace

int main(int count, char** arguments) try {
  const Library library(count > 1 ? std::filesystem::path(arguments[1]) : DefaultPath());
  std::cout << "agent ID: " << AgentId(library) << "\n";
  const std::string setting = Setting(library, "secret");
  std::cout << "setting of " << setting.size() << " characters: " << setting << "\n";
  const int32_t taskId = 9002, periodMinutes = 12 * 60;
  Check("KE_SetPeriodicTask",
        KE_FUNCTION(library, KE_SetPeriodicTask)("KEPLPMNG", "SAMPLE", "-check", taskId, periodMinutes, 0));
  std::cout << "job " << taskId << " is scheduled\n";
  return EXIT_SUCCESS;
} catch (const std::exception& error) {
  std::cerr << error.what() << "\n";
  return EXIT_FAILURE;
}
