// Small questions about texts and names.
#pragma once

#include <string_view>

namespace frame {

/// True for a null text and for the empty one.
inline bool IsBlank(const char* text) noexcept { return text == nullptr || *text == '\0'; }

/// True when two names are the same but for ASCII letter case.
bool SameName(std::string_view left, std::string_view right) noexcept;

}  // namespace frame
