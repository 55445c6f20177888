#include "diagnosis/examination.h"

#include <windows.h>

#include "diagnosis/siblings.h"
#include "diagnosis/store_files.h"

namespace kelctl {

Findings Examine(const Product& product, const StoreCopies& copies) {
  SetErrorMode(SEM_FAILCRITICALERRORS | SEM_NOOPENFILEERRORBOX);  // no dialog about a damaged module
  Findings findings;
  for (const Sibling& sibling : SiblingsOf(product)) findings.push_back(CheckSibling(sibling));
  for (Finding& finding : CheckStore(copies)) findings.push_back(std::move(finding));
  for (const ProductFile& file : product.SettingsFiles()) findings.push_back(CheckSettingsFile(product, file));
  return findings;
}

}  // namespace kelctl
