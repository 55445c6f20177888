#include "win/code_page.h"

namespace win {

std::optional<std::string> ToCodePage(std::wstring_view path) {
  const int length = static_cast<int>(path.size());
  std::string narrow(WideCharToMultiByte(CP_ACP, 0, path.data(), length, nullptr, 0, nullptr, nullptr), '\0');
  const int size = static_cast<int>(narrow.size());
  WideCharToMultiByte(CP_ACP, 0, path.data(), length, narrow.data(), size, nullptr, nullptr);
  // A missing character becomes a similar one or "?". Only the way back shows that in every code page.
  const UINT fileCodePage = AreFileApisANSI() ? CP_ACP : CP_OEMCP;
  std::wstring back(narrow.size(), L'\0');
  back.resize(MultiByteToWideChar(fileCodePage, 0, narrow.data(), size, back.data(), size));
  if (back != path) return std::nullopt;
  return narrow;
}

}  // namespace win
