#include "diagnosis/zip_archive.h"

#include <array>
#include <stdexcept>

namespace kelctl {
namespace {

constexpr std::uint32_t kMaximumEntries = 0xffff;
constexpr std::size_t kMaximumBytes = 0x7fffffff;
constexpr std::uint16_t kVersionMadeBy = 20, kVersionNeeded = 10;  // 2.0 with file attributes of FAT; 1.0: stored
constexpr std::uint16_t kNamesAreUtf8 = 0x0800;
constexpr std::uint16_t kStored = 0;

constexpr std::array<std::uint32_t, 256> MakeCrcTable() {
  std::array<std::uint32_t, 256> table{};
  for (std::uint32_t byte = 0; byte < table.size(); ++byte) {
    std::uint32_t crc = byte;
    for (int bit = 0; bit < 8; ++bit) crc = (crc >> 1) ^ ((crc & 1) != 0 ? 0xedb88320u : 0u);
    table[byte] = crc;
  }
  return table;
}

constexpr std::array<std::uint32_t, 256> kCrcTable = MakeCrcTable();

// Numbers of the format are little-endian.
void Put16(std::string& bytes, std::uint32_t number) {
  bytes += static_cast<char>(number & 0xff);
  bytes += static_cast<char>((number >> 8) & 0xff);
}

void Put32(std::string& bytes, std::size_t number) {
  Put16(bytes, static_cast<std::uint32_t>(number) & 0xffff);
  Put16(bytes, static_cast<std::uint32_t>(number) >> 16);
}

// What an entry's own header and its place in the directory have in common.
std::string Description(FatTime time, std::string_view name, std::string_view content) {
  std::string bytes;
  Put16(bytes, kVersionNeeded);
  Put16(bytes, kNamesAreUtf8);
  Put16(bytes, kStored);
  Put16(bytes, time.time);
  Put16(bytes, time.date);
  Put32(bytes, Crc32(content));
  Put32(bytes, content.size());  // compressed
  Put32(bytes, content.size());
  Put16(bytes, static_cast<std::uint32_t>(name.size()));
  Put16(bytes, 0);  // no extra field
  return bytes;
}

}  // namespace

std::uint32_t Crc32(std::string_view bytes) noexcept {
  std::uint32_t crc = 0xffffffff;
  for (const char byte : bytes) crc = (crc >> 8) ^ kCrcTable[(crc ^ static_cast<unsigned char>(byte)) & 0xff];
  return ~crc;
}

void ZipArchive::Add(std::string_view name, std::string_view content) {
  const bool fits = name.size() <= 0xffff && content.size() < kMaximumBytes &&
                    entries_.size() + directory_.size() + content.size() + 4 * name.size() < kMaximumBytes - 1024;
  if (!fits || count_ == kMaximumEntries) throw std::length_error("too much for one archive");
  const std::string description = Description(time_, name, content);
  Put32(directory_, 0x02014b50);
  Put16(directory_, kVersionMadeBy);
  directory_ += description;
  Put16(directory_, 0);  // no comment
  Put16(directory_, 0);  // first disk
  Put16(directory_, 0);  // internal attributes
  Put32(directory_, 0);  // external attributes
  Put32(directory_, entries_.size());
  directory_ += name;
  Put32(entries_, 0x04034b50);
  entries_ += description;
  entries_ += name;
  entries_ += content;
  ++count_;
}

std::string ZipArchive::Bytes() const {
  std::string bytes = entries_ + directory_;
  Put32(bytes, 0x06054b50);
  Put16(bytes, 0);  // this disk, and that of the directory
  Put16(bytes, 0);
  Put16(bytes, count_);  // on this disk, and on all
  Put16(bytes, count_);
  Put32(bytes, directory_.size());
  Put32(bytes, entries_.size());
  Put16(bytes, 0);  // no comment
  return bytes;
}

}  // namespace kelctl
