// The main function of every test program. It notes each case before it runs, so that one that hangs can be named.
#define DOCTEST_CONFIG_IMPLEMENT_WITH_MAIN
#include <doctest/doctest.h>

#include <cstdio>
#include <cstdlib>

namespace {

struct ProgressNote : doctest::IReporter {
  explicit ProgressNote(const doctest::ContextOptions&) {}

  void test_case_start(const doctest::TestCaseData& test) override {
    const char* path = std::getenv("KELUTILS_TEST_PROGRESS");
    if (path == nullptr) return;
    if (std::FILE* file = std::fopen(path, "w")) {
      std::fprintf(file, "%s\n", test.m_name);
      std::fclose(file);
    }
  }

  void report_query(const doctest::QueryData&) override {}
  void test_run_start() override {}
  void test_run_end(const doctest::TestRunStats&) override {}
  void test_case_reenter(const doctest::TestCaseData&) override {}
  void test_case_end(const doctest::CurrentTestCaseStats&) override {}
  void test_case_exception(const doctest::TestCaseException&) override {}
  void subcase_start(const doctest::SubcaseSignature&) override {}
  void subcase_end() override {}
  void log_assert(const doctest::AssertData&) override {}
  void log_message(const doctest::MessageData&) override {}
  void test_case_skipped(const doctest::TestCaseData&) override {}
};

REGISTER_LISTENER("progress", 1, ProgressNote);

}  // namespace
