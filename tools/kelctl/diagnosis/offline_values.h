// The values of a store that was read without the library.
#pragma once

#include "rendering.h"
#include "store/ini_store.h"

namespace kelctl {

/// What the value's getter answers for this store, with room enough and no restoring.
Reading ValueIn(const store::IniStore& store, const StoreValue& value);

/// The same for every value; without a store each is KE_STORE_UNUSABLE.
std::vector<ReadStoreValue> ValuesIn(const store::IniStore* store);

/// True when the store holds an uninstall password.
bool HasUninstallPassword(const store::IniStore& store);

}  // namespace kelctl
