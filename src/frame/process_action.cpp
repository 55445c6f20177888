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

KE_RESULT Execute(const std::string& path, std::uint32_t first, std::uint32_t second) {
  const win::ModuleHandle module(LoadLibraryExA(path.c_str(), nullptr, LOAD_WITH_ALTERED_SEARCH_PATH));
  if (!module) {
    Trace(kAlways, kFunction, "Could not load %s - Error %d", path.c_str(), static_cast<int>(GetLastError()));
    return KE_MODULE_NOT_LOADED;
  }
  ActionTable action{};
  if (!BindNames(module.Get(), &action, kNames)) {
    Trace(kAlways, kFunction, "Could not load function for %s - Error %d", path.c_str(),
          static_cast<int>(GetLastError()));
    return KE_MODULE_NOT_LOADED;
  }
  return action.Do(first, second);
}

KE_RESULT ExecuteNamed(const char* name, std::uint32_t first, std::uint32_t second) {
  if (name == nullptr) return KE_OUT_OF_RANGE;
  const std::string directory = GetModuleDirectory();
  // Without a directory the path would start at the root of the current drive.
  if (directory.empty()) return KE_MODULE_NOT_LOADED;
  return Execute(SiblingFolder(directory, name) + name + ".dll", first, second);
}

}  // namespace

KE_RESULT ExecuteLocalProcessAction(const char* name, std::uint32_t first, std::uint32_t second) {
  Trace(kInfo, kFunction, "Function start");
  const KE_RESULT result = ExecuteNamed(name, first, second);
  Trace(kInfo, kFunction, "Function end. Return code (%i)", static_cast<int>(result));
  return result;
}

}  // namespace frame
