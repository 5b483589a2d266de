#include "standin/handlers.h"

#include <optional>

#include <fokrazo/adserializer.h>
#include <fokrazo/guid.h>
#include <fokrazo/session_types.h>
#include "standin/call.h"
#include "standin/unix_profile.h"

namespace standin {
namespace {

/// A lookup without its key.
struct Lookup {
  int type;
  int scope;
  int keyKind;
};

Lookup readLookup(const vesk::IPCMessage& request) {
  Lookup lookup;
  lookup.type = request.getInt();
  lookup.scope = request.getInt();
  lookup.keyKind = request.getInt();
  // Whether to ask the directory first, and whether the membership is wanted: the stand-in has no cache to
  // pass by, and always tells the membership.
  request.getInt();
  request.getInt();
  return lookup;
}

std::optional<Family> familyOf(int type) {
  switch (type) {
    case vesk::DSUser:
    case vesk::DSShadow:
      return Family::Accounts;
    case vesk::DSGroup:
      return Family::Groups;
    case vesk::DSAny:
      return Family::Both;
  }
  return std::nullopt;
}

bool isUnixOnly(const Lookup& lookup) {
  return lookup.scope == vesk::UnixObjects || lookup.type == vesk::DSShadow;
}

/// Whether an entry that a key led to is one of those that were asked for.
bool fits(const Directory& directory, EntryId id, const Lookup& lookup, Family family) {
  if (lookup.type != vesk::DSAny && !directory.isOf(id, family)) return false;
  return !isUnixOnly(lookup) || unixId(directory[id]);
}

EntryId findByName(const Directory& directory, const std::string& name, int type, Family family) {
  EntryId id = directory.byName(name, family);
  return id == kNoEntry && type == vesk::DSAny ? directory.byDn(name) : id;
}

/// Reads the key as its kind says and looks it up.
EntryId findByKey(Call& call, const Lookup& lookup, Family family) {
  const Directory& directory = call.service.directory;
  switch (lookup.keyKind) {
    case vesk::KeyGuid: {
      vesk::Guid guid = call.request.getGuid();
      return directory.byGuid({reinterpret_cast<const char*>(guid.bytes()), vesk::Guid::kSize});
    }
    case vesk::KeyId:
      return directory.byUnixId(static_cast<uint32_t>(call.request.getInt()), family);
    case vesk::KeySid:
      return directory.bySid(call.request.getSid().bytes());
  }
  return kNoEntry;
}

/// Whether an entry belongs into a listing. Computers have accounts, but nobody wants them among the users.
bool isListed(const Directory& directory, EntryId id, const Lookup& lookup) {
  EntryKind kind = lookup.type == vesk::DSGroup ? EntryKind::Group : EntryKind::User;
  return directory.kind(id) == kind && (!isUnixOnly(lookup) || unixId(directory[id]));
}

void nextOfListing(Call& call, const Lookup& lookup) {
  auto listing = call.client.listings.find(lookup.type);
  if (listing == call.client.listings.end())
    return call.fail(vesk::VR_BAD_PARAMETER, "No listing of this kind is open");
  const Directory& directory = call.service.directory;
  for (EntryId& next = listing->second; next < directory.size();) {
    EntryId id = next++;
    if (!isListed(directory, id, lookup)) continue;
    call.succeed() += call.service.objects.blob(id);
    return;
  }
  call.refuse(vesk::VR_NO_MORE, "End of list", vesk::END_OF_LIST);
}

void answerWith(Call& call, EntryId id, const Lookup& lookup, Family family) {
  if (id == kNoEntry || !fits(call.service.directory, id, lookup, family))
    return call.answer(vesk::VR_NOT_FOUND);
  call.succeed() += call.service.objects.blob(id);
}

bool isListable(int type) {
  return type == vesk::DSUser || type == vesk::DSGroup || type == vesk::DSShadow;
}

}  // namespace

void handlers::getObject(Call& call) {
  Lookup lookup = readLookup(call.request);
  std::optional<Family> family = familyOf(lookup.type);
  if (!family || lookup.keyKind < vesk::KeyName || lookup.keyKind > vesk::KeySid)
    return call.answer(vesk::VR_BAD_PARAMETER);
  if (lookup.keyKind != vesk::KeyName)
    return answerWith(call, findByKey(call, lookup, *family), lookup, *family);
  std::string name = call.request.getString();
  if (name == vesk::NEXT_ENTRY) return nextOfListing(call, lookup);
  answerWith(call, findByName(call.service.directory, name, lookup.type, *family), lookup, *family);
}

void handlers::startList(Call& call) {
  int type = call.request.getInt();
  if (!isListable(type)) return call.answer(vesk::VR_BAD_PARAMETER);
  call.client.listings[type] = 0;
  call.succeed();
}

void handlers::endList(Call& call) {
  int type = call.request.getInt();
  if (!isListable(type)) return call.answer(vesk::VR_BAD_PARAMETER);
  call.client.listings.erase(type);
  call.succeed();
}

}  // namespace standin
