#include <charconv>
#include <cwchar>
#include <iterator>

#include "policy/os_identification.h"

namespace policy {

namespace {

// Numbers of Windows, without its headers: this file is portable.
enum Platform : std::uint32_t { kWin32sPlatform = 0, k9xPlatform = 1, kNtPlatform = 2 };
enum Processor : std::uint16_t { kIntelProcessor = 0, kItaniumProcessor = 6, kAmd64Processor = 9 };
enum ProductType : std::uint8_t { kWorkstationType = 1, kDomainControllerType = 2, kServerType = 3 };
enum Suite : std::uint16_t {
  kEnterprise = 0x2,
  kTerminal = 0x10,
  kEmbedded = 0x40,
  kDatacenter = 0x80,
  kSingleUserTerminal = 0x100,
  kPersonal = 0x200,
  kBlade = 0x400,
};

// Conditions of a row, besides the version.
bool Any(const OsFacts&) { return true; }
bool Workstation(const OsFacts& facts) { return facts.version.productType == kWorkstationType; }
bool Server(const OsFacts& facts) { return !Workstation(facts); }
bool ServerR2(const OsFacts& facts) { return facts.serverR2; }
bool Amd64WorkstationNotR2(const OsFacts& facts) {
  return Workstation(facts) && facts.processor == kAmd64Processor && !facts.serverR2;
}

struct Release {
  std::uint32_t code;
  std::uint32_t major;
  std::uint32_t minor;
  bool (*condition)(const OsFacts& facts);
  const wchar_t* name;
};

// Releases of the NT platform from 5.0 on; the first matching row counts.
constexpr Release kReleases[] = {
    {kWindows2000, 5, 0, Any, L"Microsoft Windows 2000"},
    {kWindowsXp, 5, 1, Any, L"Microsoft Windows XP"},
    {kWindowsXp, 5, 2, Amd64WorkstationNotR2, L"Microsoft Windows XP"},
    {kServer2003, 5, 2, ServerR2, L"Microsoft Windows Server 2003 \"R2\""},
    {kServer2003, 5, 2, Any, L"Microsoft Windows Server 2003"},
    {kWindowsVista, 6, 0, Workstation, L"Microsoft Windows Vista"},
    {kServer2008, 6, 0, Server, L"Windows Server 2008"},
    {kWindows7, 6, 1, Workstation, L"Microsoft Windows 7"},
    {kServer2008R2, 6, 1, Server, L"Windows Server 2008 \"R2\""},
    {kWindows8, 6, 2, Workstation, L"Microsoft Windows 8"},
    {kServer2012, 6, 2, Server, L"Windows Server 2012"},
    {kWindows81, 6, 3, Workstation, L"Microsoft Windows 8.1"},
    {kServer2012R2, 6, 3, Server, L"Windows Server 2012 R2"},
    {kWindows10, 6, 4, Workstation, L"Microsoft Windows 10"},
    {kServer2016, 6, 4, Server, L"Windows Server 2016"},
    {kWindows10, 10, 0, Workstation, L"Microsoft Windows 10"},
    {kServer2016, 10, 0, Server, L"Windows Server 2016"},
};

struct Named {
  std::uint32_t code;
  std::wstring name;
};

std::wstring Hexadecimal(std::uint32_t number) {
  char digits[8];
  return {digits, std::to_chars(digits, std::end(digits), number, 16).ptr};
}

// The numbers of a release without a name of its own: " (10 - 1)".
std::wstring VersionInBrackets(const VersionRecord& version) {
  return L" (" + std::to_wstring(version.major) + L" - " + std::to_wstring(version.minor) + L")";
}

Named NtRelease(const OsFacts& facts) {
  const VersionRecord& version = facts.version;
  if (version.major < 5) return {kWindowsNt, L"Microsoft Windows NT"};
  for (const Release& row : kReleases) {
    if (row.major == version.major && row.minor == version.minor && row.condition(facts)) {
      return {row.code, row.name};
    }
  }
  const bool later =
      version.major > 10 || (version.major == 10 && version.minor != 0) || (version.major == 6 && version.minor > 4);
  if (later) return {kLaterWindows, L"Unknow Windows operative system" + VersionInBrackets(version)};
  return {0, L"Unknow operative sistem" + VersionInBrackets(version)};
}

// A release of the 9x platform; without a code when it is unknown.
Named Windows9xRelease(const OsFacts& facts) {
  const VersionRecord& version = facts.version;
  const wchar_t edition = version.servicePackText.size() > 1 ? version.servicePackText[1] : L'\0';
  if (version.major == 4 && version.minor == 0) {
    return {kWindows95, std::wstring(L"Microsoft Windows 95") + (edition == L'B' || edition == L'C' ? L" OSR2" : L"")};
  }
  if (version.major == 4 && version.minor == 10 && !facts.millennium) {
    return {kWindows98, std::wstring(L"Microsoft Windows 98") + (edition == L'A' ? L" SE" : L"")};
  }
  if (version.major == 4 && (version.minor == 10 || version.minor == 90)) {
    return {kWindowsMe, L"Microsoft Windows Millennium Edition"};
  }
  return {};
}

Named ReleaseOf(const OsFacts& facts) {
  const std::uint32_t platform = facts.version.platform;
  if (platform == kWin32sPlatform) return {kWin32s, L"Microsoft Win32s"};
  if (platform == k9xPlatform) return Windows9xRelease(facts);
  return platform == kNtPlatform ? NtRelease(facts) : Named{};
}

OsArchitecture ArchitectureOf(std::uint16_t processor) {
  if (processor == kIntelProcessor) return kX86;
  if (processor == kItaniumProcessor) return kItanium;
  return processor == kAmd64Processor ? kX64 : kOtherArchitecture;
}

const wchar_t* WorkstationEdition(const OsFacts& facts, std::uint32_t code) {
  if (facts.version.major == 4) return L" Workstation 4.0";
  if (facts.starter) return L" Starter Edition";
  if (code == kWindowsXp && facts.mediaCenter) return L" Media Center";
  if (code == kWindowsXp && facts.tabletPc) return L" TabletPC Edition";
  if (facts.version.suiteMask & kPersonal) return L" Home Edition";
  if (facts.version.suiteMask & kEmbedded) return L" Embedded";
  return L" Professional";
}

std::wstring Server2003Edition(std::uint16_t suite, std::uint32_t architecture) {
  const bool named = suite & (kDatacenter | kEnterprise);
  std::wstring edition = L", Standard Edition";
  if (suite & kEnterprise) edition = L", Enterprise Edition";
  if (suite & kDatacenter) edition = L", Datacenter Edition";
  if (architecture == kItanium) return named ? edition + L" for Itanium-based Systems" : L"";
  if (architecture == kX64) return edition + L" for AMD-based Systems";
  return suite == kBlade ? L", Web Edition" : edition;
}

std::wstring ServerEdition(const VersionRecord& version, std::uint32_t architecture) {
  if (version.major == 5 && version.minor == 2) return Server2003Edition(version.suiteMask, architecture);
  if (version.major == 5 && version.minor == 0) {
    if (version.suiteMask & kDatacenter) return L" Datacenter Server";
    return version.suiteMask & kEnterprise ? L" Advanced Server" : L" Server";
  }
  if (version.major < 5) return version.suiteMask & kEnterprise ? L" Server 4.0, Enterprise Edition" : L" Server 4.0";
  return L"";
}

// The edition of a machine that reports no known product type. The test is inverted, and stays so: the registry's
// value counts when it could not be read, and nothing is said about a machine where it could.
std::wstring EditionFromProductOptions(const OsFacts& facts, OsRecord& record) {
  const ProductOptions& options = facts.productOptions;
  if (options.opened || options.typeRead) return L"";
  std::wstring edition;
  if (options.type == L"WINNT") edition = L" Workstation";
  if (options.type == L"LANMANNT") edition = L" Server";
  if (options.type == L"SERVERNT") edition = L" Advanced Server";
  record.isServer = options.type == L"LANMANNT" || options.type == L"SERVERNT";
  return edition + L" " + std::to_wstring(record.major) + L"." + std::to_wstring(record.minor);
}

std::wstring EditionOf(const OsFacts& facts, OsRecord& record) {
  const std::wstring suite = L" (Suite 0x" + Hexadecimal(facts.version.suiteMask) + L")";
  if (record.productType == kWorkstationType) return WorkstationEdition(facts, record.code) + suite;
  record.isServer = record.productType == kDomainControllerType || record.productType == kServerType;
  if (record.isServer) return ServerEdition(facts.version, record.architecture) + suite;
  return EditionFromProductOptions(facts, record);
}

// An empty service-pack text leaves two blanks before the bracket.
std::wstring ServicePackAndBuild(const OsFacts& facts) {
  const VersionRecord& version = facts.version;
  const bool is6a = version.major == 4 && version.servicePackText == L"Service Pack 6" && facts.hotfixQ246009;
  return L" " + (is6a ? L"Service Pack 6a" : version.servicePackText) + L" (Build " +
         std::to_wstring(version.build & 0xFFFF) + L")";
}

std::uint32_t ServicePackFromText(const std::wstring& text) {
  constexpr std::wstring_view kPrefix = L"Service Pack ";
  const auto at = text.find(kPrefix);
  if (at == std::wstring::npos) return 0;
  return static_cast<std::uint32_t>(std::wcstoul(text.c_str() + at + kPrefix.size(), nullptr, 10));
}

// Everything but release and name.
OsRecord Copied(const OsFacts& facts) {
  const VersionRecord& version = facts.version;
  OsRecord record{};
  record.architecture = ArchitectureOf(facts.processor);
  record.is64Bit = record.architecture == kX64 || record.architecture == kItanium;
  record.isTerminalServices = version.suiteMask & (kTerminal | kSingleUserTerminal);
  record.servicePack = version.extended ? version.servicePackMajor : ServicePackFromText(version.servicePackText);
  record.productType = version.productType;
  record.major = version.major;
  record.minor = version.minor;
  record.build = version.build;
  record.metrics =
      (facts.mediaCenter ? kMediaCenter : 0u) | (facts.starter ? kStarter : 0u) | (facts.tabletPc ? kTabletPc : 0u);
  return record;
}

}  // namespace

OsRecord DescribeOs(const OsFacts& facts) {
  OsRecord record = Copied(facts);
  auto [code, name] = ReleaseOf(facts);
  record.code = code;
  record.identified = !name.empty();
  if (!record.identified) name = L"Unknow Windows operative sistem" + VersionInBrackets(facts.version);
  if (facts.version.platform == kNtPlatform) {
    name += record.is64Bit ? L" x64" : L" x86";
    if (facts.version.extended) name += EditionOf(facts, record) + ServicePackAndBuild(facts);
  }
  name.copy(record.displayName, std::size(record.displayName) - 1);
  return record;
}

}  // namespace policy
