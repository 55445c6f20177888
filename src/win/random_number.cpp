#include "win/random_number.h"

#include <windows.h>

#include <atomic>
#include <cstdint>

namespace win {

namespace {

// Odd, so that the state visits every value before it repeats: 2^32 divided by the golden ratio.
constexpr std::uint32_t kStep = 0x9E3779B9;

constinit std::atomic<std::uint32_t> g_state{0};

// Lets each bit of `number` change about half of the result's bits: the finaliser of MurmurHash3.
std::uint32_t Mixed(std::uint32_t number) noexcept {
  number = (number ^ number >> 16) * 0x85EBCA6B;
  number = (number ^ number >> 13) * 0xC2B2AE35;
  return number ^ number >> 16;
}

int NextNumber() { return static_cast<int>(Mixed(g_state.fetch_add(kStep)) >> 17); }

}  // namespace

RandomNumber g_randomNumber = NextNumber;

void SeedRandomNumbers() noexcept {
  FILETIME now;
  GetSystemTimeAsFileTime(&now);
  g_state = Mixed(now.dwLowDateTime + Mixed(now.dwHighDateTime + Mixed(GetCurrentProcessId())));
}

}  // namespace win
