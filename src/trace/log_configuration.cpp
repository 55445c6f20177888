#include "trace/log_configuration.h"

#include <algorithm>
#include <cstring>
#include <initializer_list>
#include <limits>
#include <span>

#include "text/text.h"

namespace trace {

namespace {

constexpr std::uint32_t kDefaultLogSize = 0x300000;

// Joins the parts into a zero-terminated field; false when they do not fit.
bool Fill(std::span<char> field, std::initializer_list<std::string_view> parts) noexcept {
  std::size_t used = 0;
  for (const auto part : parts) {
    if (part.size() >= field.size() - used) return false;
    std::copy(part.begin(), part.end(), field.begin() + used);
    used += part.size();
  }
  field[used] = '\0';
  return true;
}

}  // namespace

std::uint32_t LogLevelFromText(const char* text) noexcept {
  return static_cast<std::uint32_t>(std::max(text::DecimalFromText(text), 0));
}

std::uint32_t LogSizeFromText(const char* text) noexcept {
  const std::int64_t bytes = std::int64_t{text::DecimalFromText(text)} * 1024;
  if (bytes <= 0 || bytes > std::numeric_limits<std::int32_t>::max()) return kDefaultLogSize;
  return static_cast<std::uint32_t>(bytes);
}

std::optional<LogConfiguration> MakeLogConfiguration(std::string_view moduleName, std::string_view libraryDirectory,
                                                     std::string_view logDirectory, std::uint32_t level,
                                                     std::uint32_t maximumFileSize,
                                                     text::LeadByteTest isLeadByte) noexcept {
  if (moduleName.empty() || libraryDirectory.empty() || logDirectory.empty()) return std::nullopt;
  LogConfiguration record{};
  record.recordSize = sizeof record;
  record.fileOutput = 1;
  record.level = level;
  record.maximumFileSize = maximumFileSize;
  record.fileOptionA = 1;
  record.fileOptionB = 1;
  const std::string_view separator = text::EndsInBackslash(logDirectory, isLeadByte) ? "" : "\\";
  const auto logFilePath = std::span(record.logFilePath).first<sizeof LogFileSettings::path>();
  if (!Fill(logFilePath, {logDirectory, separator, moduleName, ".log"}) ||
      !Fill(record.libraryDirectory, {libraryDirectory}) || !Fill(record.moduleName, {moduleName})) {
    return std::nullopt;
  }
  return record;
}

bool IsAcceptable(const LogConfiguration& configuration) noexcept {
  return configuration.recordSize == sizeof configuration && configuration.libraryDirectory[0] != '\0';
}

LogFileSettings ToFileSettings(const LogConfiguration& configuration) noexcept {
  LogFileSettings settings{};
  settings.level = configuration.level;
  std::memcpy(settings.path, configuration.logFilePath, sizeof settings.path - 1);
  settings.maximumSize = configuration.maximumFileSize;
  settings.optionA = configuration.fileOptionA;
  settings.optionB = configuration.fileOptionB;
  return settings;
}

}  // namespace trace
