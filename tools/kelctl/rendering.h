// How values of the store are shown. All texts are UTF-8.
#pragma once

#include <span>
#include <string>

#include "store_access.h"

namespace kelctl {

/// What is shown in place of a secret.
inline constexpr char kMask[] = "********";

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
std::string RenderJson(std::span<const ReadStoreValue> values, bool reveal);

/// True when the store itself could not be read, or a value failed for another reason than being missing.
bool AnyFailure(std::span<const ReadStoreValue> values);

}  // namespace kelctl
