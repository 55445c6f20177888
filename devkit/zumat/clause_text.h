// Writing time clauses, for this program and for people.
#pragma once

#include <string>

#include "zumat/clauses.h"

namespace zumat {

/// The clauses as switches. ReadClauses makes the same clauses of the text.
std::string FormatClauses(const Clauses& clauses);

/// The clauses in words, such as "every 2 weeks at 10:00".
std::string DescribeClauses(const Clauses& clauses);

}  // namespace zumat
