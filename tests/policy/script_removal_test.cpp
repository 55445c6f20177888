#include "policy/script_registration.h"

#include <aclapi.h>
#include <doctest/doctest.h>

#include <optional>

#include "policy/policy_fixture.h"
#include "policy/system_files.h"
#include "torture/torture.h"
#include "win/registry.h"

using namespace policy;
using support::ReadFile;
using support::TestPolicy;

namespace {

constexpr auto kShutdown = ScriptKind::kShutdown;
const std::string kRan = std::string("\xE8\x07\x01\0\x02\0\x03\0\x04\0\x05\0\x06\0\x07", 15) + '\0';
constexpr char kRanShown[] = "e8070100020003000400050006000700", kNeverRan[] = "00000000000000000000000000000000";

KE_RESULT Remove(const TestPolicy& policy, const ScriptMatch& wanted = {u"x"}, policy::ILogSink* sink = nullptr) {
  return RemoveScripts(sink, policy.places, kShutdown, wanted, ScriptFiles::kDeleted);
}

std::string Utf16(const std::string& text) { return EncodeUtf16(policy::Utf16(support::Wide(text))); }

// The scripts a, b and c with the parameters 1, x and 3. c has run.
struct ThreeScripts : TestPolicy {
  ThreeScripts() {
    for (const Script& script : {Script{u"a.cmd", u"1"}, {u"b.cmd", u"x"}, {u"c.cmd", u"3"}})
      REQUIRE(RegisterScript(nullptr, places, kShutdown, script) == KE_SUCCESS);
    for (const std::size_t place : {0u, 1u}) Set(Key(place) + "\\0\\2", "ExecTime", REG_QWORD, kRan);
    for (const char* file : {"a.cmd", "b.cmd", "c.cmd"}) Put(ScriptFile(file), file);
  }
  // Everything but the version and the folder's own name; at the end which script files there are.
  std::string State() const {
    std::string state = Registry(0) + Registry(1) + Registry(2) + ReadFile(Ini());
    for (std::size_t at; (at = state.find(folder / "")) != state.npos;) state.erase(at, (folder / "").size());
    for (const char* file : {"a.cmd", "b.cmd", "c.cmd"})
      state += std::filesystem::exists(ScriptFile(file)) ? *file : '-';
    return state;
  }
};

// Keeps each state of a policy in which a removal that ended before a line of its log would leave it.
struct Snapshots : support::RecordingSink {
  explicit Snapshots(const ThreeScripts& removed) : policy(removed) {}
  ~Snapshots() { RegDeleteTreeA(HKEY_CURRENT_USER, kKept); }

  void KE_API Write(std::uint32_t, std::uint32_t, const wchar_t*, const wchar_t*) override {
    if (const std::string state = policy.State(); state != last) last = state, Copy(TestPolicy::kPrefix, Key(count++));
  }
  void Restore(int number) const {
    RegDeleteTreeA(HKEY_CURRENT_USER, TestPolicy::kPrefix);
    Copy(Key(number), TestPolicy::kPrefix);
  }
  int count = 0;

 private:
  // With the files, which have a folder for each key.
  void Copy(const std::string& from, const std::string& to) const {
    HKEY key = nullptr;
    CHECK(RegCreateKeyA(HKEY_CURRENT_USER, to.c_str(), &key) == ERROR_SUCCESS);
    CHECK(RegCopyTreeA(HKEY_CURRENT_USER, from.c_str(), key) == ERROR_SUCCESS);
    RegCloseKey(key);
    const auto folder = [&](const std::string& of) {
      return of == TestPolicy::kPrefix ? std::filesystem::path(policy.places.folder) : policy.folder.Path(of);
    };
    std::filesystem::remove_all(folder(to));
    std::filesystem::create_directories(folder(to).parent_path());
    std::filesystem::copy(folder(from), folder(to), std::filesystem::copy_options::recursive);
  }
  static std::string Key(int number) { return kKept + std::to_string(number); }

  static constexpr char kKept[] = "Software\\KELUtils tests kept\\";
  const ThreeScripts& policy;
  std::string last;
};

// A file that another program holds. It lets go after so many of the library's pauses, which take no time, and then
// writes `text`, unless that is empty.
struct HeldFile {
  HeldFile(const std::filesystem::path& path, DWORD share, int pauses, const std::string& text) {
    s_left = pauses, s_noted.clear(), s_path = path, s_text = text;
    s_lock.emplace(path, share);
    win::g_waiting.pause = [](DWORD milliseconds) {
      s_noted += std::to_string(milliseconds) + " ";
      if (--s_left == 0) s_lock.reset();
      if (s_left == 0 && !s_text.empty()) support::WriteFile(s_path, s_text);
    };
  }
  ~HeldFile() {
    s_lock.reset();
    win::g_waiting = kept;
  }
  static inline std::optional<support::LockedFile> s_lock;
  static inline int s_left;
  static inline std::string s_noted, s_text;
  static inline std::filesystem::path s_path;
  const win::Waiting kept = win::g_waiting;
};

std::string ScriptLines(std::string key, const char* program, const char* parameters, const char* ran, bool shell) {
  return key + "ExecTime=11:" + ran + "\n" + (shell ? key + "IsPowershell=4:00000000\n" : "") + key +
         "Parameters=1:" + parameters + "\n" + key + "Script=1:" + program + "\n";
}

std::string ObjectLines(const TestPolicy& policy, bool scriptOrder = true) {
  return "0\\DisplayName=1:Local Group Policy\n0\\FileSysPath=1:" + policy.folder / "GroupPolicy\\Machine" +
         "\n0\\GPO-ID=1:LocalGPO\n0\\GPOName=1:Local Group Policy\n" +
         (scriptOrder ? "0\\PSScriptOrder=4:01000000\n" : "") + "0\\SOM-ID=1:Local\n";
}

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

TEST_CASE("policy scripts: registering writes the places of the release, and nothing of a bad script") {
  const struct {
    std::uint32_t code;
    bool vista, windows7;
  } rows[] = {{policy::kWindowsXp, 0, 0}, {policy::kServer2008, 1, 0}, {policy::kWindows10, 1, 1}, {0, 1, 1}};
  for (const auto& row : rows) {
    CAPTURE(row.code);
    const TestPolicy policy(row.code);
    for (int i = 0; i < 2; ++i)  // the second time changes nothing
      CHECK(RegisterScript(nullptr, policy.places, kShutdown, {u"a.cmd", u"x"}) == KE_SUCCESS);
    for (const std::size_t place : {0u, 1u, 2u}) {
      const std::string script = ScriptLines("0\\0\\", "a.cmd", "x", kNeverRan, place == 0 && row.windows7);
      const std::string all = "\n" + script + ObjectLines(policy, row.windows7);
      CHECK(policy.Registry(place) == ((place < 2) == row.vista ? all : ""));
    }
    CHECK(ReadFile(policy.Ini()) == Utf16("\r\n[Shutdown]\r\n0CmdLine=a.cmd\r\n0Parameters=x\r\n"));
    CHECK(ReadFile(policy.Gpt()) == NewGptIni());
    CHECK((GetFileAttributesW(policy.Ini().c_str()) & FILE_ATTRIBUTE_HIDDEN) != 0);
  }
  const TestPolicy policy;
  CHECK(RegisterScript(nullptr, policy.places, kShutdown, {u"", u"x"}) == KE_MISSING_ARGUMENT);
  for (const Script& script : {Script{u"a", u"x\r\n1CmdLine=b"}, {std::u16string(260, u'a'), u""}})
    CHECK(RegisterScript(nullptr, policy.places, kShutdown, script) == KE_OUT_OF_RANGE);
  CHECK(Remove(policy, {u""}) == KE_MISSING_ARGUMENT);
  support::RecordingSink sink;
  CHECK(DeleteShutdownInformation(&sink, nullptr, L"text", 1) == KE_MISSING_ARGUMENT);
  CHECK(sink.lines ==
        L"50 Function start\n30 Parameter (parameters): (null)\n30 Parameter (text): text\n30 Parameter (flag): 1\n"
        L"40 Return code (1777)\n50 Function end\n");
  CHECK((policy.folder.FileCount() == 0 && policy.Registry(0).empty()));
}

TEST_CASE("policy scripts: removing one of three leaves the others renumbered and whole") {
  const ThreeScripts policy;
  support::RecordingSink sink;
  CHECK((Remove(policy, {u"x", u"another.cmd"}) == KE_SUCCESS && policy.State().ends_with("abc")));
  CHECK(Remove(policy, {u"x"}, &sink) == KE_SUCCESS);
  for (const std::size_t place : {0u, 1u}) {
    CHECK(policy.Registry(place) == "\n" + ScriptLines("0\\0\\", "a.cmd", "1", kNeverRan, place == 0) +
                                        ScriptLines("0\\1\\", "c.cmd", "3", kRanShown, place == 0) +
                                        ObjectLines(policy));
  }
  CHECK(ReadFile(policy.Ini()) ==
        Utf16("\r\n[Shutdown]\r\n0CmdLine=a.cmd\r\n0Parameters=1\r\n1CmdLine=c.cmd\r\n1Parameters=3\r\n"));
  CHECK(policy.State().ends_with("a-c"));
  CHECK((GetFileAttributesW(policy.Ini().c_str()) & FILE_ATTRIBUTE_HIDDEN) != 0);
  CHECK(ReadFile(policy.Gpt()).ends_with("Version=4\r\n"));
  CHECK(sink.lines.ends_with(L"40 Return code (0)\n50 Function end\n"));
  const std::string state = policy.State() + ReadFile(policy.Gpt());
  CHECK(Remove(policy) == KE_SUCCESS);  // nothing is found any more
  CHECK((policy.State() + ReadFile(policy.Gpt()) == state));
  for (const char16_t* last : {u"1", u"3"}) CHECK(Remove(policy, {last}) == KE_SUCCESS);
  CHECK(policy.State() == "\n\n---");
  CHECK_FALSE(std::filesystem::exists(policy.Ini()));
}

TEST_CASE("policy scripts: a removal that was interrupted anywhere is brought to its end") {
  const ThreeScripts policy;
  for (const auto& [number, id] : {std::pair{"0", "{a}"}, {"1", "LocalGPO"}, {"2", "{b}"}, {"3", "{c}"}})
    policy.AddObject(2, number, id);
  Snapshots snapshots(policy);
  CHECK(Remove(policy, {u"x"}, &snapshots) == KE_SUCCESS);
  const std::string expected = policy.State();
  REQUIRE(snapshots.count > 20);
  for (int number = 0; number < snapshots.count; ++number) {
    CAPTURE(number);
    snapshots.Restore(number);
    CHECK((Remove(policy) == KE_SUCCESS && policy.State() == expected));
  }
}

TEST_CASE("policy scripts: files that others hold are waited for; in vain, they stay and the next call does it all") {
  const std::string x = "[Shutdown]\r\n0CmdLine=b\r\n0Parameters=x\r\n", y = "[Startup]\r\n0CmdLine=a\r\n",
                    z = "1CmdLine=z\r\n";
  const std::string version = "[General]\r\nVersion=4\r\n", stepped = "[General]\r\nVersion=5\r\n";
  constexpr DWORD kRead = FILE_SHARE_READ, kWrite = FILE_SHARE_READ | FILE_SHARE_WRITE;
  constexpr int kLong = 1000;
  const struct {
    const char* name;
    bool version;  // gpt.ini is held
    DWORD share;
    int pauses;
    KE_RESULT result;
    std::string ini, left;
    bool ours = true;  // which waits; else it is the replacement of files, as long as it likes
    std::string written = "";
  } rows[] = {
      {"reading in vain", false, 0, kLong, KE_STORE_UNUSABLE, x + y, ""},
      {"the check", false, kRead, 6, KE_SUCCESS, x + y, y},
      {"the check in vain", false, kRead, kLong, KE_STORE_UNUSABLE, x + y, ""},
      {"the check, and it is changed", false, kRead, 6, KE_SUCCESS, x + y, y + z, true, x + y + z},
      {"deleting", false, kWrite, 6, KE_SUCCESS, x, ""},
      {"deleting in vain", false, kWrite, kLong, KE_SUCCESS, "\r\n" + x, "\r\n", false},
      {"replacing in vain", false, kWrite, kLong, KE_SUCCESS, x + y, y, false},
      {"gpt.ini in vain", true, 0, kLong, KE_STORE_UNUSABLE, x + y, ""},
      {"replacing gpt.ini in vain", true, kWrite, kLong, KE_SUCCESS, x + y, y, false},
  };
  for (const auto& row : rows) {
    CAPTURE(row.name);
    const TestPolicy policy;
    TestPolicy::Put(policy.Ini(), Utf16(row.ini));
    TestPolicy::Put(policy.Gpt(), version);
    TestPolicy::Put(policy.ScriptFile("b"), "");
    support::RecordingSink sink;
    {
      const HeldFile held(row.version ? policy.Gpt() : policy.Ini(), row.share, row.pauses,
                          row.written.empty() ? "" : Utf16(row.written));
      CHECK(Remove(policy, {u"x"}, &sink) == row.result);
      if (row.ours) CHECK(HeldFile::s_noted == "1 5 10 20 40 80 ");
      if (row.result != KE_SUCCESS)
        CHECK(RegisterScript(nullptr, policy.places, kShutdown, {u"d.cmd", u"4"}) == KE_STORE_UNUSABLE);
    }
    CHECK((sink.lines.find(L"Overwritten in place") != std::wstring::npos) ==
          (row.share == kWrite && row.pauses == kLong));
    if (row.result != KE_SUCCESS) {
      CHECK((ReadFile(policy.Ini()) == Utf16(row.ini) && ReadFile(policy.Gpt()) == version));
      CHECK((std::filesystem::exists(policy.ScriptFile("b")) && Remove(policy) == KE_SUCCESS));
    } else {
      CHECK((ReadFile(policy.Ini()) == (row.left.empty() ? "" : Utf16(row.left))));
    }
    CHECK(ReadFile(policy.Gpt()) == stepped);
    CHECK_FALSE(std::filesystem::exists(policy.ScriptFile("b")));
  }
}

TEST_CASE("policy scripts: whichever file call fails, each file has its old text or its new one") {
  using torture::Gate;
  const std::string x = "[Shutdown]\r\n0CmdLine=b\r\n0Parameters=x\r\n1CmdLine=a\r\n1Parameters=another one\r\n",
                    y = "[Shutdown]\r\n0CmdLine=a\r\n0Parameters=another one\r\n";
  const std::string version = "[General]\r\nVersion=9\r\n", stepped = "[General]\r\nVersion=10\r\n";
  const struct {
    const char* name;
    Gate::Act act;
    bool held;  // scripts.ini can only be overwritten in place
    std::string ini;
  } rows[] = {{"once", Gate::kFailOnce, false, Utf16(x)},
              {"from then on", Gate::kFailFromThenOn, false, Utf16(x)},
              {"in place", Gate::kFailOnce, true, Utf16(x)},
              {"in place, the text grows", Gate::kFailOnce, true, x}};
  for (const auto& row : rows) {
    bool reached = true;
    for (int at = 1; reached && at < 200; ++at) {
      CAPTURE(row.name);
      CAPTURE(at);
      const TestPolicy policy;
      TestPolicy::Put(policy.Ini(), row.ini);
      TestPolicy::Put(policy.Gpt(), version);
      KE_RESULT result;
      {
        std::optional<support::LockedFile> held;
        if (row.held) held.emplace(policy.Ini(), FILE_SHARE_READ | FILE_SHARE_WRITE);
        const Gate gate(row.act, at, ERROR_DISK_FULL);
        result = Remove(policy);
        reached = Gate::Reached();
      }
      const std::string ini = ReadFile(policy.Ini()), gpt = ReadFile(policy.Gpt());
      CHECK((ini == Utf16(y) || (ini == row.ini && gpt == version)));
      CHECK((gpt == stepped || gpt == version));
      CHECK(((result == KE_SUCCESS) == (gpt == stepped) && Remove(policy) == KE_SUCCESS));
      CHECK((ReadFile(policy.Ini()) == Utf16(y)));
      for (const auto& entry : std::filesystem::recursive_directory_iterator(policy.places.folder))
        CHECK(entry.path().string().find("~") == std::string::npos);  // nothing is left of the failed call
    }
    CHECK_FALSE(reached);
  }
}

TEST_CASE("policy scripts: other policies stay, and numbers are closed up only where a script was taken out") {
  const TestPolicy policy;
  for (const auto& [number, id] : {std::pair{"0", "{domain}"}, {"2", "LocalGPO"}, {"10", "{other}"}, {"n", "LocalGPO"}})
    policy.AddObject(0, number, id);
  policy.AddObject(1, "1", "LocalGPO");
  policy.AddScript(1, "1\\5", "y");
  policy.AddScript(2, "0\\0");  // without an identifier: ours
  policy.AddScript(0, "5\\0");  // ... but not with another number
  const auto state = [&] { return policy.Registry(0) + policy.Registry(1) + policy.Registry(2); };
  const std::string before = state();
  CHECK(Remove(policy, {u"z"}) == KE_SUCCESS);
  CHECK(state() == before);  // what is dead behind a gap stays so
  CHECK(Remove(policy) == KE_SUCCESS);
  const auto object = [](const std::string& key, const char* id, const char* parameters = "x") {
    return key + "0\\Parameters=1:" + parameters + "\n" + key + "0\\Script=1:other.cmd\n" + key + "GPO-ID=1:" + id +
           "\n";
  };
  CHECK(policy.Registry(0) == "\n" + object("0\\", "{domain}") +
                                  "1\\\n1\\0\\Parameters=1:x\n1\\0\\Script=1:other.cmd\n" + object("2\\", "{other}") +
                                  object("n\\", "LocalGPO"));
  CHECK((policy.Registry(1) == "\n" + object("1\\", "LocalGPO", "y") && policy.Registry(2) == "\n"));
  policy.Set(policy.Key(2) + "\\0", "GPO-ID", REG_SZ, "LocalGPO");  // an empty one
  CHECK((Remove(policy) == KE_SUCCESS && policy.Registry(2) == "\n0\\GPO-ID=1:LocalGPO\n"));
  std::vector<ListedScript> listed;
  CHECK(ListScripts(nullptr, policy.places, listed) == KE_SUCCESS);
  CHECK((listed.size() == 4 && !listed[0].local && listed[0].script == Script{u"other.cmd", u"x"}));
}

TEST_CASE("policy scripts: the state of scripts.ini and gpt.ini") {
  const std::string both = "[Shutdown]\r\n0CmdLine=a\r\n0Parameters=x\r\n1CmdLine=\xE4\r\n1Parameters=y\r\n";
  const std::string left = "[Shutdown]\r\n0CmdLine=\xE4\r\n0Parameters=y\r\n", huge = both + std::string(1100000, ' ');
  const std::string version = "[General]\r\nVersion=4\r\n", stepped = "[General]\r\nVersion=5\r\n",
                    bad = "[General]\nVersion=?";
  const struct {
    const char* name;
    std::string ini, gpt, iniAfter, gptAfter;
  } rows[] = {
      {"the system's code page", both, version, Utf16(left), stepped},
      {"no gpt.ini", both, "", Utf16(left), ""},
      {"refused: gpt.ini is garbage", both, bad, both, bad},
      {"no section stays", "\r\n[Shutdown]\r\n0CmdLine=a\r\n0Parameters=x", version, "", stepped},
      {"refused: UTF-16 without a mark", Utf16(both).substr(2), version, Utf16(both).substr(2), version},
      {"refused: half a character", Utf16(both) + "x", version, Utf16(both) + "x", version},
      {"refused: a section twice", both + both, version, both + both, version},
      {"refused: too large", huge, version, huge, version},
  };
  for (const auto& row : rows) {
    CAPTURE(row.name);
    const TestPolicy policy;
    TestPolicy::Put(policy.ScriptFile("other.cmd"), "");
    TestPolicy::Put(policy.Ini(), row.ini);
    if (!row.gpt.empty()) TestPolicy::Put(policy.Gpt(), row.gpt);
    policy.AddObject(0, "0", "LocalGPO");
    const bool refused = std::string(row.name).starts_with("refused");
    CHECK(Remove(policy) == (refused ? KE_STORE_UNUSABLE : KE_SUCCESS));
    CHECK(std::filesystem::exists(policy.ScriptFile("other.cmd")) == refused);  // the text may name it
    if (refused) CHECK(RegisterScript(nullptr, policy.places, kShutdown, {u"n", u"n"}) == KE_STORE_UNUSABLE);
    CHECK((ReadFile(policy.Ini()) == row.iniAfter && ReadFile(policy.Gpt()) == row.gptAfter));
    CHECK(policy.Registry(0) == "\n");
  }
}

TEST_CASE("policy scripts: only a script file of the policy that nothing else runs is deleted") {
  const struct {
    const char16_t *program, *otherProgram;  // "|" for the folder of the kind
    const char* file;
    bool deleted;
  } rows[] = {{u"s.cmd", u"t.cmd", "s.cmd", true},
              {u"|\\sub\\..\\S.CMD", u"t.cmd", "s.cmd", true},
              {u"|\\..\\s.cmd", u"t.cmd", "..\\s.cmd", false},
              {u"s.cmd", u"|\\S.cmd", "s.cmd", false},
              {u"s.cmd", u"\"s.cmd\"", "s.cmd", false},
              {u"s.cmd", u"%KELUTILS_TEST_NONE%s.cmd", "s.cmd", true},
              {u"\"s.cmd\"", u"t.cmd", "s.cmd", true}};
  for (const auto& row : rows) {
    const TestPolicy policy;
    TestPolicy::Put(policy.ScriptFile("t.cmd"), "");
    TestPolicy::Put(policy.ScriptFile(row.file), "");
    for (auto [text, parameters] : {std::pair{std::u16string(row.program), u"x"}, {row.otherProgram, u"y"}}) {
      if (text[0] == u'|') text.replace(0, 1, policy::Utf16(ScriptsFolder(policy.places, kShutdown)));
      RegisterScript(nullptr, policy.places, kShutdown, {text, parameters});
    }
    CHECK((Remove(policy) == KE_SUCCESS && std::filesystem::exists(policy.ScriptFile(row.file)) == !row.deleted));
  }
}

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
    CHECK(RemoveScripts(&sink, policy.places, kShutdown, {u"x"}, ScriptFiles::kDeleted) ==
          (denied ? KE_REGISTRY_UNUSABLE : KE_SUCCESS));
    CHECK((sink.lines.find(L"<1800 5>\n") != std::wstring::npos) == denied);
    CHECK((PendingDeletions::Find(script) != std::string::npos) == !denied);  // the key may name it still
    CHECK(policy.Registry(1) == "\n");
    allow(nullptr);  // so that the key can be removed
  }
}
