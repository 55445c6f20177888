// Configuration records, each in a file of its own beside the module.
#pragma once

#include <cstdint>

#include "kelagapi/results.h"

namespace kelagapi {

inline constexpr std::uint32_t kLargestRecord = 64 * 1024;  // bytes

/// What selects a record. Any two numbers do.
struct RecordKey {
  std::uint32_t cls;
  std::uint32_t item;
};

/// Reads a record of `size` bytes as it was last stored; one that never was is all zeros. On a failure `record` stays
/// as it was. kSuccess, kBadArgument, kWrongSize, kDamaged, kFileFailure, kNoMemory. Any thread, any process.
Result ReadRecord(RecordKey key, void* record, std::uint32_t size) noexcept;

/// Stores a record of `size` bytes in place of the former one, whatever size that has, also of a damaged one. On a
/// failure the former one stays. kSuccess, kBadArgument, kFileFailure. Any thread, any process.
Result WriteRecord(RecordKey key, const void* record, std::uint32_t size) noexcept;

}  // namespace kelagapi
