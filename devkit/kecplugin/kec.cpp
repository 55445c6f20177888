// KEC.dll: the installer plug-in. It installs nothing, but tells in a log what it was told, and which proxy to use.
#include <cstddef>
#include <cstdio>

#include "KEPlugin.h"
#include "kecplugin/proxy_settings.h"
#include "logfile/shown_text.h"
#include "plugin/plugin.h"
#include "win/owner.h"

static_assert(sizeof(KE_PROXY) == 776 && offsetof(KE_PROXY, user) == 261, "the record crosses module borders");

namespace {

plugin::Result FindProxy(const KE_PROXY* wanted, std::uint32_t size, KE_PROXY& proxy) noexcept {
  if (!plugin::IsInitialised()) return plugin::kNotInitialised;
  if (wanted == nullptr || size < sizeof *wanted) return plugin::kBadArgument;
  return kec::ReadProxy(proxy);
}

/// The proxy as the log shows it: who may use it stays out.
plugin::Result RecordProxy(const char* function, plugin::Result result, const KE_PROXY& proxy) noexcept {
  char detail[sizeof proxy.host + 16] = "";
  if (result == plugin::kSuccess) {
    std::snprintf(detail, sizeof detail, "%s:%ld", logfile::ShownText(proxy.host).Text(),
                  static_cast<long>(proxy.port));
  }
  return plugin::Record(function, result, detail);
}

}  // namespace

int KE_SIBLING_CALL KE_Initialize(int32_t mode) { return plugin::Initialise(mode); }

int KE_SIBLING_CALL KEINSTALL_SetInfo(int32_t code, const char* value) {
  return plugin::SetInfo(__func__, code, value);
}

int KE_SIBLING_CALL KEINSTALL_GetInetConfig(KE_PROXY* proxy, uint32_t size) {
  const win::KeptLastError kept;
  KE_PROXY found{};
  const win::WipeAtEnd wipe(&found, sizeof found);
  const plugin::Result result = RecordProxy(__func__, FindProxy(proxy, size, found), found);
  if (result == plugin::kSuccess) *proxy = found;
  return result;
}

int KE_SIBLING_CALL KE_Finalize(void) { return plugin::Finalise(); }
