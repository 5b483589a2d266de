/// Looking objects up for a client. Internal.
#pragma once

#include <functional>
#include <new>
#include <type_traits>
#include <utility>
#include <vector>

#include <boost/make_shared.hpp>

#include <fokrazo/call_result.h>
#include <fokrazo/client_options.h>
#include <fokrazo/object_key.h>
#include <fokrazo/session_types.h>
#include <fokrazo/unixviews.h>
#include "lrpc/client/client_call.h"
#include "lrpc/client/shared_view.h"

namespace vesk {

/// The kind of object that a view shows.
template <class View>
struct TypeOf;
template <>
struct TypeOf<const User> {
  static constexpr DSObjectType kType = DSUser;
};
template <>
struct TypeOf<const Group> {
  static constexpr DSObjectType kType = DSGroup;
};

/// Whether the daemon would misread the key: an empty name, NEXT_ENTRY, or a null SID.
bool isNoKey(const ObjectKey& key);
/// The status of a lookup with such a key.
CallStatus notFoundStatus(const char* operation);

/// What a lookup is for. The flags are those of the session's lookups.
struct Wanted {
  Operation operation;
  DSObjectType type;
  int flags;
};

/// Looks up one object. The object of a status that is a success is not empty.
CallStatus findObject(ClientCore& core, const Wanted& wanted, const ObjectKey& key,
                      const CallOptions& options, Deadline deadline, ADObject& object);

/// Called with each object, in key order.
using TakeObject = std::function<void(size_t index, const CallStatus& status, const ADObject& object)>;
/// Looks up many objects, over several connections at a time, within one deadline.
void findObjects(ClientCore& core, const Wanted& wanted, const std::vector<ObjectKey>& keys,
                 const CallOptions& options, const TakeObject& take);

/// The view of an object that was found.
template <class View>
CallResult<View> viewOf(CallStatus status, const ADObject& object) {
  if (!status.ok()) return CallResult<View>(std::move(status));
  try {
    return CallResult<View>(boost::make_shared<SharedView<std::remove_const_t<View>>>(object),
                            std::move(status));
  } catch (const VESKException& error) {  // it lacks an attribute that every object has
    status.outcome = CallOutcome::MalformedReply;
    status.text = error.what();
  } catch (const std::bad_alloc&) {
    status.outcome = CallOutcome::LocalFailure;
  }
  return CallResult<View>(std::move(status));
}

}  // namespace vesk
