#include "store/integra_store.h"

#include <windows.h>

#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "frame/module.h"
#include "frame/paths.h"
#include "frame/trace.h"
#include "store/durable_file.h"
#include "store/store_file.h"
#include "store/store_lock.h"
#include "win/critical_section.h"
#include "win/file.h"
#include "win/profile.h"

namespace store {

IniStore* IntegraStore = nullptr;

namespace {

using frame::kDetail;
using frame::kInfo;
using frame::Trace;

// Status of the file when the cached store was loaded or written; its last-write time is the stamp of the cache. A
// status of no file matches nothing: the next read loads the file.
win::FileStatus IntegraFileStatus;

// Set while the late repair reads again, so that it does not repair again.
bool IntegraRelaunch = false;

// The files of the store and its crypto module, named when they are needed: a read that keeps the cached store asks for
// two.
class StorePaths {
 public:
  explicit StorePaths(std::string_view directory) noexcept : directory_(directory) {}

  std::string CryptoFolder() const { return frame::OwnFolder(directory_); }
  std::string Live() const { return InAgentFolder("INTEGRA.DAT"); }
  std::string Backup() const { return InAgentFolder("INTEGRA.BAK"); }
  std::string Start() const { return InAgentFolder("INTEGRA.START"); }
  std::string Policies() const { return frame::SiblingFolder(directory_, "KELSysCf") + "KelSysCf.dat"; }

 private:
  std::string InAgentFolder(const char* file) const { return frame::SiblingFolder(directory_, "KESAgent") + file; }

  std::string_view directory_;
};

void ReplaceStore(std::unique_ptr<IniStore> store) noexcept { delete std::exchange(IntegraStore, store.release()); }

bool StoreIsDamaged() noexcept { return IntegraStore != nullptr && IntegraStore->sections.size() < kFewestSections; }

void ResetPolicies(const StorePaths& paths) {
  const std::string policies = paths.Policies();
  for (const char* key : {"POLICY_101", "POLICY_200"}) {
    win::WriteProfile(policies, "POLICIES", key, "{00000000-0000-0000-0000-000000000000}");
  }
}

// Copies a file over the live one. The stamp is forgotten, so that the copied content is read whatever its file times.
bool CopyOverLive(const std::string& source, const StorePaths& paths) {
  IntegraFileStatus = {};
  return ReplaceByCopy(source, paths.Live());
}

bool RepairFromStart(const StorePaths& paths) {
  if (!CopyOverLive(paths.Start(), paths)) {
    Trace(kDetail, "ReadIntegraDat", "Error copying from Integra.start");
    return false;
  }
  ResetPolicies(paths);
  return true;
}

// What to read when the live file is missing: the backup; or, when there is no backup either, a live file and a backup
// created empty. False when the live file could not be created.
bool FindReplacement(const StorePaths& paths, win::FileHandle& backup) {
  backup = win::OpenForUpdate(paths.Backup());
  if (backup) return true;
  Trace(kDetail, "ReadIntegraDat", "Could not open Restore File Integra.bak");
  if (win::Exists(paths.Backup())) return true;
  win::CreateMissing(paths.Live());
  if (!win::Exists(paths.Live())) return false;
  win::CreateMissing(paths.Backup());
  return true;
}

// Replaces the cached store by the content of an open file, whose status becomes the stamp.
KE_RESULT LoadStore(win::FileHandle file, const win::FileStatus& status, const StorePaths& paths) {
  auto content = ReadContent(file);
  if (!content) return KE_STORE_UNUSABLE;
  file.Reset();
  switch (DecipherContent(*content, paths.CryptoFolder().c_str())) {
    case Deciphering::kCryptoNotLoaded:
      return KE_CRYPTO_NOT_LOADED;
    case Deciphering::kFailed:
      return KE_CRYPTO_FAILED;
    case Deciphering::kDone:
      break;
  }
  auto store = std::make_unique<IniStore>();
  ParseIni(*content, *store);
  ReplaceStore(std::move(store));
  IntegraFileStatus = status;
  return KE_SUCCESS;
}

// True when a file of that status has the stamp of the cached store.
bool HasStamp(const win::FileStatus& status) noexcept {
  return IntegraFileStatus.exists && status.exists && status.written == IntegraFileStatus.written;
}

// Brings the cached store up to date with the file or the backup. A damaged cached store is first repaired from the
// start copy, unless its stamp was forgotten: then the file holds a copy that has yet to be read.
KE_RESULT RefreshStore(const StorePaths& paths, bool startExists) {
  const std::string live = paths.Live();
  win::FileStatus status = win::StatusOf(live);
  win::FileHandle source;
  if (!status.exists) {
    if (!win::WasMissing()) return KE_STORE_UNUSABLE;  // it is there: nothing may take its place
    ReplaceStore(nullptr);
    if (!FindReplacement(paths, source)) return KE_STORE_UNUSABLE;
    if (!source) status = win::StatusOf(live);
  }
  if (startExists && StoreIsDamaged() && IntegraFileStatus.exists) {
    if (!RepairFromStart(paths)) return KE_STORE_UNUSABLE;
    Trace(kDetail, "ReadIntegraDat", "Restored from Integra.start");
    status = win::StatusOf(live);
  }
  if (IntegraStore && HasStamp(status)) return KE_SUCCESS;
  if (!source) source = win::OpenForUpdate(live);
  if (!source) return KE_STORE_UNUSABLE;
  return LoadStore(std::move(source), status, paths);
}

// Replaces a damaged store, just loaded, by the start copy and reads again, once.
bool RepairLoadedStore(const StorePaths& paths) {
  if (!RepairFromStart(paths)) return false;
  Trace(kDetail, "ReadIntegraDat", "Relaunch");
  IntegraRelaunch = true;
  ReadIntegraDat();
  Trace(kDetail, "ReadIntegraDat", "Restored in relaunch from Integra.start");
  return true;
}

// True when the cached store is that of the file, and neither has anything to be repaired.
bool StoreIsCurrent(const StorePaths& paths) {
  if (IntegraStore == nullptr || !IntegraFileStatus.exists) return false;  // nothing to compare a file with
  return HasStamp(win::StatusOf(paths.Live())) && !(StoreIsDamaged() && win::Exists(paths.Start()));
}

KE_RESULT ReadUnderLock(const StorePaths& paths) {
  if (StoreIsCurrent(paths)) return KE_SUCCESS;
  const StoreLock lock;
  const bool startExists = win::Exists(paths.Start());
  const KE_RESULT result = RefreshStore(paths, startExists);
  if (result != KE_SUCCESS) return result;
  const bool repair = startExists && StoreIsDamaged() && !IntegraRelaunch;
  if (repair && !RepairLoadedStore(paths)) return KE_STORE_UNUSABLE;
  return KE_SUCCESS;
}

// What a file of the store holds. Untold: it is enciphered, and there is no crypto module.
enum class FileState { kMissing, kUnreadable, kUntold, kDamaged, kWhole };

FileState StateOfFile(const std::string& path, const StorePaths& paths) {
  const win::FileHandle file = win::OpenForReading(path);
  if (!file) return win::WasMissing() ? FileState::kMissing : FileState::kUnreadable;
  auto content = ReadContent(file);
  if (!content) return FileState::kUnreadable;
  switch (DecipherContent(*content, paths.CryptoFolder().c_str())) {
    case Deciphering::kCryptoNotLoaded:
      return FileState::kUntold;
    case Deciphering::kFailed:
      return FileState::kDamaged;
    case Deciphering::kDone:
      break;
  }
  IniStore store;
  ParseIni(*content, store);
  return store.sections.size() >= kFewestSections ? FileState::kWhole : FileState::kDamaged;
}

// True for a file that is whole, or may be. Such a one is not to be replaced by a damaged one: it may be the last good
// copy.
bool IsPrecious(const std::string& path, const StorePaths& paths) {
  const FileState state = StateOfFile(path, paths);
  return state == FileState::kWhole || state == FileState::kUnreadable;
}

KE_RESULT WriteUnderLock(const StorePaths& paths, const char* function) {
  if (IntegraStore == nullptr) return KE_NOT_CREATED;
  std::string text = Serialise(*IntegraStore);
  Trace(kDetail, function, "writing integra.dat:\n%s\n", text.c_str());
  // Everything that may throw comes before the file is touched.
  const std::string live = paths.Live();
  const std::string backup = paths.Backup();
  const PreparedContent content = PrepareContent(std::move(text), paths.CryptoFolder().c_str(), function);
  // Sections are never taken out of a store. One that has too few, while its backup has them all, has lost them by
  // damage: the backup is then the last good copy.
  const bool keepBackup = StoreIsDamaged() && IsPrecious(backup, paths);
  win::FileStatus like = IntegraFileStatus.exists ? IntegraFileStatus : win::StatusOf(live);
  const Replaced replaced = ReplaceContent(live, content.bytes, like);
  if (!replaced.opened) return KE_STORE_UNUSABLE;
  TraceWritten(content, replaced.written, replaced.whole, function);
  if (content.form == TextForm::kPlainAfterFailure) return KE_CRYPTO_FAILED;
  if (keepBackup) {
    Trace(kDetail, function, "Integra.bak kept: integra.dat is damaged");
  } else if (like.written = 0; replaced.whole && !ReplaceContent(backup, content.bytes, like).whole) {
    Trace(kDetail, function, "Could not copy integra.dat. to integra.bak");
  }
  IntegraFileStatus = win::StatusOf(live);
  return KE_SUCCESS;
}

// Runs one operation on the store's files with the lock held; an exception is traced and passed on.
template <typename Operation>
KE_RESULT WithStoreLocked(const char* function, Operation operation) {
  const auto directory = frame::KeptModuleDirectory();
  if (directory.empty()) return KE_NO_MODULE_DIRECTORY;
  try {
    const StorePaths paths(directory);
    const win::Holding hold(frame::IntegraLock);
    return operation(paths);
  } catch (...) {
    Trace(kDetail, function, "Exception raised");
    throw;
  }
}

KE_RESULT Restore(const char* function, std::string (StorePaths::*source)() const) {
  return WithStoreLocked(function, [&](const StorePaths& paths) -> KE_RESULT {
    const StoreLock lock;
    if (!CopyOverLive((paths.*source)(), paths)) return KE_STORE_UNUSABLE;
    return ReadIntegraDat();
  });
}

}  // namespace

KE_RESULT ReadIntegraDat() {
  Trace(kInfo, __func__, "Function start");
  const KE_RESULT result = WithStoreLocked(__func__, [](const StorePaths& paths) {
    // The flag of the late repair never outlives the read that set it, whichever way that read ends.
    struct RelaunchEnd {
      ~RelaunchEnd() { IntegraRelaunch = false; }
    } const end;
    return ReadUnderLock(paths);
  });
  Trace(kInfo, __func__, "Function end. Return code (%i)", static_cast<int>(result));
  return result;
}

KE_RESULT WriteIntegraDat() {
  return WithStoreLocked(__func__, [](const StorePaths& paths) {
    const StoreLock lock;
    return WriteUnderLock(paths, "WriteIntegraDat");
  });
}

KE_RESULT RestoreIntegraDat() { return Restore(__func__, &StorePaths::Backup); }

KE_RESULT RestoreIntegraDatEx() { return Restore(__func__, &StorePaths::Start); }

KE_RESULT KeepAsStartCopy() {
  return WithStoreLocked(__func__, [](const StorePaths& paths) -> KE_RESULT {
    const StoreLock lock;
    const std::string live = paths.Live(), start = paths.Start();
    const FileState state = StateOfFile(live, paths);
    const bool doubtful = state == FileState::kDamaged || state == FileState::kUnreadable;
    if (doubtful && IsPrecious(start, paths)) return KE_STORE_UNUSABLE;
    return ReplaceByCopy(live, start) ? KE_SUCCESS : KE_STORE_UNUSABLE;
  });
}

void CheckIntegrity() {
  char certificate[512] = {};
  const bool present = KE_GetCertificate(certificate, 510) == KE_SUCCESS;
  Trace(kDetail, __func__, present ? "CheckIntegrity ok" : "CheckIntegrity failed");
}

void DropIntegraStore() noexcept {
  const win::Holding hold(frame::IntegraLock);
  ReplaceStore(nullptr);
}

}  // namespace store
