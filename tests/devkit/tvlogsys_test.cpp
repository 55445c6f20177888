#include "TvLogSys.h"

#include <doctest/doctest.h>

#include <cstring>
#include <set>

#include "shared/results.h"
#include "support/product_tree.h"

using namespace devkit;

namespace {

struct LogModule : support::LoadedDll {
  LogModule() : LoadedDll(support::BuildFolder() / "devkit" / "TvLogSys.dll") {}

  std::uint32_t Open(const std::string& path, std::uint32_t level, std::uint32_t maximumSize) const {
    std::uint32_t handle = 0;
    LogFileSettings settings{level, {}, maximumSize, 1, 1};
    std::strcpy(settings.path, path.c_str());
    REQUIRE(CALL(*this, LogSys_InitializeLogSystem)(&handle) == kSuccess);
    REQUIRE(CALL(*this, LogSys_ConfigureLogFile)(handle, &settings) == kSuccess);
    return handle;
  }
};

constexpr char kPathVariable[] = "DEVKIT_TEST_LOG";
constexpr int kProcesses = 4, kLines = 150, kLineLength = 23;

}  // namespace

TEST_CASE("a log keeps the lines up to its level, and those of level 0") {
  const support::Folder folder;
  const LogModule log;
  const std::uint32_t handle = log.Open(folder / "a.log", 10, 1000);
  for (const std::uint32_t level : {0u, 9u, 10u, 11u, 20u}) {
    CHECK(CALL(log, LogSys_DumpLogFile)(handle, level, "%u%s", level, ";") == kSuccess);
  }
  CHECK(support::ReadFile(folder / "a.log") == "0;9;10;");
}

TEST_CASE("a full log file becomes the one older file, unless someone has it open") {
  const support::Folder folder;
  const LogModule log;
  const std::uint32_t handle = log.Open(folder / "a.log", 0, 10);
  const std::string large(30, 'L');
  const auto expect = [&](const std::string& line, const std::string& file, const std::string& old) {
    CHECK(CALL(log, LogSys_DumpLogFile)(handle, 0, "%s", line.c_str()) == kSuccess);
    CHECK(support::ReadFile(folder / "a.log") == file);
    CHECK(support::ReadFile(folder / "a.log.old") == old);
  };
  expect("12345", "12345", "");
  expect("67890", "1234567890", "");
  expect("a", "a", "1234567890");
  expect(large, large, "a");
  expect("b", "b", large);
  {
    const support::LockedFile reader(folder / "a.log", FILE_SHARE_READ | FILE_SHARE_WRITE);
    expect("1234567890", "b1234567890", large);
  }
  expect("c", "c", "b1234567890");
  CHECK(folder.FileCount() == 2);
}

TEST_CASE("a process that logs" * doctest::skip()) {
  const LogModule log;
  const std::uint32_t handle = log.Open(std::getenv(kPathVariable), 0, kProcesses * kLines * kLineLength * 2 / 3);
  const auto dump = CALL(log, LogSys_DumpLogFile);
  for (int i = 0; i < kLines; ++i) CHECK(dump(handle, 0, "%08lu %012d\r\n", GetCurrentProcessId(), i) == kSuccess);
}

TEST_CASE("processes that append at once lose and tear no line, also while the file rotates") {
  const support::Folder folder;
  const support::EnvironmentVariable path(kPathVariable, (folder / "a.log").c_str());
  CHECK(support::RunAtOnce(kProcesses, "a process that logs") == 0);
  const std::string text = support::ReadFile(folder / "a.log.old") + support::ReadFile(folder / "a.log");
  std::set<std::string> lines;
  for (std::size_t at = 0; at < text.size(); at += kLineLength) lines.insert(text.substr(at, kLineLength));
  CHECK(folder.FileCount() == 2);
  CHECK(lines.size() == kProcesses * kLines);
  for (const std::string& line : lines) CHECK(line.find("\r\n") == kLineLength - 2);
}

TEST_CASE("bad input is refused, long lines are cut, and the last error stays") {
  const support::Folder folder;
  const LogModule log;
  const auto configure = CALL(log, LogSys_ConfigureLogFile);
  const auto dump = CALL(log, LogSys_DumpLogFile);
  const std::uint32_t handle = log.Open(folder / "a.log", 0, 9999);
  LogFileSettings empty{0, "", 1000, 1, 1}, noSize{0, "a.log", 0, 1, 1}, unterminated{0, "", 1000, 1, 1};
  std::memset(unterminated.path, 'x', sizeof unterminated.path);
  SetLastError(4711);
  CHECK(configure(0, &unterminated) != kSuccess);
  CHECK(dump(0xFFFFFFFFu, 0, "x") == kBadHandle);
  for (const LogFileSettings* bad : {&empty, &unterminated, &noSize}) CHECK(configure(handle, bad) == kBadArgument);
  CHECK(dump(log.Open(folder / "missing\\a.log", 0, 1000), 0, "x") == kFileFailure);
  const std::string text(9000, 'x');
  CHECK(dump(handle, 0, "%s\r\n", text.c_str()) == kSuccess);
  std::uint32_t other = 0;
  for (int i = 2; i < 64; ++i) CHECK(CALL(log, LogSys_InitializeLogSystem)(&other) == kSuccess);
  CHECK(CALL(log, LogSys_InitializeLogSystem)(&other) == kTooMany);
  CHECK(GetLastError() == 4711);
  CHECK(support::ReadFile(folder / "a.log") == text.substr(0, 8189) + "\r\n");
}
