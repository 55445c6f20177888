#include "policy/script_registration.h"

#include <aclapi.h>
#include <doctest/doctest.h>

#include <functional>
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

// Removes b in a thread that ends at a line of its log, or does not.
struct EndingRemoval : support::RecordingSink {
  EndingRemoval(const TestPolicy& from, int line) : policy(from), left(line) {
    const win::ProcessHandle thread(CreateThread(nullptr, 0, Run, this, 0, nullptr));
    WaitForSingleObject(thread.Get(), INFINITE);
  }
  static DWORD WINAPI Run(void* removal) {
    auto& self = *static_cast<EndingRemoval*>(removal);
    self.completed = Remove(self.policy, {u"x"}, &self) == KE_SUCCESS;
    return 0;
  }
  void KE_API Write(std::uint32_t, std::uint32_t, const wchar_t*, const wchar_t*) override {
    if (--left == 0) ExitThread(0);
  }
  const TestPolicy& policy;
  int left;
  bool completed = false;
};

// A file that another program holds for so many of the library's pauses, which take no time, and that then has `text`,
// unless that is empty.
struct HeldFile {
  HeldFile(const std::filesystem::path& path, DWORD share, int pauses, const std::string& text) {
    s_noted.clear();
    if (pauses == 0) return;
    s_lock.emplace(path, share);
    s_release = [=]() mutable {
      if (--pauses != 0) return;
      s_lock.reset();
      if (!text.empty()) support::WriteFile(path, text);
    };
    win::g_waiting.pause = [](DWORD milliseconds) { s_noted += std::to_string(milliseconds) + " ", s_release(); };
  }
  ~HeldFile() { s_lock.reset(), win::g_waiting = kept; }
  static inline std::optional<support::LockedFile> s_lock;
  static inline std::string s_noted;
  static inline std::function<void()> s_release;
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
    RegDeleteKeyValueA(HKEY_LOCAL_MACHINE, kKey, kName);
    if (const auto size = static_cast<DWORD>(before.size()); size > 0)
      RegSetKeyValueA(HKEY_LOCAL_MACHINE, kKey, kName, REG_MULTI_SZ, before.data(), size);
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

TEST_CASE("policy scripts: registering writes another place than those of the release, or a bad script") {
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

TEST_CASE("policy scripts: the removal of one script changes another one") {
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

TEST_CASE("policy scripts: a removal that is interrupted at any line loses or doubles a script") {
  std::string expected;
  bool completed = false;
  for (int line = 0; line < 2 || !completed; ++line) {  // the first is to none
    CAPTURE(line);
    const ThreeScripts policy;
    for (const auto& [number, id] : {std::pair{"0", "{a}"}, {"1", "LocalGPO"}, {"2", "{b}"}, {"3", "{c}"}})
      policy.AddObject(2, number, id);
    completed = EndingRemoval(policy, line).completed;
    REQUIRE((Remove(policy) == KE_SUCCESS && line < 999));
    if (line == 0) expected = policy.State();
    CHECK(policy.State() == expected);
  }
}

TEST_CASE("policy scripts: a file that is in use or not understood is lost, or changed after all") {
  const std::string plain = "[Shutdown]\r\n0CmdLine=b\r\n0Parameters=x\r\n", ansi = plain + "1CmdLine=\xE4\r\n";
  const std::string x = Utf16(plain), y = Utf16("[Startup]\r\n0CmdLine=a\r\n").substr(2), mark = x.substr(0, 2),
                    z = Utf16("1CmdLine=z\r\n").substr(2), huge = plain + std::string(1100000, ' ');
  const std::string version = "[General]\r\nVersion=4\r\n", stepped = "[General]\r\nVersion=5\r\n";
  constexpr DWORD kRead = FILE_SHARE_READ, kWrite = FILE_SHARE_READ | FILE_SHARE_WRITE;
  constexpr int kLong = 1000;
  const struct {
    const char* name;
    std::string ini, left, gpt;  // with the same text left, the call is refused
    DWORD share = 0;
    int pauses = 0;  // for which scripts.ini is held, or gpt.ini
    bool gptHeld = false;
    std::string written = "";
  } rows[] = {
      {"the system's code page", ansi, Utf16("[Shutdown]\r\n0CmdLine=\xE4\r\n"), version},
      {"no gpt.ini", x + y, mark + y, ""},
      {"gpt.ini is garbage", x, x, "[General]\nVersion=?"},
      {"UTF-16 without a mark", x.substr(2), x.substr(2), version},
      {"a section twice", plain + plain, plain + plain, version},
      {"too large", huge, huge, version},
      {"reading in vain", x + y, x + y, version, 0, kLong},
      {"the check", x + y, mark + y, version, kRead, 6},
      {"the check in vain", x + y, x + y, version, kRead, kLong},
      {"the check, and it is changed", x + y, mark + y + z, version, kRead, 6, false, x + y + z},
      {"deleting", x, "", version, kWrite, 6},
      {"deleting in vain", mark + x.substr(2), mark, version, kWrite, kLong},
      {"replacing in vain", x + y, mark + y, version, kWrite, kLong},
      {"gpt.ini in vain", x + y, x + y, version, 0, kLong, true},
      {"replacing gpt.ini in vain", x + y, mark + y, version, kWrite, kLong, true},
  };
  for (const auto& row : rows) {
    CAPTURE(row.name);
    const TestPolicy policy;
    TestPolicy::Put(policy.Ini(), row.ini);
    if (!row.gpt.empty()) TestPolicy::Put(policy.Gpt(), row.gpt);
    TestPolicy::Put(policy.ScriptFile("b"), "");
    policy.AddObject(0, "0", "LocalGPO");
    const bool refused = row.left == row.ini, inPlace = row.share == kWrite && row.pauses == kLong;
    support::RecordingSink sink;
    {
      const HeldFile held(row.gptHeld ? policy.Gpt() : policy.Ini(), row.share, row.pauses, row.written);
      CHECK(Remove(policy, {u"x"}, &sink) == (refused ? KE_STORE_UNUSABLE : KE_SUCCESS));
      CHECK((inPlace || HeldFile::s_noted == (row.pauses ? "1 5 10 20 40 80 " : "")));
      if (refused) CHECK(RegisterScript(nullptr, policy.places, kShutdown, {u"d.cmd", u"4"}) == KE_STORE_UNUSABLE);
    }
    CHECK((sink.lines.find(L"Overwritten in place") != std::wstring::npos) == inPlace);
    CHECK((ReadFile(policy.Ini()) == row.left && policy.Registry(0) == "\n"));
    CHECK(ReadFile(policy.Gpt()) == (refused || row.gpt.empty() ? row.gpt : stepped));
    CHECK(std::filesystem::exists(policy.ScriptFile("b")) == refused);  // the text may name it
    if (refused && row.pauses) CHECK((Remove(policy) == KE_SUCCESS && ReadFile(policy.Gpt()) == stepped));
  }
}

TEST_CASE("policy scripts: a failed file call leaves a part of a text, or a temporary file") {
  using torture::Gate;
  const std::string x = "[Shutdown]\r\n0CmdLine=b\r\n0Parameters=x\r\n1CmdLine=a\r\n1Parameters=another one\r\n",
                    y = "[Shutdown]\r\n0CmdLine=a\r\n0Parameters=another one\r\n";
  const std::string version = "[General]\r\nVersion=9\r\n", stepped = "[General]\r\nVersion=10\r\n";
  const struct {
    Gate::Act act;
    bool held;  // scripts.ini can only be overwritten in place
    std::string ini;
  } rows[] = {{Gate::kFailOnce, false, Utf16(x)},
              {Gate::kFailFromThenOn, false, Utf16(x)},
              {Gate::kFailOnce, true, Utf16(x)},
              {Gate::kFailOnce, true, x}};  // the text grows
  for (const auto& row : rows) {
    bool reached = true;
    for (int at = 1; reached && at < 200; ++at) {
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
      for (const auto& entry : std::filesystem::recursive_directory_iterator(policy.places.folder))
        CHECK((row.act == Gate::kFailFromThenOn || row.held || entry.path().string().find("~") == std::string::npos));
      CHECK(((result == KE_SUCCESS) == (gpt == stepped) && Remove(policy) == KE_SUCCESS));
      CHECK((ReadFile(policy.Ini()) == Utf16(y)));
    }
    CHECK_FALSE(reached);
  }
}

TEST_CASE("policy scripts: another policy is changed, or a number where nothing was taken out") {
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

TEST_CASE("policy scripts: a file is deleted that something else runs, or that lies outside of the policy") {
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

TEST_CASE("trees: a file in use stays for ever, or a folder above it") {
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

TEST_CASE("policy scripts: a file in use stays for ever, or is deleted although a key may name it") {
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
