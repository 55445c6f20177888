// The whole examination of an installation. Nothing is changed.
#pragma once

#include "diagnosis/findings.h"
#include "diagnosis/product.h"
#include "diagnosis/store_choice.h"

namespace kelctl {

/// Every sibling module and program, the files of the store, the settings files, the scheduler's jobs, the token files,
/// and the machine. Missing siblings only warn while the store is that of a product that is not installed yet.
Findings Examine(const Product& product, const StoreCopies& copies);

/// The level of the trace log, as the settings have it.
Finding CheckLogLevel(const Product& product);

}  // namespace kelctl
