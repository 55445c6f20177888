#include "trace/log_configuration.h"

#include <doctest/doctest.h>

#include <string>
#include <tuple>

#include "support/lead_byte.h"

TEST_CASE("log configuration: a text of the settings that becomes another level or size") {
  constexpr std::uint32_t k3MB = 3145728;
  const std::tuple<const char*, std::uint32_t, std::uint32_t> rows[] = {{"10", 10, 10240},
                                                                        {"0", 0, k3MB},
                                                                        {"-5", 0, k3MB},
                                                                        {"", 0, k3MB},
                                                                        {" 7x", 7, 7168},
                                                                        {"2097151", 2097151, 2147482624},
                                                                        {"2097152", 2097152, k3MB},
                                                                        {"99999999999999999999", 2147483647, k3MB}};
  for (const auto& [text, level, size] : rows)
    CHECK_MESSAGE((trace::LogLevelFromText(text) == level && trace::LogSizeFromText(text) == size), text);
}

TEST_CASE("log configuration: a path that is cut, or a separator that is missing or doubled") {
  const auto make = [](const std::string& libraries, const std::string& logs) {
    return trace::MakeLogConfiguration("KELUtils", libraries, logs, 20, 4096, support::IsLeadByte932);
  };
  const std::string fits(260 - 14, 'd');  // with "\KELUtils.log" and the terminating zero, just what the record takes
  CHECK_FALSE((make("C:\\C", fits + "d") || make(std::string(261, 'd'), "C:\\A") || make("", "C:\\A")));
  const std::string directories[][2] = {{"C:\\A", "C:\\A\\"},
                                        {"C:\\A\\", "C:\\A\\"},
                                        {"C:\\\x95\\", "C:\\\x95\\\\"},
                                        {"C:\\\x95\\\\", "C:\\\x95\\\\"},
                                        {fits, fits + "\\"}};
  for (const auto& [directory, folder] : directories)
    CHECK(std::string(trace::ToFileSettings(make("C:\\C", directory).value()).path) == folder + "KELUtils.log");
  auto record = make("C:\\C", fits).value();
  record.recordSize = 4;
  CHECK_FALSE(trace::IsAcceptable(record));
}
