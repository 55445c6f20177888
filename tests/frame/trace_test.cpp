#include "frame/trace.h"

#include <doctest/doctest.h>

#include <cstdio>
#include <stdexcept>
#include <string>
#include <vector>

#include "frame/export_call.h"
#include "frame/log_system.h"
#include "support/inner_module.h"

using frame::CL_LOG_SYSTEM;
using frame::Trace;
using frame::TraceScope;

extern "C" {
const char* FakeLog();
void FakeClear();
void FakeFail(const char* function);
}

namespace {

// A tree with the fake trace library in its Common folder, kept loaded so that its notes last.
struct TracedTree {
  TracedTree() : module(tree) {
    tree.AddFake("FakeTvLogSys", "Common/TvLogSys.dll");
    support::WriteFile(tree.Path("KELUtils/KELUTILS.INI"), "[LOG]\r\nLEVELLOG=20\r\nLOGFILESIZE=10\r\n");
    library = std::make_unique<support::LoadedDll>(tree.Path("Common/TvLogSys.dll"));
  }

  // The library's notes since the last call, one a line.
  std::vector<std::string> Notes() const {
    std::vector<std::string> notes;
    std::string text = CALL(*library, FakeLog)();
    CALL(*library, FakeClear)();
    for (size_t end; (end = text.find('\n')) != std::string::npos; text.erase(0, end + 1)) {
      std::string note = text.substr(0, end);
      if (!note.empty() && note.back() == '\r') note.pop_back();
      if (!note.empty()) notes.push_back(note);
    }
    return notes;
  }

  support::ProductTree tree;
  support::InnerModule module;
  std::unique_ptr<support::LoadedDll> library;
};

bool Ends(const std::string& text, const std::string& end) {
  return text.size() >= end.size() && text.compare(text.size() - end.size(), end.size(), end) == 0;
}

}  // namespace

TEST_CASE("trace: nested scopes load, configure and finalise the library once") {
  TracedTree traced;
  {
    const TraceScope outer;
    CHECK(CL_LOG_SYSTEM::Instance().References() == 1);
    {
      const TraceScope inner;
      CHECK(CL_LOG_SYSTEM::Instance().References() == 2);
    }
    CHECK(CL_LOG_SYSTEM::Instance().References() == 1);
  }
  CHECK(CL_LOG_SYSTEM::Instance().References() == 0);

  const auto notes = traced.Notes();
  REQUIRE(notes.size() == 5);
  CHECK(notes[0] == "initialize: ");
  const std::string log = traced.tree.Path("KELUtils").string() + "\\KELUtils.log";
  CHECK(notes[1] == "configure: 1234 20 " + log + " 10240 1 1");
  CHECK(Ends(notes[2], ";10;KELUtils;CL_LOG_SYSTEM::LoadDependences;\"System initialized by (KELUtils)\""));
  CHECK(notes[3] == "finalize: 1234");
  CHECK(Ends(notes[4], ";10;KELUtils;CL_LOG_SYSTEM::FreeDependences;\"Log system free by (KELUtils)\""));
}

TEST_CASE("trace: a line carries date, process, thread, level, module, function and description") {
  TracedTree traced;
  const TraceScope scope;
  traced.Notes();
  Trace(frame::kDetail, "KE_Some", "value %s is %d", "x", -3);
  Trace(frame::kAlways, "KE_Some", "%s", std::string(10000, 'd').c_str());
  const auto notes = traced.Notes();
  REQUIRE(notes.size() == 2);

  int year, month, day, hour, minute, second, milliseconds, process, thread, used = 0;
  REQUIRE(std::sscanf(notes[0].c_str(), "line: %4d/%2d/%2d %2d:%2d:%2d.%3d;%d;%d%n", &year, &month, &day, &hour,
                      &minute, &second, &milliseconds, &process, &thread, &used) == 9);
  CHECK(process == static_cast<int>(GetCurrentProcessId()));
  CHECK(thread == static_cast<int>(GetCurrentThreadId()));
  CHECK(notes[0].substr(static_cast<size_t>(used)) == ";20;KELUtils;KE_Some;\"value x is -3\"");
  CHECK(Ends(notes[1], ";0;KELUtils;KE_Some;\"" + std::string(4095, 'd') + "\""));
}

TEST_CASE("trace: what goes wrong with the library never reaches the caller") {
  TracedTree traced;
  SUBCASE("no library") {
    traced.library.reset();
    std::filesystem::remove(traced.tree.Path("Common/TvLogSys.dll"));
  }
  SUBCASE("a library that lacks a name") {
    traced.library.reset();
    traced.tree.AddFake("FakeKERegister", "Common/TvLogSys.dll");
  }
  SUBCASE("a library that cannot be initialised") { CALL(*traced.library, FakeFail)("initialize"); }
  SUBCASE("a log file that cannot be configured") { CALL(*traced.library, FakeFail)("configure"); }

  SetLastError(4711);
  {
    const TraceScope scope;
    Trace(frame::kInfo, "KE_Some", "text");
    CHECK(GetLastError() == 4711);
  }
  CHECK(GetLastError() == 4711);
  CHECK(CL_LOG_SYSTEM::Instance().References() == 0);
}

TEST_CASE("trace: a scope that got no library does not release the one of another scope") {
  TracedTree traced;
  const auto away = traced.tree.Path("TvLogSys.dll");
  traced.library.reset();
  std::filesystem::rename(traced.tree.Path("Common/TvLogSys.dll"), away);
  auto early = std::make_unique<TraceScope>();
  std::filesystem::rename(away, traced.tree.Path("Common/TvLogSys.dll"));
  const TraceScope later;
  CHECK(CL_LOG_SYSTEM::Instance().References() == 1);
  early.reset();
  CHECK(CL_LOG_SYSTEM::Instance().References() == 1);
}

TEST_CASE("export call: start and end lines frame the body, and an exception becomes a code") {
  TracedTree traced;
  const TraceScope keepLoaded;
  traced.Notes();
  CHECK(frame::ExportCall("KE_Good", [](frame::Export&) -> KE_RESULT { return KE_OUT_OF_RANGE; }) == 1789);
  CHECK(frame::ExportCall("KE_Bad", [](frame::Export&) -> KE_RESULT { throw std::runtime_error("x"); }) == 1780);
  CHECK(frame::ExportCall("KE_Worse", [](frame::Export&) -> KE_RESULT { throw 1; }) == 1780);
  const auto notes = traced.Notes();
  REQUIRE(notes.size() == 6);
  CHECK(Ends(notes[0], ";10;KELUtils;KE_Good;\"Function start\""));
  CHECK(Ends(notes[1], ";10;KELUtils;KE_Good;\"Function end. Return code (1789)\""));
  CHECK(Ends(notes[3], ";10;KELUtils;KE_Bad;\"Function end. Return code (1780)\""));
}
