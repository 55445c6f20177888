// How values of the store are shown. All texts are UTF-8.
#pragma once

#include <nlohmann/json_fwd.hpp>
#include <span>
#include <string>

#include "mask.h"
#include "store_access.h"

namespace kelctl {

/// The document as it is shown: indented, with a line end; bytes that are no UTF-8 become replacement characters.
std::string DumpJson(const nlohmann::ordered_json& document);

/// The text with every control character as \xNN, for a line of a table.
std::string WithoutControlCharacters(const std::string& text);

/// A value with what its getter answered.
struct ReadStoreValue {
  const StoreValue* value;
  Reading reading;
};

/// The value alone: the text, the number, yes or no, or the mask. Only for a successful reading.
std::string PlainText(const ReadStoreValue& read, bool reveal);

/// A line "name  value" for each value. A value that could not be read is shown as the reason with its result code, an
/// empty one as "(empty)", a control character as \xNN.
std::string RenderTable(std::span<const ReadStoreValue> values, bool reveal);

/// A JSON object with a member for each value: an object of "value" (text, number, boolean, or null when it could not
/// be read), "result", and for failures "resultName" and "resultText"; "masked" is true where the mask stands for the
/// value.
nlohmann::ordered_json JsonOf(std::span<const ReadStoreValue> values, bool reveal);

/// The member of one value in that object.
nlohmann::ordered_json JsonOf(const ReadStoreValue& read, bool reveal);

/// True when the store itself could not be read, or a value failed for another reason than being missing.
bool AnyFailure(std::span<const ReadStoreValue> values);

}  // namespace kelctl
