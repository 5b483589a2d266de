/// The outcome of a call, as one line for comparisons.
#pragma once

#include <string>

#include <fokrazo/adobject.h>
#include <fokrazo/attrnames.h>
#include <fokrazo/paged_search.h>
#include <fokrazo/session.h>
#include <fokrazo/unixviews.h>
#include "tests/support/thrown.h"

namespace testsupport {

inline std::string text(const std::string& value) {
  return value;
}
inline std::string text(bool value) {
  return value ? "true" : "false";
}
inline std::string text(int value) {
  return std::to_string(value);
}
inline std::string text(size_t value) {
  return std::to_string(value);
}
/// An object by its DN, a list by the number of its objects and each of them.
inline std::string text(vesk::ADObject object) {
  return object.isEmpty() ? "empty" : std::string(object[AD_DN]);
}
inline std::string text(const vesk::ADObjectList& list) {
  std::string all = std::to_string(list.size());
  for (const vesk::ADObject& object : list) all += " " + text(object);
  return all;
}
template <class View>
std::string text(const boost::shared_ptr<View>& view) {
  return view->getDN();
}
inline std::string text(const vesk::PagedSearchHandle&) {
  return "handle";
}

/// What it returns or throws, and then the out arguments.
template <class Action, class... Out>
std::string outcomeOf(Action action, const Out&... out) {
  std::string value;
  const std::string thrown = thrownBy([&] { value = text(action()); });
  return ((thrown == "nothing" ? value : thrown) + ... + (" " + text(out)));
}

}  // namespace testsupport
