#include "store/enciphered_text.h"

#include <doctest/doctest.h>

#include <string>

TEST_CASE("enciphered text: the marker is known in any letter case, before at least one byte that is not zero") {
  CHECK(store::IsMarked("TVKE1"));
  CHECK(store::IsMarked("tvKe\x01\x02"));
  CHECK_FALSE(store::IsMarked(""));
  CHECK_FALSE(store::IsMarked("TVK"));
  CHECK_FALSE(store::IsMarked("TVKE"));
  CHECK_FALSE(store::IsMarked(std::string("TVKE\0cipher", 11)));
  CHECK_FALSE(store::IsMarked("[TVKE]"));
}

TEST_CASE("enciphered text: lengths are rounded up to whole blocks") {
  CHECK(store::PaddedLength(0) == 0);
  CHECK(store::PaddedLength(1) == 16);
  CHECK(store::PaddedLength(16) == 16);
  CHECK(store::PaddedLength(17) == 32);
}
