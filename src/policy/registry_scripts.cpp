#include "policy/registry_scripts.h"

#include <algorithm>
#include <optional>

#include "policy/log_sink.h"
#include "policy/registry_tree.h"
#include "win/registry.h"

namespace policy {

namespace {

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

LSTATUS OpenNumbered(HKEY parent, std::uint32_t number, win::RegistryKey& key) {
  return win::OpenKey(parent, std::to_wstring(number), KEY_READ, key);
}

// The index 0 without an identifier is taken for the local policy; a text of another one, or of another type, is not.
bool IsLocal(HKEY object, std::uint32_t number) {
  const auto id = win::ReadText(object, kObjectId);
  return id ? *id == kLocalObject : number == 0 && !win::HasValue(object, kObjectId);
}

Script ScriptIn(HKEY key) {
  return {win::ReadText(key, kScript).value_or(L""), win::ReadText(key, kParameters).value_or(L"")};
}

// Calls `visit(number, script)` for each script of a policy object.
template <typename Visit>
LSTATUS ForEachScript(HKEY object, Visit visit) {
  Numbers numbers;
  LSTATUS status = NumberedSubkeys(object, numbers);
  for (const std::uint32_t number : numbers) {
    win::RegistryKey key;
    if (status == ERROR_SUCCESS) status = OpenNumbered(object, number, key);
    if (status == ERROR_SUCCESS) visit(number, ScriptIn(key.Get()));
  }
  return status;
}

struct LocalObject {
  std::uint32_t number;
  win::RegistryKey key;
};

// The local policy among the objects; none, with success, when there is none. `next` is the first free number. An
// object that cannot be read counts as a failure only when the local one is not found: it may be that one.
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

// Writes what a policy object lacks; the names may be there in the language of the system.
LSTATUS CompleteObject(HKEY object, const RegistryPlace& place, const std::wstring& machineFolder) {
  const struct {
    const wchar_t* name;
    std::wstring text;
  } rows[] = {{kObjectId, kLocalObject},
              {L"SOM-ID", L"Local"},
              {L"FileSysPath", machineFolder},
              {L"DisplayName", L"Local Group Policy"},
              {L"GPOName", L"Local Group Policy"}};
  LSTATUS status = ERROR_SUCCESS;
  for (const auto& row : rows) {
    if (status == ERROR_SUCCESS && !win::HasValue(object, row.name))
      status = win::WriteText(object, row.name, row.text);
  }
  if (status == ERROR_SUCCESS && place.scriptOrder && !win::HasValue(object, L"PSScriptOrder"))
    status = win::WriteNumber(object, L"PSScriptOrder", 1);
  return status;
}

// The program comes last: a script that was written in part runs nothing.
LSTATUS WriteScript(HKEY key, const RegistryPlace& place, const Script& script) {
  const BYTE neverRun[16] = {};  // the platform stores a system time under the type of a 64-bit number
  return InTurn(
      [&] { return win::WriteText(key, kParameters, script.parameters); },
      [&] { return win::WriteValue(key, L"ExecTime", REG_QWORD, neverRun, sizeof neverRun); },
      [&] { return place.tellsPowerShell ? win::WriteNumber(key, L"IsPowershell", 0) : LSTATUS{ERROR_SUCCESS}; },
      [&] { return win::WriteText(key, kScript, script.program); });
}

LSTATUS AddToObject(ILogSink* sink, HKEY object, const RegistryPlace& place, const Script& script) {
  bool known = false;
  std::uint32_t count = 0;
  win::RegistryKey key;
  return InTurn([&] { return CloseGaps(sink, object); },
                [&] {
                  return ForEachScript(object, [&](std::uint32_t, const Script& there) {
                    known = known || there == script;
                    ++count;
                  });
                },
                [&] {
                  return known ? LSTATUS{ERROR_SUCCESS}
                               : win::CreateKey(object, std::to_wstring(count), KEY_READ | KEY_WRITE, key);
                },
                [&] { return known ? LSTATUS{ERROR_SUCCESS} : WriteScript(key.Get(), place, script); });
}

LSTATUS TakeOutOfObject(ILogSink* sink, HKEY object, const ScriptMatch& wanted, std::vector<Script>& taken) {
  Numbers matching;
  const auto note = [&](std::uint32_t number, const Script& script) {
    if (!Matches(script, wanted)) return;
    matching.push_back(number);
    taken.push_back(script);
  };
  return InTurn([&] { return FinishMoves(sink, object); }, [&] { return ForEachScript(object, note); },
                [&] { return matching.empty() ? ERROR_SUCCESS : DeleteNumbered(sink, object, matching); });
}

// Numbers are closed up, and an empty object is deleted, only where something was taken out, now or by a call that was
// interrupted: what is dead behind a gap of somebody else's must not come alive.
LSTATUS TakeOutOfLocalObject(ILogSink* sink, HKEY place, LocalObject local, const ScriptMatch& wanted,
                             std::vector<Script>& taken) {
  std::vector<std::wstring> left;
  const LSTATUS status = InTurn([&] { return TakeOutOfObject(sink, local.key.Get(), wanted, taken); },
                                [&] { return win::SubkeyNames(local.key.Get(), left); });
  if (status != ERROR_SUCCESS || !HasOpenGaps(local.key.Get())) return status;
  if (!left.empty()) return CloseGaps(sink, local.key.Get());
  local.key.Reset();
  return DeleteNumbered(sink, place, {local.number});
}

// Gaps are closed at the end: which object is the local one may depend on its number.
LSTATUS TakeOutOfPlace(ILogSink* sink, HKEY place, const ScriptMatch& wanted, std::vector<Script>& taken) {
  std::optional<LocalObject> local;
  std::uint32_t next = 0;
  return InTurn([&] { return FinishMoves(sink, place); }, [&] { return FindLocalObject(place, local, next); },
                [&] {
                  return local ? TakeOutOfLocalObject(sink, place, std::move(*local), wanted, taken)
                               : LSTATUS{ERROR_SUCCESS};
                },
                [&] { return HasOpenGaps(place) ? CloseGaps(sink, place) : LSTATUS{ERROR_SUCCESS}; });
}

// Opens the place for `work` and reports how it went. A missing place is a success.
template <typename Work>
KE_RESULT InPlace(const SinkCall& call, HKEY root, const RegistryPlace& place, Work work) {
  call.Parameter(L"key", place.path.c_str());
  win::RegistryKey key;
  LSTATUS status = win::OpenKey(root, place.path, KEY_READ, key);
  if (status == ERROR_FILE_NOT_FOUND) return call.End(KE_SUCCESS);
  if (status == ERROR_SUCCESS) status = work(key.Get());
  if (status != ERROR_SUCCESS) call.Fail(Result(status), status, L"Error in policy key", place.path.c_str());
  return call.End(Result(status));
}

}  // namespace

KE_RESULT ReadScripts(ILogSink* sink, HKEY root, const RegistryPlace& place, std::vector<PlacedScript>& scripts) {
  return InPlace(SinkCall(sink, __func__), root, place, [&](HKEY key) {
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
  win::RegistryKey created;  // the place is there from now on
  const LSTATUS status = win::CreateKey(root, place.path, KEY_READ | KEY_WRITE, created);
  if (status != ERROR_SUCCESS)
    return call.End(call.Fail(Result(status), status, L"Error creating policy key", place.path.c_str()));
  return InPlace(call, root, place, [&](HKEY key) {
    std::optional<LocalObject> local;
    std::uint32_t next = 0;
    win::RegistryKey object;
    return InTurn([&] { return FinishMoves(sink, key); }, [&] { return FindLocalObject(key, local, next); },
                  [&] {
                    const auto number = std::to_wstring(local ? local->number : next);
                    return win::CreateKey(key, number, KEY_READ | KEY_WRITE, object);
                  },
                  [&] { return CompleteObject(object.Get(), place, machineFolder); },
                  [&] { return AddToObject(sink, object.Get(), place, script); },
                  [&] {
                    local.reset();  // what is open cannot be moved
                    object.Reset();
                    return CloseGaps(sink, key);
                  });
  });
}

KE_RESULT TakeOutScripts(ILogSink* sink, HKEY root, const RegistryPlace& place, const ScriptMatch& wanted,
                         std::vector<Script>& taken) {
  return InPlace(SinkCall(sink, __func__), root, place,
                 [&](HKEY key) { return TakeOutOfPlace(sink, key, wanted, taken); });
}

}  // namespace policy
