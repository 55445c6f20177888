// A fake sibling module: offers every name of one list of functions (FAKE_FUNCTIONS), each of which counts its calls
// and answers 0, or what the test has set. Plain C functions: arguments are the caller's to clean up, and are not
// looked at.
#include <cstdint>
#include <cstring>

#include "frame/sibling_names.h"

namespace {

struct Call {
  const char* name;
  int count;
  std::int32_t answer;
};

#define FAKE_ROW(name, presence) {#name, 0, 0},
Call g_calls[] = {FAKE_FUNCTIONS(FAKE_ROW, FAKE_ROW)};
#undef FAKE_ROW

Call& Find(const char* name) {
  for (Call& call : g_calls) {
    if (std::strcmp(call.name, name) == 0) return call;
  }
  return g_calls[0];
}

}  // namespace

// The functions have names of their own here, so that the siblings' prototypes do not bind them. The linker exports
// them all.
#define FAKE_FUNCTION(name, presence)                   \
  extern "C" std::int32_t Fake_##name() asm("_" #name); \
  std::int32_t Fake_##name() {                          \
    Call& call = Find(#name);                           \
    ++call.count;                                       \
    return call.answer;                                 \
  }
FAKE_FUNCTIONS(FAKE_FUNCTION, FAKE_FUNCTION)

extern "C" int FakeCalls(const char* name) { return Find(name).count; }
extern "C" void FakeAnswer(const char* name, std::int32_t answer) { Find(name).answer = answer; }
