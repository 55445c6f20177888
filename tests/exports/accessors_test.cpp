#include <doctest/doctest.h>

#include <cstring>
#include <string>

#include "exports/store_tree.h"

using support::LoadedDll;

namespace {

using Getter = KE_RESULT(KE_API*)(char*, int32_t);
using Setter = KE_RESULT(KE_API*)(const char*);

struct TextValue {
  const char* getter;
  const char* setter;
  const char* section;
  const char* key;
  KE_RESULT missing;  // the getter's result without a value
  bool empties;       // whether the getter empties the buffer then
  KE_RESULT noSize;   // the getter's result for size 0 without a value
  bool emptyRefused;  // whether the setter rejects the empty text
};

// Pins every export to its place in the store and to the results of a missing value.
constexpr TextValue kTexts[] = {
    {"KE_GetAgentID", "KE_SetAgentID", "AGENT", "ID", 1782, false, 1782, true},
    {"KE_GetCustomerId", "KE_SetCustomerId", "INTEGRATION", "CUSTOMER", 1782, false, 1782, false},
    {"KE_GetCertificate", "KE_SetCertificate", "INTEGRATION", "CERTIFICATE", 1782, false, 1782, false},
    {"KE_GetDeviceID", "KE_SetDeviceID", "INTEGRATION", "DEVICEID", 1782, true, 1778, false},
    {"KE_GetUserRCM", "KE_SetUserRCM", "AGENTRCM", "USER", 1782, true, 1778, false},
    {"KE_GetPasswordRCM", "KE_SetPasswordRCM", "AGENTRCM", "PASSWORD", 1782, true, 1778, false},
    {"KE_GetAgentVersion", "KE_SetAgentVersion", "AGENT", "VERSION", 0, true, 1778, true},
    {"KE_GetServerDate", "KE_SetServerDate", "INTEGRATION", "ServerDate", 0, true, 1778, true},
    {"KE_GetContainer", "KE_SetContainer", "INTEGRATION", "CONTAINER", 0, true, 1778, true},
    {"KE_GetLastErrorParam", "KE_SetLastErrorParam", "INSTALL", "LastErrorParam", 0, true, 1777, false},
};

std::string StoreText(const char* section, const char* key, const std::string& value) {
  return "[" + std::string(section) + "]\r\n" + key + "=" + value + "\r\n";
}

}  // namespace

TEST_CASE("text accessors: a text at another place, cut or lost; another result for a missing or empty one") {
  std::string value(5000, 'x');  // and every character but the line breaks, which a store does not keep
  for (int c = 1; c < 256; ++c) value += c == '\r' || c == '\n' ? ' ' : static_cast<char>(c);
  const auto length = static_cast<int32_t>(value.size());
  for (const TextValue& row : kTexts) {
    CAPTURE(std::string(row.getter));
    const StoreTree tree;
    const LoadedDll dll = tree.Load();
    const auto get = dll.Get<Getter>(row.getter);
    const auto set = dll.Get<Setter>(row.setter);
    static char buffer[6000];
    std::strcpy(buffer, "untouched");
    CHECK(get(nullptr, -1) == KE_MISSING_ARGUMENT);
    for (const int32_t size : {0, -1, INT32_MIN}) CHECK(get(buffer, size) == row.noSize);
    CHECK((std::string(buffer) == "untouched" && get(buffer, 1) == row.missing));
    CHECK(std::string(buffer) == (row.empties ? "" : "untouched"));
    const bool nullRefused = std::strcmp(row.setter, "KE_SetLastErrorParam") != 0;
    CHECK(set(nullptr) == (nullRefused ? KE_MISSING_ARGUMENT : KE_SUCCESS));
    CHECK(set("") == (row.emptyRefused ? KE_MISSING_ARGUMENT : KE_SUCCESS));
    CHECK(tree.Text("INTEGRA.DAT") == (row.emptyRefused ? "" : StoreText(row.section, row.key, "")));

    REQUIRE(set(value.c_str()) == KE_SUCCESS);
    for (const char* file : {"INTEGRA.DAT", "INTEGRA.BAK"})
      CHECK(tree.Text(file) == StoreText(row.section, row.key, value));
    std::strcpy(buffer, "untouched");
    CHECK((get(buffer, length) == KE_BUFFER_TOO_SMALL && std::string(buffer) == "untouched"));
    CHECK((get(buffer, length + 1) == KE_SUCCESS && buffer == value));
    std::memset(buffer, 0, sizeof buffer);
    CHECK((tree.Load().Get<Getter>(row.getter)(buffer, sizeof buffer) == KE_SUCCESS && buffer == value));
  }
}

TEST_CASE("number accessors: a number that comes back as another one") {
  const StoreTree tree;
  int32_t value = INT32_MIN;
  CHECK(CALL(tree.Load(), KE_SetLastInstallError)(&value) == KE_SUCCESS);
  CHECK(tree.Text("INTEGRA.DAT") == "[INSTALL]\r\nLastError=-2147483648\r\n");
  CHECK((CALL(tree.Load(), KE_GetInstallState)(&value) == KE_SUCCESS && value == 0));
  CHECK((CALL(tree.Load(), KE_GetLastInstallError)(&value) == KE_SUCCESS && value == INT32_MIN));
  using Row = std::pair<const char*, int32_t>;
  for (const auto& [text, number] : {Row{" +48x", 48}, Row{"-3", -3}, Row{"x48", 0}, Row{"99999999999", INT32_MAX}}) {
    CAPTURE(text);
    tree.Put("INTEGRA.DAT", StoreText("install", "state", text));
    CHECK((CALL(tree.Load(), KE_GetInstallState)(&value) == KE_SUCCESS && value == number));
  }
}

TEST_CASE("install state: it moves back although that is forbidden, or is complete before 200") {
  const StoreTree tree;
  const LoadedDll dll = tree.Load();
  int32_t value = -1;
  CHECK((CALL(dll, KE_SetInstallState)(&value, 1) == KE_SUCCESS && CALL(dll, KE_SetAgentVersion)("1") == KE_SUCCESS));
  CHECK(tree.Text("INTEGRA.DAT") == "[AGENT]\r\nVERSION=1\r\n");  // not even an empty entry of the state
  const int32_t steps[][4] = {{48, 1, 48, 0}, {47, 1, 48, 0},   {200, 1, 200, 1},
                              {47, 0, 47, 0}, {199, 0, 199, 0}, {-1, 0, -1, 0}};
  for (const auto& [state, onlyForward, stored, complete] : steps) {
    CAPTURE(state);
    CHECK(CALL(dll, KE_SetInstallState)(&state, onlyForward) == KE_SUCCESS);
    CHECK((CALL(dll, KE_GetInstallState)(&value) == KE_SUCCESS && value == stored));
    CHECK((CALL(dll, KE_IsInstallComplete)(&value) == KE_SUCCESS && value == complete));
  }
}

TEST_CASE("property: a change at another place than the first entry of its name") {
  const StoreTree tree;
  tree.Put("INTEGRA.DAT", "[Integration]\r\nDate=d\r\n[A]\r\n[B]\r\n[INTEGRATION]\r\ndate=second\r\n");
  const LoadedDll dll = tree.Load();
  const auto set = CALL(dll, KE_SetPropertyInIntegra);
  CHECK((set("NEW", "n") == KE_SUCCESS && set("DATE", "e") == KE_SUCCESS));
  CHECK(set("LINES", "a\r\n[FORGED]\r\nID=x") == KE_SUCCESS);
  CHECK(tree.Text("INTEGRA.DAT") ==
        "[Integration]\r\nDate=e\r\nNEW=n\r\nLINES=a[FORGED]ID=x\r\n[A]\r\n[B]\r\n[INTEGRATION]\r\ndate=second\r\n");
  CHECK((set("", "x") == KE_MISSING_ARGUMENT && set("K", "") == KE_MISSING_ARGUMENT));
}

TEST_CASE("unusable store files: a call changes its output, or the file") {
  const StoreTree tree;
  tree.Put("INTEGRA.DAT", WholeStore("live"));
  const LoadedDll cached = tree.Load();
  CHECK(AgentId(cached) == "live");
  const support::LockedFile readOnly(tree.tree.Store("INTEGRA.DAT"), FILE_SHARE_READ);
  CHECK(CALL(cached, KE_SetAgentID)("new") == KE_STORE_UNUSABLE);
  const LoadedDll dll = tree.Load();
  CHECK(AgentId(dll) == "(1782)");
  int32_t value = -7;
  CHECK(CALL(dll, KE_GetInstallState)(&value) == KE_STORE_UNUSABLE);
  CHECK((CALL(dll, KE_IsIntegrated)(&value) == KE_STORE_UNUSABLE && value == -7));
  CHECK((CALL(dll, KE_IsInstallComplete)(&value) == KE_STORE_UNUSABLE && value == 0));
  CHECK(tree.Text("INTEGRA.DAT") == WholeStore("live"));
}
