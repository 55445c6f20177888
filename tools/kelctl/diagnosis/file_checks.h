// The examination of the product's files. Nothing is changed.
#pragma once

#include "diagnosis/findings.h"
#include "diagnosis/product.h"
#include "diagnosis/store_choice.h"

namespace kelctl {

/// A store's file: it fails when it is there and no whole store, and INTEGRA.DAT also when it is missing.
Finding CheckStoreCopy(const StoreCopy& copy, Health whenMissing);

/// The three files of the store.
Findings CheckStore(const StoreCopies& copies);

/// A settings file: a warning when it is missing, a failure when it cannot be read or is no text with sections.
Finding CheckSettingsFile(const Product& product, const ProductFile& file);

}  // namespace kelctl
