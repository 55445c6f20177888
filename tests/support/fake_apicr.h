// What the fake crypto module offers to tests. Load it before KELUtils does.
#pragma once

#include <cstdint>
#include <string>

/// Each byte is combined with this by exclusive or.
inline constexpr char kFakeCipherMask = 0x55;

struct FakeCipherState {
  int calls;
  std::uint32_t lastLength;
  const char* lastKeyBlob;
  std::int32_t error;  // what the next calls report, leaving the buffer alone
};

extern "C" FakeCipherState* FakeCipher();

/// A marked file as the fake cipher writes it.
inline std::string FakeEnciphered(std::string text) {
  text.resize((text.size() + 15) / 16 * 16);
  for (char& c : text) c ^= kFakeCipherMask;
  return "TVKE" + text;
}
