// Programs of the agent that this library starts on its own account.
#pragma once

#include <string>

#include "KELUtils.h"
#include "win/process.h"

namespace services {

/// True when the store says that the computer is integrated; false also when the store cannot be read.
bool IsComputerIntegrated();

/// The command line that runs the plug-in manager with `arguments`. It can only be started when the module directory is
/// known.
std::string PluginManagerCommand(const std::string& arguments);

/// Starts the installer helper and does not wait for it: KE_SUCCESS, or KE_INSTALL_HELPER_NOT_STARTED, traced under
/// `function`, when it is neither in its own folder nor in the module directory.
KE_RESULT StartInstallHelper(const char* function);

/// On a computer that is not integrated, has the plug-in manager run the integration test, and waits up to three
/// minutes for it; how it ends does not count. KE_SUCCESS, or KE_PROGRAM_NOT_STARTED. Traces what it does.
KE_RESULT IntegrateComputerKelTest();

}  // namespace services
