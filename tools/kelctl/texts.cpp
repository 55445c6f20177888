#include "texts.h"

#include <windows.h>

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <nlohmann/json.hpp>
#include <system_error>

#include "errors.h"

namespace kelctl {
namespace {

std::wstring Widen(UINT codePage, std::string_view text) {
  const int length = static_cast<int>(text.size());
  std::wstring wide(static_cast<std::size_t>(MultiByteToWideChar(codePage, 0, text.data(), length, nullptr, 0)), L'\0');
  MultiByteToWideChar(codePage, 0, text.data(), length, wide.data(), static_cast<int>(wide.size()));
  return wide;
}

std::string Narrow(UINT codePage, DWORD flags, std::wstring_view wide, BOOL* lossy) {
  const int length = static_cast<int>(wide.size());
  std::string text(
      static_cast<std::size_t>(WideCharToMultiByte(codePage, flags, wide.data(), length, nullptr, 0, nullptr, lossy)),
      '\0');
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

std::int64_t ParseNumber(std::string_view text, std::int64_t lowest, std::int64_t highest) {
  std::int64_t number = 0;
  const char* const end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, number);
  if (error == std::errc::invalid_argument || stop != end) {
    throw UsageError("\"" + std::string(text) + "\" is not a decimal number");
  }
  if (error == std::errc::result_out_of_range || number < lowest || number > highest) {
    throw UsageError(std::string(text) + " is out of range: " + std::to_string(lowest) + " to " +
                     std::to_string(highest));
  }
  return number;
}

void CheckOneLine(std::string_view text) {
  if (text.find_first_of("\r\n") != text.npos) throw UsageError("a value cannot hold a line break");
}

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

nlohmann::ordered_json Answer(const nlohmann::ordered_json& document) {
  constexpr int kSchemaVersion = 1;
  wchar_t host[MAX_COMPUTERNAME_LENGTH + 1] = L"";
  DWORD length = MAX_COMPUTERNAME_LENGTH + 1;
  if (!GetComputerNameW(host, &length)) length = 0;
  FILETIME now;
  GetSystemTimeAsFileTime(&now);
  nlohmann::ordered_json answer = {
      {"schemaVersion", kSchemaVersion},
      {"generatedAt", UtcTime((std::uint64_t{now.dwHighDateTime} << 32) | now.dwLowDateTime)},
      {"host", Utf8FromWide({host, length})}};
  answer.update(document);
  return answer;
}

std::string DumpJson(const nlohmann::ordered_json& document) {
  return document.dump(2, ' ', false, nlohmann::ordered_json::error_handler_t::replace) + "\n";
}

std::string WithoutControlCharacters(const std::string& text) {
  std::string printable;
  for (const char character : text) {
    const auto code = static_cast<unsigned char>(character);
    char escape[] = "\\xNN";
    if (code < 0x20 || code == 0x7f) std::snprintf(escape, sizeof escape, "\\x%02X", code);
    printable += code < 0x20 || code == 0x7f ? std::string(escape) : std::string(1, character);
  }
  return printable;
}

std::string Padded(std::string text, std::size_t width) {
  text.resize(std::max(width, text.size()), ' ');
  return text;
}

std::string UtcTime(std::uint64_t time) {
  const FILETIME file{static_cast<DWORD>(time), static_cast<DWORD>(time >> 32)};
  SYSTEMTIME utc{};
  FileTimeToSystemTime(&file, &utc);
  char text[64];
  std::snprintf(text, sizeof text, "%04u-%02u-%02uT%02u:%02u:%02uZ", utc.wYear, utc.wMonth, utc.wDay, utc.wHour,
                utc.wMinute, utc.wSecond);
  return text;
}

std::string Counted(std::size_t count, const std::string& noun) {
  return std::to_string(count) + " " + noun + (count == 1 ? "" : "s");
}

}  // namespace kelctl
