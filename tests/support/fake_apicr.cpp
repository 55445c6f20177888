// A fake crypto module with a cipher that can be seen through, which records its calls and fails when it is told to.
#include "ApiCr.h"

#include "support/fake_apicr.h"

namespace {

FakeCipherState g_state{};

void Cipher(void* buffer, uint32_t length, const char* keyBlob, int32_t* error) {
  ++g_state.calls;
  g_state.lastLength = length;
  g_state.lastKeyBlob = keyBlob;
  if (g_state.error == 0) {
    for (uint32_t i = 0; i < length; ++i) static_cast<char*>(buffer)[i] ^= kFakeCipherMask;
  }
  *error = g_state.error;
}

}  // namespace

#define FAKE_EXPORT extern "C" __declspec(dllexport)

FAKE_EXPORT FakeCipherState* FakeCipher() { return &g_state; }

void APIcr_EncryptBuffer(void* buffer, uint32_t length, const char* keyBlob, uint32_t, int32_t* error) {
  Cipher(buffer, length, keyBlob, error);
}

void APIcr_DecryptBuffer(void* buffer, uint32_t length, const char* keyBlob, uint32_t, int32_t* error) {
  Cipher(buffer, length, keyBlob, error);
}

// Never called by the library, but required to be there.
uint32_t APIcr_GetVersion() { return 0; }
void APIcr_GetHash(const void*, uint32_t, uint8_t*, int32_t*) {}
void APIcr_GetHashFromFile(const char*, uint8_t*, int32_t*) {}
void APIcr_GetRandomKey(char*, uint32_t, int32_t*) {}
void APIcr_EncryptFile(const char*, const char*, const char*, int32_t*) {}
void APIcr_DecryptFile(const char*, const char*, const char*, int32_t*) {}
void APIcr_EncryptWithPublic(const void*, uint32_t, void*, uint32_t*, const char*, int32_t*) {}
void APIcr_DecryptWithPrivate(const void*, uint32_t, void*, uint32_t*, const char*, int32_t*) {}
void APIcr_EncryptHash(const uint8_t*, void*, uint32_t*, const char*, int32_t*) {}
void APIcr_DecryptHash(const void*, uint32_t, uint8_t*, const char*, int32_t*) {}
void APIcr_MakeKeys(char*, uint32_t, char*, uint32_t, int32_t*) {}
