// The state of the product at a glance, from its files.
#pragma once

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "diagnosis/product.h"
#include "diagnosis/redaction.h"
#include "diagnosis/siblings.h"
#include "diagnosis/store_choice.h"
#include "diagnosis/store_files.h"
#include "store_values.h"

namespace kelctl {

/// A name with its text, in UTF-8.
struct NamedText {
  std::string name, text;
};

struct Status {
  StoreChoice choice;
  std::string copies;  // of the store, a line each
  nlohmann::ordered_json copiesAsJson;
  bool logAtLevelZero = false;
  std::string file;  // of the store's copy in use, with what is in it; empty for none
  std::vector<Reading> values;
  bool uninstallPassword = false;
  std::vector<NamedText> versions;
  std::vector<Finding> siblings;  // only looked for, not examined
  std::vector<TraceRecord> errors;
};

/// Gathers the status, with the last `errorCount` errors of the trace log, redacted.
Status GatherStatus(const Product& product, const StoreCopies& copies, const Redactor& redactor,
                    std::size_t errorCount);

std::string RenderStatus(const Status& status);
nlohmann::ordered_json JsonOf(const Status& status);
nlohmann::ordered_json JsonOf(const TraceRecord& record);

}  // namespace kelctl
