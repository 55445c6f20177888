#include "diagnosis/redaction.h"

#include <algorithm>
#include <cctype>

namespace kelctl {
namespace {

constexpr std::string_view kSecretWords[] = {"PASS", "PWD", "SECRET", "CERT", "CREDENTIAL", "CLAVE", "KEY"};
// Common inside other words: these count only as a word of the name, as in UserPw, PIN, proxy_auth, AccessToken.
constexpr std::string_view kWholeWords[] = {"PIN", "PW", "AUTH", "PSK", "TOKEN"};
constexpr std::size_t kFewestHexDigits = 24;  // of groups such as 3f:a2:...
constexpr std::size_t kShortestSecret = 3;    // bytes
constexpr std::size_t kShortestCode = 20;     // characters with a digit or sign among them
constexpr std::size_t kShortestPlain = 40;    // letters alone: no function has a name that long
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

bool IsUpper(char c) { return c >= 'A' && c <= 'Z'; }

// True when `name` has one of kWholeWords as a word: between signs, digits and changes to upper case.
bool HasWholeWord(std::string_view name) {
  std::string word;
  const auto found = [&] { return std::ranges::find(kWholeWords, std::string_view(word)) != std::end(kWholeWords); };
  for (std::size_t i = 0; i < name.size(); ++i) {
    const bool letter = std::isalpha(static_cast<unsigned char>(name[i])) != 0;
    const bool begins = !letter || (i > 0 && IsUpper(name[i]) && !IsUpper(name[i - 1]));
    if (begins && found()) return true;
    if (begins) word.clear();
    if (letter) word += static_cast<char>(std::toupper(static_cast<unsigned char>(name[i])));
  }
  return found();
}

// The user and password of an address: between "://" and the last "@" of its host part.
std::string WithoutUrlUsers(std::string line) {
  constexpr std::string_view kBegin = "://";
  for (auto at = line.find(kBegin); at != line.npos; at = line.find(kBegin, at + 1)) {
    const std::size_t begin = at + kBegin.size();
    const std::size_t end = std::min(line.find_first_of("/ \t\"'<>", begin), line.size());
    const std::size_t sign = line.substr(begin, end - begin).rfind('@');
    if (sign != line.npos) line.replace(begin, sign, kMask);
  }
  return line;
}

// What follows host:port: in a proxy's text host:port:user:password, to the end of the word.
std::string WithoutProxyUsers(std::string line) {
  for (auto at = line.find(':'); at != line.npos; at = line.find(':', at + 1)) {
    const std::size_t end = std::min(line.find_first_not_of("0123456789", at + 1), line.size());
    const bool host = at > 0 && (IsLetterOrDigit(line[at - 1]) || line[at - 1] == ']');
    if (!host || end == at + 1 || end >= line.size() || line[end] != ':') continue;
    const std::size_t stop = std::min(line.find_first_of(" \t\"'<>,;", end), line.size());
    const std::size_t second = line.find(':', end + 1);
    // A time of day has numbers only, a record of the log too; user and password are two more fields.
    if (second != line.npos && second < stop) line.replace(end + 1, stop - end - 1, kMask);
  }
  return line;
}

// The value of an option -p: the next word.
std::string WithoutShortOptions(std::string line) {
  for (auto at = line.find("-p "); at != line.npos; at = line.find("-p ", at + 1)) {
    if (at > 0 && line[at - 1] != ' ' && line[at - 1] != '"') continue;
    const std::size_t begin = std::min(line.find_first_not_of(' ', at + 3), line.size());
    const std::size_t end = std::min(line.find_first_of(" \t", begin), line.size());
    if (line.compare(begin, end - begin, "-p") != 0) line.replace(begin, end - begin, kMask);
  }
  return line;
}

// Groups of two, four or eight hexadecimal digits between equal signs: fingerprints and keys. The groups of a UUID have
// different lengths.
std::string WithoutHexGroups(std::string line) {
  const auto digits = [&](std::size_t from) {
    std::size_t end = from;
    while (end < line.size() && std::isxdigit(static_cast<unsigned char>(line[end])) != 0) ++end;
    return end - from;
  };
  for (std::size_t begin = 0; begin < line.size(); ++begin) {
    if (begin > 0 && IsLetterOrDigit(line[begin - 1])) continue;
    const std::size_t length = digits(begin);
    if (length != 2 && length != 4 && length != 8) continue;
    std::size_t end = begin + length, count = length;
    const char sign = end < line.size() ? line[end] : '\0';
    if (sign != ':' && sign != '-' && sign != ' ') continue;
    while (end < line.size() && line[end] == sign && digits(end + 1) == length) {
      end += 1 + length;
      count += length;
    }
    if (count >= kFewestHexDigits) line.replace(begin, end - begin, kMask);
  }
  return line;
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
  if (upper == "TOKENS" || upper == "[TOKENS]") return false;  // names of modules
  return HasWholeWord(name) ||
         std::ranges::any_of(kSecretWords, [&](std::string_view word) { return upper.find(word) != upper.npos; });
}

void Redactor::AddSecret(const std::string& secret) {
  if (secret.size() >= kShortestSecret) secrets_.insert(secret);
}

std::string Redactor::WithoutKnown(std::string text) const {
  for (const std::string& secret : secrets_) ReplaceAll(text, secret, kMask);
  return text;
}

std::string Redactor::Text(std::string_view line) const {
  std::string text = WithoutHexGroups(WithoutKnown(std::string(line)));
  text = WithoutShortOptions(WithoutProxyUsers(WithoutUrlUsers(std::move(text))));
  return WithoutCodes(WithoutNamedSecrets(text));
}

std::string Redactor::Ini(std::string_view text) const {
  std::string shown;
  bool secretSection = false;
  while (!text.empty()) {
    const std::size_t end = std::min(text.find_first_of("\r\n"), text.size());
    const std::string_view line = text.substr(0, end);
    text.remove_prefix(std::min(text.find_first_not_of("\r\n", end), text.size()));
    const std::size_t equals = line.find('=');
    // Some readers of INI files skip blanks in front of a section, others do not.
    const std::size_t first = line.find_first_not_of(" \t");
    const bool section = first != line.npos && line[first] == '[';
    if (section) secretSection = NamesSecret(line.substr(first));
    if (section || equals == line.npos) {
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
