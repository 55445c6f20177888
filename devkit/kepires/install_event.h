// The event that closes the installation dialog.
#pragma once

#include "win/owner.h"

namespace kepires {

inline constexpr char kInstallEventName[] = "Global\\KePIRes_InstallEvent";

using win::EventHandle;

/// Makes the event, or opens the one of another instance; the handle is for waiting only. Once set it stays set, so
/// that it closes every installation dialog, and is gone with the last of them. Every signed-in account may set it, and
/// wait for it. None when another program has taken the name.
EventHandle MakeInstallEvent() noexcept;

}  // namespace kepires
