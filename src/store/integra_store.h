// The integration store: INTEGRA.DAT, its cached copy, its backup INTEGRA.BAK and its pristine start copy
// INTEGRA.START, all in the agent's folder. The only way to that file.
#pragma once

#include "KELUtils.h"
#include "frame/module.h"
#include "store/ini_store.h"
#include "store/store_lock.h"
#include "win/critical_section.h"

namespace store {

/// The cached store; null until the first successful load. Guarded by frame::IntegraLock, which is held from
/// `ReadIntegraDat` to the last use of a value (`WithCurrentStore`), so that no other thread changes or replaces the
/// store meanwhile.
extern IniStore* IntegraStore;

/// Makes the cached store current: keeps it while the file's last-write time is unchanged, else reads the file, or the
/// backup when the file is missing. Missing both, it creates both empty. A store of fewer than four sections counts as
/// damaged and is replaced by the start copy, where there is one.
///
/// KE_SUCCESS; KE_NO_MODULE_DIRECTORY; KE_STORE_UNUSABLE when a file cannot be opened, read, created or copied, or
/// nobody can tell whether the live one is there;
/// KE_CRYPTO_NOT_LOADED or KE_CRYPTO_FAILED for an enciphered file, which then stays as it is. The cached store
/// survives every failure, but not a missing file. Traces its start, end and errors. Exceptions are traced and passed
/// on.
KE_RESULT ReadIntegraDat();

/// Writes the cached store to the file and the same to the backup, but never a damaged store over a whole backup. Each
/// file is replaced in one step (`ReplaceContent`). The text is written plain when it cannot be enciphered.
///
/// KE_SUCCESS; KE_NOT_CREATED without a cached store; KE_NO_MODULE_DIRECTORY; KE_STORE_UNUSABLE when the file cannot be
/// opened; KE_CRYPTO_FAILED when enciphering failed: the text was written plain and the backup not refreshed.
/// Exceptions are traced and passed on, before the file was touched.
KE_RESULT WriteIntegraDat();

/// Copies the backup, or the start copy, over the file and makes the cached store current. KE_STORE_UNUSABLE when the
/// copy fails, else the codes of `ReadIntegraDat`.
KE_RESULT RestoreIntegraDat();
KE_RESULT RestoreIntegraDatEx();

/// Copies the file over the start copy; but a damaged file never over a whole start copy, which may be the last good
/// one. KE_STORE_UNUSABLE when it was not copied, KE_NO_MODULE_DIRECTORY.
KE_RESULT KeepAsStartCopy();

/// Reads the certificate and traces whether that worked. On the way the certificate's getter restores a damaged store.
void CheckIntegrity();

/// Runs `work()` on the current store and returns its result: with the lock held from the reading of the file to the
/// end of the work. A code of `ReadIntegraDat` is returned before any work.
template <typename Work>
KE_RESULT WithCurrentStore(Work work) {
  const win::Holding hold(frame::IntegraLock);
  const KE_RESULT result = ReadIntegraDat();
  return result == KE_SUCCESS ? work() : result;
}

/// The same for work that changes the store and writes it. From the reading to the writing no other process of this
/// library changes the file, unless the lock between the processes cannot be had in time.
template <typename Work>
KE_RESULT ChangeCurrentStore(Work work) {
  const win::Holding hold(frame::IntegraLock);
  const StoreLock lock;
  return WithCurrentStore(work);
}

/// Destroys the cached store, at process detach.
void DropIntegraStore() noexcept;

}  // namespace store
