// The calls of Windows that make a change durable and keep files closed to other accounts; overwriting in place; the
// clock.
#include <windows.h>
// After windows.h.
#include <sddl.h>

#include "torture/torture.h"

using torture::Gate;

namespace {

// Replaces a function of Windows in the import table of this program, which contains the library's code.
template <typename Function>
struct Import {
  Import(Function function, Function instead) {
    char* const base = reinterpret_cast<char*>(GetModuleHandleW(nullptr));
    const auto start = reinterpret_cast<IMAGE_DOS_HEADER*>(base)->e_lfanew;
    const auto& directories = reinterpret_cast<IMAGE_NT_HEADERS*>(base + start)->OptionalHeader.DataDirectory;
    const auto& table = directories[IMAGE_DIRECTORY_ENTRY_IAT];
    place = std::find(reinterpret_cast<Function*>(base + table.VirtualAddress),
                      reinterpret_cast<Function*>(base + table.VirtualAddress + table.Size), real = function);
    DWORD before;
    REQUIRE((*place == function && VirtualProtect(place, sizeof *place, PAGE_READWRITE, &before)));
    *place = instead;
  }
  ~Import() { *place = real; }
  Function* place;
  static inline Function real;
};

std::string s_calls;  // in their order, with the rights of new files
PSECURITY_DESCRIPTOR s_rights;
DWORD s_rightsSize;

void NoteRights(PSECURITY_DESCRIPTOR rights) {
  char* text = nullptr;
  REQUIRE(ConvertSecurityDescriptorToStringSecurityDescriptorA(rights, 1, DACL_SECURITY_INFORMATION, &text, nullptr));
  s_calls.append(text).append(" ");
  LocalFree(text);
}

BOOL WINAPI NoteFlush(HANDLE) { return s_calls += "FLUSH ", TRUE; }
BOOL WINAPI NoteMove(LPCSTR from, LPCSTR to, DWORD flags) {
  s_calls += "MOVE:" + std::to_string(flags) + " ";
  return Import<decltype(&MoveFileExA)>::real(from, to, flags);
}
BOOL WINAPI GiveRights(LPCSTR, SECURITY_INFORMATION, PSECURITY_DESCRIPTOR rights, DWORD size, DWORD* needed) {
  SetLastError(ERROR_INSUFFICIENT_BUFFER);
  return size >= (*needed = s_rightsSize) && memcpy(rights, s_rights, s_rightsSize) != nullptr;
}
HANDLE WINAPI NoteCreate(LPCSTR path, DWORD access, DWORD share, SECURITY_ATTRIBUTES* rights, DWORD how,
                         DWORD attributes, HANDLE like) {
  if (rights != nullptr) NoteRights(rights->lpSecurityDescriptor);
  return Import<decltype(&CreateFileA)>::real(path, access, share, nullptr, how, attributes, like);
}
BOOL WINAPI NoteInheritance(HANDLE, SECURITY_INFORMATION, PSECURITY_DESCRIPTOR rights) {
  return NoteRights(rights), TRUE;
}

// A longer content, and a shorter one.
const std::pair<KE_RESULT (*)(), std::string> kChanges[] = {{torture::SetNew, torture::kNew},
                                                            {[] { return KE_SetAgentID("short"); }, "short"}};

void CheckBackup(const StoreTree& tree, const std::string& after, int at) {
  const bool complete = tree.Text("INTEGRA.DAT") == WholeStore(after);
  CHECK_MESSAGE((complete || tree.Text("INTEGRA.BAK") == WholeStore(torture::kOld)), after.size() << " at " << at);
}

}  // namespace

TEST_CASE("durability: content is flushed before a rename that writes through; in place, space is reserved first") {
  const StoreTree tree;
  const support::InnerModule module(tree.tree);
  const Import flush(&FlushFileBuffers, &NoteFlush);
  const Import move(&MoveFileExA, &NoteMove);
  static int s_held;  // renames that fail; -1: none is tried
  const auto calls = [&](const auto& change, int held) {
    torture::Prepare(tree, torture::Scenes()[0]);
    const support::HeldTime time;
    s_calls.clear(), s_held = held;
    win::g_gate = [](win::Call call, unsigned long&) {
      if (call == win::Call::kResize) s_calls += "END ";
      if (call == win::Call::kWrite) s_calls += "WRITE ";
      SetLastError(ERROR_SHARING_VIOLATION);
      if (call == win::Call::kRights) return s_held >= 0;
      return call != win::Call::kMove || s_held <= 0 || s_held-- == 0;
    };
    CHECK(change.first() == KE_SUCCESS);
    win::g_gate = nullptr;
    for (const char* copy : {"INTEGRA.DAT", "INTEGRA.BAK"}) CHECK(tree.Text(copy) == WholeStore(change.second));
    return s_calls + support::HeldTime::pauses;
  };
  CHECK(calls(kChanges[0], 9) == "WRITE FLUSH MOVE:9 WRITE FLUSH MOVE:9 1 5 10 20 40 80 160 320 364 ");
  CHECK(calls(kChanges[0], -1) == "END WRITE FLUSH END WRITE FLUSH ");
  CHECK(calls(kChanges[1], -1) == "WRITE END FLUSH WRITE END FLUSH ");
}

TEST_CASE("access rights: new files are open to the accounts that the old ones are, the lock to their writers") {
  const StoreTree tree;
  const support::InnerModule module(tree.tree);
  const Import rights(&GetFileSecurityA, &GiveRights);
  const Import create(&CreateFileA, &NoteCreate);
  const Import inheritance(&SetKernelObjectSecurity, &NoteInheritance);
  const std::string all = "(D;;FW;;;BG)(A;;FW;;;BU)(A;OIIO;FA;;;CO)(A;;FR;;;WD) ";
  const std::string rows[][3] = {
      // of the old file, the lock and each new file
      {"D:P(A;;FA;;;BA)(A;;FR;;;WD)", "D:P(A;;0x13019f;;;BA) ", "D:P(A;;FA;;;BA)(A;;FR;;;WD) "},
      {"D:" + all, "D:P(D;;FA;;;BG)(A;;0x13019f;;;BU) ", "D:P" + all + "D:" + all}};
  for (const auto& [old, lock, file] : rows) {
    torture::Prepare(tree, torture::Scenes()[0]);
    std::filesystem::remove(tree.tree.Store("INTEGRA.LCK"));
    s_calls.clear();
    REQUIRE(ConvertStringSecurityDescriptorToSecurityDescriptorA(old.c_str(), 1, &s_rights, &s_rightsSize));
    CHECK(torture::SetNew() == KE_SUCCESS);
    CHECK(s_calls == lock + file + file);
    LocalFree(s_rights);
  }
}

TEST_CASE("in place: killed at every file call, or one fails: the backup stays until the live file is complete") {
  const StoreTree tree;
  for (int i = 0; i < 2; ++i) {
    const auto& [call, after] = kChanges[i];
    DWORD code = i == 0 || support::IsLong() ? DWORD{Gate::kEnded} : 0;
    for (int at = 1; code == Gate::kEnded; ++at) {
      torture::Prepare(tree, torture::Scenes()[0]);
      code = torture::Child("child: killed in place", tree.tree, i, at).End();
      CheckBackup(tree, after, at);
      if (code != Gate::kEnded) CHECK((code == 0 && AgentId(tree.Load()) == after));
    }
    const support::InnerModule module(tree.tree);
    for (const Gate::Act act : {Gate::kFailOnce, Gate::kFailFromThenOn, Gate::kFailWritesFromThenOn}) {
      bool reached = true;
      for (int at = 1; reached; ++at) {
        torture::Prepare(tree, torture::Scenes()[0]);
        store::DropIntegraStore();
        const Gate gate(act, at, ERROR_DISK_FULL, true);
        call();
        reached = Gate::Reached();
        CheckBackup(tree, after, at);
      }
    }
  }
}

TEST_CASE("child: killed in place" * doctest::skip()) {
  const torture::ToldModule module;
  const Gate gate(Gate::kEndProcess, module.second, 0, true);
  REQUIRE(kChanges[module.first].first() == KE_SUCCESS);
}

TEST_CASE("time: another last-write time, earlier or later, shows a change; a change that keeps the time goes unseen") {
  const StoreTree tree;
  tree.Put("INTEGRA.DAT", WholeStore("before"));
  const support::LoadedDll dll = tree.Load(), other = tree.Load();
  std::string expected = AgentId(dll);
  const std::string live = tree.tree.Store("INTEGRA.DAT").string();
  constexpr std::int64_t kHour = 36000000000;
  for (const std::int64_t change : {-kHour, std::int64_t{1}, std::int64_t{0}, 2 * kHour}) {
    const std::uint64_t time = win::StatusOf(live).written + static_cast<std::uint64_t>(change);
    const std::string id = "changed by " + std::to_string(change);
    tree.Put("INTEGRA.DAT", WholeStore(id));
    REQUIRE(win::SetWritten(win::OpenForUpdate(live), time));
    if (change != 0) expected = id;
    CHECK(AgentId(dll) == expected);
    if (change == 0) CHECK((CALL(dll, KE_SetAgentVersion)("2") == KE_SUCCESS && AgentId(other) == expected));
  }
  // The file's time is an hour ahead of the clock now.
  CHECK(CALL(other, KE_SetAgentID)("set after the clock went back") == KE_SUCCESS);
  CHECK(AgentId(dll) == "set after the clock went back");
}
