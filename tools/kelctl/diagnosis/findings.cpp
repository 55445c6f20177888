#include "diagnosis/findings.h"

#include <windows.h>
// After windows.h.
#include <restartmanager.h>

#include <algorithm>
#include <array>

#include "errors.h"
#include "texts.h"
#include "win/owner.h"

namespace kelctl {
namespace {

constexpr FindingCode kCodes[] = {
    {"BACKUP-OLDER", "INTEGRA.BAK holds other values than INTEGRA.DAT",
     "any change writes both again: kelctl set container VALUE"},
    {"DENIED", "access is denied: the finding is unknown", "run kelctl as an administrator"},
    {"DISK-FULL", "hardly any space is left on the disk of the store", "free space on the disk"},
    {"FILE-LOCKED", "another program holds the file open", "end the programs that hold the file"},
    {"IDENTITY-MISSING", "the store has no agent identifier",
     "kelctl repair --dry-run; without a copy that has one, integrate the computer again"},
    {"INSTALL-PATH-MISSING", "the product's install path is not registered: value files cannot be read",
     "install the product again if it uses encrypted value files"},
    {"JOBS-DAMAGED", "the scheduler's list of jobs is not readable", "delete the file, then: kelctl jobs default"},
    {"JOBS-INCOMPLETE", "jobs of the agent are missing", "kelctl jobs default"},
    {"JOBS-MISSING", "the scheduler has no list of jobs", "kelctl jobs default"},
    {"KEYS-DEVELOPMENT", "the build uses the development key blobs, which are not secret",
     "build with the product's key blobs before shipping"},
    {"LOG-LEVEL-0", "the log is at level 0: failures are not recorded", "kelctl log level 20"},
    {"MODULE-64-BIT", "a 64-bit module, which a 32-bit program cannot load", "install the 32-bit module"},
    {"MODULE-INCOMPLETE", "the module lacks functions", "install the module's version that belongs to this library"},
    {"MODULE-MISSING", "the module or program is missing", "install the product again"},
    {"MODULE-NOT-LISTED", "the plug-in is not registered",
     "register the plug-in if the product uses it: kelctl plugin add"},
    {"MODULE-NOT-LOADED", "the module cannot be loaded", "install the module again"},
    {"MODULE-TIMEOUT", "loading the module did not end in time, or ended the program that examined it",
     "install the module again"},
    {"NOT-ELEVATED", "some findings need an administrator", "run kelctl as an administrator"},
    {"PATH-NOT-FULL", "the registered path is not a full path, and is ignored", "register the full path"},
    {"PROGRAM-INVALID", "the file is not a program", "install the program again"},
    {"PROGRAM-UNLISTED", "the file names no existing program", "kelctl init FOLDER"},
    {"READ-ONLY", "the file is read-only: nothing can be stored", "attrib -r FILE, or kelctl repair --writable"},
    {"SETTINGS-INVALID", "the settings file is not an INI file", "delete the file: the defaults apply"},
    {"SETTINGS-MISSING", "the settings file is missing: the defaults apply", "kelctl upgrade start FOLDER writes most"},
    {"SETTINGS-UNREADABLE", "the settings file cannot be read", "check disk and access rights"},
    {"START-DIFFERS", "the start copy belongs to another identity: a repair from it would change the identity",
     "kelctl upgrade complete makes a start copy; do not repair from this one"},
    {"STORE-DAMAGED", "the store is damaged: content is lost", "kelctl repair --dry-run"},
    {"STORE-INCOMPLETE", "the store has fewer sections than an installed agent's; nothing is lost",
     "the installer completes it: agent-id, install-state, integrate"},
    {"STORE-MISSING", "the file is missing",
     "INTEGRA.DAT: kelctl repair --dry-run; INTEGRA.BAK: the next change writes it; INTEGRA.START: kelctl upgrade "
     "complete makes it"},
    {"STORE-NO-CRYPTO", "the store is encrypted, and ApiCr.dll cannot be loaded",
     "put ApiCr.dll into the folder of KELUtils.dll"},
    {"STORE-NOISE", "the store decrypts to noise: it was encrypted with other key blobs, or is damaged",
     "use the library that wrote it; or kelctl repair --dry-run"},
    {"STORE-NOT-DECRYPTED", "the crypto module fails to decrypt the store", "check that ApiCr.dll is the product's"},
    {"STORE-PLAIN", "the store is not encrypted", "any change encrypts it: kelctl set container VALUE"},
    {"STORE-UNREADABLE", "the file cannot be read", "check disk and access rights"},
    {"TOKENS-MISSING", "the file that lists programs for the scheduler is missing", "kelctl init FOLDER"},
    {"UUID-MISSING", "this machine reports no hardware UUID", "the console then knows the machine by other means"},
    {"UUID-PLACEHOLDER", "the hardware UUID is a placeholder that many machines share",
     "have the maker set it, or switch the query off: CheckUUID=false in the section UUID of KELUTILS.INI"},
};

struct HealthForm {
  const char* name;
  const char* colour;  // escape sequence of a console
};

constexpr std::array kHealths = {Health::kOk, Health::kWarning, Health::kUnknown, Health::kFailure};

HealthForm FormOf(Health health) {
  constexpr HealthForm kForms[] = {
      {"ok", "\x1b[32m"}, {"unknown", "\x1b[36m"}, {"warn", "\x1b[33m"}, {"fail", "\x1b[31m"}};
  return kForms[static_cast<int>(health)];
}

const char* RemedyFor(const std::string& code) {
  const auto* const row = std::ranges::find_if(kCodes, [&](const FindingCode& each) { return code == each.code; });
  return row == std::end(kCodes) ? "" : row->remedy;
}

std::string Line(const Finding& finding, std::size_t width, bool colours) {
  const HealthForm form = FormOf(finding.health);
  const std::string state = Padded(form.name, 9);
  std::string line = colours ? form.colour + state + "\x1b[0m" : state;
  line += Padded(finding.subject, width + 2) + WithoutControlCharacters(finding.detail);
  for (const std::string& name : finding.missing) line += " " + name;
  for (const std::string& name : finding.holders)
    line += (&name == finding.holders.data() ? "; held by " : ", ") + name;
  line += (finding.path.empty() ? "" : "  " + finding.path) + "\n";
  if (finding.health == Health::kOk) return line;
  return line + std::string(11, ' ') + "[" + finding.code + "] " + RemedyFor(finding.code) + "\n";
}

auto CountOf(const Findings& findings, Health health) { return std::ranges::count(findings, health, &Finding::health); }

/// The functions of the Restart Manager, which every Windows from Vista on has.
struct RestartManager {
  win::ModuleHandle module{LoadLibraryExW(L"rstrtmgr.dll", nullptr, LOAD_LIBRARY_SEARCH_SYSTEM32)};
  decltype(&RmStartSession) start = Find<decltype(&RmStartSession)>("RmStartSession");
  decltype(&RmRegisterResources) add = Find<decltype(&RmRegisterResources)>("RmRegisterResources");
  decltype(&RmGetList) list = Find<decltype(&RmGetList)>("RmGetList");
  decltype(&RmEndSession) end = Find<decltype(&RmEndSession)>("RmEndSession");

  template <typename Function>
  Function Find(const char* name) const {
    return module ? reinterpret_cast<Function>(reinterpret_cast<void (*)()>(GetProcAddress(module.Get(), name)))
                  : nullptr;
  }
};

}  // namespace

std::span<const FindingCode> FindingCodes() { return kCodes; }

bool IsHealthy(const Findings& findings) { return CountOf(findings, Health::kFailure) == 0; }

std::string RenderFindings(const Findings& findings, bool colours) {
  std::size_t width = 0;
  for (const Finding& finding : findings) width = std::max(width, finding.subject.size());
  std::string text;
  for (const Finding& finding : findings) text += Line(finding, width, colours);
  text += IsHealthy(findings) ? "healthy:" : "not healthy:";
  for (const Health health : kHealths) {
    text +=
        (health == Health::kOk ? " " : ", ") + std::to_string(CountOf(findings, health)) + " " + FormOf(health).name;
  }
  return text + "\n";
}

nlohmann::ordered_json JsonOf(const Findings& findings) {
  auto checks = nlohmann::ordered_json::array();
  for (const Finding& finding : findings) {
    checks.push_back({{"kind", finding.kind},
                      {"subject", finding.subject},
                      {"state", FormOf(finding.health).name},
                      {"code", finding.code},
                      {"detail", finding.detail},
                      {"remedy", finding.health == Health::kOk ? "" : RemedyFor(finding.code)},
                      {"path", finding.path},
                      {"missing", finding.missing},
                      {"holders", finding.holders}});
  }
  return {{"healthy", IsHealthy(findings)}, {"elevated", IsElevated()}, {"checks", std::move(checks)}};
}

bool IsElevated() {
  HANDLE opened = nullptr;
  if (!OpenProcessToken(GetCurrentProcess(), TOKEN_QUERY, &opened)) return false;
  const win::ProcessHandle token(opened);
  TOKEN_ELEVATION elevation{};
  DWORD size = 0;
  return GetTokenInformation(token.Get(), TokenElevation, &elevation, sizeof elevation, &size) &&
         elevation.TokenIsElevated != 0;
}

std::vector<std::string> HoldersOf(const std::string& path) {
  std::vector<std::string> names;
  const RestartManager manager;
  DWORD session = 0;
  WCHAR key[CCH_RM_SESSION_KEY + 1] = {};
  if (!manager.start || !manager.add || !manager.list || !manager.end) return names;
  if (manager.start(&session, 0, key) != ERROR_SUCCESS) return names;
  const std::wstring wide = WideFromUtf8(Utf8FromCodePage(path));
  LPCWSTR file = wide.c_str();
  std::vector<RM_PROCESS_INFO> holders(32);
  UINT needed = 0, count = static_cast<UINT>(holders.size());
  DWORD reasons = 0;
  if (manager.add(session, 1, &file, 0, nullptr, 0, nullptr) == ERROR_SUCCESS &&
      manager.list(session, &needed, &count, holders.data(), &reasons) == ERROR_SUCCESS) {
    for (UINT i = 0; i < std::min<std::size_t>(count, holders.size()); ++i) {
      names.push_back(Utf8FromWide(holders[i].strAppName) + " (process " +
                      std::to_string(holders[i].Process.dwProcessId) + ")");
    }
  }
  manager.end(session);
  return names;
}

void SetUnreadable(Finding& finding, const std::string& path, unsigned long error, const char* failure) {
  const bool locked = error == ERROR_SHARING_VIOLATION || error == ERROR_LOCK_VIOLATION;
  finding.health = error == ERROR_ACCESS_DENIED ? Health::kUnknown : Health::kFailure;
  finding.code = error == ERROR_ACCESS_DENIED ? "DENIED" : locked ? "FILE-LOCKED" : failure;
  finding.detail = "cannot be opened or read (" + WindowsError(error) + ")";
  if (locked) finding.holders = HoldersOf(path);
}

}  // namespace kelctl
