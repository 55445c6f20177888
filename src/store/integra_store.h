// The integration store: INTEGRA.DAT, its cached copy, its backup INTEGRA.BAK and its pristine start copy
// INTEGRA.START, all in the agent's folder. The only way to that file.
#pragma once

#include "KEResults.h"
#include "store/ini_store.h"

namespace store {

/// The current store, or the code of the failure to read it. The store is valid while win::IntegraLock is held, until
/// it is read again.
class StoreOrCode {
 public:
  StoreOrCode(IniStore& store) noexcept : store_(&store) {}       // NOLINT(google-explicit-constructor): a result
  StoreOrCode(KE_RESULT failure) noexcept : failure_(failure) {}  // NOLINT(google-explicit-constructor): a result

  explicit operator bool() const noexcept { return store_ != nullptr; }
  IniStore& operator*() const noexcept { return *store_; }

  /// KE_SUCCESS when there is a store.
  KE_RESULT Code() const noexcept { return store_ != nullptr ? KE_RESULT{KE_SUCCESS} : failure_; }

 private:
  IniStore* store_ = nullptr;
  KE_RESULT failure_ = KE_EXCEPTION;
};

/// Work on the current store, with win::IntegraLock held.
using StoreWork = KE_RESULT (*)(void* context, IniStore& store);

/// Reads the store and runs `work` on it. The cached store is kept while the file's last-write time is unchanged; else
/// the file is read, or the backup when the file is missing. When both are missing, both are created empty. A store of
/// fewer than four sections counts as damaged and is replaced by the start copy, where there is one: only then this
/// waits for the store's lock, and reads the file again before it repairs.
///
/// Returns the result of `work`; without running it KE_NO_MODULE_DIRECTORY; KE_STORE_UNUSABLE when a file cannot be
/// opened, read, created or copied, or its status cannot be read; KE_CRYPTO_NOT_LOADED or KE_CRYPTO_FAILED for an
/// encrypted file, which stays as it is. The cached store survives every failure, but not a missing file. Failures are
/// traced. Exceptions are traced and passed on.
KE_RESULT ReadStore(StoreWork work, void* context);

/// The same with the store's lock held from the reading to the end of `work`, which may change the store and write it:
/// no other process of this library changes the file meanwhile, unless the lock could not be acquired in time.
KE_RESULT UpdateStore(StoreWork work, void* context);

/// Both for a callable `work(IniStore&)`.
template <typename Work>
KE_RESULT ReadStore(Work work) {
  return ReadStore([](void* context, IniStore& store) -> KE_RESULT { return (*static_cast<Work*>(context))(store); },
                   &work);
}
template <typename Work>
KE_RESULT UpdateStore(Work work) {
  return UpdateStore([](void* context, IniStore& store) -> KE_RESULT { return (*static_cast<Work*>(context))(store); },
                     &work);
}

/// Writes the cached store to the file and to the backup, each replaced atomically. For the work of `UpdateStore`. The
/// text is written in plain when it cannot be encrypted. A store that was damaged when it was read never replaces a
/// backup that is complete, unreadable at the moment, or encrypted while there is no crypto module.
///
/// KE_SUCCESS; KE_NOT_CREATED without a cached store; KE_NO_MODULE_DIRECTORY; KE_STORE_UNUSABLE when the file cannot be
/// opened; KE_CRYPTO_FAILED when encryption failed: the text was written in plain and the backup was not refreshed.
/// Exceptions are traced and passed on, before the file was touched.
KE_RESULT WriteIntegraDat();

/// Copies the backup, or the start copy, over the file and reads the store again. KE_STORE_UNUSABLE when the copy
/// fails, else the codes of `ReadStore`.
StoreOrCode RestoreIntegraDat();
StoreOrCode RestoreIntegraDatEx();

/// Copies the file over the start copy when it is complete: readable, with at least four sections. Else the start copy
/// stays as it is, or missing, which is traced under `function` and is a success. KE_STORE_UNUSABLE when the copy
/// fails, KE_NO_MODULE_DIRECTORY.
KE_RESULT KeepAsStartCopy(const char* function);

/// Whether this process has removed the temporary files that killed processes left. Tests reset it.
extern bool g_leftoversRemoved;

/// Destroys the cached store, at process detach.
void DropIntegraStore() noexcept;

}  // namespace store
