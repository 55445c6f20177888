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
  const std::string address(600, 's'), cut(511, 's');
  support::WriteFile(tree.Path(kMessages),
                     "[MESSAGE_TYPES]\nKE_AGM_ERRORINFO=-1\nKE_AGM_NETINFO=\nKE_AGM_EVENTINFO=abc\n"
                     "KE_AGM_GETUPDATEDPOLICIES=7\nKE_AGM_GETUPDATEDPOLICIESREALTIME=8\nKE_AGM_TESTINSTALL=9\n"
                     "[CheckPolicyRealTime]\nENCRYPTED_UP=FALSE\nSERVER=own\n[StateInfoInstall]\nSERVER=state\n"
                     "[IntegrationMessage]\nSERVER=i\nSERVER_NS=n\nSERVER_AP=a\n[SendMessage]\nSERVER=" +
                         address + "\n");
  CHECK(tree.Upgrade() == KE_SUCCESS);
  CHECK(tree.Lines(kMessages) ==
        "[MESSAGE_TYPES] KE_AGM_ERRORINFO=1008 KE_AGM_NETINFO= KE_AGM_EVENTINFO=abc KE_AGM_GETUPDATEDPOLICIES=7 "
        "KE_AGM_GETUPDATEDPOLICIESREALTIME=8 KE_AGM_TESTINSTALL=9 KE_AGM_GETUPDATEDPOLICIESCRITICAL=1011 "
        "KE_AGM_URLMONITORINFO=1013 KE_AGM_GETUPDATEDPOLICIESINSTALL=1015 KE_AGM_INTEGRATEINSTALL=1018 "
        "KE_AGM_GETUPDATEDPOLICIESNOTIFICATION=1019 KE_AGM_TESTDEVICEID=1020 KE_AGM_TESTINSTALLDEVICEID=1021 "
        "[CheckPolicyRealTime] ENCRYPTED_UP=TRUE SERVER=own COMPRESSED_UP=FALSE ENCRYPTED_DOWN=FALSE "
        "COMPRESSED_DOWN=TRUE [StateInfoInstall] SERVER=state [IntegrationMessage] SERVER=i SERVER_NS=n "
        "SERVER_AP=a [SendMessage] SERVER=" +
            address +
            " [MESSAGE] KE_AGM_ERRORINFO=SendMessage "
            "KE_AGM_GETUPDATEDPOLICIESCRITICAL=CheckPolicyCritical KE_AGM_URLMONITORINFO=SendMessage "
            "KE_AGM_GETUPDATEDPOLICIESINSTALL=CheckPolicyInstall KE_AGM_INTEGRATEINSTALL=IntegrationMessage "
            "KE_AGM_GETUPDATEDPOLICIESNOTIFICATION=CheckPolicy KE_AGM_TESTDEVICEID=SendStateInfoEx "
            "KE_AGM_TESTINSTALLDEVICEID=StateInfoInstallEx [CheckPolicyCritical] ENCRYPTED_UP=TRUE "
            "COMPRESSED_UP=FALSE ENCRYPTED_DOWN=FALSE COMPRESSED_DOWN=TRUE [SendMinorMessage] ENCRYPTED_UP=TRUE "
            "COMPRESSED_UP=TRUE SERVER=" +
            cut +
            " [CheckPolicy] ENCRYPTED_UP=TRUE COMPRESSED_UP=FALSE "
            "ENCRYPTED_DOWN=FALSE COMPRESSED_DOWN=TRUE SERVER=" +
            cut +
            " [CheckPolicyInstall] ENCRYPTED_UP=TRUE "
            "COMPRESSED_UP=FALSE ENCRYPTED_DOWN=FALSE COMPRESSED_DOWN=TRUE SERVER=" +
            cut +
            " [IntegrationMessageInstall] "
            "ENCRYPTED_UP=TRUE COMPRESSED_UP=FALSE ENCRYPTED_DOWN=FALSE COMPRESSED_DOWN=FALSE SERVER=i SERVER_NS=n "
            "SERVER_AP=a [SendStateInfoEx] ENCRYPTED_UP=TRUE COMPRESSED_UP=TRUE ENCRYPTED_DOWN=FALSE "
            "COMPRESSED_DOWN=FALSE SERVER= [StateInfoInstallEx] ENCRYPTED_UP=TRUE COMPRESSED_UP=TRUE "
            "ENCRYPTED_DOWN=FALSE COMPRESSED_DOWN=FALSE SERVER=state");
}

TEST_CASE("upgrade start: the settings of the other components") {
  const struct {
    std::string file, before, after;
  } rows[] = {
      {"KELTVEVT/TVEvent.ini", "[DiscriminateKEC]\nEvent013=0\nEvent014=0\n",
       "[DiscriminateKEC] Event013=1 Event014=0 Event002=1 Event010=1 [DiscriminateKEAGENT] Event013=1 "
       "Event002=1 Event010=1 [WindowsEventKEAGENT] Level013=0 Level002=0 Level010=0 [WindowsEventKEC] "
       "Level013=0 Level002=0 Level010=0 [SERVERMOPKEAGENT] Level013=15 Level002=15 Level010=15 [SERVERMOPKEC] "
       "Level013=15 Level002=15 Level010=15"},
      {"KESAgent/LPTokens.dat", "",
       "[MODULE_TYPES] KE_AGMSRC_TVEVT=9 KE_AGMSRC_SNET=10 KE_AGMSRC_NTF=11 [TOKENS] KE_AGMSRC_TVEVT=KelTvEvt "
       "KE_AGMSRC_SNET=KelSNet KE_AGMSRC_NTF=KelNtf"},
      {"KELUpd/KelUpd.ini", "",
       "[OPTIONAL_FILES] Zum.sig=1,0 Zumex.sig=1024,1 exeid.sig=65536,1 dcrc.sig=65536,5 dcrcpe.sig=65536,6 "
       "f2k.sig=65536,7 f2kpd.sig=65536,8 pe.sig=65536,9 string.sig=65536,10 macro.sig=65536,11 "
       "cookies.sig=65536,12 plug.sig=65536,13 nanoconfig.sig=65536,15 storeps.sig=65536,16 storegw.sig=65536,17 "
       "djid.sig=65536,18 f20.sig=65536,20 eng.sig=65536,22 ruleskre.sig=65536,24 rulesfw.sig=65536,28 "
       "plugpcc.sig=65536,29 mv.sig=65536,51 firmdig.sig=65536,52"},
      {"KESAgent/KesAgent.conf", "[MESSAGE_RETRIES]\n500=7\n501=-1\n[ConfigOptions]\nReloadFromFile=TRUE\n",
       "[MESSAGE_RETRIES] 500=7 501=2 502=2 [ConfigOptions] ReloadFromFile=FALSE [Proxy] AskInterval=21600"},
      {"KELUpg/KelUpg.ini", "[GENERAL]\nUserAllowedReboot=1\nA=b\n[HOME_PROTECTIONS]\nC=d\n[PRODUCTS]\nPCSM=e\n",
       "[GENERAL] A=b [PRODUCTS] PCSM=KELPCSMInst.dll RCM=KELRCMInst.dll"},
      {"KELUpg/Settings.ini", "", "[LANGUAGES_CODES] 6=1035 16=1045"},
      {"KELConf/KelConf.ini", "",
       "[TYPES_301] KELTASK=True [TYPES_302] KELTASK=True [TYPES_303] KELTASK=True [TYPES_110] KELSYSCF=True "
       "[TYPES_55] KELSYSCF=True [TYPES_155] KELSYSCF=True [TYPES_255] KELSYSCF=True [TYPES_355] KELSYSCF=True"},
      {"KELReport/KelReport.ini", "", "[GENERAL] MaxElementsToSend=25"},
      {"KELQtine/KelQtine.ini", "", "[GENERAL] MaxElementsToSend=25"},
      {"KELSNET/KelSNet.ini", "[GENERAL]\nMaxElementsToSend=9\n", "[GENERAL] MaxElementsToSend=50"},
      {"KELSysCf/KelSysCf.dat", "[POLICIES]\nPOLICY_110=x\nPOLICY_55=x\nPOLICY_155=-1\n",
       "[POLICIES] POLICY_110={00000000-0000-0000-0000-000000000000} POLICY_55=x "
       "POLICY_155={00000000-0000-0000-0000-000000000000} POLICY_255={00000000-0000-0000-0000-000000000000} "
       "POLICY_355={00000000-0000-0000-0000-000000000000} POLICY_51={00000000-0000-0000-0000-000000000000} "
       "POLICY_200={00000000-0000-0000-0000-000000000000} [MSI_DATA] "
       "OSIDList=9;10;11;12;13;14;15;16;17;18;19;20;21;22;23;24;25;26;27;43 [OS_TYPE] WSList=9;15;16;17;18;19;28;"
       "29;30;31;32;33;34;35;36;37;38;46;47;48;49;50;51;52;53;54;55;56;64;65;66;67;73;74;75;76;82;83;84;85;86;87;"
       "88;89;95;96;97;98;99;100 SRVList=10;11;12;13;14;20;21;22;23;24;25;26;27;39;40;43;44;45;57;58;59;60;61;62;"
       "63;68;69;70;71;72;77;78;79;80;81;90;91;92;93;94;101;102;103;104;105"},
      {"KELTask/KelTask.ini", "",
       "[CONFIG_TYPES] CONFIG_301={00000000-0000-0000-0000-000000000000} "
       "CONFIG_302={00000000-0000-0000-0000-000000000000} CONFIG_303={00000000-0000-0000-0000-000000000000}"},
  };
  const Installation tree;
  for (const auto& row : rows) {
    if (!row.before.empty()) support::WriteFile(tree.Path(row.file), row.before);
  }
  CHECK(tree.Upgrade() == KE_SUCCESS);
  for (const auto& row : rows) {
    CAPTURE(row.file);
    CHECK(tree.Lines(row.file) == row.after);
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
  const std::string base = "https://console.invalid/Orvane/Services/Agents/Facade/SecureMessageDispatcher";
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
    CHECK((config.cls == 1 && config.item == 6 && config.size == 2564));
    CHECK(CALL(agent, FakeCalls)("KE_AGAPI_Finalize") == 6);
  }
  CHECK(GetModuleHandleA("KELAGAPI.dll") == nullptr);
}
