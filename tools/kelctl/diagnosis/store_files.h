// The files of the store and the settings files: reading and examining them, and changing nothing.
#pragma once

#include <string>

#include "diagnosis/findings.h"
#include "diagnosis/product.h"
#include "diagnosis/redaction.h"
#include "diagnosis/store_choice.h"

namespace kelctl {

/// Reads the three files, deciphered with the crypto module in the library's own folder, which stays bound.
StoreCopies ReadStoreCopies(const Product& product);
StoreCopy ReadStoreCopy(const Product& product, const std::string& file);

/// A redactor that knows every secret of the store's files and of the settings files, enciphered ones also in plain.
Redactor MakeRedactor(const Product& product, const StoreCopies& copies);

/// A store's file: it fails when it is there and no whole store, and INTEGRA.DAT also when it is missing.
Finding CheckStoreCopy(const StoreCopy& copy, Health whenMissing);

/// The three files of the store.
Findings CheckStore(const StoreCopies& copies);

/// A settings file: a warning when it is missing, a failure when it cannot be read or is no text with sections.
Finding CheckSettingsFile(const Product& product, const ProductFile& file);

}  // namespace kelctl
