// What the fake sibling modules offer to tests. Load a fake before KELUtils does, so that it stays loaded and keeps its
// state.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

/// The fake cipher combines each byte with this by exclusive or, so that enciphered texts can be seen through.
inline constexpr char kFakeCipherMask = 0x55;

struct FakeCipherState {
  int calls;
  std::uint32_t lastLength;
  const char* lastKeyBlob;
  std::int32_t error;  // what the next calls report, leaving the buffer alone
  bool zeroFirst;      // the next calls set the first byte to zero
};

/// The calls of one function.
struct FakeCallState {
  std::string_view name;
  int count;
  int answer;         // the result of the next calls
  const void* first;  // the first two arguments of the last call
  std::uint32_t second;
};

struct FakeLauncherState {
  char command[256];      // the last one that was run, cut
  int result;             // what the next runs and updates report,
  std::int32_t exitCode;  // and the exit code they write; 0 writes none
};

/// How the next calls of the module misbehave, besides what they record.
struct FakeMischiefState {
  bool on;
  int answer;          // of every function
  void (*callBack)();  // called by every function
};

extern "C" {
FakeMischiefState* FakeMischief();
FakeCallState* FakeCall(const char* name);
/// How often the function was called.
int FakeCalls(const char* name);
FakeCipherState* FakeCipher();
FakeLauncherState* FakeLauncher();
}

/// A marked file as the fake cipher writes it.
inline std::string FakeEnciphered(std::string text) {
  text.resize((text.size() + 15) / 16 * 16);
  for (char& c : text) c ^= kFakeCipherMask;
  return "TVKE" + text;
}

/// A DLL's content without one of its exports: the last character of the name becomes the one before it in the
/// alphabet, which keeps the order of the export table.
inline std::string Without(std::string content, const std::string& name) {
  const std::string wanted = '\0' + name + '\0';
  for (size_t at = content.find(wanted); at != std::string::npos; at = content.find(wanted, at + 1)) {
    --content[at + name.size()];
  }
  return content;
}
