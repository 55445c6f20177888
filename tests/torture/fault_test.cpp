// File calls of the store fail: each in turn, once or from then on. The result tells what came of it, nothing leaks,
// and the next process finds an identity.
#include <windows.h>
// After windows.h.
#include <sddl.h>

#include "support/handles.h"
#include "torture/torture.h"

using torture::Gate;

namespace {

struct Fault {
  const char* name;
  Gate::Act act;
  DWORD error;
};

constexpr Fault kFaults[] = {
    {"denied once", Gate::kFailOnce, ERROR_ACCESS_DENIED},
    {"shared once", Gate::kFailOnce, ERROR_SHARING_VIOLATION},
    {"full once", Gate::kFailOnce, ERROR_DISK_FULL},
    {"denied from then on", Gate::kFailFromThenOn, ERROR_ACCESS_DENIED},
    {"shared from then on", Gate::kFailFromThenOn, ERROR_SHARING_VIOLATION},
    {"full from then on", Gate::kFailFromThenOn, ERROR_DISK_FULL},
    {"no room for any byte from then on", Gate::kFailWritesFromThenOn, ERROR_DISK_FULL},
};

}  // namespace

TEST_CASE("every file call may fail: the result is right, nothing leaks, and the store can be read afterwards") {
  const StoreTree tree;
  const support::InnerModule module(tree.tree);
  support::Tally tally("every file call fails");
  DWORD handles = 0;
  for (const torture::Scene& scene : torture::Scenes()) {
    for (const Fault& fault : kFaults) {
      bool reached = true;
      for (int at = 1; reached && at < 200; ++at) {
        torture::Prepare(tree, scene);
        store::DropIntegraStore();
        KE_RESULT result;
        {
          const Gate gate(fault.act, at, fault.error);
          result = scene.call();
          reached = Gate::Reached();
        }
        if (handles == 0) handles = support::OpenHandles();  // the first call binds the crypto module
        bool clean = true;                                   // a call that failed once has removed its temporary file
        for (const auto& entry : std::filesystem::directory_iterator(tree.tree.Path("KESAgent"))) {
          if (entry.path().string().find(".KE~") == std::string::npos) continue;
          clean &= fault.act != Gate::kFailOnce;
          std::filesystem::remove(entry.path());
        }
        const bool whole = clean && torture::CopiesAreWhole(tree, scene);
        const std::string id = AgentId(tree.Load());
        // A write that was cut short for want of room is a success, and changes nothing.
        const bool cut = fault.act == Gate::kFailWritesFromThenOn && id == scene.before;
        const bool fits = result == KE_SUCCESS          ? id == scene.after || id == scene.also || cut
                          : result == KE_STORE_UNUSABLE ? scene.Allows(id)
                                                        : false;
        tally.Case(whole && fits, std::string(scene.name) + ", call " + std::to_string(at) + " " + fault.name + ": " +
                                      std::to_string(result) + " " + id.substr(0, 20));
      }
      CHECK_FALSE(reached);
    }
  }
  CHECK(support::OpenHandles() <= handles);
}

TEST_CASE("files that others hold or leave: values are set all the same, the attributes stay, and the time is later") {
  constexpr char kLeftover[] = "INTEGRA.DAT.KE~0000012C0001";
  enum State { kHeld, kLeft, kOpen };
  const std::pair<const char*, State> rows[] = {
      {"INTEGRA.DAT", kHeld}, {"INTEGRA.BAK", kHeld}, {kLeftover, kLeft}, {kLeftover, kOpen}};
  for (const auto& [file, state] : rows) {
    CAPTURE(std::string(file) + std::to_string(state));
    const StoreTree tree;
    const support::InnerModule module(tree.tree);
    torture::Prepare(tree, torture::Scenes()[0]);
    const auto path = tree.tree.Store(file), live = tree.tree.Store("INTEGRA.DAT");
    SetFileAttributesW(live.c_str(), FILE_ATTRIBUTE_HIDDEN);
    if (state != kHeld) support::WriteFile(path, "half a store");
    std::optional<support::LockedFile> held;
    // Another process writes a temporary file with all sharing; a reader lets nobody replace the file.
    const DWORD share = FILE_SHARE_READ | FILE_SHARE_WRITE;
    if (state != kLeft) held.emplace(path, state == kOpen ? share | FILE_SHARE_DELETE : share);
    const std::uint64_t before = win::Now() + 400000;  // 40 ms: as if written in the tick that is yet to come
    REQUIRE(win::SetWritten(win::OpenForUpdate(live.string()), before));
    store::g_leftoversRemoved = false;  // as in another process
    CHECK(torture::SetNew() == KE_SUCCESS);
    held.reset();
    CHECK(std::filesystem::exists(tree.tree.Store(kLeftover)) == (state == kOpen));
    for (const char* copy : {"INTEGRA.DAT", "INTEGRA.BAK"}) CHECK(tree.Text(copy) == WholeStore(torture::kNew));
    CHECK((GetFileAttributesW(live.c_str()) & FILE_ATTRIBUTE_HIDDEN) != 0);
    CHECK(win::StatusOf(live.string()).written > before);
  }
}

TEST_CASE("the live store vanishes while it is repaired: the call fails, and looks into no store that is not there") {
  static const support::ProductTree* s_tree;
  const StoreTree tree;
  s_tree = &tree.tree;
  const support::InnerModule module(tree.tree);
  tree.Put("INTEGRA.DAT", "[AGENT]\r\nID=x\r\n");
  tree.Put("INTEGRA.START", WholeStore("start"));
  tree.Put("INTEGRA.BAK", WholeStore("backup"));
  const support::LockedFile inUse(tree.tree.Store("INTEGRA.BAK"));
  win::g_gate = [](win::Call call, unsigned long&) {
    static bool s_moved = false;
    if (s_moved) std::filesystem::remove(s_tree->Store("INTEGRA.DAT"));
    s_moved = call == win::Call::kMove;
    return true;
  };
  char buffer[64];
  CHECK(KE_GetAgentVersion(buffer, sizeof buffer) == KE_STORE_UNUSABLE);
  win::g_gate = nullptr;
}

TEST_CASE("access rights: a file is replaced with the rights it has") {
  const auto rightsOf = [](const std::string& path) {
    char rights[4096] = {};
    DWORD size = 0;
    CHECK(GetFileSecurityA(path.c_str(), DACL_SECURITY_INFORMATION, rights, sizeof rights, &size));
    return std::string(rights, size);
  };
  const StoreTree tree;
  const support::InnerModule module(tree.tree);
  torture::Prepare(tree, torture::Scenes()[0]);
  const std::string live = tree.tree.Store("INTEGRA.DAT").string();
  // Nobody but administrators, unlike the folder.
  PSECURITY_DESCRIPTOR closed = nullptr;
  REQUIRE(ConvertStringSecurityDescriptorToSecurityDescriptorA("D:P(A;;FA;;;BA)", 1, &closed, nullptr));
  REQUIRE(SetFileSecurityA(live.c_str(), DACL_SECURITY_INFORMATION, closed));
  LocalFree(closed);
  const std::string before = rightsOf(live);
  CHECK(torture::SetNew() == KE_SUCCESS);
  CHECK((tree.Text("INTEGRA.DAT") == WholeStore(torture::kNew) && rightsOf(live) == before));
}
