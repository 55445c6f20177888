// Key blobs and the keys made of them.
#pragma once

#include <string_view>

#include "ApiCr.h"
#include "cng.h"

namespace apicr {

/// True for a zero-terminated text of the length of a key blob. What the text says is not looked at.
bool IsKeyBlob(const char* keyBlob) noexcept;

/// key = SHA-256(label, key blob text). Each use has a label of its own, with a terminating zero in it, so that no key
/// tells anything about another. False when the platform failed.
bool DeriveKey(std::string_view label, const char* keyBlob, Key& key) noexcept;

/// Fills in the base64 text of fresh random bytes, zero-terminated; false when the platform failed.
bool MakeKeyBlob(char (&keyBlob)[APICR_KEY_BLOB_SIZE]) noexcept;

}  // namespace apicr
