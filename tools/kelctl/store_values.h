// The values of the store: their names in kelctl, the exports that read and write them, and how they are printed.
#pragma once

#include <nlohmann/json_fwd.hpp>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "KELUtils.h"
#include "library.h"
#include "store/ini_store.h"

namespace kelctl {

enum class GetterType { kText, kNumber };
enum class SetterType { kNone, kText, kNumber, kState };

/// The name of an export with the type of its prototype.
struct Getter {
  const char* name;
  GetterType type;
};
struct Setter {
  const char* name;
  SetterType type;
};

/// One value of the store.
struct StoreValue {
  const char* name;
  Getter getter;
  Setter setter;
  bool secret = false;  // masked unless the user asks to see it
  bool yesNo = false;   // a number that is 1 or 0 and means yes or no
};

/// All values, in the order in which they are shown.
std::span<const StoreValue> StoreValues();

/// The value of that name. Throws UsageError that lists the names when there is none.
const StoreValue& FindStoreValue(std::string_view name);

/// The names of all values, or of those that can be set, separated by ", ".
std::string StoreValueNames();
std::string WritableStoreValueNames();

/// The result of a getter, by the library or from a store that was read without it. Of `text` and `number` the one that
/// the getter returns is set, when `result` is KE_SUCCESS.
struct Reading {
  const StoreValue* value;
  KE_RESULT result = KE_SUCCESS;
  std::string text = {};  // UTF-8
  std::int32_t number = 0;
};

/// Reads one value through the library. Throws LibraryError.
Reading ReadValue(const Library& library, const StoreValue& value);

/// Every value of a store that was read without the library, as the getters return it without restoring. Without a
/// store each is KE_STORE_UNUSABLE.
std::vector<Reading> ValuesIn(const store::IniStore* store);

/// True when the store holds an uninstall password.
bool HasUninstallPassword(const store::IniStore& store);

/// Writes one value, which must not be read only: `text` as it is, or the number that it holds. `onlyForward` belongs
/// to the setter of the installation state. Throws UsageError, LibraryError, CallError.
void WriteValue(const Library& library, const StoreValue& value, const std::string& text, bool onlyForward);

/// Writes a free property. Throws UsageError, LibraryError, CallError.
void WriteProperty(const Library& library, const std::string& key, const std::string& text);

/// The value alone: the text, the number, yes or no, or the mask. Only for a successful reading.
std::string PlainText(const Reading& reading, bool reveal);

/// A line "name  value" for each value. A value that could not be read is shown as the reason with its result code, an
/// empty one as "(empty)", a control character as \xNN.
std::string RenderTable(std::span<const Reading> readings, bool reveal);

/// A JSON object with a member for each value: an object of "value" (text, number, boolean, or null when it could not
/// be read), "result", and for failures "resultName" and "resultText"; "masked" is true where the mask replaces the
/// value.
nlohmann::ordered_json JsonOf(std::span<const Reading> readings, bool reveal);

/// The member of one value in that object.
nlohmann::ordered_json JsonOf(const Reading& reading, bool reveal);

/// True when the store itself could not be read, or a value failed for another reason than being missing.
bool AnyFailure(std::span<const Reading> readings);

}  // namespace kelctl
