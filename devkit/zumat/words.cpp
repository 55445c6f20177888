#include "zumat/words.h"

namespace zumat {
namespace {

constexpr char kBlanks[] = " \t";

std::string_view WithoutLeadingBlanks(std::string_view text) noexcept {
  const auto begin = text.find_first_not_of(kBlanks);
  return begin == std::string_view::npos ? std::string_view() : text.substr(begin);
}

/// Takes the text up to one of the `ends`, or all of it, from the front of `rest`.
std::string_view TakeUpTo(std::string_view& rest, const char* ends) noexcept {
  const std::string_view taken = rest.substr(0, rest.find_first_of(ends));
  rest.remove_prefix(taken.size());
  return taken;
}

}  // namespace

std::string_view BehindProgram(std::string_view commandLine) noexcept {
  const bool isQuoted = !commandLine.empty() && commandLine.front() == '"';
  if (isQuoted) commandLine.remove_prefix(1);
  TakeUpTo(commandLine, isQuoted ? "\"" : kBlanks);
  if (isQuoted && !commandLine.empty()) commandLine.remove_prefix(1);
  return WithoutLeadingBlanks(commandLine);
}

std::optional<std::vector<Word>> SplitWords(std::string_view text) {
  std::vector<Word> words;
  for (text = WithoutLeadingBlanks(text); !text.empty(); text = WithoutLeadingBlanks(text)) {
    Word word{TakeUpTo(text, " \t\""), std::nullopt};
    if (!text.empty() && text.front() == '"') {
      text.remove_prefix(1);
      word.quoted = TakeUpTo(text, "\"");
      if (text.empty()) return std::nullopt;
      text.remove_prefix(1);
      if (!TakeUpTo(text, kBlanks).empty()) return std::nullopt;
    }
    words.push_back(word);
  }
  return words;
}

}  // namespace zumat
