#include "util/setting/setting_internal.h"

#include <new>

#include <fokrazo/properties.h>
#include "util/text/made_once.h"
#include "util/thread/fork_locks.h"

namespace vesk {
namespace {

MadeOnce<SettingStore> gStore;

// For a child that was forked while the store was being changed. Keeps the directory, which is set before
// anything else. There is no other thread.
void abandonSettings(bool intact) FOKRAZO_NO_THREAD_SAFETY_ANALYSIS {
  SettingStore* const store = gStore.ifMade();
  if (intact || store == nullptr) return;
  new (&store->values) decltype(store->values);
  new (&store->deferred) decltype(store->deferred);
}

SettingStore& globalStore() {
  SettingStore& store = gStore.get();
  heldOverFork(ForkOrder::Settings, store.mutex);
  inForkedChild(ForkOrder::Settings, abandonSettings);
  return store;
}

}  // namespace

Mutex& settingsMutex() {
  return globalStore().mutex;
}

thread_local int LockedStore::Hold::gHolds = 0;

LockedStore::Hold::Hold() {
  if (gHolds == 0) Props(false, false);
  ++gHolds;
}

// The members take and release the mutex, which the compiler cannot follow.
LockedStore::LockedStore() FOKRAZO_NO_THREAD_SAFETY_ANALYSIS : m_store(globalStore()),
                                                               m_lock(m_store.mutex) {}
LockedStore::~LockedStore() noexcept(false) FOKRAZO_NO_THREAD_SAFETY_ANALYSIS = default;

}  // namespace vesk
