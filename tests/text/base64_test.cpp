#include "text/base64.h"

#include <doctest/doctest.h>

#include <new>
#include <string>

using namespace text;

namespace {

std::string Encoded(const std::string& bytes, std::uint32_t flags) {
  std::int32_t length = Base64RequiredLength(static_cast<int>(bytes.size()), flags);
  std::string text(static_cast<size_t>(length), '?');
  CHECK(Base64EncodeText(bytes.data(), static_cast<int>(bytes.size()), text.data(), &length, flags));
  return text.substr(0, static_cast<size_t>(length));
}

}  // namespace

TEST_CASE("base64: a text that differs from RFC 4648, a break at another place, a length that wraps around") {
  const char* vectors[][2] = {{"", ""}, {"Zg==", "f"}, {"Zm8=", "fo"}, {"Zm9vYg==", "foob"}, {"Zm9vYmFy", "foobar"}};
  for (const auto& [text, bytes] : vectors) CHECK(Encoded(bytes, 0) == text);
  CHECK(Encoded("f", kBase64NoPadding) == "Zg");
  const std::string line(76, 'A');
  CHECK(Encoded(std::string(57, '\0'), 0) == line + "\r\n");
  CHECK(Encoded(std::string(115, '\0'), 0) == line + "\r\n" + line + "\r\nAA==");
  CHECK(Encoded(std::string(115, '\0'), kBase64NoLineBreaks) == line + line + "AA==");
  const int rows[][3] = {{0, 0, 2}, {1, 1, 6}, {2, 2, 4}, {57, 0, 80}, {58, 0, 84}, {536870911, 2, 715827884}};
  for (const auto& row : rows) CHECK(Base64RequiredLength(row[0], static_cast<std::uint32_t>(row[1])) == row[2]);
  std::int32_t length = 0;
  CHECK_FALSE((Base64DecodeText(nullptr, 0, nullptr, &length) || Base64DecodeText("", 0, &length, nullptr)));
  CHECK_THROWS_AS(Base64RequiredLength(536870912, 0), std::bad_array_new_length);
}
