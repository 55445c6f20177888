#include "diagnosis/examination.h"

#include <windows.h>

#include <algorithm>
#include <set>

#include "agent/uuid.h"
#include "diagnosis/log_file.h"
#include "diagnosis/siblings.h"
#include "diagnosis/store_files.h"
#include "schedule/jobs.h"
#include "store/codec.h"
#include "text/base64.h"
#include "text/paths.h"
#include "texts.h"
#include "trace/log_configuration.h"
#include "win/file.h"
#include "win/profile.h"

namespace kelctl {
namespace {

constexpr std::uint64_t kMegabyte = std::uint64_t{1024} * 1024;
constexpr std::uint64_t kScarceSpace = 4 * kMegabyte, kLittleSpace = 100 * kMegabyte;
constexpr std::uint64_t kLargestList = 16 * kMegabyte;  // bytes of a jobs or token file

Finding CheckDisk(const Product& product) {
  const std::string folder = product.Folder("KESAgent");
  Finding finding{.kind = "machine", .subject = "disk", .path = Utf8FromCodePage(folder), .detail = ""};
  ULARGE_INTEGER available{};
  if (!GetDiskFreeSpaceExA(folder.c_str(), &available, nullptr, nullptr)) {
    finding.health = Health::kUnknown;
    finding.code = "DENIED";
    finding.detail = "the free space is unknown";
    return finding;
  }
  finding.detail = std::to_string(available.QuadPart / kMegabyte) + " MB free";
  if (available.QuadPart >= kLittleSpace) return finding;
  finding.health = available.QuadPart < kScarceSpace ? Health::kFailure : Health::kWarning;
  finding.code = "DISK-FULL";
  return finding;
}

Finding CheckUuid(const Product& product) {
  Finding finding{.kind = "machine", .subject = "uuid", .path = "", .detail = "the query is switched off"};
  if (win::ReadProfile(product.Path({"", text::kSettingsFile}), "UUID", "CheckUUID", "", 64) == "false") return finding;
  char uuid[64] = "";
  agent::QueryMachineUuid("kelctl", uuid, sizeof uuid);
  finding.detail = uuid[0] ? uuid : "none";
  const bool placeholder = IsPlaceholderUuid(finding.detail);
  if (uuid[0] && !placeholder) return finding;
  finding.health = Health::kWarning;
  finding.code = placeholder ? "UUID-PLACEHOLDER" : "UUID-MISSING";
  return finding;
}

Finding CheckKeys() {
  constexpr std::string_view kDevelopment = "KELUtils development key blob";
  char plain[store::kKeyBlobLength] = "";
  auto size = static_cast<std::int32_t>(sizeof plain);
  text::Base64DecodeText(store::kFileKeyBlob, static_cast<std::int32_t>(store::kKeyBlobLength), plain, &size);
  Finding finding{.kind = "machine", .subject = "key blobs", .path = "", .detail = "those of the product"};
  if (!std::string_view(plain, kDevelopment.size()).starts_with(kDevelopment)) return finding;
  finding.health = Health::kWarning;
  finding.code = "KEYS-DEVELOPMENT";
  finding.detail = "the development key blobs, which are not secret";
  return finding;
}

// Sets the outcome for the text of the scheduler's list: which of the agent's jobs are not in it.
void CheckJobList(const std::string& text, bool integrated, Finding& finding) {
  const auto list = nlohmann::json::parse(text, nullptr, false);
  finding.health = Health::kWarning;
  finding.code = "JOBS-DAMAGED";
  finding.detail = "not readable";
  if (!list.is_object() || !list.contains("jobs") || !list["jobs"].is_array()) return;
  std::set<std::int64_t> ids;
  for (const auto& job : list["jobs"]) {
    if (job.is_object() && job.contains("id") && job["id"].is_number_integer())
      ids.insert(job["id"].get<std::int64_t>());
  }
  std::string missing;
  for (const schedule::AgentTask& task : schedule::kAgentTasks) {
    if (!schedule::IsScheduled(task, integrated) || ids.contains(task.job.taskId)) continue;
    missing +=
        " " + std::to_string(task.job.taskId) + (task.job.module[0] ? std::string(" (") + task.job.module + ")" : "");
  }
  finding.code = missing.empty() ? "OK" : "JOBS-INCOMPLETE";
  finding.detail = Counted(list["jobs"].size(), "job") + (missing.empty() ? "" : ", without" + missing);
  if (missing.empty()) finding.health = Health::kOk;
}

Finding CheckJobs(const Product& product, bool integrated) {
  const std::string path = product.Path({"Scheduler", "Config\\jobs.json"});
  Finding finding{.kind = "schedule",
                  .subject = "jobs.json",
                  .path = Utf8FromCodePage(path),
                  .health = Health::kWarning,
                  .code = "JOBS-MISSING",
                  .detail = "missing"};
  if (!win::Exists(path)) return finding;
  const auto text = EndOfFile(path, kLargestList);
  if (text) {
    CheckJobList(*text, integrated, finding);
  } else {
    SetUnreadable(finding, path, GetLastError(), "JOBS-DAMAGED");
  }
  return finding;
}

// A token file has lines NAME=PATH, with e"..." around the path in one of them.
Finding CheckTokens(const Product& product, const char* folder, const char* file) {
  const std::string path = product.Path({folder, std::string("Config\\") + file});
  Finding finding{.kind = "schedule",
                  .subject = file,
                  .path = Utf8FromCodePage(path),
                  .health = Health::kWarning,
                  .code = "TOKENS-MISSING",
                  .detail = "missing"};
  if (!win::Exists(path)) return finding;
  const auto text = EndOfFile(path, kLargestList);
  if (!text) {
    SetUnreadable(finding, path, GetLastError(), "TOKENS-MISSING");
    return finding;
  }
  std::size_t count = 0;
  for (std::string_view rest = *text; !rest.empty();) {
    const std::size_t end = std::min(rest.find_first_of("\r\n"), rest.size());
    std::string_view target = rest.substr(0, end);
    rest.remove_prefix(std::min(rest.find_first_not_of("\r\n", end), rest.size()));
    const std::size_t equals = target.find('=');
    if (equals == target.npos) continue;
    const std::string name(target.substr(0, equals));
    target.remove_prefix(equals + 1);
    if (target.starts_with("e\"")) target = target.substr(2, target.find('"', 2) - 2);
    ++count;
    if (!win::Exists(std::string(target))) finding.missing.push_back(Utf8FromCodePage(name));
  }
  finding.health = finding.missing.empty() && count != 0 ? Health::kOk : Health::kWarning;
  finding.code = finding.health == Health::kOk ? "OK" : count == 0 ? "TOKENS-MISSING" : "PROGRAM-UNLISTED";
  finding.detail = Counted(count, "name") + (finding.missing.empty() ? "" : ", whose file is missing:");
  return finding;
}

}  // namespace

Finding CheckLogLevel(const Product& product) {
  const std::string path = product.Path({"", text::kSettingsFile});
  const auto level = trace::LogLevelFromText(win::ReadProfile(path, "LOG", "LEVELLOG", "", 64).c_str());
  Finding finding{
      .kind = "machine", .subject = "log level", .path = Utf8FromCodePage(path), .detail = std::to_string(level)};
  if (level != 0) return finding;
  finding.health = Health::kWarning;
  finding.code = "LOG-LEVEL-0";
  finding.detail = "the log is at level 0: failures are not recorded";
  return finding;
}

Findings Examine(const Product& product, const StoreCopies& copies) {
  Findings findings;
  if (!IsElevated()) {
    findings.push_back({.kind = "machine",
                        .subject = "rights",
                        .path = "",
                        .health = Health::kUnknown,
                        .code = "NOT-ELEVATED",
                        .detail = "not elevated: some findings need an administrator"});
  }
  const bool fresh = IsFresh(copies);
  for (Finding& finding : CheckSiblings(product)) {
    if (fresh && finding.code == "MODULE-MISSING") finding.health = std::min(finding.health, Health::kWarning);
    findings.push_back(std::move(finding));
  }
  for (Finding& finding : CheckStore(copies)) findings.push_back(std::move(finding));
  for (const ProductFile& file : product.SettingsFiles()) findings.push_back(CheckSettingsFile(product, file));
  const StoreCopy* const used = FileOf(copies, ChooseCopy(copies).copy);
  const bool integrated =
      used && !used->Value("INTEGRATION", "Date").empty() && !used->Value("INTEGRATION", "DEVICEID").empty();
  findings.push_back(CheckJobs(product, integrated));
  findings.push_back(CheckTokens(product, "Scheduler", "tokens.tok"));
  findings.push_back(CheckTokens(product, "KESLPMNG", "plugins.tok"));
  findings.push_back(CheckDisk(product));
  findings.push_back(CheckUuid(product));
  findings.push_back(CheckKeys());
  findings.push_back(CheckLogLevel(product));
  return findings;
}

}  // namespace kelctl
