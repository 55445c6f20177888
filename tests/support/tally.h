// Counts the cases of an endurance test.
#pragma once

#include <doctest/doctest.h>

#include <cstdio>
#include <string>

namespace support {

/// Counts what one test does, and prints its summary line at the end.
class Tally {
 public:
  explicit Tally(const char* test) : test_(test) {}
  ~Tally() {
    std::printf("torture: %s: %d cases, %s%s\n", test_, cases_, failed_ ? "FAILED" : "ok", note.c_str());
    std::fflush(stdout);
  }
  void Case(bool good, const std::string& what) {
    ++cases_;
    failed_ |= !good;
    CHECK_MESSAGE(good, what);
  }
  std::string note;

 private:
  const char* test_;
  int cases_ = 0;
  bool failed_ = false;
};

}  // namespace support
