// What the fake sibling modules offer to tests. Load a fake before KELUtils does, so that it stays loaded and keeps its
// counts.
#pragma once

#include <cstdint>

extern "C" {
/// How often the function was called.
int FakeCalls(const char* name);
/// Sets what the function answers from now on.
void FakeAnswer(const char* name, std::int32_t answer);
}
