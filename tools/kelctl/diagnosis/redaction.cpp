#include "diagnosis/redaction.h"

#include <algorithm>
#include <cctype>

namespace kelctl {
namespace {

constexpr std::string_view kSecretWords[] = {"PASS", "PWD", "SECRET", "CERT", "TOKEN", "CREDENTIAL", "KEY"};
constexpr std::size_t kShortestSecret = 3;  // bytes
constexpr std::size_t kShortestCode = 20;   // characters with a digit or sign among them
constexpr std::size_t kShortestPlain = 40;  // letters alone: no function has a name that long
constexpr std::string_view kStoreText = "writing integra.dat:";

bool IsLetterOrDigit(char c) { return std::isalnum(static_cast<unsigned char>(c)) != 0; }
bool IsWordCharacter(char c) { return IsLetterOrDigit(c) || c == '_' || c == '-'; }
bool IsCodeCharacter(char c) { return IsLetterOrDigit(c) || c == '+' || c == '/'; }

void ReplaceAll(std::string& text, std::string_view old, std::string_view replacement) {
  for (auto at = text.find(old); at != text.npos; at = text.find(old, at + replacement.size())) {
    text.replace(at, old.size(), replacement);
  }
}

// Where the secret behind the word at [begin, end) starts; npos when no secret stands there.
std::size_t StartOfSecret(std::string_view line, std::size_t begin, std::size_t end) {
  if (!NamesSecret(line.substr(begin, end - begin))) return line.npos;
  const std::size_t next = line.find_first_not_of("\"' \t", end);
  if (next == line.npos) return line.npos;
  constexpr std::string_view kSigns = "=:[(>";
  if (kSigns.find(line[next]) != kSigns.npos) return next + 1;
  const bool option = line[begin] == '-' || (begin > 0 && line[begin - 1] == '/');
  return option && next > end ? next : line.npos;
}

std::string WithoutNamedSecrets(const std::string& line) {
  for (std::size_t begin = 0; begin < line.size(); ++begin) {
    if (!IsWordCharacter(line[begin])) continue;
    std::size_t end = begin;
    while (end < line.size() && IsWordCharacter(line[end])) ++end;
    const std::size_t secret = StartOfSecret(line, begin, end);
    if (secret != line.npos) return line.substr(0, secret) + (secret < line.size() ? kMask : "");
    begin = end;
  }
  return line;
}

bool IsCode(std::string_view run) {
  const bool onlyLetters = std::ranges::all_of(run, [](char c) { return std::isalpha(static_cast<unsigned char>(c)); });
  return run.size() >= (onlyLetters ? kShortestPlain : kShortestCode);
}

std::string WithoutCodes(const std::string& line) {
  std::string shown;
  for (std::size_t begin = 0; begin < line.size();) {
    std::size_t end = begin;
    while (end < line.size() && IsCodeCharacter(line[end])) ++end;
    const std::string_view run = std::string_view(line).substr(begin, end - begin);
    const bool code = IsCode(run);
    while (code && end < line.size() && line[end] == '=') ++end;
    if (end == begin) ++end;
    shown += code ? kMask : line.substr(begin, end - begin);
    begin = end;
  }
  return shown;
}

}  // namespace

bool NamesSecret(std::string_view name) {
  std::string upper(name);
  std::ranges::transform(upper, upper.begin(), [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
  return std::ranges::any_of(kSecretWords, [&](std::string_view word) { return upper.find(word) != upper.npos; });
}

void Redactor::AddSecret(const std::string& secret) {
  if (secret.size() >= kShortestSecret) secrets_.insert(secret);
}

std::string Redactor::WithoutKnown(std::string text) const {
  for (const std::string& secret : secrets_) ReplaceAll(text, secret, kMask);
  return text;
}

std::string Redactor::Text(std::string_view line) const {
  return WithoutCodes(WithoutNamedSecrets(WithoutKnown(std::string(line))));
}

std::string Redactor::Ini(std::string_view text) const {
  std::string shown;
  bool secretSection = false;
  while (!text.empty()) {
    const std::size_t end = std::min(text.find_first_of("\r\n"), text.size());
    const std::string_view line = text.substr(0, end);
    text.remove_prefix(std::min(text.find_first_not_of("\r\n", end), text.size()));
    const std::size_t equals = line.find('=');
    if (line.starts_with('[')) secretSection = NamesSecret(line);
    if (line.starts_with('[') || equals == line.npos) {
      shown += Text(line);
    } else {
      const std::string_view key = line.substr(0, equals), value = line.substr(equals + 1);
      const bool masked = !value.empty() && (secretSection || NamesSecret(key));
      shown.append(Text(key)).append("=").append(masked ? kMask : Text(value));
    }
    shown += "\r\n";
  }
  return shown;
}

TraceRecord Redactor::Record(TraceRecord record) const {
  const std::size_t end = record.description.find('\n');
  const bool store = record.description.starts_with(kStoreText);
  std::string first = store ? std::string(kStoreText) : Text(record.description.substr(0, end));
  if (end != record.description.npos) first += " (more lines left out)";
  if (store && end == record.description.npos) first += " (the rest left out)";
  record.module = Text(record.module);
  record.function = Text(record.function);
  record.description = std::move(first);
  return record;
}

}  // namespace kelctl
