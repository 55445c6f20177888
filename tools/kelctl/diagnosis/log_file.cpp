#include "diagnosis/log_file.h"

#include <windows.h>

#include <algorithm>
#include <iterator>

#include "win/file.h"
#include "win/owner.h"

namespace kelctl {
namespace {

constexpr std::uint64_t kLongestPart = std::uint64_t{16} * 1024 * 1024;  // bytes read at once
constexpr char kOlderPart[] = ".old";

// The file's number on its volume, which a renaming keeps.
std::uint64_t IdentityOf(const win::FileHandle& file) {
  BY_HANDLE_FILE_INFORMATION information;
  if (!file || !GetFileInformationByHandle(file.Get(), &information)) return 0;
  return (std::uint64_t{information.nFileIndexHigh} << 32) | information.nFileIndexLow;
}

// At most kLongestPart from `position` on.
std::string ReadFrom(const win::FileHandle& file, std::uint64_t position) {
  const std::uint64_t size = win::SizeOf(file).value_or(0);
  if (position >= size) return {};
  const LARGE_INTEGER distance{.QuadPart = static_cast<LONGLONG>(position)};
  if (!SetFilePointerEx(file.Get(), distance, nullptr, FILE_BEGIN)) return {};
  std::string text(static_cast<std::size_t>(std::min(size - position, kLongestPart)), '\0');
  text.resize(win::Read(file, text.data(), text.size()));
  return text;
}

// From `position` up to the last line end; moves `position` there.
std::string TakeLines(const win::FileHandle& file, std::uint64_t& position) {
  std::string text = ReadFrom(file, position);
  text.resize(text.rfind('\n') + 1);  // npos + 1 is 0
  position += text.size();
  return text;
}

}  // namespace

std::optional<std::string> EndOfFile(const std::string& path, std::uint64_t limit) {
  const win::FileHandle file = win::OpenForReading(path);
  if (!file) return std::nullopt;
  const std::uint64_t size = win::SizeOf(file).value_or(0);
  return ReadFrom(file, size - std::min(size, limit));
}

std::vector<TraceRecord> LastRecords(const std::string& path, std::size_t count, bool (*wanted)(const TraceRecord&)) {
  std::vector<TraceRecord> last;
  for (const std::string& part : {path, path + kOlderPart}) {
    auto records = ParseTrace(EndOfFile(part, kLongestPart).value_or("")).records;
    std::erase_if(records, [&](const TraceRecord& record) { return !wanted(record); });
    const std::size_t taken = std::min(records.size(), count - last.size());
    last.insert(last.begin(), std::make_move_iterator(records.end() - static_cast<std::ptrdiff_t>(taken)),
                std::make_move_iterator(records.end()));
    if (last.size() == count) break;
  }
  return last;
}

LogFollower::LogFollower(std::string path) : path_(std::move(path)) {
  const win::FileHandle file = win::OpenForReading(path_);
  identity_ = IdentityOf(file);
  position_ = file ? win::SizeOf(file).value_or(0) : 0;
}

std::string LogFollower::NewText() {
  std::string text;
  const win::FileHandle file = win::OpenForReading(path_);
  const std::uint64_t identity = IdentityOf(file);
  if (identity == 0) return text;  // between the two steps of a replacement; nothing is lost by waiting
  if (identity != identity_) {
    const win::FileHandle older = win::OpenForReading(path_ + kOlderPart);
    if (identity_ != 0 && IdentityOf(older) == identity_) text = TakeLines(older, position_);
    identity_ = identity;
    position_ = 0;
  } else if (win::SizeOf(file).value_or(0) < position_) {
    position_ = 0;  // emptied and written anew
  }
  return text + TakeLines(file, position_);
}

}  // namespace kelctl
