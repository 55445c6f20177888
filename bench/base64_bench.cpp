// Base64 of 256 bytes to 1 MB compared with OpenSSL: without line breaks with EVP_EncodeBlock and EVP_DecodeBlock, with
// line breaks with the stream functions, whose lines have 64 characters instead of 76.
#include <openssl/evp.h>

#include <cstdio>
#include <cstdlib>
#include <string>

#include "bench/measure.h"
#include "text/base64.h"

namespace {

constexpr std::size_t kRounds = 31;
constexpr std::size_t kSizes[] = {256, 4096, 65536, 1048576};
constexpr std::size_t kFewestBytes = 4 << 20;  // of one run, in as many repetitions as it takes
constexpr double kLimit = 3.0;                 // at least a third of its speed

void Require(bool held) {
  if (!held) std::abort();
}

int Length(const std::string& text) { return static_cast<int>(text.size()); }

unsigned char* Raw(std::string& text) { return reinterpret_cast<unsigned char*>(text.data()); }

const unsigned char* Raw(const std::string& text) { return reinterpret_cast<const unsigned char*>(text.data()); }

// Each of these converts `from` into `to`, which is large enough, and returns the length of its output.

template <std::uint32_t flags>
int Encode(const std::string& from, std::string& to) {
  std::int32_t length = Length(to);
  Require(text::Base64EncodeText(from.data(), Length(from), to.data(), &length, flags));
  return length;
}

int Decode(const std::string& from, std::string& to) {
  std::int32_t length = Length(to);
  Require(text::Base64DecodeText(from.data(), Length(from), to.data(), &length));
  return length;
}

int EncodeBlock(const std::string& from, std::string& to) { return EVP_EncodeBlock(Raw(to), Raw(from), Length(from)); }

int DecodeBlock(const std::string& from, std::string& to) { return EVP_DecodeBlock(Raw(to), Raw(from), Length(from)); }

EVP_ENCODE_CTX* g_context = nullptr;

int EncodeStream(const std::string& from, std::string& to) {
  int length = 0, rest = 0;
  EVP_EncodeInit(g_context);
  Require(EVP_EncodeUpdate(g_context, Raw(to), &length, Raw(from), Length(from)) == 1);
  EVP_EncodeFinal(g_context, Raw(to) + length, &rest);
  return length + rest;
}

int DecodeStream(const std::string& from, std::string& to) {
  int length = 0, rest = 0;
  EVP_DecodeInit(g_context);
  Require(EVP_DecodeUpdate(g_context, Raw(to), &length, Raw(from), Length(from)) >= 0);
  Require(EVP_DecodeFinal(g_context, Raw(to) + length, &rest) == 1);
  return length + rest;
}

using Codec = int (*)(const std::string& from, std::string& to);

bool CompareCodecs(const char* name, Codec ours, const std::string& from, const char* otherName, Codec other,
                   const std::string& otherFrom, std::size_t bytes) {
  std::string to(2 * bytes + 128, '\0');
  const auto nothing = [] {};
  const auto repeat = [&](Codec codec, const std::string& text) {
    for (std::size_t i = 0; i < kFewestBytes / bytes; ++i) Require(codec(text, to) > 0);
  };
  std::printf("%7zu bytes: ", bytes);
  return bench::Compare(bench::Side{name, nothing, [&] { repeat(ours, from); }},
                        bench::Side{otherName, nothing, [&] { repeat(other, otherFrom); }}, kRounds, kLimit);
}

std::string Encoded(Codec codec, const std::string& bytes) {
  std::string text(2 * bytes.size() + 128, '\0');
  text.resize(static_cast<std::size_t>(codec(bytes, text)));
  return text;
}

bool CompareSize(std::size_t size) {
  std::string bytes(size, '\0');
  unsigned number = 1;
  for (char& byte : bytes) byte = static_cast<char>((number = number * 1664525u + 1013904223u) >> 24);
  const auto plain = Encode<text::kBase64NoLineBreaks>, broken = Encode<0>;
  const std::string text = Encoded(plain, bytes);
  Require(text == Encoded(EncodeBlock, bytes));
  bool met = CompareCodecs("encode", plain, bytes, "EVP_EncodeBlock", EncodeBlock, bytes, size);
  met = CompareCodecs("decode", Decode, text, "EVP_DecodeBlock", DecodeBlock, text, size) && met;
  met = CompareCodecs("encode lines", broken, bytes, "EVP_EncodeUpdate", EncodeStream, bytes, size) && met;
  return CompareCodecs("decode lines", Decode, Encoded(broken, bytes), "EVP_DecodeUpdate", DecodeStream,
                       Encoded(EncodeStream, bytes), size) &&
         met;
}

}  // namespace

int main() {
  g_context = EVP_ENCODE_CTX_new();
  bool met = true;
  for (const std::size_t size : kSizes) met = CompareSize(size) && met;
  EVP_ENCODE_CTX_free(g_context);
  return met ? 0 : 1;
}
