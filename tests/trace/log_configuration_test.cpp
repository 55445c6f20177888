#include "trace/log_configuration.h"

#include <doctest/doctest.h>

#include <string>

#include "support/lead_byte.h"

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
    CHECK(trace::LogLevelFromText(row.text) == row.level);
    CHECK(trace::LogSizeFromText(row.text) == row.size);
  }
}

TEST_CASE("log configuration: texts that are empty or do not fit give no record, and none is cut") {
  const auto make = [](const std::string& libraries, const std::string& logs) {
    return trace::MakeLogConfiguration("KELUtils", libraries, logs, 20, 4096, support::IsLeadByte932);
  };
  const std::string fits(260 - 14, 'd');  // with "\KELUtils.log" and the terminating zero, just what the record takes
  for (const char* more : {"d", "dd", "ddd", "dddd", "ddddd"}) CHECK_FALSE(make("C:\\C", fits + more));
  CHECK_FALSE(make(std::string(261, 'd'), "C:\\A"));
  CHECK_FALSE(make("", "C:\\A"));

  for (const std::string directory : {"C:\\A", "C:\\A\\", "C:\\\x95\\", "C:\\\x95\\\\"}) {
    const std::string path = trace::ToFileSettings(make("C:\\A\\..\\Common", directory).value()).path;
    CHECK(path == (directory[3] == 'A' ? "C:\\A\\KELUtils.log" : "C:\\\x95\\\\KELUtils.log"));
  }
  auto record = make("C:\\C", fits).value();
  CHECK(std::string(trace::ToFileSettings(record).path) == fits + "\\KELUtils.log");
  record.recordSize = 4;
  CHECK_FALSE(trace::IsAcceptable(record));
}
