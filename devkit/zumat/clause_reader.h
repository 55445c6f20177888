// Reading the time clauses of a command.
#pragma once

#include <string_view>

#include "zumat/clauses.h"
#include "zumat/results.h"
#include "zumat/words.h"

namespace zumat {

/// Collects clauses from the words of a command, in any order.
class ClauseReader {
 public:
  /// True when the word is a time clause; `outcome` then tells whether it was understood: kBadValue, kRepeated.
  bool Take(const Word& word, Outcome& outcome);

  /// True when a clause was taken.
  bool Any() const noexcept { return seen_ != 0; }

  /// The clauses together: kMissing, kClash, kBadValue when they make no sense.
  Outcome Finish(Clauses& clauses) const;

 private:
  Clauses clauses_;
  unsigned seen_ = 0;
};

/// Reads a text of nothing but clauses. The codes are those of ClauseReader, kBadQuotes and kUnknownSwitch.
Outcome ReadClauses(std::string_view text, Clauses& clauses);

}  // namespace zumat
