#include "store_access.h"

#include "arguments.h"
#include "calls.h"

namespace kelctl {
namespace {

Reading ReadTextValue(Library& library, TextGetter* get) {
  Reading reading;
  std::string text;
  reading.result = ReadText(get, text);
  if (reading.result == KE_SUCCESS) reading.text = library.FromCodePage(text);
  return reading;
}

Reading ReadNumber(NumberGetter* get) {
  Reading reading;
  reading.result = get(&reading.number);
  return reading;
}

KE_RESULT Set(Library& library, const Setter& setter, const std::string& text, bool onlyForward) {
  if (setter.type == SetterType::kText) {
    return Typed<TextSetter>(library, setter.name)(library.ToCodePage(text).c_str());
  }
  const std::int32_t number = ParseNumber(text);
  if (setter.type == SetterType::kNumber) return Typed<NumberSetter>(library, setter.name)(&number);
  return Typed<StateSetter>(library, setter.name)(&number, onlyForward ? 1 : 0);
}

}  // namespace

Reading ReadValue(Library& library, const StoreValue& value) {
  const Getter& getter = value.getter;
  if (getter.type == GetterType::kNumber) return ReadNumber(Typed<NumberGetter>(library, getter.name));
  return ReadTextValue(library, Typed<TextGetter>(library, getter.name));
}

void WriteValue(Library& library, const StoreValue& value, const std::string& text, bool onlyForward) {
  CheckOneLine(text);
  ThrowUnlessSuccess(value.setter.name, Set(library, value.setter, text, onlyForward));
}

void WriteProperty(Library& library, const std::string& key, const std::string& text) {
  CheckPropertyKey(key);
  CheckOneLine(text);
  const std::string keyInCodePage = library.ToCodePage(key);
  const std::string textInCodePage = library.ToCodePage(text);
  auto* const set = Typed<PropertySetter>(library, kPropertySetter);
  ThrowUnlessSuccess(kPropertySetter, set(keyInCodePage.c_str(), textInCodePage.c_str()));
}

}  // namespace kelctl
