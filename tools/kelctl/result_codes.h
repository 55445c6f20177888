// The result codes of KELUtils in words.
#pragma once

#include <string>

#include "KEResults.h"

namespace kelctl {

/// One result code: its number, its constant's name and what it means.
struct ResultCode {
  KE_RESULT code;
  const char* name;
  const char* text;
};

/// The row of `code`; for a number that KELUtils.h does not know, a row that says so.
ResultCode FindResultCode(KE_RESULT code);

/// "1782 KE_STORE_UNUSABLE: a store ...", for messages.
std::string DescribeResult(KE_RESULT code);

}  // namespace kelctl
