#include "util/setting/setting_store.h"

#include <new>

#include <fokrazo/properties.h>
#include "util/text/made_once.h"
#include "util/thread/fork_locks.h"

namespace vesk {
namespace {

MadeOnce<SettingStore> gStore;

// For a child that was forked while the store was being changed. The directory stays: it is set before
// anything else happens. No other thread is left to guard against.
void abandonSettings(bool intact) FOKRAZO_NO_THREAD_SAFETY_ANALYSIS {
  SettingStore* const store = gStore.ifMade();
  if (intact || store == nullptr) return;
  new (&store->values) decltype(store->values);
  new (&store->waiting) decltype(store->waiting);
}

SettingStore& madeStore() {
  SettingStore& store = gStore.get();
  heldOverFork(ForkOrder::Settings, store.mutex);
  inForkedChild(ForkOrder::Settings, abandonSettings);
  return store;
}

}  // namespace

Mutex& settingsMutex() {
  return madeStore().mutex;
}

thread_local int LockedStore::Hold::gHolds = 0;

LockedStore::Hold::Hold() {
  if (gHolds == 0) Props(false, false);
  ++gHolds;
}

// The members take and release the mutex, which the compiler does not see.
LockedStore::LockedStore() FOKRAZO_NO_THREAD_SAFETY_ANALYSIS : m_store(madeStore()), m_lock(m_store.mutex) {}
LockedStore::~LockedStore() noexcept(false) FOKRAZO_NO_THREAD_SAFETY_ANALYSIS = default;

}  // namespace vesk
