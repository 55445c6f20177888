// Pure functions of several folders that make texts and records, or read them. They run natively, under the sanitizers.
#include <doctest/doctest.h>

#include <climits>
#include <cstring>
#include <new>
#include <tuple>

#include "agent/proxy_records.h"
#include "registration/texts.h"
#include "schedule/jobs.h"
#include "store/ini_store.h"
#include "text/base64.h"
#include "text/text.h"
#include "trace/log_configuration.h"

using std::string;

namespace {

// The first bytes of two-byte characters in code page 932, that of Japanese Windows. The second may be a backslash.
bool IsLeadByte932(char byte) noexcept {
  return (byte >= '\x81' && byte <= '\x9F') || (byte >= '\xE0' && byte <= '\xFC');
}

string Encoded(const string& bytes, std::uint32_t flags) {
  std::int32_t length = text::Base64RequiredLength(static_cast<int>(bytes.size()), flags);
  string text(static_cast<size_t>(length), '?');
  CHECK(text::Base64EncodeText(bytes.data(), static_cast<int>(bytes.size()), text.data(), &length, flags));
  return text.substr(0, static_cast<size_t>(length));
}

// A description filled from a record, as text.
string Filled(void (*fill)(const KE_AGENT_PROXY_RECORD&, KE_PROXY&), const KE_AGENT_PROXY_RECORD& record) {
  KE_PROXY proxy;
  std::memset(&proxy, '~', sizeof proxy);
  agent::ClearProxy(proxy);
  fill(record, proxy);
  CHECK((sizeof proxy == agent::kProxyExtent || reinterpret_cast<const char*>(&proxy)[agent::kProxyExtent] == '~'));
  return proxy.host + (" " + std::to_string(proxy.port)) + (proxy.hasCredentials ? " as " : "") + proxy.user + "/" +
         proxy.password;
}

store::IniStore Parsed(std::string_view text) {
  store::IniStore store;
  store::ParseIni(text, store);
  return store;
}

}  // namespace

TEST_CASE("base64: a text that differs from RFC 4648, a break at another place, a length that wraps around") {
  const char* vectors[][2] = {{"", ""}, {"Zg==", "f"}, {"Zm8=", "fo"}, {"Zm9vYg==", "foob"}, {"Zm9vYmFy", "foobar"}};
  for (const auto& [text, bytes] : vectors) CHECK(Encoded(bytes, 0) == text);
  const string line(76, 'A'), zeros(115, '\0');
  CHECK((Encoded("f", text::kBase64NoPadding) == "Zg" && Encoded(zeros.substr(58), 0) == line + "\r\n"));
  CHECK(Encoded(zeros, 0) == line + "\r\n" + line + "\r\nAA==");
  CHECK(Encoded(zeros, text::kBase64NoLineBreaks) == line + line + "AA==");
  CHECK((text::Base64RequiredLength(58, 0) == 84 && text::Base64RequiredLength(536870911, 2) == 715827884));
  std::int32_t none = 0;
  CHECK_FALSE((text::Base64DecodeText(nullptr, 0, nullptr, &none) || text::Base64DecodeText("", 0, &none, nullptr)));
  CHECK_THROWS_AS(text::Base64RequiredLength(536870912, 0), std::bad_array_new_length);
}

TEST_CASE("log configuration: another level or size, a path that is cut, a separator missing or doubled") {
  constexpr std::uint32_t k3MB = 3145728;
  const std::tuple<const char*, std::uint32_t, std::uint32_t> rows[] = {{"10", 10, 10240},
                                                                        {"0", 0, k3MB},
                                                                        {"-5", 0, k3MB},
                                                                        {" 7x", 7, 7168},
                                                                        {"", 0, k3MB},
                                                                        {"2097151", 2097151, 2147482624},
                                                                        {"2097152", 2097152, k3MB},
                                                                        {"99999999999999999999", 2147483647, k3MB}};
  for (const auto& [text, level, size] : rows)
    CHECK_MESSAGE((trace::LogLevelFromText(text) == level && trace::LogSizeFromText(text) == size), text);
  const auto make = [](const string& libraries, const string& logs) {
    return trace::MakeLogConfiguration("KELUtils", libraries, logs, 20, 4096, IsLeadByte932);
  };
  const string fits(260 - 14, 'd');  // with "\KELUtils.log" and the terminating zero, just what the record takes
  CHECK_FALSE((make("C:\\C", fits + "d") || make(string(261, 'd'), "C:\\A") || make("", "C:\\A")));
  const string directories[][2] = {
      {"C:\\A", "C:\\A\\"}, {"C:\\A\\", "C:\\A\\"}, {"C:\\\x95\\", "C:\\\x95\\\\"}, {fits, fits + "\\"}};
  for (const auto& [directory, folder] : directories)
    CHECK(string(trace::ToFileSettings(make("C:\\C", directory).value()).path) == folder + "KELUtils.log");
  auto record = make("C:\\C", fits).value();
  record.recordSize = 4;
  CHECK_FALSE(trace::IsAcceptable(record));
}

TEST_CASE("token texts: another byte, or a root that is cut inside a two-byte character") {
  const char* roots[][2] = {{nullptr, ""},
                            {"", ""},
                            {"\\", ""},
                            {"A\\\\", "A\\"},
                            {"C:\\A", "C:\\A"},
                            {"C:\\\x95\\", "C:\\\x95\\"},
                            {"C:\\\x95\\\\", "C:\\\x95\\"}};
  for (const auto& [folder, root] : roots) CHECK(registration::InstallRoot(folder, IsLeadByte932) == root);
  const std::tuple<const char*, size_t, bool> rows[] = {{"", string::npos, false}, {"\\", 0, true},
                                                        {"A\\B", 1, false},        {"\x95\\", string::npos, false},
                                                        {"\x95\\\\", 2, true},     {"\\\x95\\B\\C", 4, false},
                                                        {"\xA1\\", 1, true},       {"\x81\x95\\", 2, true},
                                                        {"\\\xFC", 0, false}};
  for (const auto& [text, last, ends] : rows) {
    CHECK_MESSAGE(text::LastBackslash(text, IsLeadByte932) == last, text);
    CHECK_MESSAGE(text::EndsInBackslash(text, IsLeadByte932) == ends, text);
  }
  string expected;
  for (const string name : {"KELREPORT", "KELSCAN", "KELTASK", "KELTEST", "KELUPD", "KELUPG", "KELCONF", "KELLNCHR",
                            "KELQTINE", "KELTVEVT", "KELSNET", "KELNTF"})
    expected += name + "=C:\\A\\" + name + "\\" + name + ".dll\r\n";
  CHECK(registration::PluginTokens("C:\\A") == expected);
  CHECK(registration::SchedulerTokens("C:\\A") ==
        "KEPLPMNG=e\"C:\\A\\KESLPMNG\\KepLpMng.exe\"\r\nKEPWINST=e\"C:\\A\\KEPWINST\\KEPWINST.exe\"\r\n");
}

TEST_CASE("command gate: a command that may run in another state") {
  const string always = "-1 0 39 40 41 42 43 44 45 46 47 48 49 199 200 ";
  const std::pair<const char*, string> rows[] = {{"keltvevt", always},
                                                 {"KELConf", always},
                                                 {"kellnchr", always},
                                                 {"KELTEST", "40 41 42 43 44 47 48 200 "},
                                                 {"KELUpg", "40 42 43 44 46 47 48 200 "},
                                                 {"KelUpd", "40 41 42 43 44 46 47 48 200 "},
                                                 {"KELReport", "48 200 "},
                                                 {"KELQtine", "48 200 "},
                                                 {"KELTest ", "200 "},
                                                 {nullptr, "200 "}};
  for (const auto& [command, states] : rows) {
    string allowed;
    for (const int state : {-1, 0, 39, 40, 41, 42, 43, 44, 45, 46, 47, 48, 49, 199, 200})
      allowed += registration::IsCommandAllowed(command, state) ? std::to_string(state) + " " : "";
    CHECK(allowed == states);
  }
}

TEST_CASE("clauses: a job that runs at another time, or not at all") {
  using namespace schedule;
  static int number = 32767;
  const auto every = [](int period, bool random) { return MkEveryClause(period, random, [] { return number; }); };
  const std::pair<string, const char*> rows[] = {
      {every(10080, true), "-Every:Weeks:1"},
      {every(8 * 1440 + 61, false), "-Every:Weeks:1"},
      {every(INT_MAX, false), "-Every:Weeks:213044"},
      {every(10079, false), "-Every:Days:6"},
      {every(1500, true), "-Every:Days:1"},
      {every(1439, false), "-EveryHoursMins:23:59 -Every:Su,M,T,W,Th,F,S"},
      {every(90, true), "-EveryHoursMins:1:30 -Every:W"},
      {MkStartTimeRange(0, 60), "-StartTime:00:29 -StartTimeRnd:01:00"},
      {MkStartTimeRange(29, 2000), "-StartTime:00:29 -StartTimeRnd:23:59"},
      {MkStartTimeRange(INT_MAX, INT_MAX), "-StartTime:23:59 -StartTimeRnd:23:59"},
      {MkStartTimeRange(100, 50) + MkStartTimeRange(-1, 50) + MkStartTimeRange(-2, -1), ""},
      {MkStartTimeSpread(60, 15), "-StartTime:00:00 -StartTimeRnd:00:59"},
      {MkStartTimeSpread(5, 2), "-StartTime:00:02 -StartTimeRnd:00:29"},
      {MkStartTimeSpread(INT_MAX, INT_MAX), "-StartTime:00:07 -StartTimeRnd:23:59"},
      {MkBootClause(0, true), " -Every:Boot:0 -EveryWindow:Days:7"},
  };
  for (const auto& [clause, expected] : rows) CHECK(clause == expected);
  number = 0;
  for (const string weekday : {"M", "T", "W", "Th", "F", "M"}) {
    CHECK(every(60, true) == "-EveryHoursMins:1:0 -Every:" + weekday);
    ++number;
  }
  const AgentTask seconds{"", "", "", 1, kPeriodic, 's', 30, 119, TaskCondition::kAlways, false};
  const AgentTask hours{"", "", "", 1, kBoot, 'h', 1, 2, TaskCondition::kNotIntegrated, false};
  const AgentTask reversed{"", "", "", 1, kBoot, 'm', 2, 1, TaskCondition::kIntegrated, false};
  CHECK((PeriodMinutes(seconds) == 1 && PeriodMinutes(hours) == 120));
  CHECK((DelaySeconds(hours, 0.0) == 3600 && DelaySeconds(hours, 1.0) == 7200));
  CHECK((DelaySeconds(seconds, 0.5) == 75 && DelaySeconds(reversed, 1.0) == 120));  // 44.5 + 0.5
  CHECK((IsScheduled(seconds, true) && IsScheduled(seconds, false) && IsScheduled(hours, false)));
  CHECK((!IsScheduled(hours, true) && IsScheduled(reversed, true) && !IsScheduled(reversed, false)));
}

TEST_CASE("proxy records: another host, port, user or password, configured or for the internet") {
  using namespace agent;
  const char* rows[][3] = {{"h:3128", "h 3128/", "h 3128/"}, {"h", " 0/", "h 80/"},       {"h:", "h 0/", "h 80/"},
                           {"h:0", "h 0/", "h 80/"},         {":81", " 81/", " 81/"},     {"", " 0/", " 80/"},
                           {"h:1:2", "h 1/", "h 1/"},        {"h:80x", "h 80/", "h 80/"}, {"h:x1", "h 0/", "h 80/"}};
  for (const auto& [address, configured, internet] : rows) {
    KE_AGENT_PROXY_RECORD record{0, 0, {}, "", "no user, no password", {}};
    std::strcpy(record.address, address);
    CHECK_MESSAGE(Filled(FillConfiguredProxy, record) == configured, address);
    CHECK_MESSAGE(Filled(FillInternetProxy, record) == internet, address);
  }
  // Texts without a terminator are taken to the end of their field.
  KE_AGENT_PROXY_RECORD record;
  std::memset(&record, 'x', sizeof record);
  const string credentials = " as " + string(128, 'x') + "/" + string(128, 'x');
  CHECK(Filled(FillConfiguredProxy, record) == " 0" + credentials);
  CHECK(Filled(FillInternetProxy, record) == string(255, 'x') + " 80" + credentials);
}

TEST_CASE("ini store: a lookup finds a later entry of a name, or creates one unasked; a null name is used") {
  store::IniStore store = Parsed("[X]\r\nKey=1\r\nKEY=2\r\n[x]\r\nonly=3\r\n");
  store::ParseIni("key=9\r\n[X]\r\nkEY=4", store);
  CHECK(store::LookupEntry(store, "x", "kEy", false) == &store.sections[0].entries[0]);
  CHECK(store::LookupEntry(store, "x", "kEy", false)->value == "1");
  for (const char* section : {"x", "B", static_cast<const char*>(nullptr)}) {
    CHECK_FALSE(store::LookupEntry(store, section, "only", section == nullptr));
    CHECK_FALSE(store::LookupEntry(store, "X", section ? "n" : nullptr, section == nullptr));
  }
  CHECK_FALSE((store::SetValue(store, nullptr, "k", "v") || store::LookupEntry(store, "X", nullptr)));
  const string text = "[X]\r\nKey=1\r\nKEY=2\r\n[x]\r\nonly=3\r\nkey=9\r\n[X]\r\nkEY=4\r\n";
  CHECK(store::Serialise(store) == text);
  store::LookupEntry(store, "B", "m", true);
  CHECK((store::SetValue(store, "b", "M", "w") && store::Serialise(store) == text + "[B]\r\nm=w\r\n"));
  // Only ASCII letters have cases here.
  CHECK_FALSE((text::SameName("\xC4", "\xE4") || text::SameName("[", "{")));
  for (const char* marked : {"TVKE1", "tvKe\x01\x02"}) CHECK(store::IsMarked(marked));
  for (const char* plain : {"", "TVK", "TVKE", "[TVKE]"}) CHECK_FALSE(store::IsMarked(plain));
  CHECK_FALSE(store::IsMarked(string("TVKE\0cipher", 11)));
}

TEST_CASE("ini store: a line break in a name or value forges an entry; a large store takes minutes") {
  store::IniStore store;
  CHECK(store::SetValue(store, "A\r\nx", "k\n[B", "v\r\n[C]\r\nid=forged"));
  CHECK(store::Serialise(store) == "[Ax]\r\nk[B=v[C]id=forged\r\n");
  string text;
  for (int i = 0; i < 200000; ++i) text += "[Section]\r\nkey=value\r\n";
  store = Parsed(text);
  CHECK((store.sections.size() == 200000 && store::Serialise(store) == text));
}
