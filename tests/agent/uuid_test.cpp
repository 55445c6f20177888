#include <doctest/doctest.h>

#include <regex>
#include <vector>

#include "KELUtils.h"
#include "agent/uuid.h"
#include "support/inner_module.h"
#include "trace/trace.h"

namespace {

enum Step { kSecurity, kBlanket, kInit, kCreate, kConnect, kQuery, kNext, kGet, kException };

/// A fake of COM and management instrumentation, by their binary interface: every argument is a word.
struct FakeCom {
  static inline int failing, held;  // the step that fails; how much was taken and not given back
  static inline HRESULT failure;
  static inline std::vector<const wchar_t*> uuids;  // that are still to come; null is no text
  static inline void *service[21], *answers[5], *answer[5], **objects[] = {service, answers, answer};
  agent::ComTable com{Take<kInit>, Uninitialise, Take<kSecurity>, Take<kCreate>, Take<kBlanket>, Allocate, Free, Clear};

  FakeCom(std::vector<const wchar_t*> found, int step = kException + 1, HRESULT how = E_FAIL) {
    failing = step, failure = how, held = 0, uuids = found;
    for (auto* object : objects) object[2] = reinterpret_cast<void*>(&Release);
    service[3] = reinterpret_cast<void*>(&Take<kConnect, int, int, int, int, int, int, int, int, int>);
    service[20] = reinterpret_cast<void*>(&Take<kQuery, int, int, int, int, int, int>);
    answers[4] = reinterpret_cast<void*>(&Next), answer[4] = reinterpret_cast<void*>(&Get);
  }
  // A step that takes COM, or an object by its last argument.
  template <int kStep, typename... Arguments>
  static HRESULT WINAPI Take(Arguments... arguments) {
    if (failing == kStep) return failure;
    held += kStep >= kInit;
    const auto out = std::get<sizeof...(arguments) - 1>(std::tuple(arguments...));
    if constexpr (kStep >= kCreate) *reinterpret_cast<void**>(out) = &objects[kStep - std::min<int>(kStep, kConnect)];
    return S_OK;
  }
  static DWORD WINAPI Release(DWORD) { return --held; }
  static void WINAPI Uninitialise() { --held; }
  static BSTR WINAPI Allocate(const OLECHAR* text) { return ++held, SysAllocString(text); }
  static void WINAPI Free(BSTR text) { --held, SysFreeString(text); }
  static HRESULT WINAPI Clear(VARIANT* value) { return held -= value->vt == VT_BSTR, VariantClear(value); }
  static HRESULT WINAPI Next(DWORD, DWORD, DWORD, DWORD out, DWORD) {
    if (failing == kException) throw std::bad_alloc();
    return uuids.empty() ? S_FALSE : Take<kNext>(out);
  }
  static HRESULT WINAPI Get(DWORD, DWORD, DWORD, VARIANT* value, DWORD, DWORD) {
    value->vt = uuids.front() ? VT_BSTR : VT_NULL;
    value->bstrVal = uuids.front() ? Allocate(uuids.front()) : nullptr;
    uuids.erase(uuids.begin());
    return failing == kGet ? failure : S_OK;
  }

  /// The result and what is then in a buffer of seven bytes.
  std::string Query() const {
    char buffer[] = "before";
    const auto result = trace::ExportCall(
        "KE_GetUUID", [&](trace::Export& self) { return agent::QueryUuid(self.name, com, buffer, 7); });
    return std::to_string(result) + (held == 0 ? " " : " not given back ") + buffer;
  }
};

}  // namespace

TEST_CASE("machine UUID: another one in the next call, or one although it is switched off") {
  const std::tuple<const char*, int, int> rows[] = {
      {"False", 64, 36}, {"falsehood", 37, 36}, {"", 36, 35}, {"", 1, 0}, {"false", 64, 0}};
  const support::AgentTree tree;
  char uuid[64] = "";
  CHECK(KE_GetUUID(uuid, sizeof uuid) == KE_SUCCESS);
  CHECK(std::regex_match(uuid, std::regex("[0-9A-Fa-f]{8}(-[0-9A-Fa-f]{4}){3}-[0-9A-Fa-f]{12}")));
  for (const auto& [setting, size, length] : rows) {
    support::WriteFile(tree.Path("KELUtils/KELUTILS.INI"), "[UUID]\r\nCheckUUID=" + std::string(setting) + "\r\n");
    char again[64] = "before";
    CHECK_MESSAGE((KE_GetUUID(again, size) == KE_SUCCESS && again == std::string(uuid, length)), setting);
  }
  CHECK((KE_GetUUID(nullptr, 9) == KE_MISSING_ARGUMENT && KE_GetUUID(uuid, 0) == KE_BUFFER_TOO_SMALL && *uuid != '\0'));
}

TEST_CASE("machine UUID: a failure that keeps an object of COM, or has another result") {
  const std::tuple<int, HRESULT, const char*> rows[] = {
      {kInit, RPC_E_CHANGED_MODE, "1779 before"},
      {kSecurity, E_FAIL, "1779 before"},
      {kSecurity, RPC_E_TOO_LATE, "0 one"},  // the host's own settings stay
      {kCreate, REGDB_E_CLASSNOTREG, "1779 before"},
      {kConnect, E_FAIL, "1779 before"},
      {kBlanket, E_FAIL, "1779 before"},
      {kQuery, E_FAIL, "1779 before"},
      {kNext, E_FAIL, "0 before"},
      {kGet, E_FAIL, "0 before"},
      {kException, E_FAIL, "1780 before"}};
  for (const auto& [step, failure, answer] : rows)
    CHECK_MESSAGE(FakeCom({L"one"}, step, failure).Query() == answer, step);
  CHECK(FakeCom({L"one", L"two", nullptr}).Query() == "0 two");
  CHECK((FakeCom({}).Query() == "0 before" && FakeCom({L"\xE9 longer"}).Query() == "0 \xE9 long"));
}
