#include "arguments.h"

#include <windows.h>

#include <charconv>
#include <system_error>

#include "code_page.h"
#include "errors.h"

namespace kelctl {
namespace {

constexpr std::string_view kPropertyPrefix = "property:";

}  // namespace

std::int32_t ParseNumber(std::string_view text) {
  std::int32_t number = 0;
  const char* const end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, number);
  if (error == std::errc::invalid_argument || stop != end) {
    throw UsageError("\"" + std::string(text) + "\" is not a decimal number");
  }
  if (error == std::errc::result_out_of_range) {
    throw UsageError(std::string(text) + " is out of range: -2147483648 to 2147483647");
  }
  return number;
}

void CheckOneLine(std::string_view text) {
  if (text.find_first_of("\r\n") != text.npos) throw UsageError("a value cannot hold a line break");
}

bool IsPropertyName(std::string_view name) { return name.starts_with(kPropertyPrefix); }

std::string PropertyKey(std::string_view name) { return std::string(name.substr(kPropertyPrefix.size())); }

void CheckPropertyKey(std::string_view key) {
  if (key.empty() || key.front() == '[' || key.find_first_of("=\r\n") != key.npos) {
    throw UsageError("a key is one line that is not empty, has no \"=\" and does not begin with \"[\"");
  }
}

std::string FullPath(const std::string& path) {
  std::wstring full(kLongestPath, L'\0');
  full.resize(GetFullPathNameW(WideFromUtf8(path).c_str(), kLongestPath, full.data(), nullptr));
  return Utf8FromWide(full);
}

}  // namespace kelctl
