#include "store/ini_store.h"

#include <doctest/doctest.h>

#include <string>

#include "text/text.h"

using store::IniStore;

namespace {

IniStore Parsed(std::string_view text) {
  IniStore store;
  store::ParseIni(text, store);
  return store;
}

}  // namespace

TEST_CASE("ini store: texts are parsed by the stated rules") {
  struct Row {
    const char* name;
    const char* text;
    const char* written;  // the text form of what was understood
  };
  const Row rows[] = {
      {"nothing", "", ""},
      {"only line ends", "\r\n\n\r", ""},
      {"plain", "[A]\r\nk=v\r\n", "[A]\r\nk=v\r\n"},
      {"other line ends, and none at the end", "[A]\nk=v\r[B]\r\r\n\nx=y", "[A]\r\nk=v\r\n[B]\r\nx=y\r\n"},
      {"entries before the first section", "a=b\r\n[A]\r\n", "[A]\r\n"},
      {"text behind the bracket", "[Name]junk]\r\n", "[Name]\r\n"},
      {"no closing bracket", "[Name\r\nk=v", "[Name]\r\nk=v\r\n"},
      {"empty names", "[]\r\n=v\r\n", "[]\r\n=v\r\n"},
      {"a second equals sign", "[A]\r\na=b=c\r\n", "[A]\r\na=b=c\r\n"},
      {"blanks are kept", "[ A ]\r\n k = v \r\n", "[ A ]\r\n k = v \r\n"},
      {"no equals sign", "[A]\r\nnonsense\r\nk=\r\n", "[A]\r\nk=\r\n"},
      {"semicolons are not comments", "[A]\r\n;k=v\r\n", "[A]\r\n;k=v\r\n"},
      {"a section twice keeps both", "[X]\r\na=1\r\n[x]\r\na=2\r\n", "[X]\r\na=1\r\n[x]\r\na=2\r\n"},
  };
  for (const Row& row : rows) {
    CAPTURE(std::string(row.name));
    const std::string written = store::Serialise(Parsed(row.text));
    CHECK(written == row.written);
    CHECK(store::Serialise(Parsed(written)) == written);
  }
}

TEST_CASE("ini store: lookups find the first of a name, in any letter case; reading appends") {
  IniStore store = Parsed("[X]\r\nKey=1\r\nKEY=2\r\n[x]\r\nonly=3\r\n");
  REQUIRE(store::LookupEntry(store, "x", "kEy", false));
  CHECK(store::LookupEntry(store, "x", "kEy", false)->value == "1");
  CHECK_FALSE(store::LookupEntry(store, "x", "only", false));

  store::ParseIni("key=9\r\n[X]\r\nkEY=4", store);
  CHECK(store::LookupEntry(store, "x", "kEy", false) == &store.sections[0].entries[0]);
  CHECK(store::Serialise(store) == "[X]\r\nKey=1\r\nKEY=2\r\n[x]\r\nonly=3\r\nkey=9\r\n[X]\r\nkEY=4\r\n");
  // Only ASCII letters have cases here.
  CHECK_FALSE(text::SameName("\xC4", "\xE4"));
  CHECK_FALSE(text::SameName("[", "{"));
}

TEST_CASE("ini store: LookupEntry creates only when asked, and nothing for a null name") {
  IniStore store = Parsed("[A]\r\nk=v\r\n");
  CHECK_FALSE(store::LookupEntry(store, "B", "k", false));
  CHECK_FALSE(store::LookupEntry(store, "A", "n", false));
  CHECK_FALSE(store::LookupEntry(store, nullptr, "k", true));
  CHECK_FALSE(store::LookupEntry(store, "C", nullptr, true));
  CHECK(store::Serialise(store) == "[A]\r\nk=v\r\n");

  store::LookupEntry(store, "A", "n", true);
  // A value may be part of the old one. Each change frees what the one before it kept.
  for (const char* value : {"1", "", "older w"}) CHECK(store::SetValue(store, "a", "N", value));
  const std::size_t texts = store.texts.size();
  CHECK(store::SetValue(store, "a", "N", store::LookupEntry(store, "A", "n")->value.substr(6)));
  CHECK(store.texts.size() == texts);
  CHECK_FALSE(store::SetValue(store, nullptr, "k", "v"));
  CHECK_FALSE(store::LookupEntry(store, "A", nullptr));
  store::LookupEntry(store, "B", "m", true);
  CHECK(store::Serialise(store) == "[A]\r\nk=v\r\nn=w\r\n[B]\r\nm=\r\n");
}

TEST_CASE("ini store: line breaks inside names and values cannot forge entries") {
  IniStore store;
  CHECK(store::SetValue(store, "A\r\nx", "k\n[B", "v\r\n[C]\r\nid=forged"));
  CHECK(store::Serialise(store) == "[Ax]\r\nk[B=v[C]id=forged\r\n");
}

TEST_CASE("ini store: a large store is read in linear time") {
  // Quadratic work on this many sections and entries would be noticed as a run of minutes.
  constexpr int kCount = 200000;
  std::string text;
  for (int i = 0; i < kCount; ++i) text += "[Section]\r\nkey=value\r\n";
  IniStore store = Parsed(text);
  CHECK(store.sections.size() == kCount);
  CHECK(store::Serialise(store) == text);
}

TEST_CASE("enciphered text: the marker is known in any letter case, before at least one byte that is not zero") {
  for (const char* marked : {"TVKE1", "tvKe\x01\x02"}) CHECK(store::IsMarked(marked));
  for (const char* plain : {"", "TVK", "TVKE", "[TVKE]"}) CHECK_FALSE(store::IsMarked(plain));
  CHECK_FALSE(store::IsMarked(std::string("TVKE\0cipher", 11)));
}
