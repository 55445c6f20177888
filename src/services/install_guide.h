// The window of the installation guide, another program of the product.
#pragma once

#include "KELUtils.h"

namespace services {

/// While an installation may be running (the stored state is 40 to 47, or cannot be read), has the guide's window come
/// to the foreground and close, and stores the state 47 unless a later one is stored. KE_SUCCESS, whether or not there
/// was a window, and whether or not the state could be stored.
KE_RESULT HideInstallGuide();

}  // namespace services
