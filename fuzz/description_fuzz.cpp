// Any bytes as a resource text and its insert, separated by the first zero byte: the description equals that of a
// simple formatter, and its copy ends inside its buffer.
#include <algorithm>
#include <vector>

#include "agent/texts.h"
#include "fuzzer.h"
#include "text/text.h"

namespace {

// The simple formatter: one character at a time, with a state.
std::string Expected(const std::string& resource, const std::string& insert) {
  if (resource.find("%s") == std::string::npos) return resource;
  std::string text;
  bool percent = false, inserted = false;
  for (const char c : resource) {
    const bool opens = c == '%' && !percent;
    if (percent && c == 's' && !inserted) {
      text += insert;
      inserted = true;
    } else if (percent && c != '%') {
      text += {'%', c};
    } else if (!opens) {
      text += c;
    }
    percent = opens;
  }
  return percent ? text + '%' : text;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string input(reinterpret_cast<const char*>(data), size);
  const std::size_t zero = std::min(input.find('\0'), size);
  const std::string resource = input.substr(0, zero), insert = input.substr(std::min(zero + 1, size));
  const std::string text = agent::DescriptionText(resource, insert);
  Require(text == Expected(resource, insert).substr(0, agent::kDescriptionSize - 1));
  for (const std::size_t room : {std::size_t{1}, text.size(), text.size() + 1, agent::kDescriptionSize}) {
    if (room == 0) continue;
    std::vector<char> buffer(room, '~');  // exact size: AddressSanitizer detects every overrun
    text::CopyCut(text, buffer.data(), room);
    Require(std::string_view(buffer.data(), std::min(text.size(), room - 1)) == text.substr(0, room - 1));
    Require(buffer[std::min(text.size(), room - 1)] == '\0');
  }
  return 0;
}
