// The words of a command line. A backslash has no meaning of its own, so that a quoted part ends at the next quote.
#pragma once

#include <optional>
#include <string_view>
#include <vector>

namespace zumat {

struct Word {
  std::string_view text;                   // up to the quoted part, or the whole word
  std::optional<std::string_view> quoted;  // what the double quotes at the end of the word enclose
};

/// What follows the program's name, which may be in double quotes, in the command line of a process.
std::string_view BehindProgram(std::string_view commandLine) noexcept;

/// The words, separated by blanks and tabs. A word may end in one quoted part, which holds anything but a double quote.
/// None when a quote is not closed, or something other than a blank follows the closing one.
std::optional<std::vector<Word>> SplitWords(std::string_view text);

}  // namespace zumat
