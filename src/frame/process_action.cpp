#include "frame/process_action.h"

#include <string>

#include "KEAction.h"
#include "frame/module.h"
#include "frame/paths.h"
#include "frame/sibling_binder.h"
#include "frame/trace.h"
#include "win/owner.h"

namespace frame {
namespace {

constexpr char kFunction[] = "ExecuteLocalProcessAction";

struct ActionTable {
  decltype(&::Do) Do;
};

constexpr BoundName kNames[] = {KE_BOUND_NAME(ActionTable, Do, kRequired)};

KE_RESULT Execute(const char* name, std::uint32_t first, std::uint32_t second) {
  if (name == nullptr) return KE_OUT_OF_RANGE;
  const std::string folder = SiblingFolder(GetModuleDirectory(), name), file = std::string(name) + ".dll";
  SiblingSearch search(kFunction, file.c_str(), kNames);
  win::ModuleHandle module;
  ActionTable action{};
  return search.Bind(folder.c_str(), module, &action) ? action.Do(first, second) : KE_RESULT{KE_MODULE_NOT_LOADED};
}

}  // namespace

KE_RESULT ExecuteLocalProcessAction(const char* name, std::uint32_t first, std::uint32_t second) {
  Trace(kInfo, kFunction, "Function start");
  const KE_RESULT result = Execute(name, first, second);
  Trace(kInfo, kFunction, "Function end. Return code (%i)", static_cast<int>(result));
  return result;
}

}  // namespace frame
