#include <doctest/doctest.h>

#include <algorithm>
#include <cstring>
#include <functional>
#include <string>
#include <tuple>

#include "KELAGAPI.h"
#include "KEPlugin.h"
#include "exports/store_tree.h"

using std::string;
using support::LoadedDll;

namespace {

struct ProxyTree : support::ProductTree {
  ProxyTree() { AddDevkit("KELAGAPI.dll", "Common"); }
  // A record as the development module keeps it, behind the header of its file.
  string Record(const char* file) const { return support::ReadFile(Path("Common") / file).substr(32); }
  string library = Path("KELUtils/KELUtils.dll").string();
};

string Setting(const LoadedDll& dll, const string& plain) { return plain.empty() ? "" : Encrypted(dll, plain, 300); }

string Shown(const KE_PROXY& proxy) {
  return proxy.host + (":" + std::to_string(proxy.port)) + " " + proxy.user + "/" + proxy.password;
}

string X(size_t length) { return string(length, 'x'); }

// Puts a text into a field of a record, cut to the field less its terminator.
void Put(string& record, size_t offset, const string& text, size_t fieldSize) {
  record.replace(offset, std::min(text.size(), fieldSize - 1), text, 0, fieldSize - 1);
}

}  // namespace

TEST_CASE("agent and static proxy: a record with another byte, or a text past the end of its field") {
  const ProxyTree tree;
  const LoadedDll dll(tree.library);
  KE_PROXY proxy{};  // filled anew by every row
  const struct {
    string server, port, user, password, address, shown;
    char flags;
  } rows[] = {{"h", "3128", "u", "p", "h:3128", "h:3128 u/p", 15},
              {"h", "", "u", "", "h:80", "h:80 u/", 7},
              {"h", "1", "", "p", "h:1", "h:1 /", 3},
              {X(253), "12", X(127), X(128), X(253) + ":1", X(253) + ":1 " + X(127) + "/" + X(127), 15},
              {X(9999), "1", X(128), X(127), X(255), ":0 " + X(127) + "/" + X(127), 15}};
  for (const auto& row : rows) {
    const string user = Setting(dll, row.user), password = Setting(dll, row.password);
    CHECK(CALL(dll, KE_SetAgentProxyInfo)(row.server.c_str(), row.port.c_str(), user.c_str(), password.c_str()) == 0);
    string expected = row.flags + string("\0\0\0\1", 4) + string(527, '\0');
    Put(expected, 5, row.address, 256);
    Put(expected, 261, row.user, 128);
    if (row.flags & 8) Put(expected, 389, row.password, 128);
    CHECK_MESSAGE(tree.Record("KELAGAPI-1-7.rec") == expected, row.shown);
    CHECK((CALL(dll, KE_GetConfiguratedProxy)(&proxy) == KE_SUCCESS && proxy.hasCredentials == (row.flags > 3)));
    CHECK(Shown(proxy) == row.shown);
  }
  const size_t lengths[][3] = {{2, 0, 96}, {0, 3, 160}, {0, 0, 32}, {255, 319, 224}, {256, 320, 224}};
  for (const auto& [host, ips, flags] : lengths) {
    CHECK(CALL(dll, KE_SetStaticProxyInfo)(host ? X(host).c_str() : nullptr, X(ips).c_str()) == KE_SUCCESS);
    string expected = static_cast<char>(flags) + string(23, '\0') + char(flags != 32) + string(8511, '\0');
    Put(expected, 25, X(host), 256);
    Put(expected, 281, X(ips), 320);
    CHECK(tree.Record("KELAGAPI-1-10.rec") == expected);
  }
}

TEST_CASE("agent server: a record that loses anything but the address, or an address past the end of its field") {
  const ProxyTree tree;
  const LoadedDll dll(tree.library), agent(tree.Path("Common/KELAGAPI.dll"));
  string record = X(2564);
  CALL(agent, KE_AGAPI_Initialize)();
  CHECK(CALL(agent, KE_AGAPI_SetConfig)(1, 6, record.data(), 2564) == 0);
  CHECK(CALL(dll, KE_SetURLServer)(nullptr) == KE_MISSING_ARGUMENT);
  for (const string& server : {string(600, 's'), string("https://s"), string()}) {
    CHECK(CALL(dll, KE_SetURLServer)(server.c_str()) == KE_SUCCESS);
    const string written = tree.Record("KELAGAPI-1-6.rec");
    CHECK((written.substr(0, 1028) == X(1028) && written.c_str() + 1028 == server.substr(0, 511)));
    CHECK(written.substr(1540) == X(1024));
  }
}

TEST_CASE("proxy exports: a failure with another code, that stores something, or that keeps the agent module") {
  const ProxyTree tree;
  tree.AddFake("FakeApiCr", "KELUtils/ApiCr.dll");
  std::filesystem::remove(tree.Path("Common/KELAGAPI.dll"));
  const LoadedDll dll(tree.library), crypto(tree.Path("KELUtils/ApiCr.dll"));
  KE_PROXY proxy{};
  const auto set = [&](const string& user = "", const string& password = "", const char* server = "h") {
    return CALL(dll, KE_SetAgentProxyInfo)(server, "1", user.c_str(), password.c_str());
  };
  const std::function<KE_RESULT()> setServer = [&] { return CALL(dll, KE_SetURLServer)("https://s"); },
                                   configured = [&] { return CALL(dll, KE_GetConfiguratedProxy)(&proxy); },
                                   internet = [&] { return CALL(dll, KE_GetInetConfig)(&proxy, sizeof proxy); },
                                   setAgent = [&] { return set(); },
                                   setStatic = [&] { return CALL(dll, KE_SetStaticProxyInfo)("h", nullptr); };
  // No module, one that loads but lacks the functions in the second folder, and one in the first.
  for (const string folder : {"", "KELUtils", "Common"}) {
    if (!folder.empty()) tree.AddFake("FakeKERegister", folder + "/KELAGAPI.dll");
    CHECK(setServer() == KE_AGENT_NOT_LOADED);
    for (const auto& call : {configured, internet, setAgent, setStatic}) {
      CHECK_MESSAGE(call() == (folder == "Common" ? KE_AGENT_INCOMPLETE : KE_AGENT_NOT_LOADED), folder);
      CHECK(GetModuleHandleA("KELAGAPI.dll") == nullptr);
    }
  }
  tree.AddFake("FakeKELAGAPI", "Common/KELAGAPI.dll");
  const LoadedDll agent(tree.Path("Common/KELAGAPI.dll"));
  const std::tuple<const char*, KE_RESULT, const char*, std::function<KE_RESULT()>> failures[] = {
      {"KE_AGAPI_AskProxyConfig", KE_NOT_CREATED, "kept", internet},
      {"KE_AGAPI_GetProxyConfig", KE_AGENT_READ_FAILED, "kept", internet},
      {"KE_AGAPI_GetProxyConfig", KE_AGENT_READ_FAILED, "", configured},
      {"KE_AGAPI_GetConfig", KE_AGENT_READ_FAILED, "", configured},
      {"KE_AGAPI_GetConfig", KE_AGENT_READ_FAILED, "kept", setServer},
      {"KE_AGAPI_SetConfig", KE_AGENT_WRITE_FAILED, "kept", setServer},
      {"KE_AGAPI_SetConfig", KE_REGISTRY_UNUSABLE, "kept", setAgent},
      {"KE_AGAPI_SetConfig", KE_AGENT_WRITE_FAILED, "kept", setStatic}};
  for (const auto& [function, expected, host, call] : failures) {
    std::strcpy(proxy.host, "kept");
    FakeCallState* const state = CALL(agent, FakeCall)(function);
    state->answer = -9;
    CHECK_MESSAGE((call() == expected && state->count == 1 && string(proxy.host) == host), function);
    state->answer = state->count = 0;
  }
  const string good = Setting(dll, "u"), longest = good + string(1023 - good.size(), ' ');
  CALL(crypto, FakeCipher)()->error = 9;
  char text[99];
  int32_t size = sizeof text;
  CHECK((set(good, good) == 9 && CALL(dll, KE_EncryptSetting)("secret", 6, text, &size) == 9));
  CALL(crypto, FakeCipher)()->error = 0;
  CHECK((set(longest + " ") == KE_OUT_OF_RANGE && set(good, longest + " ") == KE_OUT_OF_RANGE));
  CHECK((set("", "", "") == KE_MISSING_ARGUMENT && CALL(dll, KE_SetAgentProxyInfo)("h", "", "", nullptr) == 1777));
  FakeCallState* const stored = CALL(agent, FakeCall)("KE_AGAPI_SetConfig");
  CHECK((stored->count == 0 && set(longest, longest) == 0 && set("", longest + " ") == 0 && stored->count == 2));
  CHECK(CALL(agent, FakeCalls)("KE_AGAPI_Finalize") == CALL(agent, FakeCalls)("KE_AGAPI_Initialize"));
}

TEST_CASE("internet configuration: not that of the installer plug-in or, without one, that of the agent") {
  const ProxyTree tree;
  tree.AddFake("FakeInstallerPlugin", "KelUpg/KEC.dll");
  tree.AddFake("FakeKERegister", "KelUpg/None.dll");  // loads, but is no plug-in
  const LoadedDll dll(tree.library), plugin(tree.Path("KelUpg/KEC.dll")), agent(tree.Path("Common/KELAGAPI.dll"));
  KE_AGENT_PROXY_RECORD record{3, 0, "stored:7", "", "", {}};  // not in use
  CALL(agent, KE_AGAPI_Initialize)();
  CHECK(CALL(agent, KE_AGAPI_SetProxyConfig)(&record, sizeof record) == 0);
  KE_PROXY proxy{};
  CHECK((CALL(dll, KE_GetConfiguratedProxy)(&proxy) == 0 && Shown(proxy) == "stored:7 /"));
  FakeCallState* const ask = CALL(plugin, FakeCall)("KEINSTALL_GetInetConfig");
  // Plug-in, refusal to initialise, answer, how often asked; result, 1778 when the agent module would be asked.
  const std::tuple<const char*, int, int, int, KE_RESULT> rows[] = {
      {"KEC.dll", 0, 0, 1, 0},    {"KEC.dll", 0, 77, 1, 77},   {"KEC.dll", 0, 1794, 1, 1778},
      {"KEC.dll", 1, 0, 0, 1778}, {"None.dll", 0, 0, 0, 1778}, {"no.dll", 0, 0, 0, 1778}};
  for (const auto& [file, refusal, answer, asked, result] : rows) {
    support::WriteFile(tree.Path("KelUpg/KelUpg.ini"), "[PLUGINS]\r\nKEC=" + tree.Path("KelUpg/").string() + file);
    *ask = {ask->name, 0, answer, nullptr, 0};
    CALL(plugin, FakeCall)("KE_Initialize")->answer = refusal;
    std::strcpy(proxy.host, "kept");
    CHECK(CALL(dll, KE_GetInetConfig)(&proxy, 772) == result);  // a byte less than all fields
    CHECK_MESSAGE((ask->count == asked && string(proxy.host) == "kept"), file);
    CHECK((!asked || (ask->first == &proxy && ask->second == 772)));
    CHECK(CALL(dll, KE_GetInetConfig)(&proxy, 773) == (result == 1778 ? 0 : result));
    CHECK((result != 1778 || Shown(proxy) == ":80 /"));
  }
}
