/// The objects of a listing or a search, one after the other.
#pragma once

#include <cstddef>
#include <iterator>
#include <memory>

#include <fokrazo/adobject.h>
#include <fokrazo/call_status.h>
#include <fokrazo/export.h>
#include <fokrazo/unixviews.h>

namespace vesk {

/// Where the objects of a range come from. Internal.
class ObjectSource;

/// Made by Client. A range that ends early, for whatever reason, never looks complete:
///
///   for (const User& user : client.users()) …     // throws CallException if the listing fails
///
///   UserRange users = client.users();             // or without exceptions
///   while (const User* user = users.next()) …
///   if (!users.status()) …
///
/// It holds one of the client's connections from the first object to its end, and closes what it opened in
/// the daemon when it is destroyed early. The client must outlive it. Thread-safety: one thread at a time.
/// Fork: a range that the child inherits ends there with a failure.
template <class T>
class ObjectRange {
 public:
  /// For Client, which makes all ranges. Takes the source over.
  FOKRAZO_API explicit ObjectRange(std::unique_ptr<ObjectSource> source);
  FOKRAZO_API ~ObjectRange();
  /// The range that is moved from must not be used again.
  FOKRAZO_API ObjectRange(ObjectRange&&) noexcept;
  FOKRAZO_API ObjectRange& operator=(ObjectRange&&) noexcept;

  /// The next object, which is valid until the next call; null at the end and after a failure.
  FOKRAZO_API T* next();
  /// Success unless something failed; reaching the end is no failure.
  const CallStatus& status() const noexcept { return m_status; }
  /// The number of objects so far.
  size_t count() const noexcept { return m_count; }

  /// For range-for; there is one pass.
  class iterator {
   public:
    /// As the standard library asks of an input iterator.
    using iterator_category = std::input_iterator_tag;
    using value_type = T;
    using difference_type = std::ptrdiff_t;
    using pointer = T*;
    using reference = T&;

    /// The end of every range.
    iterator() = default;
    /// Fetches the first object. The range must outlive the iterator.
    explicit iterator(ObjectRange& range) : m_range(&range) { ++*this; }
    /// The current object, valid until the next increment.
    T& operator*() const { return *m_object; }
    T* operator->() const { return m_object; }
    /// Fetches the next object. @throws CallException the listing fails
    iterator& operator++() {
      m_object = m_range->next();
      m_range->status().throwIfFailed();
      return *this;
    }
    /// Whether both are at the same object, or at the end.
    bool operator==(const iterator& other) const { return m_object == other.m_object; }
    bool operator!=(const iterator& other) const { return m_object != other.m_object; }

   private:
    ObjectRange* m_range = nullptr;
    T* m_object = nullptr;
  };

  /// @throws CallException the listing fails, here or later
  iterator begin() { return iterator(*this); }
  iterator end() { return iterator(); }

 private:
  std::unique_ptr<ObjectSource> m_source;
  std::unique_ptr<T> m_object;
  CallStatus m_status;
  size_t m_count = 0;
};

/// The ranges that Client returns.
using UserRange = ObjectRange<const User>;
using GroupRange = ObjectRange<const Group>;
using SearchRange = ObjectRange<ADObject>;

}  // namespace vesk
