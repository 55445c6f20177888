// The crypto module: bound on first use and kept until the process ends.
#pragma once

#include <windows.h>

#include <cstdint>

#include "KEResults.h"
#include "siblings/functions.h"

namespace siblings {

/// The functions of ApiCr.dll.
struct CryptoTable {
  KE_CRYPTO_FUNCTIONS(KE_CALLED_MEMBER, KE_UNCALLED_MEMBER)
};

/// The bound functions, all of them, or null while the module is not bound. Never changes back, from any thread.
const CryptoTable* Crypto() noexcept;

/// Binds the module from `folder`, which ends in a backslash, unless it is bound already. False for a null folder, when
/// the module cannot be loaded and when it lacks a name, which is traced; the next call tries again. Any thread.
bool LoadCrypto(const char* folder) noexcept;

// The launcher module: bound by an export and freed before it returns. Callers serialise the exports that use it.

/// The functions of KELMNAPI.dll; null while not bound.
struct LauncherTable {
  KE_LAUNCHER_FUNCTIONS(KE_CALLED_MEMBER, KE_UNCALLED_MEMBER)
};

/// The bound functions.
const LauncherTable& Launcher() noexcept;

/// Binds the module from `folder`, which ends in a backslash; true at once when it is bound. A failure is traced.
bool LoadLauncher(const char* folder) noexcept;

/// Frees the module, also one that could not be bound completely.
void FreeLauncher() noexcept;

/// Frees the module at the end of a scope, whoever bound it.
struct FreeLauncherAtEnd {
  ~FreeLauncherAtEnd() { FreeLauncher(); }
};

/// Binds the module from the Common folder, else from the module directory: KE_SUCCESS or KE_LAUNCHER_NOT_LOADED, which
/// is traced.
KE_RESULT OpenLauncher();

// Components of the product, run by the launcher module.

/// Binds the launcher from the Common folder for a scope, unless it is bound already; what it has bound it frees.
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

/// What came of a component's command.
struct LauncherRun {
  bool launcherBound;
  int launcherResult;     // 0 when the launcher ran the command
  std::int32_t exitCode;  // 0 unless the command told otherwise
};

/// Has the launcher run `command`, a command line of `component`, and frees the launcher, whoever bound it. A launcher
/// that cannot be bound, or cannot run the command, is traced under `function`.
LauncherRun RunLauncherCommand(const char* function, const char* component, const char* command);

/// Traces that the command of `component` ended with an exit code that is not 0.
void TraceLauncherCommandFailed(const char* function, const char* component, std::int32_t exitCode) noexcept;

// The event module: every caller binds a record of its own.

/// TvEvAPI.dll as one caller has bound it. Zero-filled by the caller before it is loaded.
struct EventApiTable {
  HMODULE module;
  KE_EVENT_API_FUNCTIONS(KE_CALLED_MEMBER, KE_UNCALLED_MEMBER)
};

/// Binds the module from `folder`, which ends in a backslash, into the record. A failure is traced. At a missing name
/// the record's handle is zeroed and the module stays loaded for good.
bool LoadEventApi(const char* folder, EventApiTable& record) noexcept;

/// Frees the record's module, if it holds one, and zeroes its handle.
void FreeEventApi(EventApiTable& record) noexcept;

/// Owns a record for a scope: binds it, and frees it at the end.
class EventApiScope {
 public:
  /// `folder` as for `LoadEventApi`.
  explicit EventApiScope(const char* folder) noexcept { LoadEventApi(folder, record_); }
  ~EventApiScope() { FreeEventApi(record_); }
  EventApiScope(const EventApiScope&) = delete;
  EventApiScope& operator=(const EventApiScope&) = delete;

  /// True when the module is bound; only then may its functions be called.
  explicit operator bool() const noexcept { return record_.module != nullptr; }
  const EventApiTable& Functions() const noexcept { return record_; }

 private:
  EventApiTable record_{};
};

// The agent module: bound for the length of the exports that need it, shared and counted between threads.

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

// The registration module of a protection plug-in: bound from the plug-in's directory and freed after its one call.

/// The function of KERegister.dll; null while not bound.
struct PluginReloadTable {
  KE_PLUGIN_RELOAD_FUNCTIONS(KE_CALLED_MEMBER, KE_UNCALLED_MEMBER)
};

/// The bound function.
const PluginReloadTable& PluginReload() noexcept;

/// Binds the module from `folder`, which ends in a backslash; true at once when it is bound. A failure is traced.
bool LoadPluginReload(const char* folder) noexcept;

/// Frees the module, also one without the function.
void FreePluginReload() noexcept;

}  // namespace siblings
