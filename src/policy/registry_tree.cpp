#include "policy/registry_tree.h"

#include <algorithm>

#include "policy/log_sink.h"
#include "policy/scripts_ini.h"
#include "win/registry.h"

namespace policy {

namespace {

// Values of a key that is becoming the copy of another one, whose number they hold.
constexpr wchar_t kCopying[] = L"KELUtilsCopying";  // not all is here yet: the copy can be dropped
constexpr wchar_t kCopied[] = L"KELUtilsCopied";    // all is here: the other one can be dropped

// A value of a key whose numbered subkeys are being deleted and closed up.
constexpr wchar_t kOpenGaps[] = L"KELUtilsOpenGaps";

LSTATUS Delete(HKEY parent, const std::wstring& name) {
  {
    win::RegistryKey key;
    const LSTATUS status = win::OpenKey(parent, name, KEY_READ, key);
    if (status == ERROR_FILE_NOT_FOUND) return ERROR_SUCCESS;
    std::vector<std::wstring> names;
    if (status != ERROR_SUCCESS) return status;
    if (const LSTATUS listed = win::SubkeyNames(key.Get(), names); listed != ERROR_SUCCESS) return listed;
    for (const std::wstring& below : names) {
      if (const LSTATUS deleted = Delete(key.Get(), below); deleted != ERROR_SUCCESS) return deleted;
    }
  }  // a deleted key would live on in an open handle
  return win::DeleteKey(parent, name);
}

void EraseMarks(HKEY key) noexcept {
  RegDeleteValueW(key, kCopying);  // first: with both, the copy counts as complete
  RegDeleteValueW(key, kCopied);
}

// Finishes or takes back the move to `number` that was interrupted, if one was. A key without rights for this process
// was not made by it.
LSTATUS Recover(ILogSink* sink, HKEY parent, std::uint32_t number) {
  const std::wstring name = std::to_wstring(number);
  win::RegistryKey key;
  const LSTATUS status = win::OpenKey(parent, name, KEY_READ, key);
  if (status == ERROR_FILE_NOT_FOUND || status == ERROR_ACCESS_DENIED) return ERROR_SUCCESS;
  if (status != ERROR_SUCCESS) return status;
  const auto copied = win::ReadNumber(key.Get(), kCopied);
  const bool unfinished = win::HasValue(key.Get(), kCopying);
  if (!copied) {
    key.Reset();
    return unfinished ? DeleteRegistryTree(sink, parent, name) : ERROR_SUCCESS;
  }
  if (unfinished) {  // else the other one is gone already, and its number may be in use again
    const LSTATUS deleted = DeleteRegistryTree(sink, parent, std::to_wstring(*copied));
    if (deleted != ERROR_SUCCESS) return deleted;
  }
  const LSTATUS opened = win::OpenKey(parent, name, KEY_SET_VALUE, key);
  if (opened == ERROR_SUCCESS) EraseMarks(key.Get());
  return opened;
}

LSTATUS Move(ILogSink* sink, HKEY parent, std::uint32_t from, std::uint32_t to) {
  win::RegistryKey copy;
  LSTATUS status = win::CreateKey(parent, std::to_wstring(to), KEY_READ | KEY_WRITE, copy);
  if (status == ERROR_SUCCESS) status = win::WriteNumber(copy.Get(), kCopying, from);
  if (status == ERROR_SUCCESS) status = CopyRegistryTree(sink, parent, std::to_wstring(from), std::to_wstring(to));
  if (status == ERROR_SUCCESS) status = win::WriteNumber(copy.Get(), kCopied, from);
  if (status == ERROR_SUCCESS) status = DeleteRegistryTree(sink, parent, std::to_wstring(from));
  if (status == ERROR_SUCCESS) EraseMarks(copy.Get());
  copy.Reset();
  if (status != ERROR_SUCCESS) Recover(sink, parent, to);
  return status;
}

}  // namespace

LSTATUS DeleteRegistryTree(ILogSink* sink, HKEY parent, const std::wstring& name) {
  const SinkCall call(sink, __func__);
  call.Parameter(L"name", name.c_str());
  const LSTATUS status = Delete(parent, name);
  if (status != ERROR_SUCCESS) call.Fail(status, status, L"Error deleting registry key", name.c_str());
  call.End(status);
  return status;
}

LSTATUS CopyRegistryTree(ILogSink* sink, HKEY parent, const std::wstring& from, const std::wstring& to) {
  const SinkCall call(sink, __func__);
  call.Parameter(L"from", from.c_str());
  call.Parameter(L"to", to.c_str());
  win::RegistryKey target;
  LSTATUS status = win::CreateKey(parent, to, KEY_READ | KEY_WRITE, target);
  if (status == ERROR_SUCCESS) status = RegCopyTreeW(parent, from.c_str(), target.Get());
  if (status != ERROR_SUCCESS) call.Fail(status, status, L"Error copying registry key", from.c_str());
  call.End(status);
  return status;
}

LSTATUS NumberedSubkeys(HKEY parent, std::vector<std::uint32_t>& numbers) {
  std::vector<std::wstring> names;
  const LSTATUS status = win::SubkeyNames(parent, names);
  for (const std::wstring& name : names) {
    if (const auto number = EntryNumber(name)) numbers.push_back(*number);
  }
  std::ranges::sort(numbers);
  return status;
}

LSTATUS DeleteNumbered(ILogSink* sink, HKEY parent, const std::vector<std::uint32_t>& numbers) {
  win::RegistryKey key;
  LSTATUS status = win::OpenKey(parent, L"", KEY_SET_VALUE, key);
  if (status == ERROR_SUCCESS) status = win::WriteNumber(key.Get(), kOpenGaps, 1);
  for (auto number = numbers.rbegin(); number != numbers.rend(); ++number) {
    if (status == ERROR_SUCCESS) status = DeleteRegistryTree(sink, parent, std::to_wstring(*number));
  }
  return status;
}

bool HasOpenGaps(HKEY parent) noexcept { return win::HasValue(parent, kOpenGaps); }

LSTATUS FinishMoves(ILogSink* sink, HKEY parent) {
  std::vector<std::uint32_t> numbers;
  LSTATUS status = NumberedSubkeys(parent, numbers);
  for (const std::uint32_t number : numbers) {
    if (status == ERROR_SUCCESS) status = Recover(sink, parent, number);
  }
  return status;
}

LSTATUS CloseGaps(ILogSink* sink, HKEY parent) {
  LSTATUS status = FinishMoves(sink, parent);
  std::vector<std::uint32_t> numbers;
  if (status == ERROR_SUCCESS) status = NumberedSubkeys(parent, numbers);
  for (std::uint32_t to = 0; status == ERROR_SUCCESS && to < numbers.size(); ++to) {
    if (numbers[to] != to) status = Move(sink, parent, numbers[to], to);
  }
  if (status != ERROR_SUCCESS || !HasOpenGaps(parent)) return status;
  win::RegistryKey key;
  status = win::OpenKey(parent, L"", KEY_SET_VALUE, key);
  return status == ERROR_SUCCESS ? RegDeleteValueW(key.Get(), kOpenGaps) : status;
}

}  // namespace policy
