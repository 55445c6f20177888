// A fake sibling module: offers every name of one list of functions (FAKE_FUNCTIONS), each of which notes its calls and answers 0, or
// what it is told to.
// Plain C functions: arguments are the caller's to clean up. Only the two ciphers of a crypto module look at theirs.
#include "support/fake_sibling.h"

#include <cstring>

#include "frame/sibling_names.h"

#define KE_INSTALLER_PLUGIN_FUNCTIONS(ROW_CALLED, ROW_UNCALLED) \
  ROW_CALLED(KE_Initialize, kOptional) ROW_CALLED(KE_Finalize, kOptional) ROW_CALLED(KEINSTALL_GetInetConfig, kOptional)

namespace {

#define FAKE_ROW(name, presence) {#name, 0, 0, nullptr, 0},
FakeCallState g_calls[] = {FAKE_FUNCTIONS(FAKE_ROW, FAKE_ROW)};
#undef FAKE_ROW
FakeCipherState g_cipher{};

FakeCallState& Find(const char* name) {
  for (FakeCallState& call : g_calls) {
    if (std::strcmp(call.name, name) == 0) return call;
  }
  return g_calls[0];
}

int Answer(const char* name, char* buffer, std::uint32_t length, const char* keyBlob, std::int32_t* error) {
  FakeCallState& call = Find(name);
  ++call.count;
  call.first = buffer;
  call.second = length;
  if (std::strcmp(name, "APIcr_EncryptBuffer") != 0 && std::strcmp(name, "APIcr_DecryptBuffer") != 0)
    return call.answer;
  ++g_cipher.calls;
  g_cipher.lastLength = length;
  g_cipher.lastKeyBlob = keyBlob;
  for (std::uint32_t i = 0; i < length && g_cipher.error == 0; ++i) buffer[i] ^= kFakeCipherMask;
  return *error = g_cipher.error;
}

}  // namespace

// The functions have names of their own here, so that the siblings' prototypes do not bind them. The linker exports them all.
#define FAKE_FUNCTION(name, presence)                                                                            \
  extern "C" int Fake_##name(char*, std::uint32_t, const char*, std::uint32_t, std::int32_t*) asm("_" #name);    \
  int Fake_##name(char* buffer, std::uint32_t length, const char* keyBlob, std::uint32_t, std::int32_t* error) { \
    return Answer(#name, buffer, length, keyBlob, error);                                                        \
  }
FAKE_FUNCTIONS(FAKE_FUNCTION, FAKE_FUNCTION)

FakeCallState* FakeCall(const char* name) { return &Find(name); }
int FakeCalls(const char* name) { return Find(name).count; }
FakeCipherState* FakeCipher() { return &g_cipher; }
