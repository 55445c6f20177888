#include "kecplugin/proxy_settings.h"

#include "settings/own_settings.h"
#include "win/owner.h"

namespace kec {
namespace {

using settings::Reading;

constexpr char kSection[] = "PROXY";
constexpr std::int32_t kUsualPort = 80;

template <std::size_t kSize>
Reading Read(const char* key, char (&text)[kSize]) noexcept {
  return settings::ReadText(kSection, key, text, kSize);
}

}  // namespace

plugin::Result ReadProxy(KE_PROXY& proxy) noexcept {
  KE_PROXY read{};
  const win::WipeAtEnd wipe(&read, sizeof read);
  const Reading host = Read("Host", read.host);
  if (host == Reading::kMissing) return plugin::kNoProxy;
  const Reading user = Read("User", read.user), password = Read("Password", read.password);
  const auto port = settings::ReadNumber(kSection, "Port", kUsualPort, 1, 65535);
  if (host == Reading::kUnusable || user == Reading::kUnusable || password == Reading::kUnusable || !port) {
    return plugin::kBadSettings;
  }
  read.port = *port;
  read.hasCredentials = user == Reading::kFound;
  proxy = read;
  return plugin::kSuccess;
}

}  // namespace kec
