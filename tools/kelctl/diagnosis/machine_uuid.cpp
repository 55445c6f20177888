#include <algorithm>

#include "diagnosis/examination.h"
#include "text/text.h"

namespace kelctl {

bool IsPlaceholderUuid(std::string_view uuid) {
  constexpr std::string_view kPlaceholders[] = {
      "00000000-0000-0000-0000-000000000000", "FFFFFFFF-FFFF-FFFF-FFFF-FFFFFFFFFFFF",
      "03000200-0400-0500-0006-000700080009", "00020003-0004-0005-0006-000700080009",
      "12345678-1234-5678-90AB-CDDEEFAABBCC", "01234567-89AB-CDEF-0123-456789ABCDEF",
      "11111111-2222-3333-4444-555555555555", "FEFEFEFE-FEFE-FEFE-FEFE-FEFEFEFEFEFE",
  };
  return std::ranges::any_of(kPlaceholders, [&](std::string_view each) { return text::SameName(each, uuid); });
}

}  // namespace kelctl
