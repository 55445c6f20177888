// The agent module: bound for the length of the exports that need it, shared and counted between threads.
#pragma once

#include "KELUtils.h"
#include "frame/sibling_names.h"

namespace frame {

/// The functions of KELAGAPI.dll; null while not bound.
struct AgentApiTable {
  KE_AGENT_API_FUNCTIONS(KE_CALLED_MEMBER, KE_UNCALLED_MEMBER)
};

/// The bound functions. Valid between a successful open and the matching `FreeAgentApi`; check a pointer before calling
/// it, for a module that lacks a name stays loaded with null pointers.
const AgentApiTable& AgentApi() noexcept;

/// Takes a reference to the agent module, loading it from `folder` (which ends in a backslash) when it is not loaded.
/// False, and traced, when it cannot be loaded or lacks a required name. An incomplete module stays loaded, and the
/// next call counts it as loaded and returns true, with null pointers.
bool LoadAgentApi(const char* folder) noexcept;

/// Gives a reference back; the last one finalises and frees the module. False when no module is loaded.
bool FreeAgentApi() noexcept;

/// Takes a reference, trying the Common folder and then the module directory: 0, or 5102 when both fail; no module is
/// then left loaded. A module that could not be loaded, or lacks a required name, is traced.
unsigned OpenAgentApi();

/// Takes a reference as `OpenAgentApi` does and looks at the configuration functions: KE_SUCCESS when all five are
/// bound, KE_AGENT_NOT_LOADED when there is no module, KE_AGENT_INCOMPLETE when one is missing. The caller gives the
/// reference back with `FreeAgentApi`, unless there is no module.
KE_RESULT CheckAgentProxyApi();

/// Traces that the agent module cannot be used, with the code that the export returns; and the path of an open module
/// that lacks only functions which are not required of every one.
void TraceAgentNotLoaded(const char* function, KE_RESULT result) noexcept;

/// Internal result of `OpenAgentApi`; no export returns it.
constexpr unsigned kAgentModuleNotLoaded = 5102;

/// Owns the reference that `OpenAgentApi` or `CheckAgentProxyApi` took, and gives it back at the end of the scope.
class AgentApiScope {
 public:
  /// `opened` is what one of the two returned.
  explicit AgentApiScope(unsigned opened) noexcept : result_(opened) {}
  ~AgentApiScope() {
    if (result_ != kAgentModuleNotLoaded && result_ != KE_AGENT_NOT_LOADED) FreeAgentApi();
  }
  AgentApiScope(const AgentApiScope&) = delete;
  AgentApiScope& operator=(const AgentApiScope&) = delete;

  /// The result of the opening, 0 for success.
  unsigned Result() const noexcept { return result_; }

 private:
  unsigned result_;
};

}  // namespace frame
