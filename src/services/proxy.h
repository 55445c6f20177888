// The proxy settings in the agent module, and the installer plug-in's view of them. `function` is the name that
// failures are traced under.
#pragma once

#include <cstdint>

#include "KELUtils.h"

namespace services {

/// The body of KE_GetConfiguratedProxy, with its codes.
KE_RESULT GetConfiguredProxy(const char* function, KE_PROXY& proxy);

/// A proxy as its setter is given it; nothing is null. User and password are setting texts.
struct ProxySettings {
  const char* server;
  const char* port;
  const char* user;
  const char* password;
};

/// The body of KE_SetAgentProxyInfo, with its codes. What is deciphered is wiped.
KE_RESULT SetAgentProxy(const char* function, const ProxySettings& settings);

/// The body of KE_SetStaticProxyInfo, with its codes; both texts may be null.
KE_RESULT SetStaticProxy(const char* function, const char* host, const char* addresses);

/// The body of KE_GetInetConfig, with its codes; `size` is that of the caller's proxy in bytes.
KE_RESULT GetInternetProxy(const char* function, KE_PROXY& proxy, std::uint32_t size);

}  // namespace services
