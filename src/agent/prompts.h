// Prompts: the program that asks the user, started and waited for. What goes wrong is traced under `function`, the name
// of the export. Where KE_PROGRAM_NOT_STARTED is an answer, an unknown module directory gives it too.
#pragma once

#include <cstdint>

#include "KEResults.h"

namespace agent {

/// Asks whether the computer may be restarted now, and waits for the answer, 0 to 2, which is 0 after a failure.
/// KE_SUCCESS, or a code of `siblings::StartAndWait`.
KE_RESULT AskCanReboot(const char* function, std::uint32_t& answer);

/// The same with a question of any kind, for `seconds`. Announces the program.
KE_RESULT AskUser(const char* function, std::int32_t kind, std::int32_t seconds, std::uint32_t& answer);

/// Shows the countdown to a restart and waits for its end. KE_SUCCESS, or a code of `siblings::StartAndWait`.
KE_RESULT ShowRebootCountDown(const char* function, std::int32_t seconds);

/// Starts the installation dialog and does not wait for it: KE_SUCCESS, or KE_PROGRAM_NOT_STARTED.
KE_RESULT ShowInstallDialog(const char* function, std::uint32_t rebootMessage);

/// Has an installation dialog close. Without one it does nothing.
void CloseInstallDialog() noexcept;

// The window of the installation guide, another program of the product.

/// While an installation may be running (the stored state is 40 to 47, or cannot be read), has the guide's window come
/// to the foreground and close, and stores the state 47 unless a later one is stored. KE_SUCCESS, whether or not there
/// was a window, and whether or not the state could be stored.
KE_RESULT HideInstallGuide();

}  // namespace agent
