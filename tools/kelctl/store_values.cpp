#include "store_values.h"

#include <algorithm>
#include <nlohmann/json.hpp>
#include <type_traits>

#include "diagnosis/redaction.h"
#include "registration/texts.h"
#include "store/accessor_table.h"
#include "text/text.h"
#include "texts.h"

namespace kelctl {
namespace {

using TextGetter = decltype(KE_GetAgentID);
using NumberGetter = decltype(KE_GetInstallState);
using TextSetter = decltype(KE_SetAgentID);
using NumberSetter = decltype(KE_SetLastInstallError);
using StateSetter = decltype(KE_SetInstallState);

// The type of a column is that of the prototype: a row whose export has any other type does not compile.
template <typename Function>
consteval GetterType TypeOfGetter() {
  if (std::is_same_v<Function, TextGetter>) return GetterType::kText;
  if (std::is_same_v<Function, NumberGetter>) return GetterType::kNumber;
  throw "not the type of a getter";
}

template <typename Function>
consteval SetterType TypeOfSetter() {
  if (std::is_same_v<Function, TextSetter>) return SetterType::kText;
  if (std::is_same_v<Function, NumberSetter>) return SetterType::kNumber;
  if (std::is_same_v<Function, StateSetter>) return SetterType::kState;
  throw "not the type of a setter";
}

#define GET(function) \
  { #function, TypeOfGetter < decltype(function)>() }
#define SET(function) \
  { #function, TypeOfSetter < decltype(function)>() }

constexpr Setter kReadOnly = {nullptr, SetterType::kNone};

constexpr StoreValue kStoreValues[] = {
    {"agent-id", GET(KE_GetAgentID), SET(KE_SetAgentID)},
    {"agent-version", GET(KE_GetAgentVersion), SET(KE_SetAgentVersion)},
    {"customer-id", GET(KE_GetCustomerId), SET(KE_SetCustomerId)},
    {"device-id", GET(KE_GetDeviceID), SET(KE_SetDeviceID)},
    {.name = "certificate", .getter = GET(KE_GetCertificate), .setter = SET(KE_SetCertificate), .secret = true},
    {"container", GET(KE_GetContainer), SET(KE_SetContainer)},
    {"server-date", GET(KE_GetServerDate), SET(KE_SetServerDate)},
    {"rcm-user", GET(KE_GetUserRCM), SET(KE_SetUserRCM)},
    {.name = "rcm-password", .getter = GET(KE_GetPasswordRCM), .setter = SET(KE_SetPasswordRCM), .secret = true},
    {"install-state", GET(KE_GetInstallState), SET(KE_SetInstallState)},
    {"last-install-error", GET(KE_GetLastInstallError), SET(KE_SetLastInstallError)},
    {"last-error-param", GET(KE_GetLastErrorParam), SET(KE_SetLastErrorParam)},
    {.name = "install-complete", .getter = GET(KE_IsInstallComplete), .setter = kReadOnly, .yesNo = true},
    {.name = "integrated", .getter = GET(KE_IsIntegrated), .setter = kReadOnly, .yesNo = true},
};

#undef GET
#undef SET

template <typename Choose>
std::string NamesOf(Choose choose) {
  std::string names;
  for (const StoreValue& value : kStoreValues) {
    if (choose(value)) names += (names.empty() ? "" : ", ") + std::string(value.name);
  }
  return names;
}

KE_RESULT Set(const Library& library, const Setter& setter, const std::string& text, bool onlyForward) {
  if (setter.type == SetterType::kText) return library.Typed<TextSetter>(setter.name)(CodePageFromUtf8(text).c_str());
  const auto number = static_cast<std::int32_t>(ParseNumber(text));
  if (setter.type == SetterType::kNumber) return library.Typed<NumberSetter>(setter.name)(&number);
  return library.Typed<StateSetter>(setter.name)(&number, onlyForward ? 1 : 0);
}

std::string TextOf(const store::IniStore& store, const char* section, const char* key) {
  const store::IniEntry* const entry = store::LookupEntry(store, section, key);
  return std::string(entry ? entry->value : std::string_view());
}

std::int32_t NumberOf(const store::IniStore& store, std::string_view getter) {
  const auto state = [&] { return text::DecimalFromText(TextOf(store, "INSTALL", "State").c_str()); };
  if (getter == "KE_GetInstallState") return state();
  if (getter == "KE_IsInstallComplete") return state() >= registration::kInstallComplete ? 1 : 0;
  if (getter == "KE_GetLastInstallError") return text::DecimalFromText(TextOf(store, "INSTALL", "LastError").c_str());
  const bool integrated =
      !TextOf(store, "INTEGRATION", "Date").empty() && !TextOf(store, "INTEGRATION", "DEVICEID").empty();
  return integrated ? 1 : 0;  // KE_IsIntegrated
}

Reading ValueIn(const store::IniStore& store, const StoreValue& value) {
  if (value.getter.type == GetterType::kNumber) return {.value = &value, .number = NumberOf(store, value.getter.name)};
  const auto* const row = std::ranges::find(store::kTextGetters, value.getter.name, &store::TextGetter::exportName);
  const std::string text = TextOf(store, row->section, row->key);
  const bool required = row->read == store::TextRead::kRestored || row->read == store::TextRead::kRequired;
  if (text.empty() && required) return {.value = &value, .result = KE_STORE_UNUSABLE};
  return {.value = &value, .text = Utf8FromCodePage(text)};
}

// An empty value hides nothing, and support wants to see that it is empty.
bool IsMasked(const Reading& reading, bool reveal) { return reading.value->secret && !reveal && !reading.text.empty(); }

std::string ReasonOf(KE_RESULT result) {
  const std::string number = std::to_string(result) + " " + FindResultCode(result).name;
  if (result == KE_STORE_UNUSABLE) return "(no value: " + number + ")";
  if (result == KE_BUFFER_TOO_SMALL) return "(longer than 1 MB: " + number + ")";
  return "(failed: " + DescribeResult(result) + ")";
}

std::string TableCell(const Reading& reading, bool reveal) {
  if (reading.result != KE_SUCCESS) return ReasonOf(reading.result);
  const std::string text = PlainText(reading, reveal);
  return text.empty() ? "(empty)" : WithoutControlCharacters(text);
}

nlohmann::ordered_json JsonValue(const Reading& reading, bool reveal) {
  if (reading.result != KE_SUCCESS) return nullptr;
  if (reading.value->yesNo) return reading.number != 0;
  if (reading.value->getter.type == GetterType::kNumber) return reading.number;
  return PlainText(reading, reveal);
}

}  // namespace

std::span<const StoreValue> StoreValues() { return kStoreValues; }

const StoreValue& FindStoreValue(std::string_view name) {
  const auto* const row = std::ranges::find(kStoreValues, name, &StoreValue::name);
  if (row == std::end(kStoreValues)) {
    throw UsageError("there is no value \"" + std::string(name) + "\"; the names are " + StoreValueNames());
  }
  return *row;
}

std::string StoreValueNames() {
  return NamesOf([](const StoreValue&) { return true; });
}

std::string WritableStoreValueNames() {
  return NamesOf([](const StoreValue& value) { return value.setter.type != SetterType::kNone; });
}

Reading ReadValue(const Library& library, const StoreValue& value) {
  Reading reading{.value = &value};
  if (value.getter.type == GetterType::kNumber) {
    reading.result = library.Typed<NumberGetter>(value.getter.name)(&reading.number);
    return reading;
  }
  std::string text;
  reading.result = ReadText(library.Typed<TextGetter>(value.getter.name), text);
  if (reading.result == KE_SUCCESS) reading.text = Utf8FromCodePage(text);
  return reading;
}

std::vector<Reading> ValuesIn(const store::IniStore* store) {
  std::vector<Reading> readings;
  for (const StoreValue& value : StoreValues()) {
    readings.push_back(store ? ValueIn(*store, value) : Reading{.value = &value, .result = KE_STORE_UNUSABLE});
  }
  return readings;
}

bool HasUninstallPassword(const store::IniStore& store) { return !TextOf(store, "UNINSTALL", "PASSWORD").empty(); }

void WriteValue(const Library& library, const StoreValue& value, const std::string& text, bool onlyForward) {
  CheckOneLine(text);
  ThrowUnlessSuccess(value.setter.name, Set(library, value.setter, text, onlyForward));
}

void WriteProperty(const Library& library, const std::string& key, const std::string& text) {
  CheckPropertyKey(key);
  CheckOneLine(text);
  auto* const set = library.Typed<decltype(KE_SetPropertyInIntegra)>("KE_SetPropertyInIntegra");
  ThrowUnlessSuccess("KE_SetPropertyInIntegra", set(CodePageFromUtf8(key).c_str(), CodePageFromUtf8(text).c_str()));
}

std::string PlainText(const Reading& reading, bool reveal) {
  if (reading.value->yesNo) return reading.number != 0 ? "yes" : "no";
  if (reading.value->getter.type == GetterType::kNumber) return std::to_string(reading.number);
  return IsMasked(reading, reveal) ? kMask : reading.text;
}

std::string RenderTable(std::span<const Reading> readings, bool reveal) {
  std::size_t width = 0;
  for (const Reading& reading : readings) width = std::max(width, std::string_view(reading.value->name).size());
  std::string table;
  for (const Reading& reading : readings) {
    table += Padded(reading.value->name, width) + "  " + TableCell(reading, reveal) + "\n";
  }
  return table;
}

nlohmann::ordered_json JsonOf(const Reading& reading, bool reveal) {
  nlohmann::ordered_json member = {{"value", JsonValue(reading, reveal)}, {"result", reading.result}};
  if (reading.result != KE_SUCCESS) {
    const ResultCode code = FindResultCode(reading.result);
    member["resultName"] = code.name;
    member["resultText"] = code.text;
  } else if (IsMasked(reading, reveal)) {
    member["masked"] = true;
  }
  return member;
}

nlohmann::ordered_json JsonOf(std::span<const Reading> readings, bool reveal) {
  nlohmann::ordered_json object = nlohmann::ordered_json::object();
  for (const Reading& reading : readings) object[reading.value->name] = JsonOf(reading, reveal);
  return object;
}

bool AnyFailure(std::span<const Reading> readings) {
  const auto missing = [](KE_RESULT code) { return code == KE_STORE_UNUSABLE; };
  // Numbers and some texts succeed when they are missing: if nothing succeeds, the store cannot be used.
  const auto successOrMissing = [&](KE_RESULT code) { return code == KE_SUCCESS || missing(code); };
  return !std::ranges::all_of(readings, successOrMissing, &Reading::result) ||
         std::ranges::all_of(readings, missing, &Reading::result);
}

}  // namespace kelctl
