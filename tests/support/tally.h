// What tests with a short and a long form share.
#pragma once

#include <doctest/doctest.h>

#include <cstdio>
#include <cstdlib>
#include <string>

namespace support {

/// True for the long form of a test, which the environment variable KELUTILS_TORTURE asks for (scripts/torture.sh).
inline bool IsLong() { return std::getenv("KELUTILS_TORTURE") != nullptr; }

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
