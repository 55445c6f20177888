#include "fake_library.h"

#include <cstring>
#include <sstream>

#include "command_line.h"
#include "errors.h"

namespace {

KE_RESULT GetText(const char* name, char* buffer, int32_t size) {
  const FakeAnswer& answer = fakeStore.answers[name];
  if (answer.result != KE_SUCCESS) return answer.result;
  if (size <= static_cast<int32_t>(answer.text.size())) return KE_BUFFER_TOO_SMALL;
  std::memcpy(buffer, answer.text.c_str(), answer.text.size() + 1);
  return KE_SUCCESS;
}

KE_RESULT GetNumber(const char* name, int32_t* value) {
  *value = fakeStore.answers[name].number;
  return fakeStore.answers[name].result;
}

KE_RESULT Set(const std::string& name, const std::string& value) {
  fakeStore.calls.push_back(name + "=" + value);
  return fakeStore.answers[name].result;
}

}  // namespace

#define TEXT_EXPORTS(X) \
  X(AgentID)            \
  X(AgentVersion)       \
  X(CustomerId) X(DeviceID) X(Certificate) X(Container) X(ServerDate) X(UserRCM) X(PasswordRCM) X(LastErrorParam)
#define DEFINE_TEXT(Name)                                                                            \
  KE_RESULT KE_API KE_Get##Name(char* buffer, int32_t size) { return GetText(#Name, buffer, size); } \
  KE_RESULT KE_API KE_Set##Name(const char* text) { return Set(#Name, text); }
#define LIST_TEXT(Name) LIST(KE_Get##Name) LIST(KE_Set##Name)
#define LIST(name) {#name, reinterpret_cast<kelctl::AnyFunction>(&name)},

extern "C" {
TEXT_EXPORTS(DEFINE_TEXT)
KE_RESULT KE_API KE_GetInstallState(int32_t* value) { return GetNumber("InstallState", value); }
KE_RESULT KE_API KE_GetLastInstallError(int32_t* value) { return GetNumber("LastInstallError", value); }
KE_RESULT KE_API KE_IsInstallComplete(int32_t* value) { return GetNumber("IsInstallComplete", value); }
KE_RESULT KE_API KE_IsIntegrated(int32_t* value) { return GetNumber("IsIntegrated", value); }
KE_RESULT KE_API KE_SetLastInstallError(const int32_t* error) {
  return Set("LastInstallError", std::to_string(*error));
}
KE_RESULT KE_API KE_SetInstallState(const int32_t* state, int32_t onlyForward) {
  return Set("InstallState", std::to_string(*state) + "," + std::to_string(onlyForward));
}
KE_RESULT KE_API KE_SetPropertyInIntegra(const char* key, const char* text) {
  return Set(std::string("property ") + key, text);
}
}

namespace {

class FakeLibrary : public kelctl::Library {
 public:
  kelctl::AnyFunction Find(const char* exportName) override {
    static const std::map<std::string, kelctl::AnyFunction> exports = {
        TEXT_EXPORTS(LIST_TEXT) LIST(KE_GetInstallState) LIST(KE_GetLastInstallError) LIST(KE_IsInstallComplete)
            LIST(KE_IsIntegrated) LIST(KE_SetLastInstallError) LIST(KE_SetInstallState) LIST(KE_SetPropertyInIntegra)};
    if (exportName == fakeStore.absentExport) throw kelctl::LibraryError("no export " + fakeStore.absentExport);
    return exports.at(exportName);
  }
  std::string ToCodePage(const std::string& text) override { return "<" + text + ">"; }
  std::string FromCodePage(const std::string& text) override { return text; }
};

}  // namespace

Outcome RunOnFake(const std::vector<std::string>& arguments) {
  std::ostringstream out, err;
  const auto open = [](const std::string& path) -> std::unique_ptr<kelctl::Library> {
    if (path == "absent.dll") throw kelctl::LibraryError("cannot load absent.dll");
    return std::make_unique<FakeLibrary>();
  };
  const int exitCode = kelctl::RunCommandLine(arguments, open, out, err);
  return {exitCode, out.str(), err.str()};
}
