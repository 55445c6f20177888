#include "rendering.h"

#include <algorithm>
#include <cstdio>
#include <nlohmann/json.hpp>

#include "result_codes.h"

namespace kelctl {
namespace {

// An empty value hides nothing, and that it is empty is what support wants to see.
bool IsMasked(const ReadStoreValue& read, bool reveal) {
  return read.value->secret && !reveal && !read.reading.text.empty();
}

std::string ReasonOf(KE_RESULT result) {
  const ResultCode code = FindResultCode(result);
  const std::string number = std::to_string(result) + " " + code.name;
  if (result == KE_STORE_UNUSABLE) return "(no value: " + number + ")";
  if (result == KE_BUFFER_TOO_SMALL) return "(longer than 1 MB: " + number + ")";
  return "(failed: " + DescribeResult(result) + ")";
}

std::string TableCell(const ReadStoreValue& read, bool reveal) {
  if (read.reading.result != KE_SUCCESS) return ReasonOf(read.reading.result);
  const std::string text = PlainText(read, reveal);
  return text.empty() ? "(empty)" : WithoutControlCharacters(text);
}

nlohmann::ordered_json JsonValue(const ReadStoreValue& read, bool reveal) {
  if (read.reading.result != KE_SUCCESS) return nullptr;
  if (read.value->yesNo) return read.reading.number != 0;
  if (read.value->getter.type == GetterType::kNumber) return read.reading.number;
  return PlainText(read, reveal);
}

}  // namespace

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

std::string PlainText(const ReadStoreValue& read, bool reveal) {
  if (read.value->yesNo) return read.reading.number != 0 ? "yes" : "no";
  if (read.value->getter.type == GetterType::kNumber) return std::to_string(read.reading.number);
  return IsMasked(read, reveal) ? kMask : read.reading.text;
}

std::string RenderTable(std::span<const ReadStoreValue> values, bool reveal) {
  std::size_t width = 0;
  for (const auto& read : values) width = std::max(width, std::string_view(read.value->name).size());
  std::string table;
  for (const auto& read : values) {
    std::string name = read.value->name;
    name.resize(width, ' ');
    table += name + "  " + TableCell(read, reveal) + "\n";
  }
  return table;
}

nlohmann::ordered_json JsonOf(const ReadStoreValue& read, bool reveal) {
  const KE_RESULT result = read.reading.result;
  nlohmann::ordered_json member = {{"value", JsonValue(read, reveal)}, {"result", result}};
  if (result != KE_SUCCESS) {
    const ResultCode code = FindResultCode(result);
    member["resultName"] = code.name;
    member["resultText"] = code.text;
  } else if (IsMasked(read, reveal)) {
    member["masked"] = true;
  }
  return member;
}

nlohmann::ordered_json JsonOf(std::span<const ReadStoreValue> values, bool reveal) {
  nlohmann::ordered_json object = nlohmann::ordered_json::object();
  for (const auto& read : values) object[read.value->name] = JsonOf(read, reveal);
  return object;
}

bool AnyFailure(std::span<const ReadStoreValue> values) {
  const auto result = [](const ReadStoreValue& read) { return read.reading.result; };
  const auto missing = [](KE_RESULT code) { return code == KE_STORE_UNUSABLE; };
  // Numbers and some texts succeed when they are missing: if nothing succeeds, it is the store that cannot be used.
  const auto successOrMissing = [&](KE_RESULT code) { return code == KE_SUCCESS || missing(code); };
  return !std::ranges::all_of(values, successOrMissing, result) || std::ranges::all_of(values, missing, result);
}

}  // namespace kelctl
