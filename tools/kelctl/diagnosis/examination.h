// The whole examination of an installation. Nothing is changed.
#pragma once

#include <algorithm>
#include <string_view>

#include "diagnosis/findings.h"
#include "diagnosis/product.h"
#include "diagnosis/store_choice.h"
#include "text/text.h"

namespace kelctl {

/// Every sibling module and program, the files of the store, the settings files, the scheduler's jobs, the token files,
/// and the machine. Missing siblings only warn while the store is that of a product that is not installed yet.
Findings Examine(const Product& product, const StoreCopies& copies);

/// True for the hardware UUID of boards whose maker set none, in any letter case.
inline bool IsPlaceholderUuid(std::string_view uuid) {
  constexpr std::string_view kPlaceholders[] = {
      "00000000-0000-0000-0000-000000000000", "FFFFFFFF-FFFF-FFFF-FFFF-FFFFFFFFFFFF",
      "03000200-0400-0500-0006-000700080009", "00020003-0004-0005-0006-000700080009",
      "12345678-1234-5678-90AB-CDDEEFAABBCC", "01234567-89AB-CDEF-0123-456789ABCDEF",
      "11111111-2222-3333-4444-555555555555", "FEFEFEFE-FEFE-FEFE-FEFE-FEFEFEFEFEFE",
  };
  return std::ranges::any_of(kPlaceholders, [&](std::string_view each) { return text::SameName(each, uuid); });
}

/// The level of the trace log, as the settings have it.
Finding CheckLogLevel(const Product& product);

}  // namespace kelctl
