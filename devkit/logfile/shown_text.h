// A caller's text as one field of a log line.
#pragma once

#include <cstddef>

namespace logfile {

/// Shows at most 512 characters of a text, followed by "..." when there are more; no more of it is ever read. Control
/// characters become "?", so that no text can forge a line. A null text is shown as "(null)".
class ShownText {
 public:
  static constexpr std::size_t kLongest = 512;

  explicit ShownText(const char* text) noexcept;

  const char* Text() const noexcept { return text_; }

 private:
  char text_[kLongest + sizeof "..."];
};

}  // namespace logfile
