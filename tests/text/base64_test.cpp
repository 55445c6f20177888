#include "text/base64.h"

#include <doctest/doctest.h>
#include <openssl/evp.h>

#include <new>
#include <random>
#include <string>

using namespace text;

namespace {

// The buffers are exact, so that the sanitizer sees every step past them.
std::string Encoded(const std::string& bytes, std::uint32_t flags) {
  std::int32_t length = Base64RequiredLength(static_cast<int>(bytes.size()), flags);
  std::string text(static_cast<size_t>(length), '?');
  CHECK(Base64EncodeText(bytes.data(), static_cast<int>(bytes.size()), text.data(), &length, flags));
  return text.substr(0, static_cast<size_t>(length));
}

std::string Decoded(const std::string& text) {
  std::int32_t length = 0;
  CHECK_FALSE(Base64DecodeText(text.data(), static_cast<int>(text.size()), nullptr, &length));
  std::string bytes(static_cast<size_t>(length), '?');
  CHECK(Base64DecodeText(text.data(), static_cast<int>(text.size()), bytes.data(), &length));
  return bytes;
}

}  // namespace

TEST_CASE("base64: the vectors of RFC 4648; foreign characters, texts cut anywhere, too small a buffer; lengths") {
  const char* vectors[][2] = {{"", ""}, {"Zg==", "f"}, {"Zm8=", "fo"}, {"Zm9vYg==", "foob"}, {"Zm9vYmFy", "foobar"}};
  for (const auto& [text, bytes] : vectors) CHECK(Encoded(bytes, 0) == text);
  CHECK(Encoded("f", kBase64NoPadding) == "Zg");
  const char* texts[][2] = {
      {"Zm9v\r\nYmFy", "foobar"}, {"=Z m\xFF[9-v_", "foo"}, {"Zm9vY", "foo"}, {"QQ", "A"}, {"Q", ""}};
  for (const auto& [text, bytes] : texts) CHECK(Decoded(text) == bytes);
  CHECK(Decoded(std::string("Zm9v\0YmFy", 9)) == "foo");
  char bytes[8] = "???????";
  std::int32_t length = 5;
  CHECK_FALSE(Base64DecodeText("Zm9vYmFyQQ", 10, bytes, &length));
  CHECK(length == 7);
  CHECK(std::string(bytes) == "foo????");
  length = -9;
  CHECK_FALSE(Base64DecodeText("Zm9vYmFyQQ", 10, bytes + 3, &length));
  CHECK(length == 7);
  CHECK(std::string(bytes) == "foo????");
  const int rows[][3] = {{0, 0, 2}, {1, 1, 6}, {2, 2, 4}, {57, 0, 80}, {58, 0, 84}, {536870911, 2, 715827884}};
  for (const auto& row : rows) CHECK(Base64RequiredLength(row[0], static_cast<std::uint32_t>(row[1])) == row[2]);
  CHECK_THROWS_AS(Base64RequiredLength(536870912, 0), std::bad_array_new_length);
}

TEST_CASE("base64: random data of every length as OpenSSL has it, with breaks after 76 characters of whole groups") {
  std::mt19937 random(1);
  for (int length = 0; length <= 1000; ++length) {
    CAPTURE(length);
    std::string bytes(static_cast<size_t>(length), '\0'), expected(1400, '\0'), back(1400, '\0');
    for (char& byte : bytes) byte = static_cast<char>(random());
    const auto raw = [](std::string& text) { return reinterpret_cast<unsigned char*>(text.data()); };
    expected.resize(static_cast<size_t>(EVP_EncodeBlock(raw(expected), raw(bytes), length)));
    REQUIRE(Encoded(bytes, kBase64NoLineBreaks) == expected);
    EVP_DecodeBlock(raw(back), raw(expected), static_cast<int>(expected.size()));
    REQUIRE(Decoded(expected) == back.substr(0, bytes.size()));
    for (size_t line = bytes.size() / 57; line > 0; --line) expected.insert(line * 76, "\r\n");
    REQUIRE(Encoded(bytes, 0) == expected);
  }
}
