#include "services/event_description.h"

#include <windows.h>

#include <string>

#include "frame/module.h"
#include "frame/paths.h"
#include "frame/text.h"
#include "frame/trace.h"
#include "services/description_text.h"
#include "win/owner.h"

namespace services {
namespace {

win::ModuleHandle LoadDescriptions(const char* function) {
  const std::string directory = frame::GetModuleDirectory();
  const std::string path = frame::SiblingFolder(directory, "KESAgent") + "KePIRes.exe";
  win::ModuleHandle module;
  // Without a directory the path would start at the root of the current drive.
  if (!directory.empty()) module.Reset(LoadLibraryExA(path.c_str(), nullptr, LOAD_WITH_ALTERED_SEARCH_PATH));
  if (!module) Trace(frame::kAlways, function, "Error loading %s", path.c_str());
  return module;
}

}  // namespace

KE_RESULT DescribeError(const char* function, std::uint32_t errorCode, const char* insert, char* buffer,
                        std::size_t size) {
  const win::ModuleHandle descriptions = LoadDescriptions(function);
  if (!descriptions) return KE_MODULE_NOT_LOADED;
  char resource[kDescriptionSize] = {};
  LoadStringA(descriptions.Get(), errorCode, resource, sizeof resource);
  if (*resource == '\0') {
    Trace(frame::kDetail, function, "No description found for ErrorCode: [%i]", static_cast<int>(errorCode));
    return KE_EVENT_NOT_SENT;
  }
  frame::CopyCut(DescriptionText(resource, insert ? insert : ""), buffer, size);
  return KE_SUCCESS;
}

}  // namespace services
