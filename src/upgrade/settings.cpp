#include "upgrade/settings.h"

namespace upgrade {

namespace {

using enum Change;
using enum Failure;

constexpr char kNilGuid[] = "{00000000-0000-0000-0000-000000000000}";

// Releases of Windows, by the product's numbers.
constexpr char kOsIdList[] = "9;10;11;12;13;14;15;16;17;18;19;20;21;22;23;24;25;26;27;43";
constexpr char kWorkstationList[] =
    "9;15;16;17;18;19;28;29;30;31;32;33;34;35;36;37;38;46;47;48;49;50;51;52;53;54;55;56;64;65;66;67;73;"
    "74;75;76;82;83;84;85;86;87;88;89;95;96;97;98;99;100";
constexpr char kServerList[] =
    "10;11;12;13;14;20;21;22;23;24;25;26;27;39;40;43;44;45;57;58;59;60;61;62;63;68;69;70;71;72;77;78;79;"
    "80;81;90;91;92;93;94;101;102;103;104;105";

// clang-format off
constexpr Setting kEventAndTokenSettings[] = {
    {"KELTVEVT", "TVEvent.ini",  "DiscriminateKEAGENT", "Event013",        "1"},
    {"KELTVEVT", "TVEvent.ini",  "DiscriminateKEC",     "Event013",        "1"},
    {"KELTVEVT", "TVEvent.ini",  "WindowsEventKEAGENT", "Level013",        "0"},
    {"KELTVEVT", "TVEvent.ini",  "WindowsEventKEC",     "Level013",        "0"},
    {"KELTVEVT", "TVEvent.ini",  "SERVERMOPKEAGENT",    "Level013",        "15"},
    {"KELTVEVT", "TVEvent.ini",  "SERVERMOPKEC",        "Level013",        "15"},
    {"KELTVEVT", "TVEvent.ini",  "DiscriminateKEAGENT", "Event002",        "1"},
    {"KELTVEVT", "TVEvent.ini",  "DiscriminateKEC",     "Event002",        "1"},
    {"KELTVEVT", "TVEvent.ini",  "WindowsEventKEAGENT", "Level002",        "0"},
    {"KELTVEVT", "TVEvent.ini",  "WindowsEventKEC",     "Level002",        "0"},
    {"KELTVEVT", "TVEvent.ini",  "SERVERMOPKEAGENT",    "Level002",        "15"},
    {"KELTVEVT", "TVEvent.ini",  "SERVERMOPKEC",        "Level002",        "15"},
    {"KELTVEVT", "TVEvent.ini",  "DiscriminateKEAGENT", "Event010",        "1"},
    {"KELTVEVT", "TVEvent.ini",  "DiscriminateKEC",     "Event010",        "1"},
    {"KELTVEVT", "TVEvent.ini",  "WindowsEventKEAGENT", "Level010",        "0"},
    {"KELTVEVT", "TVEvent.ini",  "WindowsEventKEC",     "Level010",        "0"},
    {"KELTVEVT", "TVEvent.ini",  "SERVERMOPKEAGENT",    "Level010",        "15"},
    {"KELTVEVT", "TVEvent.ini",  "SERVERMOPKEC",        "Level010",        "15"},
    {"KESAgent", "LPTokens.dat", "MODULE_TYPES",        "KE_AGMSRC_TVEVT", "9"},
    {"KESAgent", "LPTokens.dat", "TOKENS",              "KE_AGMSRC_TVEVT", "KelTvEvt"},
    {"KESAgent", "LPTokens.dat", "MODULE_TYPES",        "KE_AGMSRC_SNET",  "10"},
    {"KESAgent", "LPTokens.dat", "TOKENS",              "KE_AGMSRC_SNET",  "KelSNet"},
    {"KESAgent", "LPTokens.dat", "MODULE_TYPES",        "KE_AGMSRC_NTF",   "11"},
    {"KESAgent", "LPTokens.dat", "TOKENS",              "KE_AGMSRC_NTF",   "KelNtf"},
};

constexpr OptionalFile kOptionalFiles[] = {
    {"Zum.sig",        "1,0"},
    {"Zumex.sig",      "1024,1"},
    {"exeid.sig",      "65536,1"},
    {"dcrc.sig",       "65536,5"},
    {"dcrcpe.sig",     "65536,6"},
    {"f2k.sig",        "65536,7"},
    {"f2kpd.sig",      "65536,8"},
    {"pe.sig",         "65536,9"},
    {"string.sig",     "65536,10"},
    {"macro.sig",      "65536,11"},
    {"cookies.sig",    "65536,12"},
    {"plug.sig",       "65536,13"},
    {"nanoconfig.sig", "65536,15"},
    {"storeps.sig",    "65536,16"},
    {"storegw.sig",    "65536,17"},
    {"djid.sig",       "65536,18"},
    {"f20.sig",        "65536,20"},
    {"eng.sig",        "65536,22"},
    {"ruleskre.sig",   "65536,24"},
    {"rulesfw.sig",    "65536,28"},
    {"plugpcc.sig",    "65536,29"},
    {"mv.sig",         "65536,51"},
    {"firmdig.sig",    "65536,52"},
};

constexpr Setting kAgentSettings[] = {
    {"KESAgent", "KesAgent.conf", "Proxy",           "AskInterval",    "21600"},
    {"KESAgent", "KesAgent.conf", "MESSAGE_RETRIES", "500",            "2", kSetWhenAbsent, kIgnored},
    {"KESAgent", "KesAgent.conf", "MESSAGE_RETRIES", "501",            "2", kSetWhenAbsent, kIgnored},
    {"KESAgent", "KesAgent.conf", "MESSAGE_RETRIES", "502",            "2", kSetWhenAbsent, kIgnored},
    {"KESAgent", "KesAgent.conf", "ConfigOptions",   "ReloadFromFile", "FALSE", kSet, kIgnored},
};

constexpr Setting kModuleSettings[] = {
    {"KELUpg",    "KelUpg.ini",    "GENERAL",          "UserAllowedReboot", nullptr, kRemoveKey, kIgnored},
    {"KELUpg",    "KelUpg.ini",    "HOME_PROTECTIONS", nullptr,             nullptr, kRemoveSection},
    {"KELUpg",    "KelUpg.ini",    "PRODUCTS",         "PCSM",              "KELPCSMInst.dll"},
    {"KELUpg",    "KelUpg.ini",    "PRODUCTS",         "RCM",               "KELRCMInst.dll"},
    {"KELUpg",    "Settings.ini",  "LANGUAGES_CODES",  "6",                 "1035"},
    {"KELUpg",    "Settings.ini",  "LANGUAGES_CODES",  "16",                "1045"},
    {"KELConf",   "KelConf.ini",   "TYPES_301",        "KELTASK",           "True"},
    {"KELConf",   "KelConf.ini",   "TYPES_302",        "KELTASK",           "True"},
    {"KELConf",   "KelConf.ini",   "TYPES_303",        "KELTASK",           "True"},
    {"KELConf",   "KelConf.ini",   "TYPES_110",        "KELSYSCF",          "True"},
    {"KELConf",   "KelConf.ini",   "TYPES_55",         "KELSYSCF",          "True"},
    {"KELConf",   "KelConf.ini",   "TYPES_155",        "KELSYSCF",          "True"},
    {"KELConf",   "KelConf.ini",   "TYPES_255",        "KELSYSCF",          "True"},
    {"KELConf",   "KelConf.ini",   "TYPES_355",        "KELSYSCF",          "True"},
    {"KELReport", "KelReport.ini", "GENERAL",          "MaxElementsToSend", "25"},
    {"KELQtine",  "KelQtine.ini",  "GENERAL",          "MaxElementsToSend", "25"},
    {"KELSNET",   "KelSNet.ini",   "GENERAL",          "MaxElementsToSend", "50"},
    {"KELSysCf",  "KelSysCf.dat",  "POLICIES",         "POLICY_110",        kNilGuid},
    {"KELSysCf",  "KelSysCf.dat",  "POLICIES",         "POLICY_55",         kNilGuid, kSetWhenAbsent},
    {"KELSysCf",  "KelSysCf.dat",  "POLICIES",         "POLICY_155",        kNilGuid, kSetWhenAbsent},
    {"KELSysCf",  "KelSysCf.dat",  "POLICIES",         "POLICY_255",        kNilGuid, kSetWhenAbsent},
    {"KELSysCf",  "KelSysCf.dat",  "POLICIES",         "POLICY_355",        kNilGuid, kSetWhenAbsent},
    {"KELSysCf",  "KelSysCf.dat",  "MSI_DATA",         "OSIDList",          kOsIdList},
    {"KELSysCf",  "KelSysCf.dat",  "OS_TYPE",          "WSList",            kWorkstationList},
    {"KELSysCf",  "KelSysCf.dat",  "OS_TYPE",          "SRVList",           kServerList},
    {"KELSysCf",  "KelSysCf.dat",  "POLICIES",         "POLICY_51",         kNilGuid},
    {"KELSysCf",  "KelSysCf.dat",  "POLICIES",         "POLICY_200",        kNilGuid},
    {"KELTask",   "KelTask.ini",   "CONFIG_TYPES",     "CONFIG_301",        kNilGuid},
    {"KELTask",   "KelTask.ini",   "CONFIG_TYPES",     "CONFIG_302",        kNilGuid},
    {"KELTask",   "KelTask.ini",   "CONFIG_TYPES",     "CONFIG_303",        kNilGuid},
};
// clang-format on

}  // namespace

std::span<const Setting> EventAndTokenSettings() { return kEventAndTokenSettings; }
std::span<const OptionalFile> OptionalFiles() { return kOptionalFiles; }
std::span<const Setting> AgentSettings() { return kAgentSettings; }
std::span<const Setting> ModuleSettings() { return kModuleSettings; }

namespace {

using enum Flag;
using enum Written;
using enum Copied;

constexpr const char* kNoServer = nullptr;

// In the order of the numbers, but 1000 comes after 1013. The second line of a row: the action section, encrypted and
// compressed on the way up, encrypted and compressed on the way down, where the server comes from.
// clang-format off
constexpr MessageType kMessageTypes[] = {
    {"KE_AGM_ERRORINFO",                      "1008", "SendMessage", {}},
    {"KE_AGM_NETINFO",                        "1009", "SendMessage", {}},
    {"KE_AGM_EVENTINFO",                      "1010", "SendMessage", {}},
    {"KE_AGM_GETUPDATEDPOLICIESCRITICAL",     "1011", "CheckPolicyCritical",
     {"CheckPolicyCritical",       kTrue, kFalse, kFalse, kTrue,            kNoServer}},
    {"KE_AGM_URLMONITORINFO",                 "1013", "SendMessage",
     {"SendMinorMessage",          kTrue, kTrue, kNotWritten, kNotWritten,  "SendMessage"}},
    {"KE_AGM_GETUPDATEDPOLICIES",             "1000", "CheckPolicy",
     {"CheckPolicy",               kTrue, kFalse, kFalse, kTrue,            "SendMessage", kEveryRun}},
    {"KE_AGM_GETUPDATEDPOLICIESREALTIME",     "1014", "CheckPolicyRealTime",
     {"CheckPolicyRealTime",       kTrue, kFalse, kFalse, kTrue,            "SendMessage", kEveryRun}},
    {"KE_AGM_GETUPDATEDPOLICIESINSTALL",      "1015", "CheckPolicyInstall",
     {"CheckPolicyInstall",        kTrue, kFalse, kFalse, kTrue,            "SendMessage", kEveryRun}},
    {"KE_AGM_TESTINSTALL",                    "1016", "SendMessage",
     {"StateInfoInstall",          kTrue, kTrue, kNotWritten, kNotWritten,  "SendMessage"}},
    {"KE_AGM_INTEGRATEINSTALL",               "1018", "IntegrationMessage",
     {"IntegrationMessageInstall", kTrue, kFalse, kFalse, kFalse,           "IntegrationMessage", kWithNewMessage,
      kServerAndNames}},
    {"KE_AGM_GETUPDATEDPOLICIESNOTIFICATION", "1019", "CheckPolicy", {}},
    {"KE_AGM_TESTDEVICEID",                   "1020", "SendStateInfoEx",
     {"SendStateInfoEx",           kTrue, kTrue, kFalse, kFalse,            "SendStateInfo"}},
    {"KE_AGM_TESTINSTALLDEVICEID",            "1021", "StateInfoInstallEx",
     {"StateInfoInstallEx",        kTrue, kTrue, kFalse, kFalse,            "StateInfoInstall"}},
};
// clang-format on

void AddFlags(std::vector<MessageChange>& changes, const ActionSection& section) {
  const struct {
    const char* key;
    Flag flag;
  } flags[] = {{"ENCRYPTED_UP", section.encryptedUp},
               {"COMPRESSED_UP", section.compressedUp},
               {"ENCRYPTED_DOWN", section.encryptedDown},
               {"COMPRESSED_DOWN", section.compressedDown}};
  for (const auto& [key, flag] : flags) {
    if (flag != kNotWritten) changes.push_back({section.name, key, flag == kTrue ? "TRUE" : "FALSE"});
  }
}

void AddServer(std::vector<MessageChange>& changes, const ActionSection& section) {
  if (section.serverFrom == nullptr) return;
  changes.push_back({section.name, kServerKey, nullptr, section.serverFrom});
  if (section.copied == kServer) return;
  changes.push_back({section.name, kNamespaceKey, nullptr, section.serverFrom});
  changes.push_back({section.name, kAddressKey, nullptr, section.serverFrom});
}

}  // namespace

std::span<const MessageType> MessageTypes() { return kMessageTypes; }

std::vector<MessageChange> ChangesOf(const MessageType& row, bool listed, bool hasServer) {
  const bool everyRun = row.section.written == kEveryRun;
  std::vector<MessageChange> changes;
  if (!listed) {
    changes.push_back({kTypesSection, row.message, row.type});
    changes.push_back({kActionsSection, row.message, row.action});
  }
  if (everyRun || !listed) AddFlags(changes, row.section);
  if (everyRun ? !hasServer : !listed) AddServer(changes, row.section);
  return changes;
}

}  // namespace upgrade
