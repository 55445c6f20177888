// Damage to the files of the store, in every combination, against one table of rules.
#include <doctest/doctest.h>

#include <memory>
#include <string>

#include "exports/store_tree.h"
#include "support/tally.h"

using support::LoadedDll;
using support::LockedFile;

namespace {

enum State { kGood, kMissing, kEmpty, kCut, kZeroFilled, kBitFlipped, kOtherKey, kLocked, kStates };
constexpr const char* kStateNames[] = {"good",        "missing",     "empty",     "cut",
                                       "zero-filled", "bit-flipped", "other key", "locked"};

// Brings one file of the store into a state; a good one carries the identifier `id`. Gives the lock of a locked one.
std::unique_ptr<LockedFile> Prepare(const StoreTree& tree, const char* file, State state, const char* id) {
  const auto path = tree.tree.Store(file);
  std::string content = FakeEnciphered(WholeStore(id));
  if (state == kEmpty) content.clear();
  if (state == kCut) content.resize(content.size() / 2);
  if (state == kZeroFilled) content.assign(content.size(), '\0');
  if (state == kBitFlipped) content[0] ^= 1;  // in the marker: not every flip elsewhere shows, without a checksum
  if (state == kOtherKey) {
    for (size_t i = 4; i < content.size(); ++i) content[i] = static_cast<char>(content[i] * 7 + 0x80 + i % 5);
  }
  support::WriteFile(path, content);
  if (state == kMissing) std::filesystem::remove(path);
  return state == kLocked ? std::make_unique<LockedFile>(path) : nullptr;
}

// What KE_GetAgentID answers on the first call of a process.
std::string Expected(State live, State backup, State start) {
  const std::string unusable = "(1782)";
  if (live == kLocked || (live == kMissing && backup == kLocked)) return unusable;
  if (live == kGood) return "live";
  if (live == kMissing && backup == kGood) return "backup";
  // The store is damaged now. A start copy repairs it, or stands in the way when it cannot be copied.
  if (start == kLocked) return unusable;
  if (start == kGood) return "start";
  // No copy of the value so far: the backup is restored.
  return backup == kGood ? "backup" : unusable;
}

// Brings all files into their states and holds the locked ones.
struct Combination {
  Combination(const StoreTree& tree, State live, State backup, State start)
      : locks{Prepare(tree, "INTEGRA.DAT", live, "live"), Prepare(tree, "INTEGRA.BAK", backup, "backup"),
              Prepare(tree, "INTEGRA.START", start, "start")} {}
  std::unique_ptr<LockedFile> locks[3];
};

// Runs a case for all 512 combinations; it tells whether what it has checked was right.
template <typename Case>
void ForEveryCombination(const char* name, Case run) {
  const StoreTree tree;
  support::Tally tally(name);
  for (int live = 0; live < kStates; ++live) {
    for (int backup = 0; backup < kStates; ++backup) {
      for (int start = 0; start < kStates; ++start) {
        const std::string files = std::string("live, backup, start: ") + kStateNames[live] + ", " +
                                  kStateNames[backup] + ", " + kStateNames[start];
        tally.Case(run(tree, static_cast<State>(live), static_cast<State>(backup), static_cast<State>(start)), files);
      }
    }
  }
}

}  // namespace

TEST_CASE("damage: a getter finds the identity wherever it still is, and no good copy is overwritten") {
  ForEveryCombination("damaged files, a getter", [](const StoreTree& tree, State live, State backup, State start) {
    bool right = true;
    {
      const Combination files(tree, live, backup, start);
      const LoadedDll dll = tree.Load();
      for (int i = 0; i < 2; ++i) right &= AgentId(dll) == Expected(live, backup, start);
    }
    if (live == kGood) right &= tree.Text("INTEGRA.DAT") == WholeStore("live");
    if (backup == kGood) right &= tree.Text("INTEGRA.BAK") == WholeStore("backup");
    if (start == kGood) right &= tree.Text("INTEGRA.START") == WholeStore("start");
    return right;
  });
}

TEST_CASE("damage: a setter first repairs, then keeps the identity, and leaves the start copy alone") {
  ForEveryCombination("damaged files, a setter", [](const StoreTree& tree, State live, State backup, State start) {
    const std::string expected = Expected(live, backup, start);
    Prepare(tree, "INTEGRA.START", start, "start");
    const std::string startBefore = support::ReadFile(tree.tree.Store("INTEGRA.START"));
    KE_RESULT result;
    {
      const Combination files(tree, live, backup, start);
      result = CALL(tree.Load(), KE_SetServerDate)("2024-03-05");
    }
    if (support::ReadFile(tree.tree.Store("INTEGRA.START")) != startBefore) return false;
    if (expected.front() != '(') {
      return result == KE_SUCCESS && tree.Text("INTEGRA.DAT").find("ServerDate=2024-03-05\r\n") != std::string::npos &&
             AgentId(tree.Load()) == expected;
    }
    return result == KE_SUCCESS ||
           (result == KE_STORE_UNUSABLE && (backup != kGood || tree.Text("INTEGRA.BAK") == WholeStore("backup")));
  });
}

TEST_CASE(
    "damage: a store of fewer than four sections is replaced by the start copy once, and the policies are reset") {
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

  // Also a store that was in the cache before there was a start copy; and a start copy that is itself small makes no
  // loop.
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

TEST_CASE("damage: a store that was damaged when it was read replaces no backup that may be the last good copy") {
  enum Crypto { kPresent, kMissingNow };
  const std::string three = "[AGENT]\r\nID=left\r\n[INSTALL]\r\n[INTEGRATION]\r\nCERTIFICATE=c\r\n",
                    good = WholeStore("good");
  const struct {
    const char* name;
    std::string live, backup;
    Crypto crypto;
    bool locked, kept;
  } rows[] = {
      {"the change adds the fourth section", FakeEnciphered(three), FakeEnciphered(good), kPresent, false, true},
      {"an encrypted backup without a crypto module", three, FakeEnciphered(good), kMissingNow, false, true},
      {"a backup in use", FakeEnciphered(three), FakeEnciphered(good), kPresent, true, true},
      {"a damaged backup", FakeEnciphered(three), FakeEnciphered("[AGENT]\r\nID=old\r\n"), kPresent, false, false},
      {"a complete store", FakeEnciphered(WholeStore("live")), FakeEnciphered(good), kPresent, false, false},
  };
  for (const auto& row : rows) {
    CAPTURE(row.name);
    const StoreTree tree;
    support::WriteFile(tree.tree.Store("INTEGRA.DAT"), row.live);
    support::WriteFile(tree.tree.Store("INTEGRA.BAK"), row.backup);
    if (row.crypto == kMissingNow) std::filesystem::remove(tree.tree.Path("KELUtils/ApiCr.dll"));
    std::unique_ptr<LockedFile> lock;
    if (row.locked) lock = std::make_unique<LockedFile>(tree.tree.Store("INTEGRA.BAK"));
    CHECK(CALL(tree.Load(), KE_SetUninstallPass)("new section", 0) == KE_SUCCESS);
    lock.reset();
    CHECK((support::ReadFile(tree.tree.Store("INTEGRA.BAK")) == row.backup) == row.kept);
  }
}

TEST_CASE("damage: no text is lost whose encrypted form begins with a zero byte, which readers take for plain text") {
  const char* const id = "0297-4b1c-9d2e";  // its first block begins so with the development key blob
  const support::ProductTree tree;
  const LoadedDll dll(tree.Path("KELUtils/KELUtils.dll"));
  CHECK(CALL(dll, KE_SetAgentID)("first") == KE_SUCCESS);
  CHECK((CALL(dll, KE_SetUninstallPass)("secret", 0) == KE_SUCCESS && CALL(dll, KE_SetAgentID)(id) == KE_SUCCESS));
  const LoadedDll fresh = LoadedDll::Separate(tree.Path("KELUtils/KELUtils.dll"));
  CHECK((AgentId(fresh) == id && CALL(fresh, KE_IsNeededInstallationPassw)() == 1));
}

TEST_CASE("store files: read once while unchanged, and again when another process has written") {
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

TEST_CASE("crypto module: missing or failing") {
  const StoreTree tree;
  tree.Put("INTEGRA.DAT", WholeStore("live"));
  const auto content = [&] { return support::ReadFile(tree.tree.Store("INTEGRA.DAT")); };
  SUBCASE("missing or incomplete: a marked file stays as it is; a plain one is read, and written plain") {
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
    CHECK(CALL(dll, KE_SetAgentID)("enciphered") == KE_SUCCESS);
    CHECK(content() == FakeEnciphered(WholeStore("enciphered")));
  }
  SUBCASE(
      "failing: a marked file stays as it is; a text that cannot be enciphered is written plain, without a backup") {
    const LoadedDll crypto(tree.tree.Path("KELUtils/ApiCr.dll"));
    FakeCipherState& cipher = *CALL(crypto, FakeCipher)();
    const LoadedDll dll = tree.Load();
    cipher.error = 9;
    CHECK((AgentId(dll) == "(1784)" && content() == FakeEnciphered(WholeStore("live"))));
    cipher.error = 0;
    CHECK(AgentId(dll) == "live");
    cipher.error = 9;
    CHECK((CALL(dll, KE_SetAgentID)("new") == KE_CRYPTO_FAILED && content() == WholeStore("new")));
    CHECK_FALSE(std::filesystem::exists(tree.tree.Store("INTEGRA.BAK")));
    CHECK(AgentId(dll) == "new");
  }
}
