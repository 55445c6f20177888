// INI texts to measure with.
#pragma once

#include <cstddef>
#include <string>

namespace bench {

/// The number of entries in a section of a usual text; and of one that has all of them in one section.
inline constexpr std::size_t kUsualSection = 50, kOneSection = static_cast<std::size_t>(-1);

/// A text of `count` entries of 40 bytes each, the line's end among them: keys of 10 characters that all differ, and
/// values of 27. A section ends after `perSection` entries.
std::string MakeIniText(std::size_t count, std::size_t perSection);

/// Lets the process keep the memory that it frees. Otherwise what is measured of a large text is for the most part how
/// fast the system makes fresh pages for it, while a small one gets those of the run before. Does nothing on Windows.
void KeepMemory();

}  // namespace bench
