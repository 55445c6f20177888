// What the fake sibling modules offer to tests. Load a fake before KELUtils does, so that it stays loaded and keeps its state.
#pragma once

#include <cstdint>
#include <string>

/// The fake cipher combines each byte with this by exclusive or, so that enciphered texts can be seen through.
inline constexpr char kFakeCipherMask = 0x55;

struct FakeCipherState {
  int calls;
  std::uint32_t lastLength;
  const char* lastKeyBlob;
  std::int32_t error;  // what the next calls report, leaving the buffer alone
};

/// The calls of one function.
struct FakeCallState {
  const char* name;
  int count;
  int answer;         // what the next calls return, 0 unless set
  const void* first;  // the first two arguments of the last call
  std::uint32_t second;
};

extern "C" {
FakeCallState* FakeCall(const char* name);
/// How often the function was called.
int FakeCalls(const char* name);
FakeCipherState* FakeCipher();
}

/// A marked file as the fake cipher writes it.
inline std::string FakeEnciphered(std::string text) {
  text.resize((text.size() + 15) / 16 * 16);
  for (char& c : text) c ^= kFakeCipherMask;
  return "TVKE" + text;
}
