#include "policy/os_identification.h"

#include <windows.h>

#include <cstring>
#include <iterator>
#include <string>
#include <utility>

#include "policy/log_sink.h"
#include "win/module.h"
#include "win/owner.h"
#include "win/registry.h"

namespace policy {

namespace {

constexpr char kCurrentVersionKey[] = "Software\\Microsoft\\Windows\\CurrentVersion";
constexpr char kProductOptionsKey[] = "SYSTEM\\CurrentControlSet\\Control\\ProductOptions";
constexpr char kHotfixKey[] = "SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion\\Hotfix\\Q246009";
constexpr std::size_t kLongestVersionText = 259;

win::CriticalSection g_lock;
OsRecord g_record{};

VersionRecord FromWindows(const OSVERSIONINFOEXW& info, bool extended) {
  VersionRecord record{
      .extended = extended,
      .size = info.dwOSVersionInfoSize,
      .major = info.dwMajorVersion,
      .minor = info.dwMinorVersion,
      .build = info.dwBuildNumber,
      .platform = info.dwPlatformId,
      .servicePackText = {info.szCSDVersion, wcsnlen(info.szCSDVersion, std::size(info.szCSDVersion))}};
  if (extended) {
    record.servicePackMajor = info.wServicePackMajor;
    record.servicePackMinor = info.wServicePackMinor;
    record.suiteMask = info.wSuiteMask;
    record.productType = info.wProductType;
    record.reserved = info.wReserved;
  }
  return record;
}

std::uint16_t NativeProcessor() noexcept {
  decltype(&::GetNativeSystemInfo) getNativeSystemInfo = nullptr;
  const FARPROC found = win::FunctionOf(GetModuleHandleW(L"Kernel32.dll"), "GetNativeSystemInfo");
  if (found == nullptr) return OsFacts::kNoProcessor;
  std::memcpy(&getNativeSystemInfo, &found, sizeof getNativeSystemInfo);
  SYSTEM_INFO info{};
  getNativeSystemInfo(&info);
  return info.wProcessorArchitecture;
}

bool NamesMillennium() {
  const auto text = win::ReadTextValue(HKEY_LOCAL_MACHINE, kCurrentVersionKey, "Version", kLongestVersionText);
  return text && text->find("Millennium") != std::string::npos;
}

OsFacts FactsOf(VersionRecord version) {
  OsFacts facts;
  facts.version = std::move(version);
  facts.processor = NativeProcessor();
  facts.mediaCenter = GetSystemMetrics(SM_MEDIACENTER) != 0;
  facts.starter = GetSystemMetrics(SM_STARTER) != 0;
  facts.tabletPc = GetSystemMetrics(SM_TABLETPC) != 0;
  facts.serverR2 = GetSystemMetrics(SM_SERVERR2) != 0;
  facts.millennium = NamesMillennium();
  facts.hotfixQ246009 = win::CanOpenKey(HKEY_LOCAL_MACHINE, kHotfixKey);
  // The product type is read only when the key could not be opened, and then cannot be read.
  facts.productOptions.opened = win::CanOpenKey(HKEY_LOCAL_MACHINE, kProductOptionsKey);
  return facts;
}

// The kept record, identified at the first call.
OsRecord Identified() {
  const OsRecord record = IdentifiedOs();
  if (record.identified) return record;
  return IdentifyOs() ? IdentifiedOs() : OsRecord{};
}

}  // namespace

bool GetVersionRecord(VersionRecord& record) {
  for (const bool extended : {true, false}) {
    OSVERSIONINFOEXW info{};
    info.dwOSVersionInfoSize = extended ? sizeof(OSVERSIONINFOEXW) : sizeof(OSVERSIONINFOW);
    if (GetVersionExW(reinterpret_cast<OSVERSIONINFOW*>(&info))) {
      record = FromWindows(info, extended);
      return true;
    }
  }
  return false;
}

void DumpVersionInfo(ILogSink* sink, const VersionRecord& record) {
  constexpr wchar_t kFunction[] = L"DumpVersionInfo";
  const auto line = [&](const wchar_t* label, const wchar_t* value) {
    SinkTrace(sink, kSinkInfo, kSinkFlag, kFunction, L"%ls %ls", label, value);
  };
  const auto number = [&](const wchar_t* label, std::uint32_t value) { line(label, std::to_wstring(value).c_str()); };
  line(L"FunctionName:", kFunction);
  line(L"- StructureType:", record.extended ? L"OSVERSIONINFOEXW" : L"OSVERSIONINFOW");
  number(L"- dwOSVersionInfoSize:", record.size);
  number(L"- dwMajorVersion:", record.major);
  number(L"- dwMinorVersion:", record.minor);
  number(L"- dwBuildNumber:", record.build);
  number(L"- dwPlatformId:", record.platform);
  line(L"- szCSDVersion:", record.servicePackText.c_str());
  if (!record.extended) return;
  number(L"- wServicePackMajor:", record.servicePackMajor);
  number(L"- wServicePackMinor:", record.servicePackMinor);
  number(L"- wSuiteMask:", record.suiteMask);
  number(L"- wProductType:", record.productType);
  number(L"- wReserved:", record.reserved);
}

bool IdentifyOs() {
  VersionRecord version;
  const OsRecord record = GetVersionRecord(version) ? DescribeOs(FactsOf(std::move(version))) : OsRecord{};
  const win::LockGuard hold(g_lock);
  g_record = record;
  return record.identified;
}

OsRecord IdentifiedOs() noexcept {
  const win::LockGuard hold(g_lock);
  return g_record;
}

bool IsOs64Bit() { return Identified().is64Bit; }

std::uint32_t GetOsCode() { return Identified().code; }

}  // namespace policy
