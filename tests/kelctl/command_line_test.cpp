#include <doctest/doctest.h>

#include <nlohmann/json.hpp>

#include "fake_library.h"
#include "result_codes.h"

namespace {

constexpr int kWrongUsage = 105;

FakeStore SampleStore() {
  FakeStore store;
  store.answers["AgentID"].text = "A-1";
  store.answers["Certificate"].text = "MIIB";
  store.answers["DeviceID"].result = KE_STORE_UNUSABLE;
  store.answers["InstallState"].number = -200;
  store.answers["IsInstallComplete"].number = 1;
  return store;
}

std::string Joined(const std::vector<std::string>& words) {
  std::string line;
  for (const auto& word : words) line += " " + word;
  return line;
}

}  // namespace

TEST_CASE("what a command line prints and how it ends") {
  const struct {
    std::vector<std::string> arguments;
    int exitCode;
    std::string out;
    std::string err;  // a part of it
  } rows[] = {
      {{"get", "agent-id"}, 0, "A-1\n", ""},
      {{"get", "install-state"}, 0, "-200\n", ""},
      {{"get", "install-complete"}, 0, "yes\n", ""},
      {{"get", "integrated"}, 0, "no\n", ""},
      {{"get", "certificate"}, 0, "********\n", ""},
      {{"get", "certificate", "--reveal"}, 0, "MIIB\n", ""},
      {{"get", "rcm-password"}, 0, "\n", ""},
      {{"get", "device-id"}, 1, "", "KE_GetDeviceID failed with 1782 KE_STORE_UNUSABLE: the value is missing"},
      {{"get", "agent-id", "--dll", "absent.dll"}, 2, "", "cannot load absent.dll"},
      {{"get", "rcm-user"}, 2, "", "no export KE_GetUserRCM"},
      {{}, 106, "", "A subcommand is required"},
      {{"get", "agent"}, kWrongUsage, "", "no value \"agent\"; the names are agent-id, "},
      {{"get", "property:Site"}, kWrongUsage, "", "can only be set"},
      {{"set", "integrated", "1"}, kWrongUsage, "", "integrated is read only"},
      {{"set", "container", "7", "--only-forward"}, kWrongUsage, "", "--only-forward is for install-state"},
      {{"set", "property:Site", "7", "--only-forward"}, kWrongUsage, "", "--only-forward is for install-state"},
      {{"set", "install-state", "2147483648"}, kWrongUsage, "", "2147483648 is out of range"},
      {{"set", "install-state", "-2147483649"}, kWrongUsage, "", "-2147483649 is out of range"},
      {{"set", "last-install-error", "12x"}, kWrongUsage, "", "\"12x\" is not a decimal number"},
      {{"set", "last-install-error", "99999999999x"}, kWrongUsage, "", "is not a decimal number"},
      {{"set", "last-install-error", ""}, kWrongUsage, "", "\"\" is not a decimal number"},
      {{"set", "container", "a\n[B]"}, kWrongUsage, "", "line break"},
      {{"set", "property:Site", "a\rb"}, kWrongUsage, "", "line break"},
      {{"set", "property:", "1"}, kWrongUsage, "", "key"},
      {{"set", "property:a=b", "1"}, kWrongUsage, "", "key"},
      {{"set", "property:[a", "1"}, kWrongUsage, "", "key"},
      {{"set", "property:a\nb", "1"}, kWrongUsage, "", "key"},
  };
  fakeStore = SampleStore();
  fakeStore.absentExport = "KE_GetUserRCM";
  for (const auto& row : rows) {
    CAPTURE(Joined(row.arguments));
    const Outcome outcome = RunOnFake(row.arguments);
    CHECK(outcome.exitCode == row.exitCode);
    CHECK(outcome.out == row.out);
    CHECK(outcome.err.find(row.err) != outcome.err.npos);
    CHECK(outcome.err.empty() == (row.exitCode == 0));
  }
  CHECK(fakeStore.calls.empty());
}

TEST_CASE("set hands over exactly what was typed, in the code page") {
  const struct {
    std::vector<std::string> arguments;
    std::string call;
  } rows[] = {
      {{"set", "container", "/x"}, "Container=</x>"},
      {{"set", "container", "[a,b]"}, "Container=<[a,b]>"},
      {{"set", "container", "show"}, "Container=<show>"},
      {{"set", "container", "a\\nb \"c\""}, "Container=<a\\nb \"c\">"},
      {{"set", "customer-id", ""}, "CustomerId=<>"},
      {{"set", "certificate", "--", "-x"}, "Certificate=<-x>"},
      {{"set", "last-install-error", "-2147483648"}, "LastInstallError=-2147483648"},
      {{"set", "install-state", "2147483647"}, "InstallState=2147483647,0"},
      {{"set", "install-state", "7", "--only-forward"}, "InstallState=7,1"},
      {{"set", "property:a b", "c=d"}, "property <a b>=<c=d>"},
  };
  for (const auto& row : rows) {
    CAPTURE(row.call);
    fakeStore = {};
    const Outcome outcome = RunOnFake(row.arguments);
    CHECK(outcome.exitCode == 0);
    CHECK(outcome.out + outcome.err == "");
    CHECK(fakeStore.calls == std::vector{row.call});
  }
  fakeStore.answers["Container"].result = KE_CRYPTO_FAILED;
  const Outcome failed = RunOnFake({"set", "container", "7"});
  CHECK(failed.exitCode == 1);
  CHECK(failed.err.find("KE_SetContainer failed with 1784 KE_CRYPTO_FAILED") != failed.err.npos);
}

TEST_CASE("show lists every value, and why one could not be read") {
  fakeStore = SampleStore();
  fakeStore.answers["Container"].text = "a\tb\x1b";
  CHECK(RunOnFake({"show"}).exitCode == 0);
  fakeStore.answers["UserRCM"].result = KE_CRYPTO_FAILED;
  const Outcome outcome = RunOnFake({"show"});
  CHECK(outcome.exitCode == 1);
  CHECK(outcome.out ==
        "agent-id            A-1\n"
        "agent-version       (empty)\n"
        "customer-id         (empty)\n"
        "device-id           (no value: 1782 KE_STORE_UNUSABLE)\n"
        "certificate         ********\n"
        "container           a\\x09b\\x1B\n"
        "server-date         (empty)\n"
        "rcm-user            (failed: 1784 KE_CRYPTO_FAILED: enciphering or deciphering failed)\n"
        "rcm-password        (empty)\n"
        "install-state       -200\n"
        "last-install-error  0\n"
        "last-error-param    (empty)\n"
        "install-complete    yes\n"
        "integrated          no\n");
  CHECK(RunOnFake({"show", "--reveal"}).out.find("certificate         MIIB\n") != std::string::npos);
}

TEST_CASE("show --json gives typed values and the reasons of missing ones") {
  fakeStore = SampleStore();
  fakeStore.answers["Container"].text = "\xff";  // never valid UTF-8, and no reason to fail
  const auto json = nlohmann::json::parse(RunOnFake({"show", "--json"}).out);
  CHECK(json.size() == 14);
  CHECK(json["agent-id"] == nlohmann::json{{"value", "A-1"}, {"result", 0}});
  CHECK(json["certificate"] == nlohmann::json{{"value", "********"}, {"result", 0}, {"masked", true}});
  CHECK(json["install-state"]["value"] == -200);
  CHECK(json["install-complete"]["value"] == true);
  CHECK(json["device-id"]["value"].is_null());
  CHECK(json["device-id"]["resultName"] == "KE_STORE_UNUSABLE");
}

TEST_CASE("show fails when nothing can be read: then it is the store that is missing") {
  fakeStore = {};
  for (const char* name :
       {"AgentID", "AgentVersion", "CustomerId", "DeviceID", "Certificate", "Container", "ServerDate", "UserRCM",
        "PasswordRCM", "InstallState", "LastInstallError", "LastErrorParam", "IsInstallComplete", "IsIntegrated"}) {
    CHECK(RunOnFake({"show"}).exitCode == 0);
    fakeStore.answers[name].result = KE_STORE_UNUSABLE;
  }
  CHECK(RunOnFake({"show"}).exitCode == 1);
}

TEST_CASE("a value of nearly 1 MB is read, a longer one is told apart from a missing one") {
  constexpr std::size_t kLongest = 1024 * 1024 - 1;
  fakeStore = {};
  for (const auto length : std::vector<std::size_t>{4095, 4096, 70000, kLongest}) {
    fakeStore.answers["AgentID"].text.assign(length, 'x');
    CHECK(RunOnFake({"get", "agent-id"}).out.size() == length + 1);
  }
  fakeStore.answers["AgentID"].text += 'x';
  CHECK(RunOnFake({"get", "agent-id"}).err.find("1778 KE_BUFFER_TOO_SMALL") != std::string::npos);
  const Outcome shown = RunOnFake({"show"});
  CHECK(shown.out.find("agent-id            (longer than 1 MB: 1778 KE_BUFFER_TOO_SMALL)") != std::string::npos);
  CHECK(shown.exitCode == 1);
}

TEST_CASE("every result code of the library has a name") {
  for (KE_RESULT code = KE_MISSING_ARGUMENT; code <= KE_UPDATE_FAILED_1567; ++code) {
    CAPTURE(code);
    CHECK(kelctl::FindResultCode(code).code == code);
    CHECK((std::string(kelctl::FindResultCode(code).name).starts_with("KE_") || code == 1795));  // 1795 is not in use
  }
  CHECK(kelctl::DescribeResult(5102) == "5102 (unnamed): a code this kelctl does not know");
}
