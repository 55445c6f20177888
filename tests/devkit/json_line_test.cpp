#include "tvevapi/json_line.h"

#include <doctest/doctest.h>

#include <nlohmann/json.hpp>

TEST_CASE("json line: valid ASCII whatever the texts hold, and members without room left out whole") {
  tvevapi::JsonLine line;
  std::wstring units(tvevapi::JsonLine::kCapacity / 2, L'\0');
  line.Number("n", INT64_MIN);
  line.Text("t", L"a\"\\/\x01\x7F\x80\x20AC\xD83D\xDE00\xD83Dz\xDE00\xD83D");
  line.True("b");
  for (unsigned i = 0; i < units.size(); ++i) units[i] = static_cast<wchar_t>(i * 7 & 0xFFFF);
  for (unsigned length = 4000; length-- != 0;) line.Text("u", units.substr(length * 3, length));
  const std::string_view text = line.Finish();
  CHECK(text.size() <= line.kCapacity);
  for (const char c : text.substr(0, text.size() - 2)) CHECK((c >= 0x20 && c < 0x7F));
  const auto read = nlohmann::json::parse(text);
  CHECK((read["n"] == INT64_MIN && read["b"] == true && read.contains("u")));
  CHECK(read["t"] == "a\"\\/\x01\x7F\xC2\x80\xE2\x82\xAC\xF0\x9F\x98\x80\xEF\xBF\xBDz\xEF\xBF\xBD\xEF\xBF\xBD");
}
