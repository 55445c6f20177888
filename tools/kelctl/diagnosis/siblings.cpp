#include "diagnosis/siblings.h"

#include <windows.h>

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <ostream>

#include "errors.h"
#include "piped_child.h"
#include "registration/registration.h"
#include "siblings/binder.h"
#include "siblings/functions.h"
#include "siblings/plugins.h"
#include "siblings/sibling_table.h"
#include "text/paths.h"
#include "texts.h"
#include "trace/log_system.h"
#include "win/file.h"
#include "win/module.h"
#include "win/owner.h"
#include "win/profile.h"
#include "win/registry.h"

namespace kelctl {
namespace {

using Names = std::vector<SiblingName>;
using win::kOptional;
using win::kRequired;

// The names of a list of sibling_names.h.
#define KELCTL_NAME(function, presence) SiblingName{#function, presence == kRequired},
#define KELCTL_NAMES(list) \
  Names { list(KELCTL_NAME, KELCTL_NAME) }

Sibling Module(const Product& product, const siblings::Sibling& row, Names names,
               Health whenUnusable = Health::kFailure) {
  Sibling sibling{.name = row.file, .places = {}, .names = std::move(names), .whenUnusable = whenUnusable};
  for (const char* folder : {row.folder, row.fallback}) {
    if (folder != nullptr) sibling.places.push_back(product.Path({folder, row.file}));
  }
  return sibling;
}

Sibling Program(const Product& product, const siblings::Sibling& row) {
  Sibling sibling = Module(product, row, {});
  sibling.kind = SiblingKind::kProgram;
  return sibling;
}

// The file codec looks below the install path of the product, not below the library's own tree.
Sibling FileCodecCrypto() {
  const std::string path = kelcrt::CProductInfo().GetInstallPath();
  Sibling sibling{.name = "ApiCr.dll (files)", .places = {}, .names = KELCTL_NAMES(KE_CRYPTO_FUNCTIONS)};
  if (!path.empty()) {
    sibling.places.push_back(path + "Common\\ApiCr.dll");
  } else {
    sibling.whenUnusable = Health::kWarning;
    sibling.unlisted = "the product's install path is not registered: value files cannot be read";
    sibling.unlistedCode = "INSTALL-PATH-MISSING";
  }
  return sibling;
}

// The one place of a sibling that a setting names. The library refuses a path that is not full.
void SetFullPath(Sibling& sibling, const std::string& path) {
  if (text::IsFullPath(path)) {
    sibling.places.push_back(path);
  } else {
    sibling.unlisted = "not a full path: " + Utf8FromCodePage(path);
    sibling.unlistedCode = "PATH-NOT-FULL";
  }
}

Sibling Plugin(const Product& product, const char* name, const siblings::PluginPlace& place, Names names) {
  const std::string list = product.Path({place.folder, place.listFile});
  const std::string path = win::ReadProfile(list, "PLUGINS", place.key, "", 4100);
  Sibling sibling{.name = name, .places = {}, .names = std::move(names), .whenUnusable = Health::kWarning};
  if (path.empty()) {
    sibling.unlisted = "not entered in the file " + std::string(place.listFile);
  } else {
    SetFullPath(sibling, path);
  }
  return sibling;
}

// The modules of the protections that are registered on this machine.
void AddRegistrations(std::vector<Sibling>& siblings) {
  const auto names =
      win::ValueNames(HKEY_LOCAL_MACHINE, registration::kProtectionsKey, registration::kLongestProtection);
  for (const std::string& name : names.value_or(std::vector<std::string>{})) {
    const auto folder = win::ReadTextValue(HKEY_LOCAL_MACHINE, registration::kProtectionsKey, name.c_str(),
                                           registration::kLongestProtectionDirectory);
    if (name.empty() || !folder) continue;
    Sibling sibling{.name = "KERegister.dll (" + name + ")",
                    .places = {},
                    .names = KELCTL_NAMES(KE_PLUGIN_RELOAD_FUNCTIONS),
                    .whenUnusable = Health::kWarning};
    SetFullPath(sibling, registration::PluginFolder(*folder) + siblings::kPluginReloadFile);
    siblings.push_back(std::move(sibling));
  }
}

// The finding for a sibling that was found at `path`, or not found.
Finding Looked(const Sibling& sibling, const std::optional<std::string>& path) {
  const bool listed = !sibling.places.empty();
  return {.kind = sibling.kind == SiblingKind::kModule ? "module" : "program",
          .subject = Utf8FromCodePage(sibling.name),
          .path = Utf8FromCodePage(path.value_or(listed ? sibling.places.front() : "")),
          .health = path ? Health::kOk : sibling.whenUnusable,
          .code = path     ? "OK"
                  : listed ? "MODULE-MISSING"
                           : sibling.unlistedCode,
          .detail = path     ? "found"
                    : listed ? "missing"
                             : sibling.unlisted};
}

// True for a module or program of 64 bits, by its header.
bool Is64Bit(const std::string& path) {
  const win::FileHandle file = win::OpenForReading(path);
  std::string head(4096, '\0');
  head.resize(file ? win::Read(file, head.data(), head.size()) : 0);
  IMAGE_DOS_HEADER dos;
  if (head.size() < sizeof dos) return false;
  std::memcpy(&dos, head.data(), sizeof dos);
  const auto offset = static_cast<std::size_t>(dos.e_lfanew) + offsetof(IMAGE_NT_HEADERS, FileHeader.Machine);
  WORD machine = 0;
  if (dos.e_magic != IMAGE_DOS_SIGNATURE || dos.e_lfanew < 0 || offset + sizeof machine > head.size()) return false;
  std::memcpy(&machine, head.data() + offset, sizeof machine);
  return machine == IMAGE_FILE_MACHINE_AMD64 || machine == IMAGE_FILE_MACHINE_ARM64;
}

// Loads the module at `path`, where it was found.
void CheckModule(const Sibling& sibling, const std::string& path, Finding& finding) {
  const win::ModuleHandle module(LoadLibraryExA(path.c_str(), nullptr, LOAD_WITH_ALTERED_SEARCH_PATH));
  if (!module) {
    const DWORD error = GetLastError();
    const bool other = Is64Bit(path);
    finding.health = sibling.whenUnusable;
    finding.code = other ? "MODULE-64-BIT" : "MODULE-NOT-LOADED";
    finding.detail =
        std::string(other ? "is a 64-bit module, and " : "") + "cannot be loaded (" + WindowsError(error) + ")";
    return;
  }
  finding.detail = sibling.names.empty() ? "loaded" : "loaded, has all functions";
  for (const auto& [name, required] : sibling.names) {
    if (GetProcAddress(module.Get(), name.c_str()) != nullptr) continue;
    finding.missing.push_back(name);
    finding.detail = "loaded, lacks";
    finding.code = "MODULE-INCOMPLETE";
    finding.health = std::max(finding.health, required ? sibling.whenUnusable : Health::kWarning);
  }
}

void CheckProgram(const Sibling& sibling, const std::string& path, Finding& finding) {
  DWORD type = 0;
  if (GetBinaryTypeA(path.c_str(), &type)) return;
  finding.health = sibling.whenUnusable;
  finding.code = "PROGRAM-INVALID";
  finding.detail = "is not a program (" + WindowsError(GetLastError()) + ")";
}

// The lines that a child of this program writes about the siblings from number `first` on, until it ends or is silent
// for too long.
std::vector<std::string> LinesOfChild(const Product& product, std::size_t first) {
  constexpr DWORD kLongestSilence = 20000;  // milliseconds
  std::vector<std::string> lines;
  wchar_t program[kLongestPath];
  GetModuleFileNameW(nullptr, program, kLongestPath);
  const std::wstring words = L"\"" + std::wstring(program) + L"\" --dll \"" +
                             WideFromUtf8(Utf8FromCodePage(product.Directory() + "\\" + product.LibraryFile())) +
                             L"\" examine-siblings " + std::to_wstring(first);
  const PipedChild child = StartPiped(words, false);
  if (!child.process) return lines;
  std::string text;
  for (std::string part = NextOutput(child, kLongestSilence); !part.empty(); part = NextOutput(child, kLongestSilence))
    text += part;
  TerminateProcess(child.process.Get(), 1);
  for (auto end = text.find('\n'); end != text.npos; end = text.find('\n')) {
    lines.push_back(text.substr(0, end));
    text.erase(0, end + 1);
  }
  return lines;
}

}  // namespace

std::vector<Sibling> SiblingsOf(const Product& product) {
  std::vector<Sibling> siblings = {
      Module(product, {product.LibraryFile().c_str(), ""}, {}),
      Module(product, siblings::kCryptoModule, KELCTL_NAMES(KE_CRYPTO_FUNCTIONS)),
      FileCodecCrypto(),
      Module(product, siblings::kAgentModule, KELCTL_NAMES(KE_AGENT_API_FUNCTIONS)),
      Module(product, {siblings::kLauncherModule.file, siblings::kLauncherModule.folder},
             KELCTL_NAMES(KE_LAUNCHER_FUNCTIONS)),
      Module(product, siblings::kEventModule, KELCTL_NAMES(KE_EVENT_API_FUNCTIONS)),
      Module(product, siblings::kUpgradeAction, {{"Do"}}),
      Module(product, {"TvLogSys.dll", "Common"}, KELCTL_NAMES(KE_TRACE_FUNCTIONS), Health::kWarning),
      Plugin(product, "remote-control plug-in", siblings::kRemoteControlPlugin,
             {{"KE_Initialize"}, {"KE_Finalize"}, {"KECONF_SetInfo"}}),
      Plugin(product, "installer plug-in", siblings::kInstallerPlugin,
             {{"KE_Initialize"}, {"KE_Finalize"}, {"KEINSTALL_SetInfo"}, {"KEINSTALL_GetInetConfig"}}),
      Program(product, siblings::kScheduler),
      Program(product, siblings::kPluginManager),
      Program(product, siblings::kInstallHelper),
      Program(product, siblings::kPromptProgram),
  };
  AddRegistrations(siblings);
  return siblings;
}

std::optional<std::string> FindSibling(const Sibling& sibling) {
  for (const std::string& place : sibling.places) {
    if (win::Exists(place)) return place;
  }
  return std::nullopt;
}

Finding LookForSibling(const Sibling& sibling) { return Looked(sibling, FindSibling(sibling)); }

void ExamineSiblings(const Product& product, std::size_t first, std::ostream& out) {
  SetErrorMode(SEM_FAILCRITICALERRORS | SEM_NOGPFAULTERRORBOX | SEM_NOOPENFILEERRORBOX);  // no dialogs
  const std::vector<Sibling> siblings = SiblingsOf(product);
  for (std::size_t i = first; i < siblings.size(); ++i) {
    const auto path = FindSibling(siblings[i]);
    Finding finding = Looked(siblings[i], path);
    const auto check = siblings[i].kind == SiblingKind::kModule ? CheckModule : CheckProgram;
    if (path) check(siblings[i], *path, finding);
    const nlohmann::json line = {static_cast<int>(finding.health), finding.code, finding.detail, finding.missing};
    out << line.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace) << std::endl;
  }
}

Findings CheckSiblings(const Product& product) {
  Findings findings;
  const std::vector<Sibling> siblings = SiblingsOf(product);
  while (findings.size() < siblings.size()) {
    for (const std::string& line : LinesOfChild(product, findings.size())) {
      const auto parts = nlohmann::json::parse(line, nullptr, false);
      if (!parts.is_array() || parts.size() != 4 || findings.size() == siblings.size()) break;
      Finding finding = LookForSibling(siblings[findings.size()]);
      finding.health = static_cast<Health>(parts[0].get<int>());
      finding.code = parts[1].get<std::string>();
      finding.detail = parts[2].get<std::string>();
      finding.missing = parts[3].get<std::vector<std::string>>();
      findings.push_back(std::move(finding));
    }
    if (findings.size() == siblings.size()) break;
    const Sibling& sibling = siblings[findings.size()];  // the child did not come past it
    Finding finding = LookForSibling(sibling);
    finding.health = sibling.whenUnusable;
    finding.code = "MODULE-TIMEOUT";
    finding.detail = "loading it does not end, or ends the program that loads it";
    findings.push_back(std::move(finding));
  }
  return findings;
}

}  // namespace kelctl
