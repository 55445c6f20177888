// KELRCM.dll and KEC.dll, the remote-control and the installer plug-in: each exports the functions that its .def file
// names. They only log the information that they receive. No function throws, all are thread-safe and
// keep the last-error value.
#include <atomic>
#include <cstddef>
#include <cstring>

#include "KEPlugin.h"
#include "shared/files.h"
#include "shared/texts.h"

using namespace devkit;

static_assert(sizeof(KE_PROXY) == 776 && offsetof(KE_PROXY, user) == 261, "the record crosses module borders");

namespace {

std::atomic<std::uint32_t> g_initialised = 0;  // initialisations without an end

bool Leave() noexcept {
  for (std::uint32_t count = g_initialised; count > 0;) {
    if (g_initialised.compare_exchange_weak(count, count - 1)) return true;
  }
  return false;
}

Result Judge(std::int32_t code, const char* value) noexcept {
  if (g_initialised == 0) return kNotInitialised;
  return value != nullptr && code >= KE_INFO_USER && code <= KE_INFO_DEVICE_ID ? kSuccess : kBadArgument;
}

int SetInfo(const char* function, std::int32_t code, const char* value) noexcept {
  return Guarded([&] {
    const Result result = Judge(code, value);
    // A refused value is hidden too: it may be a password under another code.
    const bool shown = result == kSuccess && code != KE_INFO_PASSWORD;
    return Logged(function, result, std::to_string(code) + ";" + (shown ? OneLine(value) : "***"));
  });
}

/// Copies a setting into a field of the record; false when it does not fit.
template <std::size_t kSize>
bool ReadField(const char* key, char (&field)[kSize]) {
  const auto text = ReadSetting("PROXY", key, kSize - 1);
  if (text) std::memcpy(field, text->c_str(), text->size() + 1);
  return text.has_value();
}

Result ReadProxy(KE_PROXY& proxy) {
  const auto port = ReadNumber("PROXY", "Port", 80, 1, 65535);
  const bool fits = ReadField("Host", proxy.host);
  if (fits && proxy.host[0] == '\0') return kNoProxy;
  if (!fits || !ReadField("User", proxy.user) || !ReadField("Password", proxy.password) || !port) return kBadSettings;
  proxy.port = *port;
  proxy.hasCredentials = proxy.user[0] != '\0';
  return kSuccess;
}

}  // namespace

int KE_SIBLING_CALL KE_Initialize(int32_t mode) {
  return Guarded([mode] {
    const auto accepted = ReadNumber("PLUGIN", "Mode", 6);
    const Result admitted = !accepted ? kBadSettings : mode == *accepted ? kSuccess : kRefusedMode;
    const Result result = Logged("KE_Initialize", admitted, std::to_string(mode));
    if (result == kSuccess) ++g_initialised;
    return result;
  });
}

int KE_SIBLING_CALL KE_Finalize(void) {
  return Guarded([] { return Logged("KE_Finalize", Leave() ? kSuccess : kNotInitialised); });
}

int KE_SIBLING_CALL KECONF_SetInfo(int32_t code, const char* value) { return SetInfo(__func__, code, value); }

int KE_SIBLING_CALL KEINSTALL_SetInfo(int32_t code, const char* value) { return SetInfo(__func__, code, value); }

int KE_SIBLING_CALL KEINSTALL_GetInetConfig(KE_PROXY* proxy, uint32_t size) {
  return Guarded([=] {
    KE_PROXY found{};
    Result result = kNotInitialised;
    if (g_initialised > 0) result = proxy != nullptr && size >= sizeof *proxy ? ReadProxy(found) : kBadArgument;
    const bool has = result == kSuccess;  // user and password stay out of the log
    result = Logged("KEINSTALL_GetInetConfig", result,
                    has ? OneLine(found.host) + ":" + std::to_string(found.port) : std::string());
    if (has && result == kSuccess) *proxy = found;
    return result;
  });
}
