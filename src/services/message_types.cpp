#include "services/message_types.h"

namespace services {
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

}  // namespace services
