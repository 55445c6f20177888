// Building a line of JSON in a buffer of fixed size.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace tvevapi {

/// One JSON object on one line, whose members are added in turn. Whatever the texts hold, the line is valid JSON and
/// plain ASCII. A member that the buffer has no room for is left out. Member names are given as they are to appear:
/// letters only.
class JsonLine {
 public:
  static constexpr std::size_t kCapacity = 40 * 1024;

  /// The most bytes that a UTF-16 unit of a text becomes.
  static constexpr std::size_t kLongestUnit = 6;

  void Number(std::string_view name, std::int64_t value) noexcept;
  void Null(std::string_view name) noexcept;
  void True(std::string_view name) noexcept;

  /// A text of UTF-16 units. Half a surrogate pair becomes the replacement character.
  void Text(std::string_view name, std::wstring_view units) noexcept;

  /// Ends the object and the line, and returns it, valid as long as this object. Nothing can be added afterwards.
  std::string_view Finish() noexcept;

 private:
  static constexpr std::string_view kEnd = "}\r\n";

  void Add(std::string_view bytes) noexcept;
  void AddUnit(unsigned unit) noexcept;
  template <typename Value>
  void Member(std::string_view name, Value addValue) noexcept;

  char bytes_[kCapacity] = {'{'};
  std::size_t size_ = 1;
  bool full_ = false;  // the member being added does not fit
};

}  // namespace tvevapi
