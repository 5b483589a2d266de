/// An object that is made when it is first asked for, and never destroyed. Internal.
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

/// A static inside a function would need a guard, and a forked child would wait for ever for a guard that
/// another thread of its parent held. Here there is no guard: if two threads come first at the same time,
/// both make an object, and one of the two is deleted. So making one must have no other effect.
/// Thread-safety: any thread, at any time. Constant-initialised: costs nothing at load time.
template <class T>
class MadeOnce {
 public:
  constexpr MadeOnce() = default;
  MadeOnce(const MadeOnce&) = delete;
  MadeOnce& operator=(const MadeOnce&) = delete;

  /// The object, made with `make` if necessary: a function that returns a std::unique_ptr<T>.
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

  /// The object if it has been made, else null.
  T* ifMade() const { return m_object.load(std::memory_order_acquire); }
  /// Lets go of the object without destroying it; the next get() makes another one. For the child of a fork,
  /// in which another thread of the parent may have left the object half changed.
  void abandon() {
    T* const abandoned = m_object.exchange(nullptr, std::memory_order_acq_rel);
    if (abandoned) FOKRAZO_LEAKS_ON_PURPOSE(abandoned);
  }

 private:
  std::atomic<T*> m_object{nullptr};
};

}  // namespace vesk
