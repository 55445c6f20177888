// The modules of the product whose functions the library calls: how each is bound, and for how long.
#pragma once

#include <windows.h>

#include <cstdint>

#include "KEResults.h"
#include "siblings/binder.h"
#include "siblings/functions.h"

namespace siblings {

// Every folder below ends in a backslash; null for an unknown one. Failures to bind are traced.

KE_FUNCTION_TABLE(CryptoTable, KE_CRYPTO_FUNCTIONS);

/// The functions of the crypto module, all of them, or null while it is not bound. Once set, it never changes.
/// Thread-safe.
const CryptoTable* Crypto() noexcept;

/// Binds the crypto module from `folder`, unless it is bound already, until the process ends. False when the module
/// cannot be loaded or lacks a name; the next call tries again. Thread-safe.
bool LoadCrypto(const char* folder) noexcept;

// The launcher module: bound by an export and freed before it returns. Not thread-safe: callers serialise the exports
// that use it.

KE_FUNCTION_TABLE(LauncherTable, KE_LAUNCHER_FUNCTIONS);

/// The functions of the launcher; null while it is not bound.
const LauncherTable& Launcher() noexcept;

/// Binds the launcher from `folder`; true at once when it is bound.
bool LoadLauncher(const char* folder) noexcept;

/// Frees the launcher, also an incomplete one.
void FreeLauncher() noexcept;

/// Frees the launcher at the end of a scope, also one that was bound before the scope.
struct FreeLauncherAtEnd {
  ~FreeLauncherAtEnd() { FreeLauncher(); }
};

/// Binds the launcher from the Common folder, else from the module directory: KE_SUCCESS or KE_LAUNCHER_NOT_LOADED.
KE_RESULT OpenLauncher();

/// Binds the launcher from the Common folder for a scope, unless it is bound already; frees it only if it bound it.
class LauncherScope {
 public:
  /// A launcher that cannot be bound is traced under `function`.
  explicit LauncherScope(const char* function);
  ~LauncherScope();
  LauncherScope(const LauncherScope&) = delete;
  LauncherScope& operator=(const LauncherScope&) = delete;

  /// True when the launcher is bound.
  explicit operator bool() const noexcept { return Launcher().Run != nullptr; }

 private:
  bool boundHere_;
};

/// The outcome of a component's command.
struct LauncherRun {
  bool launcherBound;
  int launcherResult;     // 0 when the launcher ran the command
  std::int32_t exitCode;  // 0 unless the command set another
};

/// Runs `command`, a command line of `component`, by the launcher, and frees the launcher, also one that was bound
/// before. A launcher that cannot be bound, or cannot run the command, is traced under `function`.
LauncherRun RunLauncherCommand(const char* function, const char* component, const char* command);

/// Traces that the command of `component` ended with an exit code that is not 0.
void TraceLauncherCommandFailed(const char* function, const char* component, std::int32_t exitCode) noexcept;

KE_FUNCTION_TABLE(EventApiTable, KE_EVENT_API_FUNCTIONS);

/// Binds the event module for a scope; each caller has a binding of its own. A module that lacks a name stays loaded
/// until the process ends.
class EventApiScope {
 public:
  explicit EventApiScope(const char* folder) noexcept;
  EventApiScope(const EventApiScope&) = delete;
  EventApiScope& operator=(const EventApiScope&) = delete;

  /// True when the module is bound; only then may its functions be called.
  explicit operator bool() const noexcept { return static_cast<bool>(bound_.module); }
  const EventApiTable& Functions() const noexcept { return bound_.functions; }

 private:
  BoundModule<EventApiTable> bound_;
};

// The agent module: bound for the length of the exports that need it, shared and counted between threads.

KE_FUNCTION_TABLE(AgentApiTable, KE_AGENT_API_FUNCTIONS);

/// KE_AGAPI_AddFileElementCompress is not on the list of pointers to reset and keeps its value; nothing here calls it.
inline AgentApiTable Cleared(const AgentApiTable& old) noexcept {
  AgentApiTable cleared{};
  cleared.KE_AGAPI_AddFileElementCompress = old.KE_AGAPI_AddFileElementCompress;
  return cleared;
}

/// The functions of the agent module. Valid between a successful open and the matching `FreeAgentApi`; check a pointer
/// before calling it: a module that lacks a name stays loaded with null pointers.
const AgentApiTable& AgentApi() noexcept;

/// Adds a reference to the agent module, loading it from `folder` when it is not loaded. False when it cannot be loaded
/// or lacks a required name. An incomplete module stays loaded, and the next call counts it as loaded and returns true,
/// with null pointers.
bool LoadAgentApi(const char* folder) noexcept;

/// Releases a reference; the last one finalises and frees the module. False when no module is loaded.
bool FreeAgentApi() noexcept;

/// Adds a reference, trying the Common folder and then the module directory: KE_SUCCESS, or KE_AGENT_NOT_LOADED when
/// both fail; no module is then left loaded.
KE_RESULT OpenAgentApi();

/// Adds a reference as `OpenAgentApi` does and checks the configuration functions: KE_SUCCESS when all five are bound,
/// KE_AGENT_NOT_LOADED without a module, KE_AGENT_INCOMPLETE when a function is missing. The caller releases the
/// reference with `FreeAgentApi`, unless there is no module.
KE_RESULT CheckAgentProxyApi();

/// Traces that the agent module cannot be used, with the code that the export returns; and the path of an open module
/// that only lacks optional functions.
void TraceAgentNotLoaded(const char* function, KE_RESULT result) noexcept;

/// Owns the reference that `OpenAgentApi` or `CheckAgentProxyApi` added, and releases it at the end of the scope.
class AgentApiScope {
 public:
  /// `opened` is the result of one of the two.
  explicit AgentApiScope(KE_RESULT opened) noexcept : result_(opened) {}
  ~AgentApiScope() {
    if (result_ != KE_AGENT_NOT_LOADED) FreeAgentApi();
  }
  AgentApiScope(const AgentApiScope&) = delete;
  AgentApiScope& operator=(const AgentApiScope&) = delete;

  KE_RESULT Result() const noexcept { return result_; }

 private:
  KE_RESULT result_;
};

// The registration module of a protection plug-in: bound from the plug-in's folder and freed after its one call.

KE_FUNCTION_TABLE(PluginReloadTable, KE_PLUGIN_RELOAD_FUNCTIONS);

/// The function of the module; null while it is not bound.
const PluginReloadTable& PluginReload() noexcept;

/// Binds the module from `folder`; true at once when it is bound.
bool LoadPluginReload(const char* folder) noexcept;

/// Frees the module, also an incomplete one.
void FreePluginReload() noexcept;

}  // namespace siblings
