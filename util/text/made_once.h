/// An object that is created on first use and never destroyed. Internal.
#pragma once

#include <atomic>
#include <memory>

#if defined(__has_feature)
#if __has_feature(address_sanitizer)
#include <sanitizer/lsan_interface.h>
#define FOKRAZO_LEAKS_ON_PURPOSE(object) __lsan_ignore_object(object)
#endif
#endif
#ifndef FOKRAZO_LEAKS_ON_PURPOSE
#define FOKRAZO_LEAKS_ON_PURPOSE(object) static_cast<void>(object)
#endif

namespace vesk {

/// A function-local static needs a guard, and a forked child would wait forever for a guard held by another
/// thread of its parent. This class has no guard: if two threads race, both create an object and one is
/// deleted, so creation must have no side effects. Thread-safe. Constant-initialized: costs nothing at load
/// time.
template <class T>
class MadeOnce {
 public:
  constexpr MadeOnce() = default;
  MadeOnce(const MadeOnce&) = delete;
  MadeOnce& operator=(const MadeOnce&) = delete;

  /// The object. Created, if necessary, with `make`, which returns a std::unique_ptr<T>.
  template <class Make>
  T& get(Make make) {
    if (T* made = m_object.load(std::memory_order_acquire)) return *made;
    std::unique_ptr<T> own = make();
    T* first = nullptr;
    if (m_object.compare_exchange_strong(first, own.get(), std::memory_order_acq_rel)) return *own.release();
    return *first;
  }
  T& get() {
    return get([] { return std::make_unique<T>(); });
  }

  /// The object, or null if it has not been created.
  T* ifMade() const { return m_object.load(std::memory_order_acquire); }
  /// Drops the object without destroying it; the next get() creates another. For a forked child, where
  /// another thread of the parent may have left the object half changed.
  void abandon() {
    T* const abandoned = m_object.exchange(nullptr, std::memory_order_acq_rel);
    if (abandoned) FOKRAZO_LEAKS_ON_PURPOSE(abandoned);
  }

 private:
  std::atomic<T*> m_object{nullptr};
};

}  // namespace vesk
