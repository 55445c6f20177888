// Reading the store's files as the library does, and changing nothing.
#pragma once

#include <string>

#include "diagnosis/product.h"
#include "diagnosis/redaction.h"
#include "diagnosis/store_choice.h"

namespace kelctl {

/// Reads the three files, deciphered with the crypto module in the library's own folder, which stays bound.
StoreCopies ReadStoreCopies(const Product& product);
StoreCopy ReadStoreCopy(const Product& product, const std::string& file);

/// A redactor that knows every secret of the store's files and of the settings files, enciphered ones also in plain.
Redactor MakeRedactor(const Product& product, const StoreCopies& copies);

}  // namespace kelctl
