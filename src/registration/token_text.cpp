#include "registration/token_text.h"

#include <initializer_list>

namespace registration {
namespace {

constexpr std::string_view kPluginModules[] = {"KELREPORT", "KELSCAN",  "KELTASK",  "KELTEST",  "KELUPD",  "KELUPG",
                                               "KELCONF",   "KELLNCHR", "KELQTINE", "KELTVEVT", "KELSNET", "KELNTF"};

void Append(std::string& text, std::initializer_list<std::string_view> parts) {
  for (const auto part : parts) text += part;
}

}  // namespace

std::string InstallRoot(const char* folder, frame::LeadByteTest isLeadByte) {
  std::string root = folder ? folder : "";
  if (frame::EndsInBackslash(root, isLeadByte)) root.pop_back();
  return root;
}

std::string QuotedPath(std::string_view root, const InstalledFile& installed) {
  std::string path;
  Append(path, {"\"", root, "\\", installed.folder, "\\", installed.file, "\""});
  return path;
}

std::string PluginTokens(std::string_view root) {
  std::string text;
  for (const auto module : kPluginModules) Append(text, {module, "=", root, "\\", module, "\\", module, ".dll\r\n"});
  return text;
}

std::string SchedulerTokens(std::string_view root) {
  std::string text;
  for (const auto& program : kScheduledPrograms) {
    Append(text, {program.name, "=e", QuotedPath(root, program), "\r\n"});
  }
  return text;
}

}  // namespace registration
