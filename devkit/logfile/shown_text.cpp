#include "logfile/shown_text.h"

#include <cstring>

namespace logfile {
namespace {

bool IsControl(char character) noexcept {
  const auto code = static_cast<unsigned char>(character);
  return code < 0x20 || code == 0x7F;
}

}  // namespace

ShownText::ShownText(const char* text) noexcept {
  if (text == nullptr) text = "(null)";
  std::size_t length = 0;
  for (; length < kLongest && text[length] != '\0'; ++length) {
    text_[length] = IsControl(text[length]) ? '?' : text[length];
  }
  const char* const end = text[length] == '\0' ? "" : "...";
  std::memcpy(text_ + length, end, std::strlen(end) + 1);
}

}  // namespace logfile
