#include "frame/crypto.h"

#include <atomic>

#include "frame/sibling_binder.h"
#include "win/critical_section.h"
#include "win/owner.h"

namespace frame {
namespace {

#define KE_ROW(name, presence) KE_BOUND_NAME(CryptoTable, name, presence),
constexpr BoundName kNames[] = {KE_CRYPTO_FUNCTIONS(KE_ROW, KE_ROW)};
#undef KE_ROW

// Guards the binding. The table is published complete, by the pointer: a thread sees no function or all of them.
win::CriticalSection g_lock;
CryptoTable g_table{};
constinit std::atomic<const CryptoTable*> g_published{nullptr};

// Only ever a module that lacked a name: of no use, and freed by the next attempt. A complete one is never freed, and
// therefore held by no owner.
win::ModuleHandle g_module;

}  // namespace

const CryptoTable* Crypto() noexcept { return g_published.load(std::memory_order_acquire); }

bool LoadCrypto(const char* folder) noexcept {
  if (Crypto()) return true;
  SiblingSearch search(__func__, "ApiCr.dll", kNames);
  const win::Holding hold(g_lock);
  if (Crypto()) return true;
  if (!search.Bind(folder, g_module, &g_table)) {
    g_table = {};
    return false;
  }
  g_module.Release();
  g_published.store(&g_table, std::memory_order_release);
  return true;
}

}  // namespace frame
