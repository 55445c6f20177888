// The proxy records of the agent module, and the proxy descriptions that are made from them.
#pragma once

#include <cstddef>
#include <string_view>

#include "KELAGAPI.h"
#include "KEResults.h"

namespace agent {

static_assert(sizeof(KE_AGENT_PROXY_RECORD) == 532 && offsetof(KE_AGENT_PROXY_RECORD, inUse) == 4 &&
              offsetof(KE_AGENT_PROXY_RECORD, address) == 5 && offsetof(KE_AGENT_PROXY_RECORD, user) == 261 &&
              offsetof(KE_AGENT_PROXY_RECORD, password) == 389 && offsetof(KE_AGENT_PROXY_RECORD, reserved) == 517);
static_assert(sizeof(KE_STATIC_PROXY_RECORD) == 8536 && offsetof(KE_STATIC_PROXY_RECORD, enabled) == 24 &&
              offsetof(KE_STATIC_PROXY_RECORD, host) == 25 && offsetof(KE_STATIC_PROXY_RECORD, addresses) == 281 &&
              offsetof(KE_STATIC_PROXY_RECORD, reserved2) == 601);
static_assert(offsetof(KE_PROXY, port) == 256 && offsetof(KE_PROXY, hasCredentials) == 260 &&
              offsetof(KE_PROXY, user) == 261 && offsetof(KE_PROXY, password) == 517);

/// Bytes of a description without trailing padding: the size that every caller provides.
inline constexpr std::size_t kProxyExtent = offsetof(KE_PROXY, password) + sizeof(KE_PROXY::password);

/// A record of a proxy in use without credentials; an empty port means 80. Here and below texts are cut at the size of
/// their field less its terminating zero.
KE_AGENT_PROXY_RECORD MakeProxyRecord(std::string_view server, std::string_view port) noexcept;

/// Adds a user, or a password, to the record, also an empty one.
void SetUser(KE_AGENT_PROXY_RECORD& record, std::string_view user) noexcept;
void SetPassword(KE_AGENT_PROXY_RECORD& record, std::string_view password) noexcept;

/// A record of the static proxy, which is enabled when either text is not empty.
KE_STATIC_PROXY_RECORD MakeStaticProxyRecord(std::string_view host, std::string_view addresses) noexcept;

/// Zero-fills all fields of the description, but not its padding.
void ClearProxy(KE_PROXY& proxy) noexcept;

/// Fill a cleared description. Record texts need no terminating zero. They differ in an address without a port: the
/// first leaves host and port unchanged when there is no ":", and takes any port; the second takes such an
/// address as the host, and 80 for a port that is missing or 0.
void FillConfiguredProxy(const KE_AGENT_PROXY_RECORD& record, KE_PROXY& proxy);
void FillInternetProxy(const KE_AGENT_PROXY_RECORD& record, KE_PROXY& proxy);

}  // namespace agent
