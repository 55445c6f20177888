#include "text/paths.h"

#include <initializer_list>

namespace text {

namespace {

std::string Concatenated(std::initializer_list<std::string_view> parts) {
  std::size_t length = 0;
  for (const auto part : parts) length += part.size();
  std::string text;
  text.reserve(length);
  for (const auto part : parts) text.append(part);
  return text;
}

}  // namespace

std::size_t LastBackslash(std::string_view text, LeadByteTest isLeadByte) noexcept {
  std::size_t last = std::string_view::npos;
  for (std::size_t at = 0; at < text.size(); ++at) {
    if (text[at] == '\\') last = at;
    if (isLeadByte(text[at])) ++at;
  }
  return last;
}

bool EndsInBackslash(std::string_view text, LeadByteTest isLeadByte) noexcept {
  return !text.empty() && LastBackslash(text, isLeadByte) == text.size() - 1;
}

std::string FileIn(std::string_view folder, std::string_view file) { return Concatenated({folder, "\\", file}); }

bool IsFullPath(std::string_view path) {
  const auto separates = [](char c) { return c == '\\' || c == '/'; };
  const auto isLetter = [](char c) { return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z'); };
  if (path.size() < 3) return false;
  if (separates(path[0])) return separates(path[1]);
  return isLetter(path[0]) && path[1] == ':' && separates(path[2]);
}

std::string OwnFolder(std::string_view moduleDirectory) { return Concatenated({moduleDirectory, "\\"}); }

std::string CommonDirectory(std::string_view moduleDirectory) {
  return Concatenated({moduleDirectory, "\\..\\Common"});
}

std::string CommonFolder(std::string_view moduleDirectory) { return SiblingFolder(moduleDirectory, "Common"); }

std::string SiblingFolder(std::string_view moduleDirectory, std::string_view folder) {
  return Concatenated({moduleDirectory, "\\..\\", folder, "\\"});
}

}  // namespace text
