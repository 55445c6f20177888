#include <doctest/doctest.h>

#include <cstdlib>

#include "KELAGAPI.h"
#include "shared/results.h"
#include "support/product_tree.h"

using namespace devkit;

namespace {

struct AgentModule : support::LoadedDll {
  explicit AgentModule(const std::string& path) : LoadedDll(path) { CALL(*this, KE_AGAPI_Initialize)(); }
  std::uint32_t Store(std::uint32_t item, std::string record) const {
    return CALL(*this, KE_AGAPI_SetConfig)(1, item, record.data(), static_cast<std::uint32_t>(record.size()));
  }
  // The record, or the result in brackets when the buffer stayed as it was.
  std::string Record(std::uint32_t item, std::uint32_t size) const {
    std::string record(size, '?');
    const std::uint32_t result = CALL(*this, KE_AGAPI_GetConfig)(1, item, record.data(), size);
    return result == kSuccess ? record : record == std::string(size, '?') ? "(" + std::to_string(result) + ")" : "";
  }
};

struct AgentFolder : support::Folder {
  AgentFolder() { std::filesystem::copy_file(support::BuildFolder() / "devkit" / "KELAGAPI.dll", dll); }
  const std::string dll = *this / "KELAGAPI.dll";
};

constexpr char kModuleVariable[] = "DEVKIT_TEST_AGENT";

}  // namespace

TEST_CASE("agent records: survive the module, are told apart, and are returned in their size only") {
  const AgentFolder folder;
  const std::string largest(65536, 'L');
  CHECK(AgentModule(folder.dll).Record(7, 4) == std::string(4, '\0'));
  for (const std::string& text : {largest, std::string("now")})
    CHECK(AgentModule(folder.dll).Store(7, text) == kSuccess);
  const AgentModule agent(folder.dll);
  SetLastError(4711);
  CHECK((agent.Store(8, largest + "L") == kBadArgument && agent.Store(8, largest) == 0 &&
         agent.Record(8, 65536) == largest));
  CHECK((agent.Record(7, 3) == "now" && agent.Record(7, 6) == "(12)" && agent.Record(7, 65537) == "(1)"));
  CHECK(CALL(agent, KE_AGAPI_AskProxyConfig)() == kWrongSize);
  CHECK(agent.Get<std::uint32_t (*)()>("KE_AGAPI_GetURL")() == kNotSupported);
  CHECK(CALL(agent, KE_AGAPI_Finalize)() + CALL(agent, KE_AGAPI_Finalize)() == static_cast<int>(kNotInitialised));
  CHECK((agent.Record(7, 3) == "(3)" && agent.Store(7, "abc") == kNotInitialised && GetLastError() == 4711));
  CHECK(support::ReadFile(folder / "KELAGAPI.log").find(";KE_AGAPI_SetConfig;0;1;7;3\r\n") != std::string::npos);
  CHECK(folder.FileCount() == 4);
}

TEST_CASE("agent records: a damaged file, or that of another record, is reported and stays until it is replaced") {
  const AgentFolder folder;
  const AgentModule agent(folder.dll);
  const std::string path = folder / "KELAGAPI-1-7.rec";
  REQUIRE(agent.Store(7, "record") == kSuccess);
  const std::string whole = support::ReadFile(path);
  std::filesystem::copy_file(path, folder / "KELAGAPI-1-8.rec");
  CHECK(agent.Record(8, 6) == "(11)");
  for (size_t i = 0; i < whole.size(); ++i) {
    std::string flipped = whole;
    flipped[i] ^= 0x10;
    for (const std::string& content : {flipped, whole.substr(0, i), whole + whole.substr(0, i + 1)}) {
      support::WriteFile(path, content);
      CHECK_MESSAGE((agent.Record(7, 6) == "(11)" && support::ReadFile(path) == content), i);
    }
  }
  CHECK((agent.Store(7, "new") == kSuccess && agent.Record(7, 3) == "new"));
  const support::LockedFile locked(path);
  CHECK((agent.Record(7, 3) == "(10)" && agent.Store(7, "late") == kFileFailure && folder.FileCount() == 4));
}

TEST_CASE("a process that stores records" * doctest::skip()) {
  const AgentModule agent(std::getenv(kModuleVariable));
  for (DWORD i = GetCurrentProcessId() / 4, end = i + 50; i < end; ++i) {
    CHECK(agent.Store(10, std::string(8536, static_cast<char>('a' + i % 26))) == kSuccess);
    const std::string record = agent.Record(10, 8536);
    CHECK(record == std::string(8536, record[0]));
  }
}

TEST_CASE("agent records: two processes at once never fail or see half a record") {
  const AgentFolder folder;
  const support::EnvironmentVariable path(kModuleVariable, folder.dll.c_str());
  CHECK(support::RunAtOnce(2, "a process that stores records") == 0);
  CHECK(folder.FileCount() == 3);
}
