// The crypto module: bound on first use and kept until the process ends.
#pragma once

#include "frame/sibling_names.h"

namespace frame {

/// The functions of ApiCr.dll.
struct CryptoTable {
  KE_CRYPTO_FUNCTIONS(KE_CALLED_MEMBER, KE_UNCALLED_MEMBER)
};

/// The bound functions, all of them, or null while the module is not bound. Never changes back, from any thread.
const CryptoTable* Crypto() noexcept;

/// Binds the module from `folder`, which ends in a backslash, unless it is bound already. False for a null folder, when
/// the module cannot be loaded and when it lacks a name, which is traced; the next call tries again. Any thread.
bool LoadCrypto(const char* folder) noexcept;

}  // namespace frame
