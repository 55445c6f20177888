// The whole examination of an installation. Nothing is changed.
#pragma once

#include "diagnosis/findings.h"
#include "diagnosis/product.h"
#include "diagnosis/store_choice.h"

namespace kelctl {

/// Every sibling module and program, the files of the store and the settings files.
Findings Examine(const Product& product, const StoreCopies& copies);

}  // namespace kelctl
