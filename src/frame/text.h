// What the exports ask of text arguments.
#pragma once

namespace frame {

/// True for a null text and for the empty one.
inline bool IsBlank(const char* text) noexcept { return text == nullptr || *text == '\0'; }

}  // namespace frame
