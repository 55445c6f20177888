// The files of the store and the settings files: reading and examining them, and changing nothing.
#pragma once

#include <string>
#include <vector>

#include "diagnosis/findings.h"
#include "diagnosis/product.h"
#include "diagnosis/redaction.h"
#include "diagnosis/store_choice.h"

namespace kelctl {

/// Reads the three files, decrypted with the crypto module in the library's own folder, which stays bound.
StoreCopies ReadStoreCopies(const Product& product);
StoreCopy ReadStoreCopy(const Product& product, const std::string& file);

/// A redactor that knows every secret of the store's files and of the settings files, encrypted ones also in plain.
Redactor MakeRedactor(const Product& product, const StoreCopies& copies);

/// The state of a store's file as a finding. A missing one has the health `whenMissing`.
Finding CheckStoreCopy(const StoreCopy& copy, const StoreCopies& copies, Health whenMissing);

/// The three files of the store, its identity, and how the copies differ.
Findings CheckStore(const StoreCopies& copies);

/// True for a store of a product that is not installed yet: incomplete, and nothing is lost.
bool IsFresh(const StoreCopies& copies);

/// The identity in one copy of the store: what is compared between the copies. The certificate is a checksum.
struct CopyIdentity {
  const char* name;
  std::string text;
};
std::vector<CopyIdentity> IdentityOf(const StoreCopy& copy);

/// One line for each copy: state, time, agent identifier, installation state and version; and the same as JSON.
std::string RenderCopies(const StoreCopies& copies);
nlohmann::ordered_json JsonOf(const StoreCopies& copies);

/// A settings file: a warning when it is missing, a failure when it cannot be read or is not an INI file.
Finding CheckSettingsFile(const Product& product, const ProductFile& file);

}  // namespace kelctl
