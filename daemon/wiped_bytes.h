/// Bytes that may hold secrets.
#pragma once

#include <cstddef>
#include <cstring>
#include <memory>
#include <vector>

namespace brondalt {

/// Overwrites memory before it frees it.
template <class T>
struct WipingAllocator : std::allocator<T> {
  WipingAllocator() = default;
  template <class U>
  WipingAllocator(const WipingAllocator<U>&) {}
  template <class U>
  struct rebind {
    using other = WipingAllocator<U>;
  };
  void deallocate(T* memory, size_t count) {
    explicit_bzero(static_cast<void*>(memory), count * sizeof(T));
    std::allocator<T>::deallocate(memory, count);
  }
};

using WipedBytes = std::vector<char, WipingAllocator<char>>;

}  // namespace brondalt
