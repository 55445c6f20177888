// TvEvAPI.dll: records each call as a line of JSON. No function throws, and each keeps the caller's last-error value.
#include "TvEvAPI.h"

#include <atomic>
#include <cstdio>
#include <cstring>
#include <nlohmann/json.hpp>

#include "shared/files.h"
#include "siblings/functions.h"

using namespace devkit;
using Json = nlohmann::ordered_json;

namespace {

static_assert(sizeof(EventInfo) == 24, "the record crosses module borders");

constexpr unsigned kMostConnections = 10000;
std::atomic<unsigned> g_connections = 0;  // open ones of this process

bool Open() noexcept {
  for (unsigned count = g_connections; count < kMostConnections;) {
    if (g_connections.compare_exchange_weak(count, count + 1)) return true;
  }
  return false;
}

bool Close() noexcept {
  for (unsigned count = g_connections; count > 0;) {
    if (g_connections.compare_exchange_weak(count, count - 1)) return true;
  }
  return false;
}

/// The result that TvEvAPI.ini sets for a function, instead of its work; 0 for none.
Result FailureSetFor(const char* function) {
  return static_cast<Result>(GetPrivateProfileIntA("FAIL", function, 0, WithExtension(".ini").c_str()));
}

/// The line of one call. Members appear in the order in which they are added.
class CallRecord {
 public:
  explicit CallRecord(const char* function) {
    SYSTEMTIME now;
    GetSystemTime(&now);
    char time[64];
    std::snprintf(time, sizeof time, "%04d-%02d-%02dT%02d:%02d:%02d.%03dZ", now.wYear, now.wMonth, now.wDay, now.wHour,
                  now.wMinute, now.wSecond, now.wMilliseconds);
    line_ = {{"time", time}, {"process", GetCurrentProcessId()}, {"thread", GetCurrentThreadId()}, {"call", function}};
  }

  void Add(const char* name, Json value) { line_[name] = std::move(value); }

  /// A text in the system's code page, or null. Bytes beyond the first 1024 are left out, and the line says "cut".
  void AddText(const char* name, const char* text) {
    constexpr std::size_t kLongest = 1024;
    if (text == nullptr) return Add(name, nullptr);
    const std::size_t length = strnlen(text, kLongest + 1);
    cut_ |= length > kLongest;
    // No code page needs more UTF-16 units than bytes, and no unit needs more than three bytes of UTF-8.
    wchar_t units[kLongest + 1];
    char bytes[3 * kLongest];
    const int count =
        MultiByteToWideChar(CP_ACP, 0, text, static_cast<int>(std::min(length, kLongest)), units, kLongest);
    const int size = WideCharToMultiByte(CP_UTF8, 0, units, count, bytes, sizeof bytes, nullptr, nullptr);
    Add(name, std::string(bytes, static_cast<std::size_t>(size)));
  }

  void AddInfo(const EventInfo* info) {
    if (info == nullptr) return;
    Add("class", info->eventClass);
    AddText("computer", info->computer);
    AddText("product", info->product);
    Add("extra", info->extra);
    AddText("text", info->text);
    AddText("description", info->description);
  }

  /// Ends the line and writes it. Returns the result, or kNotLogged when the line could not be written.
  Result Write(Result result) {
    if (cut_) Add("cut", true);
    Add("result", static_cast<int>(result));
    const std::string line = line_.dump(-1, ' ', true, Json::error_handler_t::replace) + "\r\n";
    const std::string path = NextToModule("events.jsonl");
    LogFile file;
    return LocateLog(path.c_str(), path.size() + 1, 1024 * 1024, file) &&
                   AppendLine(file, line.c_str(), static_cast<std::uint32_t>(line.size()))
               ? result
               : kNotLogged;
  }

 private:
  Json line_;
  bool cut_ = false;
};

/// An event. `addMembers` adds the call's own arguments.
template <typename AddMembers>
int Event(const char* function, const EventInfo* info, AddMembers addMembers) noexcept {
  return Guarded([&] {
    CallRecord record(function);
    record.AddInfo(info);
    addMembers(record);
    if (const Result failure = FailureSetFor(function); failure != 0) return record.Write(failure);
    if (g_connections == 0) return record.Write(kNotInitialised);
    return record.Write(info == nullptr ? kBadArgument : kSuccess);
  });
}

}  // namespace

extern "C" {

// A connection is open only when its start is on record.
int KE_SIBLING_CALL TEVT_StartAPI(void) {
  return Guarded([] {
    CallRecord record("TEVT_StartAPI");
    if (const Result failure = FailureSetFor("TEVT_StartAPI"); failure != 0) return record.Write(failure);
    if (!Open()) return record.Write(kTooMany);
    const Result result = record.Write(kSuccess);
    if (result != kSuccess) Close();
    return result;
  });
}

// Whatever the result, a connection that was open is closed.
int KE_SIBLING_CALL TEVT_StopAPI(void) {
  const bool closed = Close();
  return Guarded([closed] {
    const Result failure = FailureSetFor("TEVT_StopAPI");
    return CallRecord("TEVT_StopAPI").Write(failure != 0 ? failure : closed ? kSuccess : kNotInitialised);
  });
}

int KE_SIBLING_CALL TEVT_ScanState(const EventInfo* info, const char* text, int32_t status, const char* taskId) {
  return Event(__func__, info, [&](CallRecord& record) {
    record.AddText("argument", text);
    record.Add("status", status);
    record.AddText("taskId", taskId);
  });
}

int KE_SIBLING_CALL TEVT_RebootForced(const EventInfo* info, const char* text) {
  return Event(__func__, info, [&](CallRecord& record) { record.AddText("argument", text); });
}

int KE_SIBLING_CALL TEVT_Install(const EventInfo* info, int32_t flag) {
  return Event(__func__, info, [&](CallRecord& record) { record.Add("flag", flag); });
}

int KE_SIBLING_CALL TEVT_ErrorEvent(const EventInfo* info, uint32_t source, const char* identifier) {
  return Event(__func__, info, [&](CallRecord& record) {
    record.Add("source", source);
    record.AddText("identifier", identifier);
  });
}

// Plain C functions without parameters: arguments are the caller's to clean up.
#define SKIP(name, presence)
#define NOT_SUPPORTED(name, presence)                                         \
  int KE_SIBLING_CALL name(void) {                                            \
    return Guarded([] {                                                       \
      const Result failure = FailureSetFor(#name);                            \
      return CallRecord(#name).Write(failure != 0 ? failure : kNotSupported); \
    });                                                                       \
  }
KE_EVENT_API_FUNCTIONS(SKIP, NOT_SUPPORTED)

}  // extern "C"
