/// The outcome of a call, as one line for comparisons.
#pragma once

#include <string>
#include <type_traits>

#include <fokrazo/adobject.h>
#include <fokrazo/attrnames.h>
#include <fokrazo/paged_search.h>
#include <fokrazo/session.h>
#include <fokrazo/unixviews.h>
#include "tests/support/thrown.h"

namespace testsupport {

/// A number, a text, an object or view by its DN, a list by the number of its objects and each of them.
template <class Value>
std::string text(const Value& value) {
  if constexpr (std::is_same_v<Value, bool>) {
    return value ? "true" : "false";
  } else if constexpr (std::is_arithmetic_v<Value> || std::is_enum_v<Value>) {
    return std::to_string(value);
  } else if constexpr (std::is_same_v<Value, vesk::ADObject>) {
    return value.isEmpty() ? "empty" : vesk::ADObject(value)[AD_DN].front();
  } else if constexpr (std::is_same_v<Value, vesk::ADObjectList>) {
    std::string all = std::to_string(value.size());
    for (const vesk::ADObject& object : value) all += " " + text(object);
    return all;
  } else if constexpr (std::is_same_v<Value, vesk::PagedSearchHandle>) {
    return "handle";
  } else if constexpr (std::is_convertible_v<Value, std::string>) {
    return value;
  } else {
    return value->getDN();
  }
}

/// What it returns or throws, and then the out arguments.
template <class Action, class... Out>
std::string outcomeOf(Action action, const Out&... out) {
  std::string value;
  const std::string thrown = thrownBy([&] { value = text(action()); });
  return ((thrown == "nothing" ? value : thrown) + ... + (" " + text(out)));
}

}  // namespace testsupport
