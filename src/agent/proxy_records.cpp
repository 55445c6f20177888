#include "agent/proxy_records.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <string>

#include "text/text.h"

namespace agent {

namespace {

constexpr char kDefaultPortText[] = "80";
constexpr std::int32_t kDefaultPort = 80;

/// Appends to the text in a zero-filled field, as far as the field has room before its terminating zero.
template <std::size_t kSize>
void Append(char (&field)[kSize], std::string_view text) noexcept {
  const std::size_t used = strnlen(field, kSize - 1);
  text.copy(field + used, kSize - 1 - used);
}

template <std::size_t kSize>
std::string_view TextIn(const char (&field)[kSize]) noexcept {
  return {field, strnlen(field, kSize)};
}

/// A host and its port; 0 for a port that is missing or no number.
struct Address {
  std::string_view host;
  bool hasPort;
  std::int32_t port;
};

Address Split(std::string_view address) {
  const std::size_t colon = address.find(':');
  if (colon == address.npos) return {address, false, 0};
  return {address.substr(0, colon), true, text::DecimalFromText(std::string(address.substr(colon + 1)).c_str())};
}

void FillCredentials(const KE_AGENT_PROXY_RECORD& record, KE_PROXY& proxy) noexcept {
  const std::string_view user = TextIn(record.user);
  if (user.empty()) return;
  proxy.hasCredentials = 1;
  Append(proxy.user, user);
  Append(proxy.password, TextIn(record.password));
}

}  // namespace

KE_AGENT_PROXY_RECORD MakeProxyRecord(std::string_view server, std::string_view port) noexcept {
  KE_AGENT_PROXY_RECORD record{};
  record.flags = KE_PROXY_IN_USE | KE_PROXY_HAS_ADDRESS;
  record.inUse = 1;
  Append(record.address, server);
  Append(record.address, ":");
  Append(record.address, port.empty() ? kDefaultPortText : port);
  return record;
}

void SetUser(KE_AGENT_PROXY_RECORD& record, std::string_view user) noexcept {
  record.flags |= KE_PROXY_HAS_USER;
  Append(record.user, user);
}

void SetPassword(KE_AGENT_PROXY_RECORD& record, std::string_view password) noexcept {
  record.flags |= KE_PROXY_HAS_PASSWORD;
  Append(record.password, password);
}

KE_STATIC_PROXY_RECORD MakeStaticProxyRecord(std::string_view host, std::string_view addresses) noexcept {
  KE_STATIC_PROXY_RECORD record{};
  record.flags = KE_STATIC_PROXY;
  if (!host.empty()) record.flags |= KE_STATIC_PROXY_HAS_HOST;
  if (!addresses.empty()) record.flags |= KE_STATIC_PROXY_HAS_ADDRESSES;
  record.enabled = host.empty() && addresses.empty() ? 0 : 1;
  Append(record.host, host);
  Append(record.addresses, addresses);
  return record;
}

void ClearProxy(KE_PROXY& proxy) noexcept { std::memset(static_cast<void*>(&proxy), 0, kProxyExtent); }

void FillConfiguredProxy(const KE_AGENT_PROXY_RECORD& record, KE_PROXY& proxy) {
  const Address address = Split(TextIn(record.address));
  if (address.hasPort) {
    Append(proxy.host, address.host);
    proxy.port = address.port;
  }
  FillCredentials(record, proxy);
}

void FillInternetProxy(const KE_AGENT_PROXY_RECORD& record, KE_PROXY& proxy) {
  const Address address = Split(TextIn(record.address));
  Append(proxy.host, address.host);
  proxy.port = address.port != 0 ? address.port : kDefaultPort;
  FillCredentials(record, proxy);
}

}  // namespace agent
