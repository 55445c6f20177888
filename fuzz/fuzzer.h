// Shared by the fuzzers: the function that the engine or replay.cpp calls, and the failure.
#pragma once

#include <cstdint>
#include <cstdlib>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

inline void Require(bool held) {
  if (!held) std::abort();
}
