// The release of Windows that a machine runs: its facts, and the record that is made of them without a call of Windows.
#pragma once

#include <cstdint>
#include <string>

namespace policy {

/// The version record of Windows. A plain one has only the fields up to `servicePackText`; the others are 0.
struct VersionRecord {
  bool extended = false;
  std::uint32_t size = 0;  // bytes of the structure of Windows
  std::uint32_t major = 0;
  std::uint32_t minor = 0;
  std::uint32_t build = 0;
  std::uint32_t platform = 0;
  std::wstring servicePackText;
  std::uint16_t servicePackMajor = 0;
  std::uint16_t servicePackMinor = 0;
  std::uint16_t suiteMask = 0;
  std::uint8_t productType = 0;
  std::uint8_t reserved = 0;
};

/// The registry's key ProductOptions.
struct ProductOptions {
  bool opened = false;
  bool typeRead = false;  // the value ProductType was read, and has at most 80 bytes
  std::wstring type;      // the content of the value's buffer, read or not
};

/// The facts that a name is made of.
struct OsFacts {
  VersionRecord version;
  std::uint16_t processor = kNoProcessor;  // the native architecture, a number of Windows
  bool mediaCenter = false;
  bool starter = false;
  bool tabletPc = false;
  bool serverR2 = false;
  bool millennium = false;     // the registry's version text names Millennium
  bool hotfixQ246009 = false;  // the registry lists the hotfix that makes Service Pack 6 of NT 4 "6a"
  ProductOptions productOptions;

  static constexpr std::uint16_t kNoProcessor = 0xFFFF;
};

/// Codes of the releases, one bit each. Later releases have larger codes.
enum OsCode : std::uint32_t {
  kWin32s = 0x1,
  kWindows95 = 0x2,
  kWindows98 = 0x4,
  kWindowsMe = 0x8,
  kWindowsNt = 0x10,
  kWindows2000 = 0x20,
  kWindowsXp = 0x40,
  kServer2003 = 0x80,
  kWindowsVista = 0x100,
  kServer2008 = 0x200,
  kWindows7 = 0x400,
  kServer2008R2 = 0x800,
  kWindows8 = 0x1000,
  kServer2012 = 0x2000,
  kWindows81 = 0x4000,
  kServer2012R2 = 0x8000,
  kWindows10 = 0x10000,
  kServer2016 = 0x20000,
  kLaterWindows = 0x40000000,
};

enum OsArchitecture : std::uint32_t { kOtherArchitecture = 0, kX86 = 1, kX64 = 2, kItanium = 8 };

enum OsMetric : std::uint32_t { kMediaCenter = 1, kStarter = 2, kTabletPc = 4 };

/// The description of a release.
struct OsRecord {
  std::uint32_t code;          // OsCode; 0 for an NT release that has none
  std::uint32_t architecture;  // OsArchitecture
  bool is64Bit;
  bool isServer;
  bool isTerminalServices;
  std::uint32_t servicePack;  // major number
  std::uint8_t productType;
  std::uint32_t major;
  std::uint32_t minor;
  std::uint32_t build;
  wchar_t displayName[150];  // a longer name is cut
  std::uint32_t metrics;     // OsMetric bits
  bool identified;           // false only for an unknown platform
};

/// The record of the release with these facts.
OsRecord DescribeOs(const OsFacts& facts);

// The release that this process runs on.

class ILogSink;

/// The version record of Windows, in its extended form where it exists. False when Windows returns none. For the tests.
bool GetVersionRecord(VersionRecord& record);

/// Writes the fields of a version record to the sink, one a line, without the fields that a plain record lacks. For the
/// tests.
void DumpVersionInfo(ILogSink* sink, const VersionRecord& record);

/// Identifies the running release again and keeps its record. False when that fails or the release is unknown.
/// Thread-safe, as the functions below. For kelctl; the library uses `GetOsCode`.
bool IdentifyOs();

/// The record of the last identification; all zero before the first. For kelctl and the tests.
OsRecord IdentifiedOs() noexcept;

/// True on a 64-bit release, also for a 32-bit process. Identifies the release at the first call; false when that
/// fails. For the tests.
bool IsOs64Bit();

/// The code of the release, one bit each. Identifies the release at the first call; 0 when that fails.
std::uint32_t GetOsCode();

}  // namespace policy
