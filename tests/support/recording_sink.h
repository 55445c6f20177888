// A log sink that keeps its lines: the level and the text, and of an error its result and the platform's code.
#pragma once

#include "policy/log_sink.h"

namespace support {

struct RecordingSink : policy::ILogSink {
  std::uint32_t KE_API FirstSlot() override { return 0; }
  std::uint32_t KE_API GetLevel(std::uint32_t* wanted) override { return *wanted = level, failure; }
  void KE_API Write(std::uint32_t at, std::uint32_t, const wchar_t*, const wchar_t* text) override {
    lines += std::to_wstring(at) + L" " + text + L"\n";
  }
  void KE_API WriteError(std::uint32_t at, std::uint32_t, const wchar_t*, std::uint32_t result, std::uint32_t error,
                         const wchar_t* text) override {
    Write(at, 1, L"", (text + (L" <" + std::to_wstring(result)) + L" " + std::to_wstring(error) + L">").c_str());
  }
  std::uint32_t level = 50, failure = 0;
  std::wstring lines;
};

}  // namespace support
