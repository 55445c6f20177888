// The engines of the accessor exports. Each runs in the shape of an export, unless it says otherwise, and checks its
// arguments first.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

#include "KEResults.h"
#include "store/accessor_table.h"
#include "store/ini_store.h"

namespace store {

/// Copies the value of a row into `buffer`, as the row says. See KELUtils.h for the codes of each kind.
KE_RESULT GetText(const TextGetter& row, char* buffer, std::int32_t size) noexcept;

/// Stores a text under a row's key, after the integrity check, and writes the store.
KE_RESULT SetText(const TextSetter& row, const char* text) noexcept;

/// The same in the body of an export that does more.
KE_RESULT CheckAndSet(const TextSetter& row, const char* text);

/// Stores `text` under any key and writes the store, in the body of an export that has checked its arguments.
KE_RESULT CheckAndSet(const char* section, const char* key, const char* text);

/// Reads a decimal number, 0 when it is missing. The output stays as it was when the read fails.
KE_RESULT GetNumber(const char* exportName, const char* section, const char* key, std::int32_t* value) noexcept;

/// KE_GetInstallState(), KE_SetInstallState() and KE_IsIntegrated(), under their trace names.
KE_RESULT GetInstallState(std::int32_t* state) noexcept;
KE_RESULT SetInstallState(const std::int32_t* state, bool onlyForward) noexcept;
KE_RESULT IsIntegrated(std::int32_t* integrated) noexcept;

/// True when the computer is integrated; false also when the store cannot be read.
bool IsComputerIntegrated() noexcept;

/// A value of the store, valid until the store changes; none when it is missing or empty.
std::optional<std::string_view> FindValue(const IniStore& store, const char* section, const char* key);

/// Changes a value of the current store, creating it when it is missing, and writes the store. For the work of
/// `UpdateStore`. KE_NOT_CREATED when the value cannot be created, else the codes of `WriteIntegraDat`.
KE_RESULT SetAndSave(IniStore& store, const char* section, const char* key, std::string_view value);

/// Copies a value with its terminating zero; KE_BUFFER_TOO_SMALL, with the buffer left alone, when it does not fit.
KE_RESULT CopyOut(std::string_view value, char* buffer, std::int32_t size) noexcept;

// The integration into the management console, and the stored passwords. Every function holds win::IntegraLock from the
// reading of the file to its own end.

/// Stores the integration date and writes the store, after the integrity check.
KE_RESULT Integrate(const KE_TIME& time);

/// Empties date and device identifier, writing the store after each. KE_STORE_UNUSABLE when both writes failed, else
/// KE_SUCCESS; codes of the reading.
KE_RESULT DeIntegrate();

/// Copies the remote-control password, decrypted. A missing one empties the buffer and is KE_STORE_UNUSABLE.
KE_RESULT ReadRemoteControlPassword(char* buffer, std::int32_t size);

/// How a stored password is copied: `CopyOut` as stored, `CopyDeciphered` decrypted.
using PasswordCopy = KE_RESULT (*)(std::string_view stored, char* buffer, std::int32_t size);

/// Copies the uninstall password. A missing one is KE_STORE_UNUSABLE, traced under `function`, and leaves the buffer.
KE_RESULT ReadUninstallPassword(const char* function, PasswordCopy copy, char* buffer, std::int32_t size);

}  // namespace store
