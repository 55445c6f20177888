// The trace front end with the development kit's trace library behind it.
#include "trace/trace.h"

#include <doctest/doctest.h>

#include <optional>
#include <regex>
#include <string>

#include "support/inner_module.h"
#include "trace/log_system.h"

using trace::CL_LOG_SYSTEM;
using trace::Trace;
using trace::TraceScope;

namespace {

struct TracedTree {
  TracedTree() { tree.TurnLogOn(); }
  const support::ProductTree tree;
  const support::InnerModule module{tree};
  const std::filesystem::path library = tree.Path("Common/TvLogSys.dll");
};

}  // namespace

TEST_CASE("trace: an inner scope ends the library, or a line has another form") {
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
  const std::string log = std::regex_replace(traced.tree.Log(),
                                             std::regex("\\d\\d(/\\d\\d){2} \\d\\d(:\\d\\d){2}.\\d{3}"), "now"),
                    begin =
                        "20now;" + std::to_string(GetCurrentProcessId()) + ";" + std::to_string(GetCurrentThreadId());
  CHECK(log == begin + ";10;KELUtils;CL_LOG_SYSTEM::LoadDependences;\"System initialized by (KELUtils)\"\r\n" + begin +
                   ";20;KELUtils;KE_Some;\"value x is -3\"\r\n" + begin + ";0;KELUtils;KE_Some;\"" +
                   std::string(4095, 'd') + "\"\r\n");
}

TEST_CASE("trace: a library that is missing or incomplete changes the last error, or ends another scope") {
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
  std::filesystem::remove(traced.library);
  traced.tree.AddDevkit("TvLogSys.dll", "order");
  {
    const support::CurrentFolder inSearchOrder(traced.tree.Path("order"));
    const TraceScope found;
    CHECK(CL_LOG_SYSTEM::Instance().References() == 1);
  }
  std::optional<TraceScope> early(std::in_place);
  traced.tree.TurnLogOn();
  const TraceScope later;
  CHECK(CL_LOG_SYSTEM::Instance().References() == 1);
  early.reset();
  CHECK(CL_LOG_SYSTEM::Instance().References() == 1);
}
