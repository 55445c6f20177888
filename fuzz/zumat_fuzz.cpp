// Runs any text as a list of commands, one on each line, and reads it as a jobs file. The jobs after the commands must
// read as they were written.

#include "fuzzer.h"
#include "zumat/jobs_text.h"
#include "zumat/schedule.h"

using namespace zumat;

namespace {

/// The program gets valid UTF-8 from Windows; other texts are replaced when they are written.
bool IsAscii(std::string_view text) {
  for (const char character : text) {
    if (static_cast<unsigned char>(character) >= 0x80) return false;
  }
  return true;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view text(reinterpret_cast<const char*>(data), size);
  const Moment moment{*ReadDay("17/05/2024") + std::chrono::minutes(630), static_cast<std::uint32_t>(size)};
  Jobs jobs;
  ReadJobs(text, jobs);
  std::optional<std::string_view> rest = text;
  while (rest) {
    const Halves halves = SplitAt(*rest, '\n');
    Command command;
    if (ReadCommand(halves.first, command).Succeeded()) Change(command, moment, jobs);
    rest = halves.second;
  }
  for (const Job& job : jobs) {
    const auto next = NextStart(job, std::chrono::floor<std::chrono::minutes>(moment.now));
    Require(!next || *next > moment.now);
    StepOf(job, false, moment.now, moment.now);
  }
  RenderTable(jobs, moment.now);
  RenderJson(jobs, moment.now);
  Jobs again;
  const std::string written = FormatJobs(jobs);
  if (IsAscii(text)) Require(ReadJobs(written, again).Succeeded() && again == jobs);
  return 0;
}
