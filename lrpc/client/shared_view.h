/// Users and groups that any thread may read. Internal.
#pragma once

#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>
#include <utility>

#include <fokrazo/adobject.h>
#include <fokrazo/adserializer.h>
#include <fokrazo/unixviews.h>

namespace vesk {

/// A separate object with the content of `object`, whose blob is only read.
inline ADObject separateObject(const ADObject& object) {
  const ADSerializer* const blob = object.serializer();
  if (!blob) return object.clone();
  std::unique_ptr<char, decltype(&free)> copy(static_cast<char*>(malloc(blob->size())), free);
  if (!copy) throw std::bad_alloc();
  memcpy(copy.get(), blob->data(), blob->size());
  ADObject separate(blob->size(), copy.get(), true, nullptr);
  static_cast<void>(copy.release());
  return separate;
}

/// A view whose object stays its own: getObject returns a new one each time, since reading an object writes.
template <class View>
class SharedView final : public View {
 public:
  using View::View;
  ADObject getObject() const override { return separateObject(View::getObject()); }
};

}  // namespace vesk
