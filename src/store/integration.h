// The integration into the management console, and the stored passwords. Every function holds the lock of the store
// from the reading of the file to its own end.
#pragma once

#include <cstdint>
#include <string_view>

#include "KELUtils.h"

namespace store {

/// Stores the integration date and writes the store, after the integrity check.
KE_RESULT Integrate(const KE_TIME& time);

/// Empties date and device identifier, writing the store after each. KE_STORE_UNUSABLE when both writes failed, else
/// KE_SUCCESS; codes of the reading.
KE_RESULT DeIntegrate();

/// Copies the remote-control password, deciphered. A missing one empties the buffer and is KE_STORE_UNUSABLE.
KE_RESULT ReadRemoteControlPassword(char* buffer, std::int32_t size);

/// How a stored password is copied: `CopyOut` as it stands, `CopyDeciphered` in plain.
using PasswordCopy = KE_RESULT (*)(std::string_view stored, char* buffer, std::int32_t size);

/// Copies the uninstall password. A missing one is KE_STORE_UNUSABLE, traced under `function`, and leaves the buffer.
KE_RESULT ReadUninstallPassword(const char* function, PasswordCopy copy, char* buffer, std::int32_t size);

}  // namespace store
