#include <doctest/doctest.h>

#include <string>
#include <tuple>

#include "registration/texts.h"
#include "support/lead_byte.h"

using namespace registration;

TEST_CASE("token texts: every byte, and the root that they begin with, also in a code page of two-byte characters") {
  const char* roots[][2] = {{nullptr, ""},
                            {"", ""},
                            {"\\", ""},
                            {"A\\\\", "A\\"},
                            {"C:\\A", "C:\\A"},
                            {"C:\\\x95\\", "C:\\\x95\\"},
                            {"C:\\\x95\\\\", "C:\\\x95\\"}};
  for (const auto& [folder, root] : roots) CHECK(InstallRoot(folder, support::IsLeadByte932) == root);
  constexpr auto kNone = std::string::npos;
  const std::tuple<const char*, size_t, bool> rows[] = {
      {"", kNone, false},         {"A", kNone, false},      {"\\", 0, true},
      {"A\\B", 1, false},         {"\x95\\", kNone, false}, {"\x95\\\\", 2, true},
      {"\\\x95\\B\\C", 4, false}, {"\xA1\\", 1, true},      {"\x81\x95\\", 2, true},
      {"\\\xFC", 0, false}};
  for (const auto& [text, last, ends] : rows) {
    CHECK_MESSAGE(text::LastBackslash(text, support::IsLeadByte932) == last, text);
    CHECK_MESSAGE(text::EndsInBackslash(text, support::IsLeadByte932) == ends, text);
  }
  CHECK(PluginTokens("C:\\A") ==
        "KELREPORT=C:\\A\\KELREPORT\\KELREPORT.dll\r\nKELSCAN=C:\\A\\KELSCAN\\KELSCAN.dll\r\n"
        "KELTASK=C:\\A\\KELTASK\\KELTASK.dll\r\nKELTEST=C:\\A\\KELTEST\\KELTEST.dll\r\n"
        "KELUPD=C:\\A\\KELUPD\\KELUPD.dll\r\nKELUPG=C:\\A\\KELUPG\\KELUPG.dll\r\n"
        "KELCONF=C:\\A\\KELCONF\\KELCONF.dll\r\nKELLNCHR=C:\\A\\KELLNCHR\\KELLNCHR.dll\r\n"
        "KELQTINE=C:\\A\\KELQTINE\\KELQTINE.dll\r\nKELTVEVT=C:\\A\\KELTVEVT\\KELTVEVT.dll\r\n"
        "KELSNET=C:\\A\\KELSNET\\KELSNET.dll\r\nKELNTF=C:\\A\\KELNTF\\KELNTF.dll\r\n");
  CHECK(SchedulerTokens("C:\\A") ==
        "KEPLPMNG=e\"C:\\A\\KESLPMNG\\KepLpMng.exe\"\r\nKEPWINST=e\"C:\\A\\KEPWINST\\KEPWINST.exe\"\r\n");
}

TEST_CASE("command gate: the states in which each command may run") {
  const auto check = [](const char* command, const std::string& states) {
    CAPTURE(command);
    std::string allowed;
    for (const int state : {-1, 0, 39, 40, 41, 42, 43, 44, 45, 46, 47, 48, 49, 199, 200}) {
      if (IsCommandAllowed(command, state)) allowed += std::to_string(state) + " ";
    }
    CHECK(allowed == states);
  };
  for (const char* command : {"keltvevt", "KELConf", "kellnchr"})
    check(command, "-1 0 39 40 41 42 43 44 45 46 47 48 49 199 200 ");
  check("KELTEST", "40 41 42 43 44 47 48 200 ");
  check("KELUpg", "40 42 43 44 46 47 48 200 ");
  check("KelUpd", "40 41 42 43 44 46 47 48 200 ");
  for (const char* command : {"KELReport", "KELQtine"}) check(command, "48 200 ");
  for (const char* command : {"KELTes", "KELTest ", "", static_cast<const char*>(nullptr)}) check(command, "200 ");
}
