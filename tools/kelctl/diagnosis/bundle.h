// The archive for support: what the other commands show, with the trace log and the settings files, all redacted.
#pragma once

#include <string>
#include <vector>

#include "diagnosis/product.h"

namespace kelctl {

/// A ZIP archive in memory, and the names of its entries.
struct Bundle {
  std::string bytes;
  std::vector<std::string> names;
};

/// The entries: status.json, doctor.json, files.json, registry.json, log/KELUtils.log and its older part,
/// log/<folder>/<file> for the logs of siblings, settings/<folder>/<file> for each settings file, and below agent/ the
/// scheduler's jobs, the token files and the waiting events. At most the last 4 MB of a log; a settings file of more
/// than 1 MB, or in UTF-16, is left out, with a line that says so.
Bundle MakeBundle(const Product& product);

}  // namespace kelctl
