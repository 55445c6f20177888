// A ZIP archive whose entries are stored as they are, without compression: the format of PKWARE's APPNOTE, version 2.0.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace kelctl {

/// The CRC-32 of the ZIP format.
std::uint32_t Crc32(std::string_view bytes) noexcept;

/// Local date and time in the two words of the FAT file system.
struct FatTime {
  std::uint16_t date = 0x21;  // 1980-01-01
  std::uint16_t time = 0;
};

/// Grows in memory; every entry carries the same time.
class ZipArchive {
 public:
  explicit ZipArchive(FatTime time) : time_(time) {}

  /// Adds a file. `name` is UTF-8 with "/" between folders. Throws std::length_error beyond 65535 entries, and when the
  /// archive would have more than 2 GB.
  void Add(std::string_view name, std::string_view content);

  /// The bytes of the whole archive with the entries so far.
  std::string Bytes() const;

 private:
  FatTime time_;
  std::string entries_;
  std::string directory_;
  std::uint32_t count_ = 0;
};

}  // namespace kelctl
