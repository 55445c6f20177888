#include "diagnosis/trace_records.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <optional>

namespace kelctl {
namespace {

// What the first line of a failure's description has in it, in any letter case.
constexpr std::string_view kFailureWords[] = {"could not", "error",   "exception", "fail",     "wrong",      "restored",
                                              "damaged",   "no desc", "unknown",   "has only", "longer than"};

bool IsDigit(char c) { return c >= '0' && c <= '9'; }

bool IsDate(std::string_view text) {
  constexpr std::string_view kForm = "0000/00/00 00:00:00.000";
  return text.size() == kForm.size() &&
         std::ranges::equal(text, kForm, [](char c, char form) { return form == '0' ? IsDigit(c) : c == form; });
}

bool IsNumber(std::string_view text) { return !text.empty() && std::ranges::all_of(text, IsDigit); }

// Takes the text up to the next semicolon off; none when there is no semicolon.
std::optional<std::string> TakeField(std::string_view& line) {
  const std::size_t end = line.find(';');
  if (end == line.npos) return std::nullopt;
  std::string field(line.substr(0, end));
  line.remove_prefix(end + 1);
  return field;
}

std::optional<TraceRecord> ParseFirstLine(std::string_view line) {
  std::string fields[6];
  for (std::string& field : fields) {
    auto taken = TakeField(line);
    if (!taken) return std::nullopt;
    field = std::move(*taken);
  }
  if (!IsDate(fields[0]) || !IsNumber(fields[1]) || !IsNumber(fields[2]) || !IsNumber(fields[3]) ||
      !line.starts_with('"')) {
    return std::nullopt;
  }
  TraceRecord record;
  record.date = fields[0];
  record.process = fields[1];
  record.thread = fields[2];
  std::from_chars(fields[3].data(), fields[3].data() + fields[3].size(), record.level);
  record.module = fields[4];
  record.function = fields[5];
  record.description = line.substr(1);
  return record;
}

// The closing quote is that of the record's last line.
void Close(TraceRecord& record) {
  while (record.description.ends_with('\n') || record.description.ends_with('\r')) record.description.pop_back();
  if (record.description.ends_with('"')) record.description.pop_back();
}

}  // namespace

bool TraceRecord::IsError() const {
  if (level != 20) return level == 0;
  std::string line = description.substr(0, description.find('\n'));
  std::ranges::transform(line, line.begin(), [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  return std::ranges::any_of(kFailureWords, [&](std::string_view word) { return line.find(word) != line.npos; });
}

ParsedTrace ParseTrace(std::string_view text) {
  ParsedTrace parsed;
  while (!text.empty()) {
    const std::size_t end = std::min(text.find('\n'), text.size());
    std::string_view line = text.substr(0, end);
    text.remove_prefix(std::min(end + 1, text.size()));
    if (line.ends_with('\r')) line.remove_suffix(1);
    if (auto record = ParseFirstLine(line)) {
      if (!parsed.records.empty()) Close(parsed.records.back());
      parsed.records.push_back(std::move(*record));
    } else if (!parsed.records.empty()) {
      parsed.records.back().description.append("\n").append(line);
    } else {
      ++parsed.otherLines;
    }
  }
  if (!parsed.records.empty()) Close(parsed.records.back());
  return parsed;
}

std::string TraceLine(const TraceRecord& record) {
  return record.date + ";" + record.process + ";" + record.thread + ";" + std::to_string(record.level) + ";" +
         record.module + ";" + record.function + ";\"" + record.description + "\"";
}

}  // namespace kelctl
