// The addresses of the management server: in the agent module's configuration, and in the file of message types.
#pragma once

#include "KELUtils.h"

namespace services {

/// Stores the address in the agent module's configuration, cut at 511 characters; `server` is not null. Binds the agent
/// module for the call. Failures are traced under `function`.
///
/// KE_AGENT_NOT_LOADED when the module cannot be loaded or lacks what is needed; KE_AGENT_READ_FAILED and
/// KE_AGENT_WRITE_FAILED when it refuses the record.
KE_RESULT SetAgentServer(const char* function, const char* server);

/// Writes server, SOAP namespace and SOAP action address of the two integration actions into KE_AGPRX.dat. A null
/// `server` removes the two servers. Traces nothing.
///
/// KE_NO_MODULE_DIRECTORY; KE_STORE_UNUSABLE when any write failed, after all were tried.
KE_RESULT SetIntegrationServer(const char* server);

}  // namespace services
