// Where the management service is. Supplied at configure time.
#pragma once

#include <cstdint>

#include "KEResults.h"

namespace agent {

// The addresses of the management server: in the agent module's configuration, and in the file of message types.

/// Stores the address in the agent module's configuration, cut at 511 characters; `server` is not null. Binds the agent
/// module for the call. Failures are traced under `function`.
///
/// KE_AGENT_NOT_LOADED when the module cannot be loaded or lacks what is needed; KE_AGENT_READ_FAILED and
/// KE_AGENT_WRITE_FAILED when it refuses the record.
KE_RESULT SetAgentServer(const char* function, const char* server);

// The proxy settings in the agent module, and the installer plug-in's view of them. `function` is the name that
// failures are traced under.

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

}  // namespace agent
