// The trace front end with the development kit's trace library behind it.
#include "trace/trace.h"

#include <doctest/doctest.h>

#include <cctype>
#include <memory>
#include <string>

#include "support/inner_module.h"
#include "trace/log_system.h"

using trace::CL_LOG_SYSTEM;
using trace::Trace;
using trace::TraceScope;

namespace {

struct TracedTree {
  TracedTree() : module(tree), library(tree.Path("Common/TvLogSys.dll")) { tree.TurnLogOn(); }

  // The lines of the log without date, process and thread.
  std::string Lines() const {
    const std::string text = tree.Log();
    const std::string who = ";" + std::to_string(GetCurrentProcessId()) + ";" + std::to_string(GetCurrentThreadId());
    std::string lines;
    for (size_t at = 0, end; (end = text.find("\r\n", at)) != std::string::npos; at = end + 2) {
      std::string date = text.substr(at, 23);
      for (char& c : date) c = std::isdigit(static_cast<unsigned char>(c)) ? 'd' : c;
      CHECK((date == "dddd/dd/dd dd:dd:dd.ddd" && text.substr(at + 23, who.size()) == who));
      lines += text.substr(at + 23 + who.size(), end - at - 23 - who.size()) + "\n";
    }
    return lines;
  }

  support::ProductTree tree;
  support::InnerModule module;
  std::filesystem::path library;
};

}  // namespace

TEST_CASE("trace: nested scopes load and initialise the library once, and end it once") {
  const TracedTree traced;
  {
    const TraceScope outer;
    CHECK(CL_LOG_SYSTEM::Instance().References() == 1);
    const TraceScope inner;
    CHECK(CL_LOG_SYSTEM::Instance().References() == 2);
    Trace(trace::kDetail, "KE_Some", "value %s is %d", "x", -3);
    Trace(trace::kAlways, "KE_Some", "%s", std::string(10000, 'd').c_str());
  }
  CHECK((CL_LOG_SYSTEM::Instance().References() == 0 && GetModuleHandleA("TvLogSys.dll") == nullptr));
  CHECK(traced.Lines() ==
        ";10;KELUtils;CL_LOG_SYSTEM::LoadDependences;\"System initialized by (KELUtils)\"\n"
        ";20;KELUtils;KE_Some;\"value x is -3\"\n"
        ";0;KELUtils;KE_Some;\"" +
            std::string(4095, 'd') + "\"\n");
}

TEST_CASE("trace: what goes wrong with the library never reaches the caller, not even its last error") {
  const TracedTree traced;
  SUBCASE("there") {}
  SUBCASE("no library") { std::filesystem::remove(traced.library); }
  SUBCASE("a library that lacks a name") { traced.tree.AddFake("FakeKERegister", "Common/TvLogSys.dll"); }
  SetLastError(4711);
  {
    const TraceScope scope;
    Trace(trace::kInfo, "KE_Some", "text");
    CHECK(GetLastError() == 4711);
  }
  CHECK((GetLastError() == 4711 && CL_LOG_SYSTEM::Instance().References() == 0));
}

TEST_CASE("trace: a scope that got no library does not release the one of another scope") {
  const TracedTree traced;
  const auto away = traced.tree.Path("TvLogSys.dll");
  std::filesystem::rename(traced.library, away);
  {
    const support::CurrentFolder inSearchOrder(traced.tree.Path(""));
    const TraceScope found;
    CHECK(CL_LOG_SYSTEM::Instance().References() == 1);
  }
  auto early = std::make_unique<TraceScope>();
  std::filesystem::rename(away, traced.library);
  const TraceScope later;
  CHECK(CL_LOG_SYSTEM::Instance().References() == 1);
  early.reset();
  CHECK(CL_LOG_SYSTEM::Instance().References() == 1);
}
