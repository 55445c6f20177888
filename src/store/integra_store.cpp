#include "store/integra_store.h"

#include <windows.h>

#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "siblings/sibling_table.h"
#include "store/codec.h"
#include "store/store_lock.h"
#include "trace/trace.h"
#include "win/file.h"
#include "win/module.h"
#include "win/owner.h"
#include "win/profile.h"
#include "win/replace_file.h"

namespace store {

namespace {

using trace::kDetail;
using trace::kInfo;
using trace::Trace;

constexpr char kReading[] = "ReadIntegraDat", kWriting[] = "WriteIntegraDat";

// All of this is guarded by win::IntegraLock.

// The cached store; null until the first successful load.
IniStore* IntegraStore = nullptr;

// Status of the file when the cached store was loaded or written; its last-write time is the stamp of the cache. The
// status of a missing file matches none: the next read loads the file.
win::FileStatus IntegraFileStatus;

// Whether the cached store was damaged when it was last read, before any change.
bool g_readDamaged = false;

// The folders and files of the store.
struct StorePaths {
  std::string agentFolder;
  std::string cryptoFolder;

  std::string Live() const { return agentFolder + "INTEGRA.DAT"; }
  std::string Backup() const { return agentFolder + "INTEGRA.BAK"; }
  std::string Start() const { return agentFolder + "INTEGRA.START"; }
};

void ReplaceStore(std::unique_ptr<IniStore> store) noexcept { delete std::exchange(IntegraStore, store.release()); }

bool IsDamaged(const IniStore& store) noexcept { return store.sections.size() < kFewestSections; }

void ResetPolicies() {
  const std::string policies = win::ComponentFile("KELSysCf", "KelSysCf.dat");
  for (const char* key : {"POLICY_101", "POLICY_200"}) {
    win::WriteProfile(policies, "POLICIES", key, "{00000000-0000-0000-0000-000000000000}");
  }
}

// Copies a file over the live one. The stamp is forgotten, so that the copied content is read whatever its file times.
bool CopyOverLive(const std::string& source, const StorePaths& paths, const char* function) {
  IntegraFileStatus = {};
  return ReplaceByCopy(source, paths.Live(), function);
}

KE_RESULT RepairFromStart(const StorePaths& paths) {
  if (!CopyOverLive(paths.Start(), paths, kReading)) {
    Trace(kDetail, kReading, "Error copying from Integra.start");
    return KE_STORE_UNUSABLE;
  }
  ResetPolicies();
  return KE_SUCCESS;
}

KE_RESULT CannotOpen(const std::string& path) noexcept {
  Trace(kDetail, kReading, "Could not open %s - Error %d", path.c_str(), static_cast<int>(GetLastError()));
  return KE_STORE_UNUSABLE;
}

// Opens the backup, because the live file is missing. Without a backup either, creates both empty and opens none.
KE_RESULT OpenBackup(const StorePaths& paths, win::FileHandle& backup) {
  backup = win::OpenForUpdate(paths.Backup());
  if (backup) return KE_SUCCESS;
  Trace(kDetail, kReading, "Could not open Restore File Integra.bak");
  if (win::Exists(paths.Backup())) return KE_SUCCESS;
  win::CreateMissing(paths.Live());
  if (!win::Exists(paths.Live())) return CannotOpen(paths.Live());
  win::CreateMissing(paths.Backup());
  return KE_SUCCESS;
}

// Replaces the cached store by the content of an open file, whose status becomes the stamp.
KE_RESULT LoadStore(win::FileHandle file, const win::FileStatus& status, const StorePaths& paths) {
  ExaminedFile examined = ExamineFile(std::move(file), paths.cryptoFolder.c_str());
  if (examined.state == FileState::kCryptoNotLoaded) return KE_CRYPTO_NOT_LOADED;
  if (examined.state == FileState::kDecryptionFailed) return KE_CRYPTO_FAILED;
  if (!examined.HasText()) return KE_STORE_UNUSABLE;
  ReplaceStore(std::make_unique<IniStore>(std::move(examined.store)));
  IntegraFileStatus = status;
  return KE_SUCCESS;
}

// Loads the live file, whose status was just read, or the backup when it is missing.
KE_RESULT LoadFiles(const StorePaths& paths, win::FileStatus status) {
  const std::string live = paths.Live();
  win::FileHandle source;
  if (!status.exists) {
    if (!win::LastErrorIsNotFound()) return CannotOpen(live);  // it may exist: nothing takes its place
    ReplaceStore(nullptr);
    if (const KE_RESULT result = OpenBackup(paths, source); result != KE_SUCCESS) return result;
    if (!source) status = win::StatusOf(live);
  }
  if (!source) source = win::OpenForUpdate(live);
  if (!source) return CannotOpen(live);
  return LoadStore(std::move(source), status, paths);
}

// True when the cached store is that of a file of this status.
bool HasStamp(const win::FileStatus& status) noexcept {
  return IntegraStore != nullptr && IntegraFileStatus.exists && status.exists &&
         status.written == IntegraFileStatus.written;
}

bool NeedsRepair(const StorePaths& paths) {
  return IntegraStore != nullptr && IsDamaged(*IntegraStore) && win::Exists(paths.Start());
}

// How a read handles a damaged store.
enum class Repair {
  kNow,    // the caller holds the store's lock
  kLater,  // it is only reported; the next read loads the file again
};

struct Reading {
  KE_RESULT code = KE_SUCCESS;
  bool needsRepair = false;
};

Reading ReadIntegraDat(const StorePaths& paths, Repair repair);

// Replaces a damaged store, just loaded, by the start copy and reads that, once.
KE_RESULT RepairLoadedStore(const StorePaths& paths) {
  if (const KE_RESULT result = RepairFromStart(paths); result != KE_SUCCESS) return result;
  Trace(kDetail, kReading, "Relaunch");
  const KE_RESULT result = ReadIntegraDat(paths, Repair::kLater).code;
  Trace(kDetail, kReading, "Restored in relaunch from Integra.start");
  return result;
}

Reading ReadFiles(const StorePaths& paths, Repair repair) {
  win::FileStatus status = win::StatusOf(paths.Live());
  if (HasStamp(status)) {
    if (!NeedsRepair(paths)) return {};
    if (repair == Repair::kLater) return {.needsRepair = true};
    if (const KE_RESULT result = RepairFromStart(paths); result != KE_SUCCESS) return {result};
    Trace(kDetail, kReading, "Restored from Integra.start");
    status = win::StatusOf(paths.Live());
  }
  if (const KE_RESULT result = LoadFiles(paths, status); result != KE_SUCCESS) return {result};
  if (!NeedsRepair(paths)) return {};
  if (repair == Repair::kNow) return {RepairLoadedStore(paths)};
  // The file may be in the middle of being overwritten in place: it is read again before it is repaired.
  IntegraFileStatus = {};
  return {.needsRepair = true};
}

Reading ReadIntegraDat(const StorePaths& paths, Repair repair) {
  Trace(kInfo, kReading, "Function start");
  const Reading reading = ReadFiles(paths, repair);
  g_readDamaged = IntegraStore != nullptr && IsDamaged(*IntegraStore);
  Trace(kInfo, kReading, "Function end. Return code (%i)", static_cast<int>(reading.code));
  return reading;
}

// True for a file that no damaged store may replace.
bool MayBeLastGoodCopy(const std::string& path, const StorePaths& paths) {
  const FileState state = ExamineFile(path, paths.cryptoFolder.c_str()).state;
  return state == FileState::kComplete || state == FileState::kUnreadable || state == FileState::kCryptoNotLoaded;
}

// Once in a process: leftovers are of processes that were killed, and so there are few.
void RemoveLeftoversOnce(const StorePaths& paths) {
  if (std::exchange(g_leftoversRemoved, true)) return;
  for (const std::string& path : {paths.Live(), paths.Backup(), paths.Start()}) win::RemoveLeftovers(path);
}

KE_RESULT WriteUnderLock(const StorePaths& paths) {
  if (IntegraStore == nullptr) return KE_NOT_CREATED;
  std::string text = Serialise(*IntegraStore);
  Trace(kDetail, kWriting, "writing integra.dat:\n%s\n", text.c_str());
  // Everything that may throw comes before the file is touched.
  const std::string live = paths.Live();
  const std::string backup = paths.Backup();
  const PreparedContent content = PrepareContent(std::move(text), paths.cryptoFolder.c_str(), kWriting);
  // Sections are never taken out of a store. A store that has too few, while its backup has them all, has lost them by
  // damage: the backup is then the last good copy.
  const bool keepBackup = g_readDamaged && MayBeLastGoodCopy(backup, paths);
  RemoveLeftoversOnce(paths);
  win::FileStatus like = IntegraFileStatus.exists ? IntegraFileStatus : win::StatusOf(live);
  const win::Replaced replaced = ReplaceContent(live, content.bytes, like, kWriting);
  if (!replaced.opened) return KE_STORE_UNUSABLE;
  TraceWritten(content, replaced.written, replaced.complete, kWriting);
  if (content.form == TextForm::kPlainAfterFailure) return KE_CRYPTO_FAILED;
  if (keepBackup) {
    Trace(kDetail, kWriting, "Integra.bak kept: integra.dat was damaged");
  } else if (like.written = 0; replaced.complete && !ReplaceContent(backup, content.bytes, like, kWriting).complete) {
    Trace(kDetail, kWriting, "Could not copy integra.dat. to integra.bak");
  }
  IntegraFileStatus = win::StatusOf(live);
  return KE_SUCCESS;
}

// Runs `operation(paths)` with IntegraLock held; an exception is traced and passed on.
template <typename Operation>
auto WithIntegraLock(const char* function, Operation operation) -> decltype(operation(std::declval<StorePaths>())) {
  try {
    const auto agent = win::FolderOf("KESAgent"), crypto = win::FolderOf(siblings::kCryptoModule.folder);
    if (!agent || !crypto) return {KE_NO_MODULE_DIRECTORY};
    const StorePaths paths{*agent, *crypto};
    const win::LockGuard hold(win::IntegraLock);
    return operation(paths);
  } catch (...) {
    Trace(kDetail, function, "Exception raised");
    throw;
  }
}

StoreOrCode CurrentStore(const Reading& reading) noexcept {
  if (reading.code != KE_SUCCESS || IntegraStore == nullptr) return reading.code;
  return *IntegraStore;
}

StoreOrCode Restore(const char* function, std::string (StorePaths::*source)() const) {
  const StoreLock lock;
  return WithIntegraLock(function, [&](const StorePaths& paths) -> StoreOrCode {
    if (!CopyOverLive((paths.*source)(), paths, function)) return KE_STORE_UNUSABLE;
    return CurrentStore(ReadIntegraDat(paths, Repair::kNow));
  });
}

// Reads the store and, unless it has to be repaired first, runs the work.
Reading ReadAndWork(Repair repair, StoreWork work, void* context) {
  return WithIntegraLock(kReading, [&](const StorePaths& paths) -> Reading {
    const Reading reading = ReadIntegraDat(paths, repair);
    const StoreOrCode store = CurrentStore(reading);
    if (!store || reading.needsRepair) return reading;
    return {work(context, *store)};
  });
}

}  // namespace

bool g_leftoversRemoved = false;

KE_RESULT ReadStore(StoreWork work, void* context) {
  const Reading reading = ReadAndWork(Repair::kLater, work, context);
  return reading.needsRepair ? UpdateStore(work, context) : reading.code;
}

KE_RESULT UpdateStore(StoreWork work, void* context) {
  const StoreLock lock;
  return ReadAndWork(Repair::kNow, work, context).code;
}

KE_RESULT WriteIntegraDat() {
  const StoreLock lock;
  return WithIntegraLock(kWriting, WriteUnderLock);
}

StoreOrCode RestoreIntegraDat() { return Restore(__func__, &StorePaths::Backup); }

StoreOrCode RestoreIntegraDatEx() { return Restore(__func__, &StorePaths::Start); }

KE_RESULT KeepAsStartCopy(const char* function) {
  const StoreLock lock;
  return WithIntegraLock(function, [&](const StorePaths& paths) -> KE_RESULT {
    if (ExamineFile(paths.Live(), paths.cryptoFolder.c_str()).state == FileState::kComplete) {
      return ReplaceByCopy(paths.Live(), paths.Start(), function) ? KE_SUCCESS : KE_STORE_UNUSABLE;
    }
    Trace(kDetail, function, "Integra.start kept: integra.dat has fewer than %u sections or cannot be read",
          static_cast<unsigned>(kFewestSections));
    return KE_SUCCESS;
  });
}

void DropIntegraStore() noexcept {
  const win::LockGuard hold(win::IntegraLock);
  ReplaceStore(nullptr);
}

}  // namespace store
