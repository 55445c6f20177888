// A fake sibling module: offers every name of one list of functions (FAKE_FUNCTIONS). Each records its calls and
// returns 0, or the result that a test sets. Plain C functions: the caller removes the arguments. Only the ciphers of a
// crypto module and the launcher's Run use theirs.
#include "support/fake_sibling.h"

#include <windows.h>

#include <algorithm>
#include <cstring>
#include <string_view>

#include "siblings/functions.h"

#define KE_INSTALLER_PLUGIN_FUNCTIONS(ROW_CALLED, ROW_UNCALLED) \
  ROW_CALLED(KE_Initialize, kOptional) ROW_CALLED(KE_Finalize, kOptional) ROW_CALLED(KEINSTALL_GetInetConfig, kOptional)

namespace {

#define FAKE_ROW(name, presence) {#name, 0, 0, nullptr, 0},
FakeCallState g_calls[] = {FAKE_FUNCTIONS(FAKE_ROW, FAKE_ROW)};
#undef FAKE_ROW
FakeCipherState g_cipher{};
FakeLauncherState g_launcher{};
FakeMischiefState g_mischief{};

FakeCallState& Find(std::string_view name) {
  for (FakeCallState& call : g_calls) {
    if (call.name == name) return call;
  }
  return g_calls[0];
}

int AnswerCipher(char* buffer, std::uint32_t length, const char* keyBlob, std::int32_t* error) {
  ++g_cipher.calls;
  g_cipher.lastLength = length;
  g_cipher.lastKeyBlob = keyBlob;
  for (std::uint32_t i = 0; i < length && g_cipher.error == 0; ++i) buffer[i] ^= kFakeCipherMask;
  if (g_cipher.zeroFirst) buffer[0] = '\0';
  return *error = g_cipher.error;
}

int AnswerLauncher(std::int32_t* exitCode) {
  if (g_launcher.exitCode != 0) *exitCode = g_launcher.exitCode;
  return g_launcher.result;
}

// Fills the record to its end, without a terminating zero, and changes the last error.
int Misbehave(std::string_view name, void* first, std::uint32_t second, void* third, std::uint32_t fourth) {
  g_mischief.callBack();
  if (name == "KE_AGAPI_GetConfig") std::memset(third, 'x', fourth);
  if (name == "KE_AGAPI_GetProxyConfig") std::memset(first, 'x', second);
  SetLastError(static_cast<DWORD>(g_mischief.answer));
  return g_mischief.answer;
}

int Answer(std::string_view name, void* first, std::uint32_t second, void* third, std::uint32_t fourth, void* fifth) {
  FakeCallState& call = Find(name);
  ++call.count;
  call.first = first;
  call.second = second;
  if (g_mischief.on) return Misbehave(name, first, second, third, fourth);
  if (name == "APIcr_EncryptBuffer" || name == "APIcr_DecryptBuffer") {
    return AnswerCipher(static_cast<char*>(first), second, static_cast<char*>(third),
                        static_cast<std::int32_t*>(fifth));
  }
  if (name == "Run") std::strncpy(g_launcher.command, static_cast<char*>(first), sizeof g_launcher.command - 1);
  if (name == "Run" || name.starts_with("UpdateNow")) return AnswerLauncher(reinterpret_cast<std::int32_t*>(second));
  return call.answer;
}

}  // namespace

// The functions have names of their own here, so that the siblings' prototypes do not bind them. The linker exports
// them all. Each takes as many words as the longest of them.
#define FAKE_FUNCTION(name, presence)                                                                  \
  extern "C" int Fake_##name(void*, std::uint32_t, void*, std::uint32_t, void*) asm("_" #name);        \
  int Fake_##name(void* first, std::uint32_t second, void* third, std::uint32_t fourth, void* fifth) { \
    return Answer(#name, first, second, third, fourth, fifth);                                         \
  }
FAKE_FUNCTIONS(FAKE_FUNCTION, FAKE_FUNCTION)

FakeMischiefState* FakeMischief() { return &g_mischief; }
FakeCallState* FakeCall(const char* name) { return &Find(name); }
int FakeCalls(const char* name) { return Find(name).count; }
FakeCipherState* FakeCipher() { return &g_cipher; }
FakeLauncherState* FakeLauncher() { return &g_launcher; }
