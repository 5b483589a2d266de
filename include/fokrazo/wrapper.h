/// Standard containers with a virtual destructor or with a lock.
#pragma once

#include <functional>
#include <map>
#include <memory>
#include <utility>

#include <fokrazo/mutex.h>

namespace vesk {

namespace Wrapper {

/// The common base of the containers.
class Base {};

/// The policy of a container with a lock: see Check<Locked, C>.
struct Locked {};

template <class Policy, class C>
class Check;

/// `C` with a mutex, which callers hold during each access.
template <class C>
class Check<Locked, C> : public C {
 public:
  /// The mutex that guards the container.
  Mutex& mutex() FOKRAZO_RETURN_CAPABILITY(m_mutex) { return m_mutex; }

 private:
  Mutex m_mutex;
};

}  // namespace Wrapper

/// The standard container `T`, which may be deleted through a pointer to this class.
template <class T>
class Container : public T, public Wrapper::Base {
 public:
  using T::T;
  /// As in `T`, whose moves may throw. NOLINTBEGIN(performance-noexcept-move-constructor)
  Container() = default;
  Container(const Container&) = default;
  Container(Container&&) = default;
  Container& operator=(const Container&) = default;
  Container& operator=(Container&&) = default;
  // NOLINTEND(performance-noexcept-move-constructor)
  virtual ~Container() = default;
};

template <class K, class V, class Compare = std::less<K>,
          class Allocator = std::allocator<std::pair<const K, V>>>
class Map : public Container<std::map<K, V, Compare, Allocator>> {
 public:
  using Container<std::map<K, V, Compare, Allocator>>::Container;
};

}  // namespace vesk
