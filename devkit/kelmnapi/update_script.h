// Answers of the update functions that a developer wrote into the settings, in place of a real update.
#pragma once

#include <atomic>
#include <cstdint>
#include <optional>

#include "kelmnapi/results.h"

namespace kelmnapi {

/// The script of one function. It lives as long as the DLL is loaded, and may be used from any thread.
class UpdateScript {
 public:
  /// `section` is the section of the INI file, and the name of the function.
  constexpr explicit UpdateScript(const char* section) noexcept : section_(section) {}

  const char* Function() const noexcept { return section_; }

  /// The next answer: the value of Result, 0 without one, and the number of ExitCodes whose turn it is, or 0. None
  /// without a script; kBadSettings when a value cannot be used.
  std::optional<Outcome> NextAnswer() noexcept;

 private:
  const char* section_;
  std::atomic<std::uint32_t> turn_ = 0;
};

}  // namespace kelmnapi
