#include "daemon/handlers.h"

#include <optional>

#include "daemon/call.h"

namespace brondalt {
namespace {

/// The fields of a lookup before its key. Numbers are not yet checked.
struct Lookup {
  int type;
  int scope;
  int keyKind;
  int isFresh;
  int withMembership;
};

Lookup readLookup(handlers::Request request) {
  // Braces evaluate in order, so the fields are read as they are declared.
  return {request.getInt(), request.getInt(), request.getInt(), request.getInt(), request.getInt()};
}

bool isListable(int type) {
  return type == vesk::DSUser || type == vesk::DSGroup || type == vesk::DSShadow;
}

bool isKnown(const Lookup& lookup) {
  return (isListable(lookup.type) || lookup.type == vesk::DSAny) && lookup.keyKind >= vesk::KeyName &&
         lookup.keyKind <= vesk::KeySid;
}

Selection selectionOf(const Lookup& lookup) {
  const bool isUnixOnly = lookup.scope == vesk::UnixObjects || lookup.type == vesk::DSShadow;
  return {static_cast<vesk::DSObjectType>(lookup.type), isUnixOnly, lookup.isFresh != 0,
          lookup.withMembership != 0};
}

/// Requires: a known kind.
LookupKey readKey(handlers::Request request, int kind) {
  switch (kind) {
    case vesk::KeyGuid:
      return request.getGuid();
    case vesk::KeyId:
      return static_cast<uint32_t>(request.getInt());
    case vesk::KeySid:
      return request.getSid();
    default:
      return request.getString();
  }
}

void nextOfListing(Call& call, const Selection& selection) {
  const auto found = call.client().listings.find(selection.type);
  if (found == call.client().listings.end()) {
    call.throwFailures();
    return call.complete({vesk::VR_BAD_PARAMETER, "No listing of this kind is open"});
  }
  const std::shared_ptr<Listing> listing = found->second;  // a copy: the completion may drop the client's
  call.onTimeOut([type = selection.type](Client& client) { client.listings.erase(type); });
  listing->next(selection, [self = call.shared_from_this()](Answer<Object> answer) {
    if (answer && !*answer) return self->endListing();
    self->reply<Object>()(std::move(answer));
  });
}

}  // namespace

void handlers::getObject(Call& call, Request request) {
  const Lookup lookup = readLookup(request);
  if (!isKnown(lookup)) return call.complete(vesk::VR_BAD_PARAMETER);
  const Selection selection = selectionOf(lookup);
  const LookupKey key = readKey(request, lookup.keyKind);
  const auto* name = std::get_if<std::string>(&key);
  if (name && *name == vesk::NEXT_ENTRY) return nextOfListing(call, selection);
  call.backend().find(call.caller(), selection, key, call.reply<Object>());
}

void handlers::startList(Call& call, Request request) {
  const int number = request.getInt();
  if (!isListable(number)) return call.complete(vesk::VR_BAD_PARAMETER);
  const auto type = static_cast<vesk::DSObjectType>(number);
  call.backend().openListing(call.caller(), type,
                             [self = call.shared_from_this(), type](Answer<std::unique_ptr<Listing>> answer) {
                               if (self->isComplete()) return;  // timed out
                               if (answer) self->client().listings[type] = std::move(*answer);
                               self->complete(answer.status());
                             });
}

void handlers::endList(Call& call, Request request) {
  const int number = request.getInt();
  if (!isListable(number)) return call.complete(vesk::VR_BAD_PARAMETER);
  call.client().listings.erase(static_cast<vesk::DSObjectType>(number));
  call.complete(vesk::VR_SUCCESS);
}

}  // namespace brondalt
