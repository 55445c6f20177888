#include <algorithm>

#include "policy/local_policy.h"
#include "win/registry.h"

namespace policy {

namespace {

// Values of a key that is becoming the copy of another one; they hold its number.
constexpr wchar_t kCopying[] = L"KELUtilsCopying";  // incomplete: the copy can be deleted
constexpr wchar_t kCopied[] = L"KELUtilsCopied";    // complete: the original can be deleted

// A value of a key whose numbered subkeys are being deleted and renumbered.
constexpr wchar_t kOpenGaps[] = L"KELUtilsOpenGaps";

constexpr wchar_t kObjectId[] = L"GPO-ID";
constexpr wchar_t kLocalObject[] = L"LocalGPO";
constexpr wchar_t kScript[] = L"Script";
constexpr wchar_t kParameters[] = L"Parameters";

using Numbers = std::vector<std::uint32_t>;

// Ends the chain of steps at the first failure.
template <typename... Steps>
LSTATUS InTurn(Steps... steps) {
  LSTATUS status = ERROR_SUCCESS;
  ((status == ERROR_SUCCESS ? status = steps() : status), ...);
  return status;
}

KE_RESULT Result(LSTATUS status) noexcept { return status == ERROR_SUCCESS ? KE_SUCCESS : KE_REGISTRY_UNUSABLE; }

// Trees of keys, and subkeys with the numbers 0, 1, 2, ... A `parent` needs no more access than KEY_READ: Windows
// checks the rights to create and delete subkeys by the keys themselves.

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

// Deletes the subkey with all below it. A missing one is a success; a key that cannot be deleted stays with those
// above.
LSTATUS DeleteRegistryTree(ILogSink* sink, HKEY parent, const std::wstring& name) {
  const SinkCall call(sink, __func__);
  call.Parameter(L"name", name.c_str());
  const LSTATUS status = Delete(parent, name);
  call.Finish(status, status, L"Error deleting registry key", name.c_str());
  return status;
}

// Copies the subkey `from` over `to`, with all below it; values keep their types and bytes.
LSTATUS CopyRegistryTree(ILogSink* sink, HKEY parent, const std::wstring& from, const std::wstring& to) {
  const SinkCall call(sink, __func__);
  call.Parameter(L"from", from.c_str());
  call.Parameter(L"to", to.c_str());
  win::RegistryKey target;
  LSTATUS status = win::CreateKey(parent, to, KEY_READ | KEY_WRITE, target);
  if (status == ERROR_SUCCESS) status = win::CopyTree(parent, from, target.Get());
  call.Finish(status, status, L"Error copying registry key", from.c_str());
  return status;
}

// Stores the numbers of the numbered subkeys, in numeric order.
LSTATUS NumberedSubkeys(HKEY parent, Numbers& numbers) {
  std::vector<std::wstring> names;
  const LSTATUS status = win::SubkeyNames(parent, names);
  for (const std::wstring& name : names) {
    if (const auto number = EntryNumber(Utf16(name))) numbers.push_back(*number);
  }
  std::ranges::sort(numbers);
  return status;
}

void EraseMarks(HKEY key) noexcept {
  win::DeleteValue(key, kCopying);  // first: with both, the copy counts as complete
  win::DeleteValue(key, kCopied);
}

// Finishes or reverts an interrupted move to `number`. A key without rights for this process was not made by it.
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
  if (unfinished) {  // else the original is deleted, and its number may be in use again
    const LSTATUS deleted = DeleteRegistryTree(sink, parent, std::to_wstring(*copied));
    if (deleted != ERROR_SUCCESS) return deleted;
  }
  const LSTATUS opened = win::OpenKey(parent, name, KEY_SET_VALUE, key);
  if (opened == ERROR_SUCCESS) EraseMarks(key.Get());
  return opened;
}

LSTATUS Move(ILogSink* sink, HKEY parent, std::uint32_t from, std::uint32_t to) {
  win::RegistryKey copy;
  const std::wstring original = std::to_wstring(from), name = std::to_wstring(to);
  const LSTATUS status = InTurn([&] { return win::CreateKey(parent, name, KEY_READ | KEY_WRITE, copy); },
                                [&] { return win::WriteNumber(copy.Get(), kCopying, from); },
                                [&] { return CopyRegistryTree(sink, parent, original, name); },
                                [&] { return win::WriteNumber(copy.Get(), kCopied, from); },
                                [&] { return DeleteRegistryTree(sink, parent, original); });
  if (status == ERROR_SUCCESS) EraseMarks(copy.Get());
  copy.Reset();
  if (status != ERROR_SUCCESS) Recover(sink, parent, to);
  return status;
}

// Deletes numbered subkeys from the highest number down. `CloseGaps` has to follow; until it has ended,
// `HasOpenGaps(parent)` is true, also in later processes.
LSTATUS DeleteNumbered(ILogSink* sink, HKEY parent, const Numbers& numbers) {
  win::RegistryKey key;
  LSTATUS status = win::OpenKey(parent, L"", KEY_SET_VALUE, key);
  if (status == ERROR_SUCCESS) status = win::WriteNumber(key.Get(), kOpenGaps, 1);
  for (auto number = numbers.rbegin(); number != numbers.rend(); ++number) {
    if (status == ERROR_SUCCESS) status = DeleteRegistryTree(sink, parent, std::to_wstring(*number));
  }
  return status;
}

bool HasOpenGaps(HKEY parent) noexcept { return win::HasValue(parent, kOpenGaps); }

// Finishes or reverts the moves of `CloseGaps` that were interrupted, also by the end of a process: no subkey is lost
// or doubled, because a copy notes its state in values of its own.
LSTATUS FinishMoves(ILogSink* sink, HKEY parent) {
  Numbers numbers;
  LSTATUS status = NumberedSubkeys(parent, numbers);
  for (const std::uint32_t number : numbers) {
    if (status == ERROR_SUCCESS) status = Recover(sink, parent, number);
  }
  return status;
}

// Finishes interrupted moves, then moves the numbered subkeys, in their order, to 0, 1, 2, ... without gaps.
LSTATUS CloseGaps(ILogSink* sink, HKEY parent) {
  Numbers numbers;
  LSTATUS status = InTurn([&] { return FinishMoves(sink, parent); }, [&] { return NumberedSubkeys(parent, numbers); });
  for (std::uint32_t to = 0; status == ERROR_SUCCESS && to < numbers.size(); ++to) {
    if (numbers[to] != to) status = Move(sink, parent, numbers[to], to);
  }
  if (status != ERROR_SUCCESS || !HasOpenGaps(parent)) return status;
  win::RegistryKey key;
  status = win::OpenKey(parent, L"", KEY_SET_VALUE, key);
  return status == ERROR_SUCCESS ? win::DeleteValue(key.Get(), kOpenGaps) : status;
}

// Policy objects and their scripts

LSTATUS OpenNumbered(HKEY parent, std::uint32_t number, win::RegistryKey& key) {
  return win::OpenKey(parent, std::to_wstring(number), KEY_READ, key);
}

// The object 0 without an identifier counts as the local policy; one with another identifier does not.
bool IsLocal(HKEY object, std::uint32_t number) {
  const auto id = win::ReadText(object, kObjectId);
  return id ? *id == kLocalObject : number == 0 && !win::HasValue(object, kObjectId);
}

// Calls `visit(number, script)` for each script of a policy object.
template <typename Visit>
LSTATUS ForEachScript(HKEY object, Visit visit) {
  Numbers numbers;
  LSTATUS status = NumberedSubkeys(object, numbers);
  for (const std::uint32_t number : numbers) {
    win::RegistryKey key;
    if (status == ERROR_SUCCESS) status = OpenNumbered(object, number, key);
    const auto text = [&](const wchar_t* name) { return Utf16(win::ReadText(key.Get(), name).value_or(L"")); };
    if (status == ERROR_SUCCESS) visit(number, Script{text(kScript), text(kParameters)});
  }
  return status;
}

struct LocalObject {
  std::uint32_t number;
  win::RegistryKey key;
};

// Finds the local policy among the objects; success also when it is missing. `next` is the first free number. An
// unreadable object is a failure only when the local policy is not found: it may be the local one.
LSTATUS FindLocalObject(HKEY place, std::optional<LocalObject>& found, std::uint32_t& next) {
  Numbers numbers;
  LSTATUS status = NumberedSubkeys(place, numbers);
  next = numbers.empty() ? 0 : numbers.back() + 1;
  std::optional<LocalObject> unnamed;
  for (const std::uint32_t number : numbers) {
    win::RegistryKey key;
    if (const LSTATUS opened = OpenNumbered(place, number, key); opened != ERROR_SUCCESS) status = opened;
    if (!key || !IsLocal(key.Get(), number)) continue;
    auto& slot = win::HasValue(key.Get(), kObjectId) ? found : unnamed;
    if (!slot) slot = LocalObject{number, std::move(key)};
  }
  if (!found) found = std::move(unnamed);
  return found ? ERROR_SUCCESS : status;
}

// Writes the missing values of a policy object; existing names may be in the language of the system.
LSTATUS CompleteObject(HKEY object, const RegistryPlace& place, const std::wstring& machineFolder) {
  const std::pair<const wchar_t*, std::wstring> rows[] = {{kObjectId, kLocalObject},
                                                          {L"SOM-ID", L"Local"},
                                                          {L"FileSysPath", machineFolder},
                                                          {L"DisplayName", L"Local Group Policy"},
                                                          {L"GPOName", L"Local Group Policy"}};
  LSTATUS status = ERROR_SUCCESS;
  for (const auto& [name, text] : rows) {
    if (status == ERROR_SUCCESS && !win::HasValue(object, name)) status = win::WriteText(object, name, text);
  }
  if (status == ERROR_SUCCESS && place.scriptOrder && !win::HasValue(object, L"PSScriptOrder"))
    status = win::WriteNumber(object, L"PSScriptOrder", 1);
  return status;
}

// The program comes last: an incomplete script runs nothing.
LSTATUS WriteScript(HKEY key, const RegistryPlace& place, const Script& script) {
  const BYTE neverRun[16] = {};  // a system time, which Windows stores under the type of a 64-bit number
  return InTurn([&] { return win::WriteText(key, kParameters, Wide(script.parameters)); },
                [&] { return win::WriteValue(key, L"ExecTime", REG_QWORD, neverRun, sizeof neverRun); },
                [&] { return place.powerShellFlag ? win::WriteNumber(key, L"IsPowershell", 0) : ERROR_SUCCESS; },
                [&] { return win::WriteText(key, kScript, Wide(script.program)); });
}

LSTATUS AddToObject(ILogSink* sink, HKEY object, const RegistryPlace& place, const Script& script) {
  bool known = false;
  std::uint32_t count = 0;
  const auto note = [&](std::uint32_t, const Script& existing) {
    known = known || existing == script;
    ++count;
  };
  const LSTATUS status = InTurn([&] { return CloseGaps(sink, object); }, [&] { return ForEachScript(object, note); });
  if (status != ERROR_SUCCESS || known) return status;
  win::RegistryKey key;
  return InTurn([&] { return win::CreateKey(object, std::to_wstring(count), KEY_READ | KEY_WRITE, key); },
                [&] { return WriteScript(key.Get(), place, script); });
}

LSTATUS RemoveFromObject(ILogSink* sink, HKEY object, const ScriptMatch& wanted, std::vector<Script>& removed) {
  Numbers matching;
  const auto note = [&](std::uint32_t number, const Script& script) {
    if (!Matches(script, wanted)) return;
    matching.push_back(number);
    removed.push_back(script);
  };
  return InTurn([&] { return FinishMoves(sink, object); }, [&] { return ForEachScript(object, note); },
                [&] { return matching.empty() ? ERROR_SUCCESS : DeleteNumbered(sink, object, matching); });
}

// Gaps are closed, and an empty object is deleted, only after a removal, by this call or an interrupted one: scripts
// after a gap of another program do not run, and must not start to.
LSTATUS RemoveFromLocalObject(ILogSink* sink, HKEY place, LocalObject local, const ScriptMatch& wanted,
                              std::vector<Script>& removed) {
  std::vector<std::wstring> left;
  const LSTATUS status = InTurn([&] { return RemoveFromObject(sink, local.key.Get(), wanted, removed); },
                                [&] { return win::SubkeyNames(local.key.Get(), left); });
  if (status != ERROR_SUCCESS || !HasOpenGaps(local.key.Get())) return status;
  if (!left.empty()) return CloseGaps(sink, local.key.Get());
  local.key.Reset();
  return DeleteNumbered(sink, place, {local.number});
}

// Opens the place for `work(key)`, which returns a status. A missing place is a success.
template <typename Work>
KE_RESULT AtPlace(const SinkCall& call, HKEY root, const RegistryPlace& place, Work work) {
  call.Parameter(L"key", place.path.c_str());
  win::RegistryKey key;
  LSTATUS status = win::OpenKey(root, place.path, KEY_READ, key);
  if (status == ERROR_FILE_NOT_FOUND) return call.End(KE_SUCCESS);
  if (status == ERROR_SUCCESS) status = work(key.Get());
  return call.Finish(Result(status), status, L"Error in policy key", place.path.c_str());
}

}  // namespace

KE_RESULT ReadScripts(ILogSink* sink, HKEY root, const RegistryPlace& place, std::vector<PlacedScript>& scripts) {
  return AtPlace(SinkCall(sink, __func__), root, place, [&](HKEY key) {
    Numbers objects;
    LSTATUS status = NumberedSubkeys(key, objects);
    for (const std::uint32_t number : objects) {
      win::RegistryKey object;
      LSTATUS read = OpenNumbered(key, number, object);
      const bool local = object && IsLocal(object.Get(), number);
      const auto add = [&](std::uint32_t, Script script) { scripts.push_back({std::move(script), local}); };
      if (read == ERROR_SUCCESS) read = ForEachScript(object.Get(), add);
      if (status == ERROR_SUCCESS) status = read;
    }
    return status;
  });
}

KE_RESULT AddScript(ILogSink* sink, HKEY root, const RegistryPlace& place, const std::wstring& machineFolder,
                    const Script& script) {
  const SinkCall call(sink, __func__);
  win::RegistryKey created;
  const LSTATUS status = win::CreateKey(root, place.path, KEY_READ | KEY_WRITE, created);
  if (status != ERROR_SUCCESS)
    return call.Finish(Result(status), status, L"Error creating policy key", place.path.c_str());
  return AtPlace(call, root, place, [&](HKEY key) {
    std::optional<LocalObject> local;
    std::uint32_t next = 0;
    win::RegistryKey object;
    const auto create = [&] {
      return win::CreateKey(key, std::to_wstring(local ? local->number : next), KEY_READ | KEY_WRITE, object);
    };
    const LSTATUS added =
        InTurn([&] { return FinishMoves(sink, key); }, [&] { return FindLocalObject(key, local, next); }, create,
               [&] { return CompleteObject(object.Get(), place, machineFolder); },
               [&] { return AddToObject(sink, object.Get(), place, script); });
    local.reset();  // an open key cannot be moved
    object.Reset();
    return added == ERROR_SUCCESS ? CloseGaps(sink, key) : added;
  });
}

KE_RESULT RemoveMatching(ILogSink* sink, HKEY root, const RegistryPlace& place, const ScriptMatch& wanted,
                         std::vector<Script>& removed) {
  return AtPlace(SinkCall(sink, __func__), root, place, [&](HKEY key) {
    std::optional<LocalObject> local;
    std::uint32_t next = 0;
    const LSTATUS status = InTurn(
        [&] { return FinishMoves(sink, key); }, [&] { return FindLocalObject(key, local, next); },
        [&] { return local ? RemoveFromLocalObject(sink, key, std::move(*local), wanted, removed) : ERROR_SUCCESS; });
    // At the end: which object is the local one may depend on its number.
    return status == ERROR_SUCCESS && HasOpenGaps(key) ? CloseGaps(sink, key) : status;
  });
}

}  // namespace policy
