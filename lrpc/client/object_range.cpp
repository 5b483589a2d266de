#include <fokrazo/object_range.h>

#include <new>

#include "lrpc/client/object_source.h"
#include "lrpc/client/shared_view.h"

namespace vesk {

namespace {

template <class T>
struct Element {
  static std::unique_ptr<T> of(const ADObject& object) {
    return std::make_unique<SharedView<std::remove_const_t<T>>>(object);
  }
};

template <>
struct Element<ADObject> {
  static std::unique_ptr<ADObject> of(const ADObject& object) { return std::make_unique<ADObject>(object); }
};

}  // namespace

template <class T>
ObjectRange<T>::ObjectRange(std::unique_ptr<ObjectSource> source) : m_source(std::move(source)) {}
template <class T>
ObjectRange<T>::~ObjectRange() = default;
template <class T>
ObjectRange<T>::ObjectRange(ObjectRange&&) noexcept = default;
template <class T>
ObjectRange<T>& ObjectRange<T>::operator=(ObjectRange&&) noexcept = default;

template <class T>
T* ObjectRange<T>::next() {
  m_object.reset();
  if (!m_source) return nullptr;
  ADObject object;
  m_status = m_source->next(object);
  try {
    if (m_status.ok() && !object.isEmpty()) m_object = Element<T>::of(object);
  } catch (const VESKException& error) {  // it lacks an attribute that every object has
    m_status.outcome = CallOutcome::MalformedReply;
    m_status.text = error.what();
  } catch (const std::bad_alloc&) {
    m_status.outcome = CallOutcome::LocalFailure;
  }
  if (m_object) {
    ++m_count;
  } else {
    m_source.reset();
  }
  return m_object.get();
}

template class ObjectRange<const User>;
template class ObjectRange<const Group>;
template class ObjectRange<ADObject>;

}  // namespace vesk
