#include "frame/log_configuration.h"

#include <doctest/doctest.h>

#include <string>

TEST_CASE("log configuration: settings texts become level and size") {
  struct Row {
    const char* text;
    std::uint32_t level;
    std::uint32_t size;
  };
  constexpr std::uint32_t k3MB = 3145728;
  for (const Row& row : {Row{"10", 10, 10240}, Row{"0", 0, k3MB}, Row{"-5", 0, k3MB}, Row{"", 0, k3MB},
                         Row{"many", 0, k3MB}, Row{" 7x", 7, 7168}, Row{"2097151", 2097151, 2147482624},
                         Row{"2097152", 2097152, k3MB}, Row{"99999999999999999999", 2147483647, k3MB}}) {
    CAPTURE(std::string(row.text));
    CHECK(frame::LogLevelFromText(row.text) == row.level);
    CHECK(frame::LogSizeFromText(row.text) == row.size);
  }
}

TEST_CASE("log configuration: texts that are empty or do not fit give no record, and none is cut") {
  const std::string fits(264 - 14,
                         'd');  // with "\KELUtils.log" and the terminating zero, just the 264 characters of the path
  CHECK(frame::MakeLogConfiguration("KELUtils", "C:\\C", fits, 0, 1));
  CHECK_FALSE(frame::MakeLogConfiguration("KELUtils", "C:\\C", fits + "d", 0, 1));
  CHECK_FALSE(frame::MakeLogConfiguration("KELUtils", std::string(261, 'd'), "C:\\A", 0, 1));
  CHECK_FALSE(frame::MakeLogConfiguration("KELUtils", "", "C:\\A", 0, 1));

  for (const char* directory : {"C:\\A", "C:\\A\\"}) {
    const auto made = frame::MakeLogConfiguration("KELUtils", "C:\\A\\..\\Common", directory, 20, 4096);
    CHECK(std::string(frame::ToFileSettings(made.value()).path) == "C:\\A\\KELUtils.log");
  }
  auto record = *frame::MakeLogConfiguration("KELUtils", "C:\\C", fits, 0, 1);
  CHECK(frame::ToFileSettings(record).path[259] == '\0');
  record.recordSize = 4;
  CHECK_FALSE(frame::IsAcceptable(record));
}
