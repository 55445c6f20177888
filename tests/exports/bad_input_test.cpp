#include <doctest/doctest.h>

#include <string>

#include "exports/store_tree.h"

using support::LoadedDll;

TEST_CASE("bad input: very long and non-ASCII texts are kept whole") {
  const StoreTree tree;
  const LoadedDll dll = tree.Load();
  std::string allBytes;
  for (int c = 1; c < 256; ++c) {
    if (c != '\r' && c != '\n') allBytes += static_cast<char>(c);
  }
  const std::string longText(3000000, 'x');
  for (const std::string& text : {allBytes, longText}) {
    REQUIRE(CALL(dll, KE_SetContainer)(text.c_str()) == KE_SUCCESS);
    std::string buffer(text.size() + 1, '?');
    const LoadedDll another = tree.Load();
    CHECK(CALL(another, KE_GetContainer)(buffer.data(), static_cast<int32_t>(text.size())) == KE_BUFFER_TOO_SMALL);
    CHECK(CALL(another, KE_GetContainer)(buffer.data(), static_cast<int32_t>(buffer.size())) == KE_SUCCESS);
    CHECK(buffer.c_str() == text);
  }
}

TEST_CASE("bad input: read-only and unusable store files") {
  const StoreTree tree;
  tree.Put("INTEGRA.DAT", WholeStore("live"));
  const auto live = tree.tree.Store("INTEGRA.DAT");
  SUBCASE("a file that may only be read") {
    const LoadedDll dll = tree.Load();
    CHECK(AgentId(dll) == "live");
    const support::LockedFile readable(live, FILE_SHARE_READ);
    CHECK(AgentId(tree.Load()) == "(1782)");
    CHECK(CALL(dll, KE_SetAgentID)("new") == KE_STORE_UNUSABLE);
    CHECK(tree.Text("INTEGRA.DAT") == WholeStore("live"));
  }
  SUBCASE("a folder of that name; integer outputs stay as they were") {
    std::filesystem::remove(live);
    std::filesystem::create_directory(live);
    const LoadedDll dll = tree.Load();
    CHECK(CALL(dll, KE_SetAgentID)("new") == KE_STORE_UNUSABLE);
    int32_t value = -7;
    CHECK(CALL(dll, KE_GetInstallState)(&value) == KE_STORE_UNUSABLE);
    CHECK(CALL(dll, KE_IsIntegrated)(&value) == KE_STORE_UNUSABLE);
    CHECK(value == -7);
    CHECK(CALL(dll, KE_IsInstallComplete)(&value) == KE_STORE_UNUSABLE);
    CHECK(value == 0);
  }
}
