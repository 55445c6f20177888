#include <windows.h>

#include <algorithm>
#include <nlohmann/json.hpp>

#include "commands.h"
#include "diagnosis/store_files.h"
#include "store/codec.h"
#include "texts.h"
#include "win/file.h"
#include "win/interprocess_lock.h"

namespace kelctl {
namespace {

constexpr int kMostKept = 9;  // replaced files that are kept

constexpr DWORD kLongestWait = 5000;  // milliseconds

struct RepairOptions {
  std::string from;
  bool dryRun = false, force = false, writable = false;
};

/// A copy over the live file: what it would do, or why it is refused.
struct Plan {
  const StoreCopy* source;
  std::string refusal;  // empty when it is possible
  std::string keptAs;   // the path for the replaced file; empty when there is none
};

// A name for the replaced file, with the first free number; empty when all are taken.
std::string FreeNameFor(const std::string& path) {
  for (int number = 1; number <= kMostKept; ++number) {
    std::string name = path + "." + std::to_string(number);
    if (!win::Exists(name)) return name;
  }
  return {};
}

std::string RefusalFor(const StoreCopies& copies, const StoreCopy& source, const RepairOptions& options) {
  const StoreCopy& live = copies.live;
  if (!source.IsWhole()) return source.file + " is not a complete store: " + Describe(source);
  if (source.AgentId().empty() && !options.force)
    return source.file + " has no agent-id; --force copies it all the same";
  if (IsNoise(live) && !options.force) {
    return live.file + " " + Describe(live) + " The right library may still read it; --force replaces it";
  }
  if (live.readOnly && !options.writable) return live.file + " is read-only; --writable clears the attribute";
  return {};
}

Plan PlanFor(const StoreCopies& copies, CopyInUse from, const RepairOptions& options) {
  Plan plan{.source = FileOf(copies, from), .refusal = {}, .keptAs = {}};
  plan.refusal = RefusalFor(copies, *plan.source, options);
  if (!plan.refusal.empty() || copies.live.state == CopyState::kMissing) return plan;
  plan.keptAs = FreeNameFor(copies.live.path);
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
  nlohmann::ordered_json document = {
      {"done", done}, {"files", JsonOf(copies)}, {"copies", nlohmann::ordered_json::array()}};
  for (const Plan& plan : plans) {
    document["copies"].push_back({{"from", plan.source->file},
                                  {"possible", plan.refusal.empty()},
                                  {"detail", Sentence(copies, plan, done)},
                                  {"keptAs", Utf8FromCodePage(plan.keptAs)}});
  }
  return document;
}

void ShowPlans(Session& session, const StoreCopies& copies, const std::vector<Plan>& plans, bool done) {
  std::string text = RenderCopies(copies);
  for (const Plan& plan : plans) text += Sentence(copies, plan, done) + "\n";
  session.Show(text, JsonOf(copies, plans, done));
}

[[noreturn]] void FailCopying(const std::string& what, DWORD error) {
  throw CommandError(kCallFailed, "cannot copy " + what + " (" + WindowsError(error) + ")");
}

// The store's lock between processes, as the library acquires it.
void Acquire(win::InterprocessLock& lock, const Product& product) {
  using Attempt = win::InterprocessLock::Attempt;
  const std::string folder = product.Folder("KESAgent");
  const DWORD begin = GetTickCount();
  Attempt attempt = Attempt::kBusy;
  while (attempt == Attempt::kBusy && GetTickCount() - begin < kLongestWait) {
    attempt = lock.TryAcquire(folder + "INTEGRA.LCK", folder + "INTEGRA.DAT", folder);
    if (attempt == Attempt::kBusy) Sleep(1);
  }
  if (attempt == Attempt::kHeld) return;
  const bool busy = attempt == Attempt::kBusy;
  throw CommandError(busy ? kRefused : kCallFailed,
                     busy ? "refused: another program is changing the store; try again"
                          : "the lock of the store cannot be used (" + WindowsError(GetLastError()) + ")");
}

// The file must read back as the copy's content.
void Verify(const Product& product, const StoreCopies& copies, const Plan& plan) {
  const StoreCopy result = ReadStoreCopy(product, copies.live.file);
  if (result.IsWhole() && store::Serialise(result.store) == store::Serialise(plan.source->store)) return;
  throw CommandError(kCallFailed, copies.live.file + " was replaced, but reads back as: " + Describe(result) +
                                      (plan.keptAs.empty() ? "" : "; the replaced file is " + FileName(plan.keptAs)));
}

void CheckPossible(const Plan& plan) {
  if (!plan.refusal.empty()) throw CommandError(kRefused, "refused: " + plan.refusal);
}

void CarryOut(const Product& product, const StoreCopies& copies, const Plan& plan) {
  // Never over a file that appeared meanwhile. A copy that fails halfway, as on a full disk, leaves no file.
  if (!plan.keptAs.empty() && !CopyFileA(copies.live.path.c_str(), plan.keptAs.c_str(), TRUE)) {
    const DWORD error = GetLastError();
    if (error != ERROR_FILE_EXISTS) win::Remove(plan.keptAs);
    FailCopying(copies.live.file + " to " + FileName(plan.keptAs) + ", and nothing was replaced", error);
  }
  if (copies.live.readOnly) {
    SetFileAttributesA(copies.live.path.c_str(), FILE_ATTRIBUTE_NORMAL);
    if (!plan.keptAs.empty()) SetFileAttributesA(plan.keptAs.c_str(), FILE_ATTRIBUTE_NORMAL);
  }
  if (!store::ReplaceByCopy(plan.source->path, copies.live.path, "repair")) {
    const DWORD error = GetLastError();
    // Unless the replacement ended halfway, the kept file is one more copy of the same content.
    const StoreCopy now = ReadStoreCopy(product, copies.live.file);
    const bool untouched = now.size == copies.live.size && now.written == copies.live.written;
    if (untouched && !plan.keptAs.empty()) win::Remove(plan.keptAs);
    FailCopying(plan.source->file + " over " + copies.live.file, error);
  }
  Verify(product, copies, plan);
}

void Repair(Session& session, const RepairOptions& options) {
  if (options.from.empty() && !options.dryRun) throw UsageError("name a copy with --from, or look with --dry-run");
  if (!options.from.empty() && options.from != "bak" && options.from != "start") {
    throw UsageError("--from takes bak or start, not \"" + options.from + "\"");
  }
  const Product product(LibraryPath(session.libraryPath));
  StoreCopies copies;
  std::vector<Plan> plans;
  const auto look = [&] {
    copies = ReadStoreCopies(product);
    plans.clear();
    if (options.from != "start") plans.push_back(PlanFor(copies, CopyInUse::kBackup, options));
    if (options.from != "bak") plans.push_back(PlanFor(copies, CopyInUse::kStart, options));
  };
  look();
  win::InterprocessLock lock;
  if (!options.dryRun) {
    CheckPossible(plans.front());  // before the lock, whose file may be new
    Acquire(lock, product);
    look();
    CheckPossible(plans.front());
    CarryOut(product, copies, plans.front());
  }
  ShowPlans(session, copies, plans, !options.dryRun);
  const auto refused = [](const Plan& plan) { return !plan.refusal.empty(); };
  if (std::ranges::all_of(plans, refused)) session.exitCode = kRefused;
}

}  // namespace

void AddRepairCommand(CLI::App& kelctl, Session& session) {
  CLI::App* const command = kelctl.add_subcommand(
      "repair", "Copies the backup or the start copy of the store over INTEGRA.DAT, and keeps the replaced file");
  const auto options = std::make_shared<RepairOptions>();
  command->add_option("--from", options->from, "bak or start: the copy to use")->type_name("COPY");
  command->add_flag("--dry-run", options->dryRun, "Only show what would be done");
  command->add_flag("--force", options->force,
                    "Also over a store that decrypts to noise, and from a copy without agent-id");
  command->add_flag("--writable", options->writable, "Clear a read-only attribute of INTEGRA.DAT");
  command->footer(
      "Only a complete store is copied: one that can be decrypted and has at least 4 sections. Otherwise, and when "
      "INTEGRA.DAT.1 to .9 all exist, the exit code is 4 and nothing is changed; --dry-run ends with the same exit "
      "code. Stop the agent's other programs before.\n"
      "Example: kelctl repair --dry-run\n"
      "Example: kelctl repair --from bak");
  command->callback([&session, options] { Repair(session, *options); });
}

}  // namespace kelctl
