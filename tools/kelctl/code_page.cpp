#include "code_page.h"

#include <windows.h>

#include "errors.h"

namespace kelctl {
namespace {

std::wstring Widen(UINT codePage, std::string_view text) {
  const int length = static_cast<int>(text.size());
  std::wstring wide(MultiByteToWideChar(codePage, 0, text.data(), length, nullptr, 0), L'\0');
  MultiByteToWideChar(codePage, 0, text.data(), length, wide.data(), static_cast<int>(wide.size()));
  return wide;
}

std::string Narrow(UINT codePage, DWORD flags, std::wstring_view wide, BOOL* lossy) {
  const int length = static_cast<int>(wide.size());
  std::string text(WideCharToMultiByte(codePage, flags, wide.data(), length, nullptr, 0, nullptr, lossy), '\0');
  WideCharToMultiByte(codePage, flags, wide.data(), length, text.data(), static_cast<int>(text.size()), nullptr, lossy);
  return text;
}

}  // namespace

std::string Utf8FromWide(std::wstring_view text) { return Narrow(CP_UTF8, 0, text, nullptr); }

std::wstring WideFromUtf8(std::string_view text) { return Widen(CP_UTF8, text); }

std::string Utf8FromCodePage(std::string_view text) { return Utf8FromWide(Widen(CP_ACP, text)); }

std::string CodePageFromUtf8(std::string_view text) {
  // The platform can only report lost characters of other code pages, and UTF-8 loses none.
  if (GetACP() == CP_UTF8) return std::string(text);
  BOOL lossy = FALSE;
  std::string converted = Narrow(CP_ACP, WC_NO_BEST_FIT_CHARS, WideFromUtf8(text), &lossy);
  if (lossy) throw UsageError("a character does not exist in code page " + std::to_string(GetACP()));
  return converted;
}

}  // namespace kelctl
