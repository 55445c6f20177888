#include <windows.h>

#include <nlohmann/json.hpp>

#include "commands.h"
#include "diagnosis/store_files.h"
#include "store/codec.h"
#include "texts.h"
#include "win/file.h"

namespace kelctl {
namespace {

constexpr int kMostKept = 9;  // replaced files that are kept

struct RepairOptions {
  std::string from;
  bool dryRun = false;
};

/// A copy over the live file: what it would do, or why it is refused.
struct Plan {
  const StoreCopy* source;
  std::string refusal;  // empty when it is possible
  std::string keptAs;   // the path for the file that is replaced; empty when there is none
};

// A name for the file that is replaced, with the first number that is free; empty when all are taken.
std::string FreeNameBeside(const std::string& path) {
  for (int number = 1; number <= kMostKept; ++number) {
    std::string name = path + "." + std::to_string(number);
    if (!win::Exists(name)) return name;
  }
  return {};
}

Plan PlanFor(const StoreCopies& copies, CopyInUse from) {
  Plan plan{.source = FileOf(copies, from), .refusal = {}, .keptAs = {}};
  if (!plan.source->IsWhole()) {
    plan.refusal = plan.source->file + " is no whole store: " + Describe(*plan.source);
    return plan;
  }
  if (copies.live.state == CopyState::kMissing) return plan;
  plan.keptAs = FreeNameBeside(copies.live.path);
  if (plan.keptAs.empty()) {
    plan.refusal = "all names for the replaced file are taken, up to " + copies.live.file + "." +
                   std::to_string(kMostKept) + ": delete those that are not needed";
  }
  return plan;
}

std::string FileName(const std::string& path) { return path.substr(path.rfind('\\') + 1); }

std::string Sentence(const StoreCopies& copies, const Plan& plan, bool done) {
  if (!plan.refusal.empty()) return "refused: " + plan.refusal;
  std::string text = (done ? "copied " : "would copy ") + plan.source->file + " over " + copies.live.file;
  if (!plan.keptAs.empty()) text += "; the replaced file is kept as " + FileName(plan.keptAs);
  return text;
}

nlohmann::ordered_json JsonOf(const StoreCopies& copies, const std::vector<Plan>& plans, bool done) {
  nlohmann::ordered_json document = {{"done", done}, {"files", nlohmann::ordered_json::array()}};
  for (const StoreCopy* const copy : {&copies.live, &copies.backup, &copies.start}) {
    document["files"].push_back({{"file", copy->file}, {"whole", copy->IsWhole()}, {"detail", Describe(*copy)}});
  }
  for (const Plan& plan : plans) {
    document["copies"].push_back({{"from", plan.source->file},
                                  {"possible", plan.refusal.empty()},
                                  {"detail", Sentence(copies, plan, done)},
                                  {"keptAs", Utf8FromCodePage(plan.keptAs)}});
  }
  return document;
}

void ShowPlans(Session& session, const StoreCopies& copies, const std::vector<Plan>& plans, bool done) {
  std::string text;
  for (const StoreCopy* const copy : {&copies.live, &copies.backup, &copies.start}) {
    text += copy->file + ": " + Describe(*copy) + "\n";
  }
  if (done) text.clear();
  for (const Plan& plan : plans) text += Sentence(copies, plan, done) + "\n";
  session.Show(text, JsonOf(copies, plans, done));
}

[[noreturn]] void FailCopying(const std::string& what) {
  throw CommandError(kCallFailed, "cannot copy " + what + " (" + WindowsError(GetLastError()) + ")");
}

void CarryOut(const StoreCopies& copies, const Plan& plan) {
  if (!plan.refusal.empty()) throw CommandError(kRefused, "refused: " + plan.refusal);
  // Never over a file that appeared meanwhile.
  if (!plan.keptAs.empty() && !CopyFileA(copies.live.path.c_str(), plan.keptAs.c_str(), TRUE)) {
    FailCopying(copies.live.file + " to " + FileName(plan.keptAs) + ", and nothing was replaced");
  }
  if (!store::ReplaceByCopy(plan.source->path, copies.live.path, "repair")) {
    FailCopying(plan.source->file + " over " + copies.live.file);
  }
}

void Repair(Session& session, const RepairOptions& options) {
  if (options.from.empty() && !options.dryRun) throw UsageError("name a copy with --from, or look with --dry-run");
  const Product product(LibraryPath(session.libraryPath));
  const StoreCopies copies = ReadStoreCopies(product);
  std::vector<Plan> plans;
  if (options.from != "start") plans.push_back(PlanFor(copies, CopyInUse::kBackup));
  if (options.from != "bak") plans.push_back(PlanFor(copies, CopyInUse::kStart));
  if (!options.dryRun) CarryOut(copies, plans.front());
  ShowPlans(session, copies, plans, !options.dryRun);
  if (!options.from.empty() && !plans.front().refusal.empty()) session.exitCode = kRefused;
}

}  // namespace

void AddRepairCommand(CLI::App& kelctl, Session& session) {
  CLI::App* const command = kelctl.add_subcommand(
      "repair", "Copies the backup or the start copy of the store over INTEGRA.DAT, which is kept beside it");
  const auto options = std::make_shared<RepairOptions>();
  command->add_option("--from", options->from, "bak or start: the copy to take")
      ->type_name("COPY")
      ->check(CLI::IsMember({"bak", "start"}));
  command->add_flag("--dry-run", options->dryRun, "Only show what would be done");
  command->footer(
      "Only a whole store is taken: one that can be deciphered and has at least 4 sections. Else, and when "
      "INTEGRA.DAT.1 to .9 are all there, the exit code is 4 and nothing is changed. The agent's other programs should "
      "be stopped.\n"
      "Example: kelctl repair --dry-run\n"
      "Example: kelctl repair --from bak");
  command->callback([&session, options] { Repair(session, *options); });
}

}  // namespace kelctl
