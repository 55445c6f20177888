// INI texts for measurements.
#pragma once

#include <cstddef>
#include <string>

namespace bench {

/// Entries in a section of a usual text, and of a text with a single section.
inline constexpr std::size_t kUsualSection = 50, kOneSection = static_cast<std::size_t>(-1);

/// A text of `count` entries of 40 bytes including the line end: distinct keys of 10 characters, values of 27. A
/// section has `perSection` entries.
std::string MakeIniText(std::size_t count, std::size_t perSection);

/// Makes the process keep freed memory. Otherwise a large text mostly measures how fast the system provides new pages,
/// while a small one reuses those of the previous run. No effect on Windows.
void KeepMemory();

}  // namespace bench
