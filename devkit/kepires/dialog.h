// The dialogs.
#pragma once

#include <windows.h>

#include "kepires/prompt.h"

namespace kepires {

/// Set to close every installation dialog.
inline constexpr char kInstallEventName[] = "Global\\KePIRes_InstallEvent";

/// Shows the prompt's dialog and waits for its end: a button, the end of its time, or `closing`, an event that closes
/// the dialog with kYes; null for none. Returns an answer, or kNoDialog.
ExitCode ShowDialog(const Prompt& prompt, HANDLE closing) noexcept;

}  // namespace kepires
