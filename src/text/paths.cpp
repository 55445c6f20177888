#include "text/paths.h"

namespace text {

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

bool IsFullPath(std::string_view path) {
  const auto separates = [](char c) { return c == '\\' || c == '/'; };
  const auto isLetter = [](char c) { return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z'); };
  if (path.size() < 3) return false;
  if (separates(path[0])) return separates(path[1]);
  return isLetter(path[0]) && path[1] == ':' && separates(path[2]);
}

std::string FileIn(std::string_view folder, std::string_view file) {
  return std::string(folder).append("\\").append(file);
}

std::string SiblingFolder(std::string_view moduleDirectory, std::string_view folder) {
  return std::string(moduleDirectory).append("\\..\\").append(folder).append("\\");
}

}  // namespace text
