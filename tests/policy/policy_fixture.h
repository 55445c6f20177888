// A policy apart from the machine's: a registry subtree and a folder of its own, removed at the end of the scope.
#pragma once

#include <windows.h>

#include <cstdio>
#include <set>

#include "policy/local_policy.h"
#include "policy/log_sink.h"
#include "policy/os_identification.h"
#include "support/product_tree.h"

namespace support {

/// The characters of a text in code page 1252, as far as it is like Latin-1.
inline std::wstring Wide(const std::string& text) {
  const auto* const bytes = reinterpret_cast<const unsigned char*>(text.data());
  return {bytes, bytes + text.size()};
}

/// All values of a key and of the keys below it, sorted, a line each: "path\name=type:" and the text, or the bytes in
/// hexadecimal. A key without values has the line "path\".
inline std::set<std::string> Lines(HKEY root, const std::string& path, const std::string& shown = "") {
  std::set<std::string> lines;
  HKEY key = nullptr;
  if (RegOpenKeyExA(root, path.c_str(), 0, KEY_READ, &key) != ERROR_SUCCESS) return lines;
  char name[256];
  BYTE data[512];
  for (DWORD i = 0, length = 256, type = 0, size = sizeof data;; ++i, length = 256, size = sizeof data) {
    if (RegEnumValueA(key, i, name, &length, nullptr, &type, data, &size) != ERROR_SUCCESS) break;
    std::string text(reinterpret_cast<char*>(data), type == REG_SZ ? size - 1 : 0);
    char byte[3];
    for (DWORD at = 0; type != REG_SZ && at < size; ++at) std::snprintf(byte, 3, "%02x", data[at]), text += byte;
    lines.insert(shown + name + "=" + std::to_string(type) + ":" + text + "\n");
  }
  if (lines.empty()) lines.insert(shown + "\n");
  for (DWORD i = 0; RegEnumKeyA(key, i, name, sizeof name) == ERROR_SUCCESS; ++i)
    lines.merge(Lines(root, path + "\\" + name, shown + name + "\\"));
  RegCloseKey(key);
  return lines;
}

/// A log sink that keeps its lines: the level and the text; of an error also its result and the code of Windows.
struct RecordingSink : policy::ILogSink {
  std::uint32_t KE_API FirstSlot() override { return 0; }
  std::uint32_t KE_API GetLevel(std::uint32_t* wanted) override { return *wanted = level, failure; }
  void KE_API Write(std::uint32_t at, std::uint32_t, const wchar_t*, const wchar_t* text) override {
    lines += std::to_wstring(at) + L" " + text + L"\n";
  }
  void KE_API WriteError(std::uint32_t at, std::uint32_t, const wchar_t*, std::uint32_t result, std::uint32_t error,
                         const wchar_t* text) override {
    Write(at, 1, L"", (text + (L" <" + std::to_wstring(result)) + L" " + std::to_wstring(error) + L">").c_str());
  }
  std::uint32_t level = 50, failure = 0;
  std::wstring lines;
};

struct TestPolicy {
  static constexpr char kPrefix[] = "Software\\KELUtils tests\\";

  explicit TestPolicy(std::uint32_t osCode = policy::kWindows7)
      : places{HKEY_CURRENT_USER, Wide(kPrefix), folder.Path("GroupPolicy").wstring(), osCode} {}
  ~TestPolicy() { RegDeleteTreeA(HKEY_CURRENT_USER, kPrefix); }

  /// The key of shutdown scripts in a place of the registry: 0 scripts, 1 state, 2 policies.
  std::string Key(std::size_t place) const {
    const auto path = policy::RegistryPlaces(places, policy::ScriptKind::kShutdown)[place].path;
    return {path.begin(), path.end()};
  }
  std::string Registry(std::size_t place) const {
    std::string dump;
    for (const std::string& line : Lines(places.root, Key(place))) dump += line;
    return dump;
  }
  void Set(const std::string& key, const char* name, DWORD type, const std::string& data) const {
    RegSetKeyValueA(places.root, key.c_str(), name, type, data.c_str(),
                    static_cast<DWORD>(data.size() + (type == REG_SZ)));
  }
  /// A script other.cmd; `path` is that of its key below the place.
  void AddScript(std::size_t place, const std::string& path, const char* parameters = "x") const {
    Set(Key(place) + "\\" + path, "Script", REG_SZ, "other.cmd");
    Set(Key(place) + "\\" + path, "Parameters", REG_SZ, parameters);
  }
  void AddObject(std::size_t place, const std::string& number, const std::string& id) const {
    Set(Key(place) + "\\" + number, "GPO-ID", REG_SZ, id);
    AddScript(place, number + "\\0");
  }

  std::filesystem::path Ini() const { return policy::ScriptsIniPath(places); }
  std::filesystem::path Gpt() const { return policy::GptIniPath(places); }
  std::filesystem::path ScriptFile(const char* name) const {
    return std::filesystem::path(policy::ScriptsFolder(places, policy::ScriptKind::kShutdown)) / name;
  }
  /// Creates a file with the folders above it.
  static void Put(const std::filesystem::path& path, const std::string& content) {
    std::filesystem::create_directories(path.parent_path());
    WriteFile(path, content);
  }

  Folder folder;
  policy::PolicyPlaces places;
};

}  // namespace support
