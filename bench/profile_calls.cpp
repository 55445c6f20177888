#include "bench/profile_calls.h"

#include <span>
#include <string_view>

#include "bench/installation.h"
#include "text/paths.h"
#include "upgrade/settings.h"

namespace bench {
namespace {

using Calls = std::vector<ProfileCall>;
using upgrade::Change;

constexpr DWORD kTypeSize = 9;
constexpr DWORD kServerSize = 512;

// The needed calls

void AddMessages(Calls& calls, const std::string& file) {
  for (const auto& row : upgrade::MessageTypes()) {
    const auto& section = row.section;
    calls.push_back({ProfileCall::kReadText, file, upgrade::kTypesSection, row.message, "-1", kTypeSize});
    if (section.written == upgrade::Written::kEveryRun) {
      calls.push_back({ProfileCall::kReadText, file, section.name, upgrade::kServerKey, "-1", kServerSize});
    }
    const bool hasServer = section.name && HasServer(section.name);
    for (const auto& change : upgrade::ChangesOf(row, IsListed(row.message), hasServer)) {
      const char* const value = change.value ? change.value : ServerValue(change.key);
      if (!change.value) calls.push_back({ProfileCall::kReadText, file, change.from, change.key, "", kServerSize});
      calls.push_back({ProfileCall::kWrite, file, change.section, change.key, value});
    }
  }
}

void AddSettings(Calls& calls, const std::string& root, std::span<const upgrade::Setting> rows) {
  for (const auto& row : rows) {
    const std::string file = root + "\\" + row.directory + "\\" + row.file;
    if (row.change == Change::kSetWhenAbsent) {
      calls.push_back({ProfileCall::kReadNumber, file, row.section, row.key, nullptr});
    }
    calls.push_back({ProfileCall::kWrite, file, row.section, row.key, row.value});
  }
}

// The functions that replace those of Windows in the counted module

CallCounts g_counts;

void Count(std::string_view file) {
  const bool own = file.ends_with(text::kSettingsFile);
  ++(own ? g_counts.own : g_counts.others);
}

DWORD WINAPI CountedReadText(const char* section, const char* key, const char* fallback, char* buffer, DWORD size,
                             const char* file) {
  Count(file);
  return GetPrivateProfileStringA(section, key, fallback, buffer, size, file);
}

UINT WINAPI CountedReadNumber(const char* section, const char* key, INT fallback, const char* file) {
  Count(file);
  return GetPrivateProfileIntA(section, key, fallback, file);
}

BOOL WINAPI CountedWrite(const char* section, const char* key, const char* value, const char* file) {
  Count(file);
  return WritePrivateProfileStringA(section, key, value, file);
}

void* ReplacementOf(std::string_view name) {
  if (name == "GetPrivateProfileStringA") return reinterpret_cast<void*>(CountedReadText);
  if (name == "GetPrivateProfileIntA") return reinterpret_cast<void*>(CountedReadNumber);
  if (name == "WritePrivateProfileStringA") return reinterpret_cast<void*>(CountedWrite);
  return nullptr;
}

void ReplaceIn(IMAGE_THUNK_DATA& slot, void* function) {
  DWORD protection;
  VirtualProtect(&slot, sizeof slot, PAGE_READWRITE, &protection);
  slot.u1.Function = reinterpret_cast<ULONG_PTR>(function);
  VirtualProtect(&slot, sizeof slot, protection, &protection);
}

}  // namespace

Calls DemandedCalls(const std::string& root) {
  Calls calls;
  AddMessages(calls, root + "\\KESAgent\\KE_AGPRX.dat");
  AddSettings(calls, root, upgrade::EventAndTokenSettings());
  for (const auto& row : upgrade::OptionalFiles()) {
    calls.push_back({ProfileCall::kWrite, root + "\\KELUpd\\KelUpd.ini", "OPTIONAL_FILES", row.name, row.value});
  }
  AddSettings(calls, root, upgrade::AgentSettings());
  AddSettings(calls, root, upgrade::ModuleSettings());
  return calls;
}

void Make(const ProfileCall& call) {
  char buffer[kServerSize];
  const char* const file = call.file.c_str();
  switch (call.kind) {
    case ProfileCall::kReadText:
      GetPrivateProfileStringA(call.section, call.key, call.value, buffer, call.size, file);
      return;
    case ProfileCall::kReadNumber:
      GetPrivateProfileIntA(call.section, call.key, -1, file);
      return;
    case ProfileCall::kWrite:
      WritePrivateProfileStringA(call.section, call.key, call.value, file);
      return;
  }
}

void CountCallsOf(HMODULE module) {
  g_counts = {};
  auto* const base = reinterpret_cast<char*>(module);
  const auto& headers =
      *reinterpret_cast<IMAGE_NT_HEADERS*>(base + reinterpret_cast<IMAGE_DOS_HEADER*>(base)->e_lfanew);
  const auto& imports = headers.OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT];
  for (auto* from = reinterpret_cast<IMAGE_IMPORT_DESCRIPTOR*>(base + imports.VirtualAddress); from->Name; ++from) {
    const auto* name = reinterpret_cast<IMAGE_THUNK_DATA*>(base + from->OriginalFirstThunk);
    auto* slot = reinterpret_cast<IMAGE_THUNK_DATA*>(base + from->FirstThunk);
    for (; name->u1.AddressOfData; ++name, ++slot) {
      if (IMAGE_SNAP_BY_ORDINAL(name->u1.Ordinal)) continue;
      const auto* const imported = reinterpret_cast<IMAGE_IMPORT_BY_NAME*>(base + name->u1.AddressOfData);
      if (void* const counted = ReplacementOf(reinterpret_cast<const char*>(imported->Name))) ReplaceIn(*slot, counted);
    }
  }
}

CallCounts CountedCalls() { return g_counts; }

}  // namespace bench
