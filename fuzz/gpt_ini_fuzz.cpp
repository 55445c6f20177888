// Any bytes as gpt.ini: each step of the version changes the text in the same way, and lists the extension once.
#include "fuzzer.h"
#include "policy/policy_texts.h"

using namespace policy;

namespace {

std::size_t Count(const std::string& text, const std::string& part) {
  std::size_t count = 0;
  for (auto at = text.find(part); at != text.npos; at = text.find(part, at + 1)) ++count;
  return count;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  constexpr char kTool[] = "{40B6664F-4972-11D1-A7CA-0000F87571E3}";
  const std::string text(reinterpret_cast<const char*>(data), size);
  const auto stepped = StepMachineVersion(text, ScriptsExtension::kAsItIs);
  if (stepped) Require(*stepped != text && Count(*stepped, kTool) == Count(text, kTool));
  const auto listed = StepMachineVersion(text, ScriptsExtension::kListed);
  if (!listed) return 0;
  Require(ListsScriptsExtension(*listed) && Count(*listed, kTool) <= Count(text, kTool) + 1);
  Require(ListsScriptsExtension(text) == (*listed == *stepped));
  // From now on only the version differs, and both ways step it alike.
  Require(StepMachineVersion(*listed, ScriptsExtension::kListed) ==
          StepMachineVersion(*listed, ScriptsExtension::kAsItIs));
  return 0;
}
