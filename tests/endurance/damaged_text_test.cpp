// Texts that the library reads, cut at every length and with every bit flipped, in memory of exactly their size, under
// the sanitizers.
#include <doctest/doctest.h>

#include <algorithm>
#include <memory>
#include <string>

#include "store/ini_store.h"
#include "text/base64.h"

namespace {

// Calls `check(text, damaged)` for each damage; `damaged` is the place of the first byte that differs.
template <typename Check>
void ForEveryDamage(const std::string& text, Check check) {
  const auto run = [&](const std::string& content, std::size_t damaged) {
    INFO("damaged at ", damaged, " of ", content.size());
    const std::unique_ptr<char[]> exact(new char[content.size()]);
    content.copy(exact.get(), content.size());
    check(std::string_view(exact.get(), content.size()), damaged);
  };
  for (std::size_t length = 0; length < text.size(); ++length) run(text.substr(0, length), length);
  for (std::size_t bit = 0; bit < 8 * text.size(); ++bit) {
    std::string flipped = text;
    flipped[bit / 8] = static_cast<char>(flipped[bit / 8] ^ 1 << bit % 8);
    run(flipped, bit / 8);
  }
}

std::string ReadAndWritten(std::string_view text) {
  store::IniStore store;
  store::ParseIni(text, store);
  return store::Serialise(store);
}

}  // namespace

TEST_CASE(
    "damaged texts: what stands before the damage is read as it was, and what was read is written so that it stays") {
  const std::string text =
      "[INTEGRATION]\r\nDate=2024-03-05 "
      "07:08:09\r\nDEVICEID=device\r\n[INSTALL]\r\nState=48\r\nLastError=-1\r\n\r\nplain line\r\n"
      "[AGENTRCM]\r\nUSER=user\r\nPASSWORD=QUJDREVGR0g=\r\n;=\r\n[AGENT]\r\nVERSION=1.0\r\nID=\r\nid=agent [x]=y\r\n";
  ForEveryDamage(text, [&](std::string_view damaged, std::size_t at) {
    const std::string written = ReadAndWritten(damaged);
    CHECK(ReadAndWritten(written) == written);
    const std::size_t lineEnd = text.rfind('\n', at == 0 ? 0 : at - 1);
    const std::string before =
        lineEnd == std::string::npos || at == 0 ? "" : ReadAndWritten(text.substr(0, lineEnd + 1));
    CHECK(written.substr(0, before.size()) == before);
    const std::string_view upToZero = store::UpToZero(damaged);
    CHECK((upToZero.size() == damaged.size() || damaged[upToZero.size()] == '\0'));
  });
  ForEveryDamage("TVKE" + text, [](std::string_view damaged, std::size_t at) {
    // A flipped letter case is still the marker.
    const bool marker = at >= 4 || (damaged.size() > 4 && (damaged[at] ^ "TVKE"[at]) == 0x20);
    CHECK(store::IsMarked(damaged) == (marker && damaged.size() > 4));
  });
}

TEST_CASE(
    "damaged base64: never more than the destination holds, and the length that is told is the length that is "
    "written") {
  ForEveryDamage("QUJDREVGR0hJSktMTU5PUFFSU1RVVldYWVphYmNkZWZnaGlqa2xtbm9wcXJzdHV2d3h5ejAxMjM0\r\nNTY3ODk=\r\n",
                 [](std::string_view damaged, std::size_t) {
                   std::int32_t length = 0;
                   text::Base64DecodeText(damaged.data(), static_cast<std::int32_t>(damaged.size()), nullptr, &length);
                   for (std::int32_t room : {length, length - 1, length / 2}) {
                     const std::unique_ptr<char[]> bytes(new char[static_cast<std::size_t>(std::max(room, 0))]);
                     std::int32_t told = std::max(room, 0);
                     const bool fits = text::Base64DecodeText(damaged.data(), static_cast<std::int32_t>(damaged.size()),
                                                              bytes.get(), &told);
                     CHECK(told == length);
                     CHECK(fits == (std::max(room, 0) >= length));
                   }
                 });
}
