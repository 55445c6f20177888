// The engines behind the accessor exports. Each one runs in the shape of an export, checks its arguments before
// anything is touched, and holds the lock of the store from the reading of the file to its own end.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

#include "KELUtils.h"
#include "store/accessor_table.h"
#include "store/ini_store.h"

namespace store {

/// Copies the value of a row into `buffer`, as the row says. See KELUtils.h for the codes of each kind.
KE_RESULT GetText(const TextGetter& row, char* buffer, std::int32_t size) noexcept;

/// Stores a text under a row's key, after the integrity check, and writes the store.
KE_RESULT SetText(const TextSetter& row, const char* text) noexcept;

/// Stores `text` under any key and writes the store, in the body of an export that has checked its arguments.
KE_RESULT StoreText(const char* section, const char* key, const char* text);

/// Reads a decimal number, 0 when it is missing. The output stays as it was when the read fails.
KE_RESULT GetNumber(const char* exportName, const char* section, const char* key, std::int32_t* value) noexcept;

/// Stores the installation state, but not one that is not greater than the stored one when `onlyForward` is set.
KE_RESULT StoreInstallState(std::int32_t state, bool onlyForward);

/// Tells whether the store holds an integration date and a device identifier.
KE_RESULT ReadIntegrated(std::int32_t* integrated);

/// A value of the store, valid until the store changes; none when it is missing or empty.
std::optional<std::string_view> FindValue(const IniStore& store, const char* section, const char* key);

/// Changes a value of the current store, creating it when it is missing, and writes the store. For the work of
/// `UpdateStore`. KE_NOT_CREATED when the value cannot be created, else the codes of `WriteIntegraDat`.
KE_RESULT SetAndSave(IniStore& store, const char* section, const char* key, std::string_view value);

/// Copies a value with its terminating zero; KE_BUFFER_TOO_SMALL, with the buffer left alone, when it does not fit.
KE_RESULT CopyOut(std::string_view value, char* buffer, std::int32_t size) noexcept;

}  // namespace store
