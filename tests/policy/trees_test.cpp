#include <aclapi.h>
#include <doctest/doctest.h>

#include "policy/policy_fixture.h"
#include "policy/script_registration.h"
#include "policy/system_files.h"
#include "support/recording_sink.h"
#include "win/registry.h"

using namespace policy;
using support::TestPolicy;

namespace {

// What the platform will delete at the next start; put back as it was at the end of the scope.
constexpr char kKey[] = "SYSTEM\\CurrentControlSet\\Control\\Session Manager", kName[] = "PendingFileRenameOperations";
struct PendingDeletions {
  ~PendingDeletions() {
    const auto size = static_cast<DWORD>(before.size());
    if (size > 0)
      RegSetKeyValueA(HKEY_LOCAL_MACHINE, kKey, kName, REG_MULTI_SZ, before.data(), size);
    else
      RegDeleteKeyValueA(HKEY_LOCAL_MACHINE, kKey, kName);
  }
  static std::string Read() {
    std::string data(65536, '\0');
    DWORD size = static_cast<DWORD>(data.size());
    const auto status = RegGetValueA(HKEY_LOCAL_MACHINE, kKey, kName, RRF_RT_REG_MULTI_SZ, nullptr, data.data(), &size);
    return data.substr(0, status == ERROR_SUCCESS ? size : 0);
  }
  static std::size_t Find(const std::filesystem::path& path) { return Read().find(path.string() + '\0'); }
  const std::string before = Read();
};

}  // namespace

TEST_CASE("trees: a file in use is left to the next start, with the folders above it") {
  const PendingDeletions restored;
  const support::Folder folder;
  const auto tree = folder.Path("tree"), used = tree / "used" / "file", readOnly = tree / "other" / "file";
  for (const auto& file : {used, readOnly}) TestPolicy::Put(file, "x");
  SetFileAttributesW(readOnly.c_str(), FILE_ATTRIBUTE_READONLY);
  {
    const support::LockedFile lock(used);
    CHECK(DeleteFileNowOrAtReboot(nullptr, tree.wstring()) == KE_STORE_UNUSABLE);
    CHECK(DeleteDirectoryTree(nullptr, tree.wstring()) == KE_SUCCESS);
  }
  CHECK((std::filesystem::exists(used) && !std::filesystem::exists(readOnly.parent_path())));
  const auto last = PendingDeletions::Find(tree), middle = PendingDeletions::Find(used.parent_path());
  CHECK((PendingDeletions::Find(used) < middle && middle < last && last != std::string::npos));
  for (int i = 0; i < 2; ++i) CHECK(DeleteDirectoryTree(nullptr, tree.wstring()) == KE_SUCCESS);
  CHECK(folder.FileCount() == 0);
}

TEST_CASE("policy scripts: a script file in use, and a key without rights") {
  const PendingDeletions restored;
  for (const bool denied : {false, true}) {
    const TestPolicy policy;
    const auto script = policy.ScriptFile("other.cmd");
    TestPolicy::Put(script, "");
    for (const std::size_t place : {0u, 1u}) policy.AddObject(place, "0", "LocalGPO");
    win::RegistryKey key;
    REQUIRE(win::OpenKey(HKEY_CURRENT_USER, support::Wide(policy.Key(0)), KEY_ALL_ACCESS, key) == ERROR_SUCCESS);
    ACL nobody{};
    InitializeAcl(&nobody, sizeof nobody, ACL_REVISION);
    const auto allow = [&](ACL* whom) {
      return SetSecurityInfo(key.Get(), SE_REGISTRY_KEY, DACL_SECURITY_INFORMATION, nullptr, nullptr, whom, nullptr);
    };
    if (denied) REQUIRE(allow(&nobody) == ERROR_SUCCESS);
    const support::LockedFile lock(script);
    support::RecordingSink sink;
    CHECK(RemoveScripts(&sink, policy.places, ScriptKind::kShutdown, {u"x"}, ScriptFiles::kDeleted) ==
          (denied ? KE_REGISTRY_UNUSABLE : KE_SUCCESS));
    CHECK((sink.lines.find(L"<1800 5>\n") != std::wstring::npos) == denied);
    CHECK((PendingDeletions::Find(script) != std::string::npos) == !denied);  // the key may name it still
    CHECK(policy.Registry(1) == "\n");
    allow(nullptr);  // so that the key can be removed
  }
}
