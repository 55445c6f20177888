// The one source of random numbers, which tests replace. The host's rand() and srand() are never called.
#pragma once

namespace win {

/// A number from 0 to 32767.
using RandomNumber = int (*)();

/// The library's generator of random numbers; thread-safe, and not for secrets. Only tests change it.
extern RandomNumber g_randomNumber;

/// Seeds the generator from the clock and the process identifier. Called once, at process attach.
void SeedRandomNumbers() noexcept;

}  // namespace win
