// Conversions between UTF-8, the system's code page and the platform's wide texts.
#pragma once

#include <string>
#include <string_view>

namespace kelctl {

/// Characters that do not exist in the result's encoding become replacement characters.
std::string Utf8FromWide(std::wstring_view text);
std::wstring WideFromUtf8(std::string_view text);
std::string Utf8FromCodePage(std::string_view text);

/// Throws UsageError when a character does not exist in the code page.
std::string CodePageFromUtf8(std::string_view text);

}  // namespace kelctl
