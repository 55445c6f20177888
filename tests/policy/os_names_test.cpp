#include "policy/os_identification.h"

#include <doctest/doctest.h>

using policy::OsFacts;

namespace {

enum : std::uint8_t { kOdd = 0, kDesk = 1, kDomain = 2, kServer = 3, kIntel = 0, kItanium = 6, kAmd64 = 9 };

OsFacts Nt(unsigned major, unsigned minor, std::uint8_t type, std::uint16_t suite = 0, std::uint16_t cpu = kAmd64) {
  OsFacts facts;
  facts.version = {true, 0, major, minor, 0xABCD04D2, 2, L"SP", 3, 0, suite, type, 0};
  facts.processor = cpu;
  return facts;
}

OsFacts With(bool OsFacts::*fact, OsFacts facts) { return facts.*fact = true, facts; }

OsFacts Plain(std::uint32_t platform, std::uint32_t major, std::uint32_t minor, const wchar_t* text) {
  OsFacts facts;
  facts.version = {.major = major, .minor = minor, .platform = platform, .servicePackText = text};
  return facts;
}

OsFacts Options(bool opened, const wchar_t* type) {
  OsFacts facts = Nt(5, 1, kOdd);
  facts.productOptions = {opened, false, type};
  return facts;
}

std::string NameOf(const OsFacts& facts) {
  const std::wstring name = policy::DescribeOs(facts).displayName;
  return {name.begin(), name.end()};
}

}  // namespace

TEST_CASE("names of Windows: releases, for a workstation and for a server") {
  const struct {
    std::uint32_t major, minor, code[2];
    const char* name[2];
  } rows[] = {
      {5, 2, {0x40, 0x80}, {"Microsoft Windows XP", "Microsoft Windows Server 2003"}},
      {5, 3, {0, 0}, {"Unknow operative sistem (5 - 3)", "Unknow operative sistem (5 - 3)"}},
      {6, 0, {0x100, 0x200}, {"Microsoft Windows Vista", "Windows Server 2008"}},
      {6, 1, {0x400, 0x800}, {"Microsoft Windows 7", "Windows Server 2008 \"R2\""}},
      {6, 4, {0x10000, 0x20000}, {"Microsoft Windows 10", "Windows Server 2016"}},
      {6, 5, {0x40000000, 0x40000000}, {"Unknow Windows operative system (6 - 5)", "Unknow Windows"}},
      {10, 0, {0x10000, 0x20000}, {"Microsoft Windows 10", "Windows Server 2016"}},
      {11, 0, {0x40000000, 0x40000000}, {"Unknow Windows operative system (11 - 0)", "Unknow Windows"}},
  };
  for (const auto& row : rows) {
    for (const int server : {0, 1}) {
      const OsFacts facts = Nt(row.major, row.minor, server ? kServer : kDesk);
      CHECK_MESSAGE(policy::DescribeOs(facts).code == row.code[server], row.name[server]);
      CHECK(NameOf(facts).starts_with(row.name[server]));
    }
  }
}

TEST_CASE("names of Windows: architecture, edition, service pack and build; other platforms") {
  const OsFacts tablet = With(&OsFacts::tabletPc, Nt(5, 1, kDesk));
  const std::pair<OsFacts, std::string> rows[] = {
      {With(&OsFacts::starter, tablet), "Microsoft Windows XP x64 Starter Edition (Suite 0x0)"},
      {With(&OsFacts::mediaCenter, Nt(6, 0, kDesk, 0x240, 5)),
       "Microsoft Windows Vista x86 Home Edition (Suite 0x240)"},
      {With(&OsFacts::serverR2, Nt(5, 2, kDesk)), "Microsoft Windows Server 2003 \"R2\" x64 Professional (Suite 0x0)"},
      {Nt(5, 2, kServer, 0, kItanium), "Microsoft Windows Server 2003 x64 (Suite 0x0)"},
      {Nt(5, 2, kServer, 0x410, kIntel), "Microsoft Windows Server 2003 x86, Standard Edition (Suite 0x410)"},
      // The product options count only when they could not be read.
      {Options(true, L"WINNT"), "Microsoft Windows XP x64"},
      {Options(false, L"SERVERNT"), "Microsoft Windows XP x64 Advanced Server 5.1"},
      {Plain(1, 4, 10, L" A"), "Microsoft Windows 98 SE"},
      {Plain(3, 4, 2, L""), "Unknow Windows operative sistem (4 - 2)"},
  };
  for (const auto& [facts, name] : rows)
    CHECK(NameOf(facts) == name + (facts.version.extended ? " SP (Build 1234)" : ""));
  OsFacts nt4 = With(&OsFacts::hotfixQ246009, Nt(4, 0, kDesk, 0, kIntel));
  nt4.version.servicePackText = L"Service Pack 6";
  CHECK(NameOf(nt4) == "Microsoft Windows NT x86 Workstation 4.0 (Suite 0x0) Service Pack 6a (Build 1234)");
  CHECK(policy::DescribeOs(Plain(2, 5, 1, L"Service Pack 12, v.2")).servicePack == 12);
  OsFacts facts = With(&OsFacts::tabletPc, With(&OsFacts::mediaCenter, Nt(5, 2, kDomain, 0x102, kItanium)));
  facts.version.servicePackText = std::wstring(127, L's');
  const policy::OsRecord os = policy::DescribeOs(facts);
  CHECK((os.architecture == 8 && os.is64Bit && os.isServer && os.isTerminalServices && os.metrics == 5));
  CHECK((os.identified && !policy::DescribeOs(Plain(3, 4, 2, L"")).identified && NameOf(facts).size() == 149));
}
