#include <doctest/doctest.h>

#include <algorithm>
#include <cstring>
#include <map>
#include <sstream>
#include <string>

#include "KELUtils.h"
#include "support/product_tree.h"

using support::LoadedDll;

namespace {

namespace fs = std::filesystem;

constexpr char kMessages[] = "KESAgent/KE_AGPRX.dat";

// An installation with the folders of all modules, empty but for the files that a case puts there.
struct Installation : support::ProductTree {
  Installation() {
    for (const char* folder :
         {"KELTVEVT", "KELUpd", "KELUpg", "KELConf", "KELReport", "KELQtine", "KELSNET", "KELTask"})
      fs::create_directories(Path(folder));
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

  void CheckParts(std::initializer_list<std::string> parts) const {
    for (const std::string& part : parts) CHECK_MESSAGE(Lines(kMessages).find(part) != std::string::npos, part);
  }

  // The files that an upgrade writes, with their content.
  std::map<std::string, std::string> Files() const {
    std::map<std::string, std::string> files;
    for (const auto& entry : fs::recursive_directory_iterator(Root())) {
      if (entry.is_regular_file() && entry.path().extension() != ".dll")
        files[fs::relative(entry.path(), Root()).generic_string()] = support::ReadFile(entry.path());
    }
    return files;
  }
};

}  // namespace

TEST_CASE("upgrade start: a message type or a file that a new installation lacks; a second start that changes it") {
  const Installation tree;
  CHECK(CALL(tree.Load(), KE_UpgradeStart)("\\") == KE_MISSING_ARGUMENT);
  CHECK((tree.Upgrade("\\absent") == KE_STORE_UNUSABLE && tree.Files().empty() && tree.Upgrade() == KE_SUCCESS));
  const std::string lines = tree.Lines(kMessages);
  CHECK((std::ranges::count(lines, '=') == 68 && std::ranges::count(lines, '[') == 11));
  tree.CheckParts(
      {"KE_AGM_GETUPDATEDPOLICIES=1000 KE_AGM_GETUPDATEDPOLICIESREALTIME=1014 ",
       "KE_AGM_TESTDEVICEID=1020 KE_AGM_TESTINSTALLDEVICEID=1021 [MESSAGE] KE_AGM_ERRORINFO=SendMessage ",
       "KE_AGM_GETUPDATEDPOLICIESNOTIFICATION=CheckPolicy KE_AGM_TESTDEVICEID=SendStateInfoEx ",
       " [CheckPolicyCritical] ENCRYPTED_UP=TRUE COMPRESSED_UP=FALSE ENCRYPTED_DOWN=FALSE COMPRESSED_DOWN=TRUE [SendM",
       " [StateInfoInstall] ENCRYPTED_UP=TRUE COMPRESSED_UP=TRUE SERVER= [IntegrationMessageInstall] ",
       "COMPRESSED_DOWN=FALSE SERVER= SERVER_NS= SERVER_AP= [SendStateInfoEx] ENCRYPTED_UP=TRUE "});
  const auto files = tree.Files();
  CHECK((files.size() == 14 && tree.Upgrade("\\") == KE_SUCCESS && tree.Files() == files));
}

TEST_CASE("upgrade start: a message type that exists is changed, or a policy action is not kept current") {
  const Installation tree;
  const std::string address(600, 'a'), policy = "ENCRYPTED_UP=TRUE COMPRESSED_UP=FALSE ENCRYPTED_DOWN=FALSE ";
  support::WriteFile(tree.Path(kMessages),
                     "[MESSAGE_TYPES]\nKE_AGM_ERRORINFO=-1\nKE_AGM_NETINFO=\nKE_AGM_EVENTINFO=abc\n"
                     "KE_AGM_GETUPDATEDPOLICIES=7\nKE_AGM_GETUPDATEDPOLICIESREALTIME=8\nKE_AGM_TESTINSTALL=9\n"
                     "[CheckPolicyRealTime]\nENCRYPTED_UP=FALSE\nSERVER=own\n[StateInfoInstall]\nSERVER=state\n"
                     "[SendMessage]\nSERVER=send\n[IntegrationMessage]\nSERVER_AP=a\nSERVER_NS=n\nSERVER=" +
                         address);
  CHECK(tree.Upgrade() == KE_SUCCESS);
  CHECK(tree.Lines(kMessages).ends_with(" SERVER=state"));
  tree.CheckParts(
      {"[MESSAGE_TYPES] KE_AGM_ERRORINFO=1008 KE_AGM_NETINFO= KE_AGM_EVENTINFO=abc KE_AGM_GETUPDATEDPOLICIES=7 "
       "KE_AGM_GETUPDATEDPOLICIESREALTIME=8 KE_AGM_TESTINSTALL=9 KE_AGM_GETUPDATEDPOLICIESCRITICAL=1011 ",
       " [CheckPolicyRealTime] ENCRYPTED_UP=TRUE SERVER=own COMPRESSED_UP=FALSE ENCRYPTED_DOWN=FALSE ",
       " [StateInfoInstall] SERVER=state [SendMessage] SERVER=send [IntegrationMessage] SERVER_AP=a ",
       " SERVER_NS=n SERVER=" + address + " [MESSAGE] KE_AGM_ERRORINFO=SendMessage KE_AGM_GETUPDATEDPOLICIESCRITICAL=",
       " [SendMinorMessage] ENCRYPTED_UP=TRUE COMPRESSED_UP=TRUE SERVER=send [CheckPolicy] " + policy +
           "COMPRESSED_DOWN=TRUE SERVER=send [CheckPolicyInstall] " + policy +
           "COMPRESSED_DOWN=TRUE SERVER=send [IntegrationMessageInstall] " + policy +
           "COMPRESSED_DOWN=FALSE SERVER=" + address.substr(0, 511) + " SERVER_NS=n SERVER_AP=a [SendStateInfoEx] "});
}

TEST_CASE("upgrade start: a setting that exists is overwritten, kept or removed against its row") {
  const std::string nil = "{00000000-0000-0000-0000-000000000000}";
  const struct {
    std::string file, before, after;  // the latter up to what an upgrade appends in any case
  } rows[] = {
      {"KELTVEVT/TVEvent.ini", "[DiscriminateKEC]\nEvent013=0\nEvent014=0\n",
       "[DiscriminateKEC] Event013=1 Event014=0 Event002=1 Event010=1 [DiscriminateKEAGENT] Event013=1 Event002=1 "
       "Event010=1 [WindowsEventKEAGENT] Level013=0 Level002=0 Level010=0 [WindowsEventKEC] Level013=0 "},
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

TEST_CASE("upgrade start: a file that cannot be written is no failure, or keeps others from being written") {
  const Installation whole;
  REQUIRE(whole.Upgrade() == KE_SUCCESS);
  const auto files = whole.Files();
  for (const auto& [blocked, content] : files) {
    CAPTURE(blocked);
    Installation tree;
    tree.TurnLogOn();
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

TEST_CASE("secure server: an integration action without it, or a trace of it") {
  const std::string base = SERVICE_BASE_ADDRESS "/Orvane/Services/Agents/Facade/SecureMessageDispatcher";
  const std::string names = " SERVER_NS=" + base + " SERVER_AP=" + base + "/ISecureMessages";
  Installation tree;
  tree.TurnLogOn();
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
