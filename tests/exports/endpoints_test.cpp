#include <doctest/doctest.h>

#include <cstring>
#include <map>
#include <sstream>
#include <string>

#include "KELUtils.h"
#include "support/fake_sibling.h"
#include "support/product_tree.h"

using support::LoadedDll;

namespace {

namespace fs = std::filesystem;

// An installation with the folders of all modules, empty but for the files that a case puts there.
struct Installation : support::ProductTree {
  Installation() {
    for (const char* folder :
         {"KELTVEVT", "KELUpd", "KELUpg", "KELConf", "KELReport", "KELQtine", "KELSNET", "KELTask"}) {
      fs::create_directories(Path(folder));
    }
  }

  LoadedDll Load() const { return LoadedDll(Path("KELUtils/KELUtils.dll")); }
  std::string Root() const { return Path("KELUtils").parent_path().string(); }
  KE_RESULT Upgrade(const std::string& tail = "") const {
    return CALL(Load(), KE_UpgradeStart)((Root() + tail).c_str());
  }

  // The lines of a file, parted by a blank each.
  std::string Lines(const std::string& file) const {
    std::istringstream words(support::ReadFile(Path(file)));
    std::string lines;
    for (std::string word; words >> word;) lines += (lines.empty() ? "" : " ") + word;
    return lines;
  }

  // The files that an upgrade writes, with their content.
  std::map<std::string, std::string> Files() const {
    std::map<std::string, std::string> files;
    for (const auto& entry : fs::recursive_directory_iterator(Root())) {
      if (entry.is_regular_file() && entry.path().extension() != ".dll") {
        files[fs::relative(entry.path(), Root()).generic_string()] = support::ReadFile(entry.path());
      }
    }
    return files;
  }
};

constexpr char kMessages[] = "KESAgent/KE_AGPRX.dat";

}  // namespace

TEST_CASE("upgrade start: the message types of an installation that has none, and nothing more the second time") {
  const Installation tree;
  CHECK(tree.Upgrade() == KE_SUCCESS);
  CHECK(tree.Lines(kMessages) ==
        "[MESSAGE_TYPES] KE_AGM_ERRORINFO=1008 KE_AGM_NETINFO=1009 KE_AGM_EVENTINFO=1010 "
        "KE_AGM_GETUPDATEDPOLICIESCRITICAL=1011 KE_AGM_URLMONITORINFO=1013 KE_AGM_GETUPDATEDPOLICIES=1000 "
        "KE_AGM_GETUPDATEDPOLICIESREALTIME=1014 KE_AGM_GETUPDATEDPOLICIESINSTALL=1015 KE_AGM_TESTINSTALL=1016 "
        "KE_AGM_INTEGRATEINSTALL=1018 KE_AGM_GETUPDATEDPOLICIESNOTIFICATION=1019 KE_AGM_TESTDEVICEID=1020 "
        "KE_AGM_TESTINSTALLDEVICEID=1021 [MESSAGE] KE_AGM_ERRORINFO=SendMessage KE_AGM_NETINFO=SendMessage "
        "KE_AGM_EVENTINFO=SendMessage KE_AGM_GETUPDATEDPOLICIESCRITICAL=CheckPolicyCritical "
        "KE_AGM_URLMONITORINFO=SendMessage KE_AGM_GETUPDATEDPOLICIES=CheckPolicy "
        "KE_AGM_GETUPDATEDPOLICIESREALTIME=CheckPolicyRealTime "
        "KE_AGM_GETUPDATEDPOLICIESINSTALL=CheckPolicyInstall KE_AGM_TESTINSTALL=SendMessage "
        "KE_AGM_INTEGRATEINSTALL=IntegrationMessage KE_AGM_GETUPDATEDPOLICIESNOTIFICATION=CheckPolicy "
        "KE_AGM_TESTDEVICEID=SendStateInfoEx KE_AGM_TESTINSTALLDEVICEID=StateInfoInstallEx [CheckPolicyCritical] "
        "ENCRYPTED_UP=TRUE COMPRESSED_UP=FALSE ENCRYPTED_DOWN=FALSE COMPRESSED_DOWN=TRUE [SendMinorMessage] "
        "ENCRYPTED_UP=TRUE COMPRESSED_UP=TRUE SERVER= [CheckPolicy] ENCRYPTED_UP=TRUE COMPRESSED_UP=FALSE "
        "ENCRYPTED_DOWN=FALSE COMPRESSED_DOWN=TRUE SERVER= [CheckPolicyRealTime] ENCRYPTED_UP=TRUE "
        "COMPRESSED_UP=FALSE ENCRYPTED_DOWN=FALSE COMPRESSED_DOWN=TRUE SERVER= [CheckPolicyInstall] "
        "ENCRYPTED_UP=TRUE COMPRESSED_UP=FALSE ENCRYPTED_DOWN=FALSE COMPRESSED_DOWN=TRUE SERVER= "
        "[StateInfoInstall] ENCRYPTED_UP=TRUE COMPRESSED_UP=TRUE SERVER= [IntegrationMessageInstall] "
        "ENCRYPTED_UP=TRUE COMPRESSED_UP=FALSE ENCRYPTED_DOWN=FALSE COMPRESSED_DOWN=FALSE SERVER= SERVER_NS= "
        "SERVER_AP= [SendStateInfoEx] ENCRYPTED_UP=TRUE COMPRESSED_UP=TRUE ENCRYPTED_DOWN=FALSE "
        "COMPRESSED_DOWN=FALSE SERVER= [StateInfoInstallEx] ENCRYPTED_UP=TRUE COMPRESSED_UP=TRUE "
        "ENCRYPTED_DOWN=FALSE COMPRESSED_DOWN=FALSE SERVER=");
  const auto files = tree.Files();
  CHECK(files.size() == 14);
  CHECK(tree.Upgrade("\\") == KE_SUCCESS);
  CHECK(tree.Files() == files);
}

TEST_CASE("upgrade start: message types that exist stay, whatever their value; the policy actions are kept current") {
  const Installation tree;
  const std::string address(600, 'a');
  support::WriteFile(tree.Path(kMessages),
                     "[MESSAGE_TYPES]\nKE_AGM_ERRORINFO=-1\nKE_AGM_NETINFO=\nKE_AGM_EVENTINFO=abc\n"
                     "KE_AGM_GETUPDATEDPOLICIES=7\nKE_AGM_GETUPDATEDPOLICIESREALTIME=8\nKE_AGM_TESTINSTALL=9\n"
                     "[CheckPolicyRealTime]\nENCRYPTED_UP=FALSE\nSERVER=own\n[StateInfoInstall]\nSERVER=state\n"
                     "[SendMessage]\nSERVER=send\n[IntegrationMessage]\nSERVER_AP=a\nSERVER_NS=n\nSERVER=" +
                         address);
  CHECK(tree.Upgrade() == KE_SUCCESS);
  CHECK(tree.Lines(kMessages) ==
        "[MESSAGE_TYPES] KE_AGM_ERRORINFO=1008 KE_AGM_NETINFO= KE_AGM_EVENTINFO=abc KE_AGM_GETUPDATEDPOLICIES=7 "
        "KE_AGM_GETUPDATEDPOLICIESREALTIME=8 KE_AGM_TESTINSTALL=9 KE_AGM_GETUPDATEDPOLICIESCRITICAL=1011 "
        "KE_AGM_URLMONITORINFO=1013 KE_AGM_GETUPDATEDPOLICIESINSTALL=1015 KE_AGM_INTEGRATEINSTALL=1018 "
        "KE_AGM_GETUPDATEDPOLICIESNOTIFICATION=1019 KE_AGM_TESTDEVICEID=1020 KE_AGM_TESTINSTALLDEVICEID=1021 "
        "[CheckPolicyRealTime] ENCRYPTED_UP=TRUE SERVER=own COMPRESSED_UP=FALSE ENCRYPTED_DOWN=FALSE "
        "COMPRESSED_DOWN=TRUE [StateInfoInstall] SERVER=state [SendMessage] SERVER=send [IntegrationMessage] "
        "SERVER_AP=a SERVER_NS=n SERVER=" +
            address +
            " [MESSAGE] KE_AGM_ERRORINFO=SendMessage "
            "KE_AGM_GETUPDATEDPOLICIESCRITICAL=CheckPolicyCritical KE_AGM_URLMONITORINFO=SendMessage "
            "KE_AGM_GETUPDATEDPOLICIESINSTALL=CheckPolicyInstall KE_AGM_INTEGRATEINSTALL=IntegrationMessage "
            "KE_AGM_GETUPDATEDPOLICIESNOTIFICATION=CheckPolicy KE_AGM_TESTDEVICEID=SendStateInfoEx "
            "KE_AGM_TESTINSTALLDEVICEID=StateInfoInstallEx [CheckPolicyCritical] ENCRYPTED_UP=TRUE COMPRESSED_UP=FALSE "
            "ENCRYPTED_DOWN=FALSE COMPRESSED_DOWN=TRUE [SendMinorMessage] ENCRYPTED_UP=TRUE COMPRESSED_UP=TRUE "
            "SERVER=send [CheckPolicy] ENCRYPTED_UP=TRUE COMPRESSED_UP=FALSE ENCRYPTED_DOWN=FALSE COMPRESSED_DOWN=TRUE "
            "SERVER=send [CheckPolicyInstall] ENCRYPTED_UP=TRUE COMPRESSED_UP=FALSE ENCRYPTED_DOWN=FALSE "
            "COMPRESSED_DOWN=TRUE SERVER=send [IntegrationMessageInstall] ENCRYPTED_UP=TRUE COMPRESSED_UP=FALSE "
            "ENCRYPTED_DOWN=FALSE COMPRESSED_DOWN=FALSE SERVER=" +
            address.substr(0, 511) +
            " SERVER_NS=n SERVER_AP=a "
            "[SendStateInfoEx] ENCRYPTED_UP=TRUE COMPRESSED_UP=TRUE ENCRYPTED_DOWN=FALSE COMPRESSED_DOWN=FALSE SERVER= "
            "[StateInfoInstallEx] ENCRYPTED_UP=TRUE COMPRESSED_UP=TRUE ENCRYPTED_DOWN=FALSE COMPRESSED_DOWN=FALSE "
            "SERVER=state");
}

TEST_CASE("upgrade start: settings that exist are overwritten, kept or removed, each as its row says") {
  const std::string nil = "{00000000-0000-0000-0000-000000000000}";
  const struct {
    std::string file, before, after;  // the latter up to what an upgrade appends in any case
  } rows[] = {
      {"KELTVEVT/TVEvent.ini", "[DiscriminateKEC]\nEvent013=0\nEvent014=0\n",
       "[DiscriminateKEC] Event013=1 Event014=0 Event002=1 Event010=1 [DiscriminateKEAGENT] Event013=1 Event002=1 "
       "Event010=1 [WindowsEventKEAGENT] Level013=0 Level002=0 Level010=0 [WindowsEventKEC] Level013=0 Level002=0 "
       "Level010=0 [SERVERMOPKEAGENT] Level013=15 Level002=15 Level010=15 [SERVERMOPKEC] Level013=15 Level002=15 "
       "Level010=15"},
      {"KESAgent/KesAgent.conf", "[MESSAGE_RETRIES]\n500=7\n501=-1\n[ConfigOptions]\nReloadFromFile=TRUE\n",
       "[MESSAGE_RETRIES] 500=7 501=2 502=2 [ConfigOptions] ReloadFromFile=FALSE [Proxy] AskInterval=21600"},
      {"KELUpg/KelUpg.ini", "[GENERAL]\nUserAllowedReboot=1\nA=b\n[HOME_PROTECTIONS]\nC=d\n[PRODUCTS]\nPCSM=e\n",
       "[GENERAL] A=b [PRODUCTS] PCSM=KELPCSMInst.dll RCM=KELRCMInst.dll"},
      {"KELSysCf/KelSysCf.dat", "[POLICIES]\nPOLICY_110=x\nPOLICY_55=x\nPOLICY_155=-1\n",
       "[POLICIES] POLICY_110=" + nil + " POLICY_55=x POLICY_155=" + nil + " POLICY_255=" + nil + " POLICY_355=" + nil +
           " POLICY_51=" + nil + " POLICY_200=" + nil + " [MSI_DATA] "},
  };
  const Installation tree;
  for (const auto& row : rows) support::WriteFile(tree.Path(row.file), row.before);
  CHECK(tree.Upgrade() == KE_SUCCESS);
  for (const auto& row : rows) {
    CAPTURE(std::string(row.file));
    CHECK(tree.Lines(row.file).substr(0, row.after.size()) == row.after);
  }
}

TEST_CASE("upgrade start: a lone backslash is no directory, a missing one fails") {
  const Installation tree;
  for (const char* nothing : {static_cast<const char*>(nullptr), "", "\\"}) {
    CHECK(CALL(tree.Load(), KE_UpgradeStart)(nothing) == KE_MISSING_ARGUMENT);
  }
  CHECK(tree.Upgrade("\\absent") == KE_STORE_UNUSABLE);
  CHECK(tree.Files().empty());
}

TEST_CASE("upgrade start: a file that cannot be written fails the upgrade, and keeps nothing else from being done") {
  const Installation whole;
  REQUIRE(whole.Upgrade() == KE_SUCCESS);
  const auto files = whole.Files();
  for (const auto& [blocked, content] : files) {
    CAPTURE(blocked);
    Installation tree;
    tree.AddDevkit("TvLogSys.dll", "Common");
    support::WriteFile(tree.Path("KELUtils/KELUTILS.INI"), "[LOG]\nLEVELLOG=20\n");
    fs::create_directories(tree.Path(blocked));
    CHECK(tree.Upgrade() == KE_STORE_UNUSABLE);
    const std::string log = tree.Lines("KELUtils/KELUtils.log");
    CHECK((log.find(" Zum.sig.") != log.npos) == (blocked == "KELUpd/KelUpd.ini"));
    CHECK(log.find("Zumex.sig") == log.npos);  // the first failure has ended the chain
    for (const char* own : {"KELUtils.log", "KELUTILS.INI"}) fs::remove(tree.Path("KELUtils") / own);
    auto expected = files;
    expected.erase(blocked);
    auto done = tree.Files();
    for (auto* tokens : {&expected, &done}) tokens->erase("KESLPMNG/Config/plugins.tok");  // names its own root
    CHECK(done == expected);
  }
}

TEST_CASE("secure server: both integration actions, in silence; a null server removes the two servers") {
  const std::string base = SERVICE_BASE_ADDRESS "/Orvane/Services/Agents/Facade/SecureMessageDispatcher";
  const std::string names = " SERVER_NS=" + base + " SERVER_AP=" + base + "/ISecureMessages";
  Installation tree;
  tree.AddDevkit("TvLogSys.dll", "Common");
  support::WriteFile(tree.Path("KELUtils/KELUTILS.INI"), "[LOG]\nLEVELLOG=20\n");
  const LoadedDll dll = tree.Load();
  const auto set = CALL(dll, KE_SetURLSecureServer);
  CHECK(set("https://s") == KE_SUCCESS);
  CHECK(tree.Lines(kMessages) ==
        "[IntegrationMessage] SERVER=https://s" + names + " [IntegrationMessageInstall] SERVER=https://s" + names);
  CHECK(set(nullptr) == KE_SUCCESS);
  CHECK(tree.Lines(kMessages) == "[IntegrationMessage]" + names + " [IntegrationMessageInstall]" + names);
  fs::remove(tree.Path(kMessages));
  fs::create_directory(tree.Path(kMessages));
  CHECK(set("https://s") == KE_STORE_UNUSABLE);
  CHECK_FALSE(fs::exists(tree.Path("KELUtils/KELUtils.log")));
}

TEST_CASE("agent server: the record keeps everything but the address, which is cut to its field") {
  Installation tree;
  const LoadedDll dll = tree.Load();
  const auto set = CALL(dll, KE_SetURLServer);
  CHECK(set("https://s") == KE_AGENT_NOT_LOADED);
  std::string lacking = support::ReadFile(support::TestFolder() / "FakeKELAGAPI.dll");
  for (size_t at; (at = lacking.find("KE_AGAPI_SetConfig")) != std::string::npos;) lacking[at + 17] = 'f';
  support::WriteFile(tree.Path("Common/KELAGAPI.dll"), lacking);
  CHECK(set("https://s") == KE_AGENT_NOT_LOADED);
  CHECK(GetModuleHandleA("KELAGAPI.dll") == nullptr);
  tree.AddFake("FakeKELAGAPI", "Common/KELAGAPI.dll");
  {
    const LoadedDll agent(tree.Path("Common/KELAGAPI.dll"));
    FakeConfigState& config = *CALL(agent, FakeConfig)();
    const struct {
      std::uint32_t readError, writeError;
      const char* server;
      KE_RESULT result;
    } rows[] = {{0, 0, nullptr, KE_MISSING_ARGUMENT},
                {5, 0, "https://s", KE_AGENT_READ_FAILED},
                {0, 6, "https://s", KE_AGENT_WRITE_FAILED}};
    std::memset(config.record, 'x', sizeof config.record);
    for (const auto& row : rows) {
      config.readError = row.readError;
      config.writeError = row.writeError;
      CHECK(set(row.server) == row.result);
      CHECK(std::string(config.record, sizeof config.record) == std::string(2564, 'x'));
    }
    CHECK(CALL(agent, FakeCalls)("KE_AGAPI_Initialize") == 2);
    config.writeError = 0;
    for (const auto& server : {std::string(600, 's'), std::string(511, 's'), std::string("https://s"), std::string()}) {
      CHECK(set(server.c_str()) == KE_SUCCESS);
      CHECK(std::string(config.record, 1028) == std::string(1028, 'x'));
      CHECK(std::string(config.record + 1028) == server.substr(0, 511));
      CHECK(std::string(config.record + 1540, 1024) == std::string(1024, 'x'));
    }
    CHECK((config.cls == 1 && config.item == 6 && config.size == 2564 && config.firstWord == 0));
    CHECK(CALL(agent, FakeCalls)("KE_AGAPI_Finalize") == 6);
  }
  CHECK(GetModuleHandleA("KELAGAPI.dll") == nullptr);
}
