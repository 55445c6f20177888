// The addresses of the management server: in the agent module's configuration, and in the file of message types.
#pragma once

#include <cstddef>
#include <cstdint>

#include "KELUtils.h"

namespace services {

/// The agent module's configuration record of class 1, item 6, of which this library knows the server address.
struct AgentServerRecord {
  std::uint8_t before[1028];
  char server[512];  // zero-terminated
  std::uint8_t after[1024];
};
static_assert(sizeof(AgentServerRecord) == 2564);
static_assert(offsetof(AgentServerRecord, server) == 1028);

inline constexpr std::uint32_t kServerRecordClass = 1;
inline constexpr std::uint32_t kServerRecordItem = 6;

/// Stores the address in the agent module's configuration, cut at 511 characters; `server` is not null. Binds the agent
/// module for the call. A refusal by the agent module is traced.
///
/// KE_AGENT_NOT_LOADED when the module cannot be loaded or lacks what is needed; KE_AGENT_READ_FAILED and
/// KE_AGENT_WRITE_FAILED when it refuses the record.
KE_RESULT SetAgentServer(const char* server);

/// Writes server, SOAP namespace and SOAP action address of the two integration actions into KE_AGPRX.dat. A null
/// `server` removes the two servers. Traces nothing.
///
/// KE_NO_MODULE_DIRECTORY; KE_STORE_UNUSABLE when any write failed, after all were tried.
KE_RESULT SetIntegrationServer(const char* server);

}  // namespace services
