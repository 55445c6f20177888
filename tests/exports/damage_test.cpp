// Damage to the files of the store, in every combination, against one table of rules.
#include <doctest/doctest.h>

#include <array>
#include <optional>
#include <set>
#include <string>

#include "exports/store_tree.h"
#include "support/tally.h"

using support::LoadedDll;
using support::LockedFile;

namespace {

enum State { kGood, kMissing, kLocked, kEmpty, kCut, kZeroFilled, kBitFlipped, kOtherKey, kStates };
constexpr const char *kNames[] = {"good", "missing",     "locked",      "empty",
                                  "cut",  "zero-filled", "bit-flipped", "other key"},
                     *kFiles[] = {"INTEGRA.DAT", "INTEGRA.BAK", "INTEGRA.START"}, *kIds[] = {"live", "backup", "start"};

// The files of the store, each in its state; the identifier in a good one is of kIds. The locked ones are held.
struct DamagedFiles {
  DamagedFiles(const StoreTree& tree, const std::array<State, 3>& states) {
    for (std::size_t i = 0; i < 3; ++i) {
      std::string& content = contents[i] = FakeEnciphered(WholeStore(kIds[i]));
      if (states[i] == kEmpty || states[i] == kMissing) content.clear();
      if (states[i] == kCut) content.resize(content.size() / 2);
      if (states[i] == kZeroFilled) content.assign(content.size(), '\0');
      if (states[i] == kBitFlipped) content[0] ^= 1;  // in the marker: without a checksum, other flips may not show
      for (std::size_t at = 4; states[i] == kOtherKey && at < content.size(); ++at)
        content[at] = static_cast<char>(content[at] * 7 + 0x80 + at % 5);
      support::WriteFile(tree.tree.Store(kFiles[i]), content);
      if (states[i] == kMissing) std::filesystem::remove(tree.tree.Store(kFiles[i]));
      if (states[i] == kLocked) locks[i].emplace(tree.tree.Store(kFiles[i]));
    }
  }
  void Unlock() {
    for (auto& lock : locks) lock.reset();
  }
  std::string contents[3];
  std::optional<LockedFile> locks[3];
};

// The result of KE_GetAgentID in the first call of a process.
std::string Expected(State live, State backup, State start) {
  const std::string unusable = "(1782)";
  if (live == kLocked || (live == kMissing && backup == kLocked)) return unusable;
  if (live == kGood) return "live";
  if (live == kMissing && backup == kGood) return "backup";
  // The store is damaged now: the start copy repairs it, or prevents that when it cannot be copied.
  if (start == kLocked) return unusable;
  if (start == kGood) return "start";
  // No copy of the value so far: the backup is restored.
  return backup == kGood ? "backup" : unusable;
}

}  // namespace

TEST_CASE("damage: a call loses the identity that a file still has, or overwrites a good copy") {
  const StoreTree tree;
  support::Tally tally("damaged files, a getter and a setter");
  for (int number = 0; number < kStates * kStates * kStates; ++number) {
    const std::array states{State(number / kStates / kStates), State(number / kStates % kStates),
                            State(number % kStates)};
    std::set<State> damages(states.begin(), states.end());
    for (const State other : {kGood, kMissing, kLocked}) damages.erase(other);
    if (damages.size() > 1 && !support::IsLong()) continue;  // files damaged in different ways
    const std::string expected = Expected(states[0], states[1], states[2]),
                      shown = std::string("live, backup, start: ") + kNames[states[0]] + ", " + kNames[states[1]] +
                              ", " + kNames[states[2]];
    {
      DamagedFiles files(tree, states);
      const LoadedDll dll = tree.Load();
      bool right = AgentId(dll) == expected && AgentId(dll) == expected;
      files.Unlock();
      for (std::size_t i = 0; i < 3; ++i) right &= states[i] != kGood || tree.Text(kFiles[i]) == WholeStore(kIds[i]);
      tally.Case(right, shown + ": a getter");
    }
    DamagedFiles files(tree, states);
    const KE_RESULT result = CALL(tree.Load(), KE_SetServerDate)("2024-03-05");
    files.Unlock();
    const bool startKept = support::ReadFile(tree.tree.Store(kFiles[2])) == files.contents[2],
               backupKept = states[1] != kGood || tree.Text(kFiles[1]) == WholeStore("backup"),
               dated = tree.Text(kFiles[0]).find("ServerDate=2024-03-05\r\n") != std::string::npos;
    const bool right = expected.front() == '(' ? result == KE_SUCCESS || (result == KE_STORE_UNUSABLE && backupKept)
                                               : result == KE_SUCCESS && dated && AgentId(tree.Load()) == expected;
    tally.Case(startKept && right, shown + ": a setter");
  }
}

TEST_CASE("damage: a small store that stays, is replaced again and again, or when another process has completed it") {
  const StoreTree tree;
  const auto policies = tree.tree.Path("KELSysCf/KelSysCf.dat").string();
  WritePrivateProfileStringA("POLICIES", "POLICY_101", "mine", policies.c_str());
  tree.Put("INTEGRA.DAT", "[AGENT]\r\nID=small\r\n[A]\r\n[B]\r\n");
  tree.Put("INTEGRA.START", WholeStore("start"));
  const LoadedDll dll = tree.Load();
  CHECK(AgentId(dll) == "start");
  char policy[64] = {};
  for (const char* key : {"POLICY_101", "POLICY_200"}) {
    GetPrivateProfileStringA("POLICIES", key, "", policy, sizeof policy, policies.c_str());
    CHECK(std::string(policy) == "{00000000-0000-0000-0000-000000000000}");
  }
  CHECK((CALL(dll, KE_SetAgentID)("new") == KE_SUCCESS && AgentId(tree.Load()) == "new"));

  // Also a store that was cached before there was a start copy. A start copy that is itself small makes no loop.
  const StoreTree late;
  late.Put("INTEGRA.DAT", "[AGENT]\r\nID=small\r\n");
  const LoadedDll cached = late.Load();
  CHECK(AgentId(cached) == "small");
  late.Put("INTEGRA.START", "[AGENT]\r\nID=small start\r\n");
  CHECK(AgentId(cached) == "small start");
  // But never over a store that another process has completed since.
  late.Put("INTEGRA.START", WholeStore("start"));
  Sleep(20);
  late.Put("INTEGRA.DAT", WholeStore("completed"));
  CHECK(AgentId(cached) == "completed");
}

TEST_CASE("damage: a store that was damaged when it was read replaces the last good copy") {
  const std::string three = "[AGENT]\r\nID=left\r\n[INSTALL]\r\n[INTEGRATION]\r\nCERTIFICATE=c\r\n",
                    good = FakeEnciphered(WholeStore("good")), small = FakeEnciphered("[AGENT]\r\nID=old\r\n");
  const struct {
    std::string live, backup;
    bool crypto, locked, kept;
  } rows[] = {{FakeEnciphered(three), good, true, false, true},  // the change adds the fourth section
              {three, good, false, false, true},                 // encrypted, and there is no crypto module
              {FakeEnciphered(three), good, true, true, true},
              {FakeEnciphered(three), small, true, false, false},
              {FakeEnciphered(WholeStore("live")), good, true, false, false}};
  for (const auto& row : rows) {
    const StoreTree tree;
    support::WriteFile(tree.tree.Store("INTEGRA.DAT"), row.live);
    support::WriteFile(tree.tree.Store("INTEGRA.BAK"), row.backup);
    if (!row.crypto) std::filesystem::remove(tree.tree.Path("KELUtils/ApiCr.dll"));
    std::optional<LockedFile> lock;
    if (row.locked) lock.emplace(tree.tree.Store("INTEGRA.BAK"));
    CHECK(CALL(tree.Load(), KE_SetUninstallPass)("new section", 0) == KE_SUCCESS);
    lock.reset();
    CHECK((support::ReadFile(tree.tree.Store("INTEGRA.BAK")) == row.backup) == row.kept);
  }
}

TEST_CASE("damage: a text is lost whose encrypted form begins with a zero byte, which readers take for plain text") {
  const char* const id = "0297-4b1c-9d2e";  // its first block begins so with the development key blob
  const support::ProductTree tree;
  const LoadedDll dll(tree.Path("KELUtils/KELUtils.dll"));
  CHECK(CALL(dll, KE_SetAgentID)("first") == KE_SUCCESS);
  CHECK((CALL(dll, KE_SetUninstallPass)("secret", 0) == KE_SUCCESS && CALL(dll, KE_SetAgentID)(id) == KE_SUCCESS));
  const LoadedDll fresh = LoadedDll::Separate(tree.Path("KELUtils/KELUtils.dll"));
  CHECK((AgentId(fresh) == id && CALL(fresh, KE_IsNeededInstallationPassw)() == 1));
}

TEST_CASE("store files: an unchanged one is read again, or one that another process has written is not") {
  const StoreTree tree;
  tree.Put("INTEGRA.DAT", WholeStore("first"));
  const LoadedDll crypto(tree.tree.Path("KELUtils/ApiCr.dll"));
  const FakeCipherState& cipher = *CALL(crypto, FakeCipher)();
  const LoadedDll dll = tree.Load();
  CHECK(AgentId(dll) == "first");
  const int calls = cipher.calls;
  CHECK((CALL(dll, KE_SetAgentVersion)("2") == KE_SUCCESS && AgentId(dll) == "first"));
  CHECK(cipher.calls == calls + 1);  // written once, and never read back
  Sleep(20);
  CHECK((CALL(tree.Load(), KE_SetAgentID)("second") == KE_SUCCESS && AgentId(dll) == "second"));
}

TEST_CASE("crypto module: without it an encrypted file is lost; with one again, a file stays plain") {
  const StoreTree tree;
  tree.Put("INTEGRA.DAT", WholeStore("live"));
  const auto content = [&] { return support::ReadFile(tree.tree.Store("INTEGRA.DAT")); };
  const LoadedDll dll = tree.Load();
  std::filesystem::remove(tree.tree.Path("KELUtils/ApiCr.dll"));
  for (int i = 0; i < 2; ++i) {
    CHECK((AgentId(dll) == "(1783)" && CALL(dll, KE_SetAgentID)("x") == KE_CRYPTO_NOT_LOADED));
    CHECK(content() == FakeEnciphered(WholeStore("live")));
    if (i == 0) tree.tree.AddFake("FakeKERegister", "KELUtils/ApiCr.dll");  // loads, but lacks the functions
  }
  support::WriteFile(tree.tree.Store("INTEGRA.DAT"), WholeStore("plain"));
  CHECK((CALL(tree.Load(), KE_SetAgentID)("new") == KE_SUCCESS && content() == WholeStore("new")));
  const auto left = tree.tree.Path("KELUtils/incomplete.dll");  // in use until the next attempt
  std::filesystem::rename(tree.tree.Path("KELUtils/ApiCr.dll"), left);
  tree.tree.AddFake("FakeApiCr", "KELUtils/ApiCr.dll");
  CHECK((CALL(dll, KE_SetAgentID)("e") == KE_SUCCESS && content() == FakeEnciphered(WholeStore("e"))));

  // When it fails, a text that cannot be encrypted is written in plain, without a backup.
  std::filesystem::remove(tree.tree.Store("INTEGRA.BAK"));
  const LoadedDll crypto(tree.tree.Path("KELUtils/ApiCr.dll")), other = tree.Load();
  FakeCipherState& cipher = *CALL(crypto, FakeCipher)();
  cipher.error = 9;
  CHECK((AgentId(other) == "(1784)" && content() == FakeEnciphered(WholeStore("e"))));
  cipher.error = 0;
  CHECK(AgentId(other) == "e");
  cipher.error = 9;
  CHECK((CALL(other, KE_SetAgentID)("new") == KE_CRYPTO_FAILED && content() == WholeStore("new")));
  CHECK((AgentId(other) == "new" && !std::filesystem::exists(tree.tree.Store("INTEGRA.BAK"))));
}
