#include "services/event_description.h"

#include <windows.h>

#include <string>

#include "frame/module.h"
#include "frame/paths.h"
#include "frame/sibling_binder.h"
#include "frame/text.h"
#include "frame/trace.h"
#include "services/description_text.h"
#include "win/owner.h"

namespace services {
namespace {

win::ModuleHandle LoadDescriptions(const char* function) {
  constexpr char kFile[] = "KePIRes.exe";
  const std::string folder = frame::SiblingFolder(frame::GetModuleDirectory(), "KESAgent");
  win::ModuleHandle module;
  frame::SiblingSearch(function, kFile, {}).Bind(folder.c_str(), module, nullptr);
  if (!module) Trace(frame::kAlways, function, "Error loading %s%s", folder.c_str(), kFile);
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
