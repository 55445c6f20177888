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

TEST_CASE("ini store: lookups find the first of a name, in any letter case; reading appends") {
  IniStore store = Parsed("[X]\r\nKey=1\r\nKEY=2\r\n[x]\r\nonly=3\r\n");
  REQUIRE(store::LookupEntry(store, "x", "kEy", false));
  CHECK(store::LookupEntry(store, "x", "kEy", false)->value == "1");
  CHECK_FALSE(store::LookupEntry(store, "x", "only", false));

  store::ParseIni("key=9\r\n[X]\r\nkEY=4", store);
  CHECK(store::LookupEntry(store, "x", "kEy", false) == &store.sections[0].entries[0]);
  CHECK(store::Serialise(store) == "[X]\r\nKey=1\r\nKEY=2\r\n[x]\r\nonly=3\r\nkey=9\r\n[X]\r\nkEY=4\r\n");
  // Only ASCII letters have cases here.
  CHECK_FALSE((text::SameName("\xC4", "\xE4") || text::SameName("[", "{")));
}

TEST_CASE("ini store: a lookup that creates unasked, or a null name that is used") {
  IniStore store = Parsed("[A]\r\nk=v\r\n");
  for (const char* section : {"B", static_cast<const char*>(nullptr)}) {
    CHECK_FALSE(store::LookupEntry(store, section, "k", section == nullptr));
    CHECK_FALSE(store::LookupEntry(store, "A", section ? "n" : nullptr, section == nullptr));
  }
  CHECK_FALSE((store::SetValue(store, nullptr, "k", "v") || store::LookupEntry(store, "A", nullptr)));
  CHECK(store::Serialise(store) == "[A]\r\nk=v\r\n");
  store::LookupEntry(store, "A", "n", true);
  CHECK(store::SetValue(store, "a", "N", "w"));
  store::LookupEntry(store, "B", "m", true);
  CHECK(store::Serialise(store) == "[A]\r\nk=v\r\nn=w\r\n[B]\r\nm=\r\n");
}

TEST_CASE("ini store: line breaks inside names and values cannot forge entries") {
  IniStore store;
  CHECK(store::SetValue(store, "A\r\nx", "k\n[B", "v\r\n[C]\r\nid=forged"));
  CHECK(store::Serialise(store) == "[Ax]\r\nk[B=v[C]id=forged\r\n");
}

TEST_CASE("ini store: a large store takes minutes") {
  constexpr int kCount = 200000;
  std::string text;
  for (int i = 0; i < kCount; ++i) text += "[Section]\r\nkey=value\r\n";
  IniStore store = Parsed(text);
  CHECK((store.sections.size() == kCount && store::Serialise(store) == text));
}

TEST_CASE("enciphered text: the marker is known in any letter case, before at least one byte that is not zero") {
  for (const char* marked : {"TVKE1", "tvKe\x01\x02"}) CHECK(store::IsMarked(marked));
  for (const char* plain : {"", "TVK", "TVKE", "[TVKE]"}) CHECK_FALSE(store::IsMarked(plain));
  CHECK_FALSE(store::IsMarked(std::string("TVKE\0cipher", 11)));
}
