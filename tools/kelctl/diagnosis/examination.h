// The whole examination of an installation. Nothing is changed.
#pragma once

#include <string_view>

#include "diagnosis/findings.h"
#include "diagnosis/product.h"
#include "diagnosis/store_choice.h"

namespace kelctl {

/// Every sibling module and program, the files of the store, the settings files, the scheduler's jobs, the token files,
/// and the machine. Missing siblings only warn while the store is that of a product that is not installed yet.
Findings Examine(const Product& product, const StoreCopies& copies);

/// True for the hardware UUID of boards whose maker set none, in any letter case.
bool IsPlaceholderUuid(std::string_view uuid);

/// The level of the trace log, as the settings have it.
Finding CheckLogLevel(const Product& product);

}  // namespace kelctl
