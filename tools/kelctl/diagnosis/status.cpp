#include "diagnosis/status.h"

#include <algorithm>

#include "diagnosis/examination.h"
#include "diagnosis/log_file.h"
#include "policy/os_identification.h"
#include "texts.h"

namespace kelctl {
namespace {

std::vector<NamedText> VersionsOf(const std::vector<Sibling>& siblings) {
  std::vector<NamedText> versions = {{"kelctl", KELCTL_VERSION}};
  for (const Sibling& sibling : siblings) {
    const auto path = FindSibling(sibling);
    const auto version = path ? FileVersion(*path) : std::nullopt;
    if (version) versions.push_back({Utf8FromCodePage(sibling.name), *version});
  }
  if (policy::IdentifyOs()) versions.push_back({"Windows", Utf8FromWide(policy::IdentifiedOs().displayName)});
  return versions;
}

std::string Row(const std::string& name, const std::string& text) {
  return Padded(name, 24) + "  " + WithoutControlCharacters(text) + "\n";
}

std::string ValueText(const Reading& read) {
  if (read.result != KE_SUCCESS) return "(no value)";
  const std::string text = PlainText(read, false);
  return text.empty() ? "(empty)" : text;
}

}  // namespace

Status GatherStatus(const Product& product, const StoreCopies& copies, const Redactor& redactor,
                    std::size_t errorCount) {
  Status status{.choice = ChooseCopy(copies),
                .copies = RenderCopies(copies),
                .copiesAsJson = JsonOf(copies),
                .logAtLevelZero = CheckLogLevel(product).code == "LOG-LEVEL-0",
                .file = {},
                .values = {},
                .versions = {},
                .siblings = {},
                .errors = {}};
  const StoreCopy* const copy = FileOf(copies, status.choice.copy);
  if (copy) {
    status.file = copy->file + ", " + Describe(*copy);
    status.uninstallPassword = HasUninstallPassword(copy->store);
  }
  status.values = ValuesIn(copy ? &copy->store : nullptr);
  for (auto& read : status.values) {
    const bool free = std::string_view(read.value->name) == "last-error-param";  // any text of an installer
    if (!read.value->secret) read.text = free ? redactor.Text(read.text) : redactor.WithoutKnown(std::move(read.text));
  }
  const std::vector<Sibling> siblings = SiblingsOf(product);
  status.versions = VersionsOf(siblings);
  for (const Sibling& sibling : siblings) status.siblings.push_back(LookForSibling(sibling));
  const auto isError = [](const TraceRecord& record) { return record.IsError(); };
  for (TraceRecord& record : LastRecords(product.TraceLog(), errorCount, isError)) {
    status.errors.push_back(redactor.Record(std::move(record)));
  }
  return status;
}

std::string RenderStatus(const Status& status) {
  std::string text = IsElevated() ? "" : "not elevated: some findings need an administrator\n";
  text += Row("store", status.file.empty() ? "none" : status.file) + Row("", status.choice.why) + status.copies;
  for (const auto& read : status.values) text += Row(read.value->name, ValueText(read));
  text += Row("uninstall password", status.uninstallPassword ? "configured" : "not configured");
  for (const auto& [name, version] : status.versions) text += Row(name, "version " + version);
  for (const Finding& sibling : status.siblings)
    text += Row(sibling.subject, sibling.detail + (sibling.path.empty() ? "" : "  " + sibling.path));
  if (status.logAtLevelZero) text += "the log is at level 0: failures are not recorded\n";
  if (!status.errors.empty()) text += "last errors of the log:\n";
  if (status.errors.empty() && !status.logAtLevelZero) text += "no errors in the log\n";
  for (const TraceRecord& record : status.errors) {
    text += WithoutControlCharacters(Utf8FromCodePage(TraceLine(record))) + "\n";
  }
  return text;
}

nlohmann::ordered_json JsonOf(const TraceRecord& record) {
  return {{"date", record.date},
          {"process", record.process},
          {"thread", record.thread},
          {"level", record.level},
          {"module", Utf8FromCodePage(record.module)},
          {"function", Utf8FromCodePage(record.function)},
          {"description", Utf8FromCodePage(record.description)}};
}

nlohmann::ordered_json JsonOf(const Status& status) {
  nlohmann::ordered_json document = {{"store",
                                      {{"copy", NameOf(status.choice.copy)},
                                       {"file", status.file},
                                       {"why", status.choice.why},
                                       {"copies", status.copiesAsJson}}},
                                     {"elevated", IsElevated()},
                                     {"logAtLevelZero", status.logAtLevelZero},
                                     {"values", JsonOf(std::span<const Reading>(status.values), false)},
                                     {"uninstallPassword", status.uninstallPassword},
                                     {"versions", nlohmann::ordered_json::object()},
                                     {"siblings", nlohmann::ordered_json::array()},
                                     {"errors", nlohmann::ordered_json::array()}};
  for (const auto& [name, version] : status.versions) document["versions"][name] = version;
  for (const Finding& sibling : status.siblings) {
    document["siblings"].push_back({{"name", sibling.subject},
                                    {"kind", sibling.kind},
                                    {"found", sibling.health == Health::kOk},
                                    {"detail", sibling.detail},
                                    {"path", sibling.path}});
  }
  for (const TraceRecord& record : status.errors) document["errors"].push_back(JsonOf(record));
  return document;
}

}  // namespace kelctl
