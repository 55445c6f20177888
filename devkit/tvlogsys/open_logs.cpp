#include "open_logs.h"

namespace tvlogsys {

using LockGuard = win::LockGuard<win::CriticalSection>;

OpenLogs::Place* OpenLogs::Find(std::uint32_t handle) noexcept {
  for (Place& place : places_) {
    if (place.handle == handle) return &place;
  }
  return nullptr;
}

OpenLogs::Place* OpenLogs::FindOpen(std::uint32_t handle) noexcept { return handle == kFree ? nullptr : Find(handle); }

Result OpenLogs::Open(std::uint32_t& handle) noexcept {
  const LockGuard holding(lock_);
  Place* const place = Find(kFree);
  if (place == nullptr) return kTooManyLogs;
  // The lower part, the number of the place from 1 up, keeps the handles of open logs different even after the count
  // wraps.
  handle = (++opened_ << 8) | static_cast<std::uint32_t>(place - places_ + 1);
  *place = Place{handle, Log{}};
  return kSuccess;
}

Result OpenLogs::Close(std::uint32_t handle) noexcept {
  const LockGuard holding(lock_);
  Place* const place = FindOpen(handle);
  if (place == nullptr) return kBadHandle;
  place->handle = kFree;
  return kSuccess;
}

Result OpenLogs::SetFile(std::uint32_t handle, std::uint32_t level, const LogFile& file) noexcept {
  const LockGuard holding(lock_);
  Place* const place = FindOpen(handle);
  if (place == nullptr) return kBadHandle;
  place->log.fileLevel = level;
  place->log.file = file;
  return kSuccess;
}

Result OpenLogs::SetDebugger(std::uint32_t handle, std::uint32_t level) noexcept {
  const LockGuard holding(lock_);
  Place* const place = FindOpen(handle);
  if (place == nullptr) return kBadHandle;
  place->log.debuggerLevel = level;
  return kSuccess;
}

Result OpenLogs::Get(std::uint32_t handle, Log& log) noexcept {
  const LockGuard holding(lock_);
  const Place* const place = FindOpen(handle);
  if (place == nullptr) return kBadHandle;
  log = place->log;
  return kSuccess;
}

}  // namespace tvlogsys
