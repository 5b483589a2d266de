// Lookups of one directory object.

#include <boost/make_shared.hpp>

#include <fokrazo/adobject.h>
#include <fokrazo/attrnames.h>
#include <fokrazo/session.h>
#include <fokrazo/unixviews.h>
#include "lrpc/session/lookup.h"
#include "util/error/throw.h"

namespace vesk {

namespace {

constexpr char kSource[] = "lrpc/session";
constexpr char kUserNotFound[] = "User not found";
constexpr char kGroupNotFound[] = "Group not found";

[[noreturn]] void failNotFound(const char* text) {
  FOKRAZO_THROW(NotFoundException, "NotFoundException", 0, "%s", text);
}

ADObject objectById(LocalRpcSession& session, DSObjectType type, int id, int flags) {
  Lookup lookup(session, IPC_OP_GET_OBJECT, type, UnixObjects, KeyId, id, flags);
  return lookup.ask() == VR_SUCCESS ? lookup.reply.getADObject() : ADObject();
}

// By SID or GUID; any failure throws `notFound`.
template <class Key>
ADObject objectByKey(LocalRpcSession& session, DSObjectType type, KeyKind keyKind, const Key& key, int flags,
                     const char* notFound) {
  Lookup lookup(session, IPC_OP_GET_OBJECT, type, scopeOf(flags), keyKind, key, flags);
  if (lookup.ask() != VR_SUCCESS) failNotFound(notFound);
  return lookup.reply.getADObject();
}

// For listings.
ADObject objectByName2(LocalRpcSession& session, DSObjectType type, const std::string& name, int flags,
                       const char* notFound) {
  Lookup lookup(session, IPC_OP_GET_OBJECT2, type, scopeOf(flags), KeyName, name, flags);
  if (lookup.askByName(name) == VR_SUCCESS) return lookup.reply.getADObject();
  if (lookup.reply.hasMore()) lookup.reply.getAndThrowIPCException();
  if (session.statusCode() == END_OF_LIST)
    FOKRAZO_THROW(EndOfListException, "EndOfListException", 0, "End of list");
  failNotFound(notFound);
}

template <class View>
boost::shared_ptr<View> viewOf(const ADObject& object, const char* notFound) {
  if (object.isEmpty()) failNotFound(notFound);
  return boost::make_shared<View>(object);
}

}  // namespace

ADObject LocalRpcSession::getObject(const std::string& name, DSObjectType type, int flags) {
  Lookup lookup(*this, IPC_OP_GET_OBJECT, type, scopeOf(flags), KeyName, name, flags);
  if (lookup.askByName(name) == VR_SUCCESS) return lookup.reply.getADObject();
  if (lookup.reply.hasMore()) lookup.reply.getAndThrowIPCException();
  return ADObject();
}

ADObject LocalRpcSession::getUserObj(const std::string& name, int flags) {
  return getObject(name, DSUser, flags);
}

ADObject LocalRpcSession::getGroupObj(const std::string& name, int flags) {
  return getObject(name, DSGroup, flags);
}

ADObject LocalRpcSession::getUserObj(int uid, int flags) {
  return objectById(*this, DSUser, uid, flags);
}

ADObject LocalRpcSession::getGroupObj(int gid, int flags) {
  return objectById(*this, DSGroup, gid, flags);
}

boost::shared_ptr<User> LocalRpcSession::getUser(const std::string& name, int flags) {
  return viewOf<User>(getUserObj(name, flags), kUserNotFound);
}

boost::shared_ptr<Group> LocalRpcSession::getGroup(const std::string& name, int flags) {
  return viewOf<Group>(getGroupObj(name, flags), kGroupNotFound);
}

boost::shared_ptr<User> LocalRpcSession::getUser(int uid, int flags) {
  return viewOf<User>(getUserObj(uid, flags), kUserNotFound);
}

boost::shared_ptr<Group> LocalRpcSession::getGroup(int gid, int flags) {
  return viewOf<Group>(getGroupObj(gid, flags), kGroupNotFound);
}

boost::shared_ptr<User> LocalRpcSession::getUser(const SID& sid, int flags) {
  return boost::make_shared<User>(objectByKey(*this, DSUser, KeySid, sid, flags, kUserNotFound));
}

boost::shared_ptr<Group> LocalRpcSession::getGroup(const SID& sid, int flags) {
  return boost::make_shared<Group>(objectByKey(*this, DSGroup, KeySid, sid, flags, "Object not found"));
}

boost::shared_ptr<User> LocalRpcSession::getUser(const Guid& guid, int flags) {
  return boost::make_shared<User>(objectByKey(*this, DSUser, KeyGuid, guid, flags, kUserNotFound));
}

boost::shared_ptr<Group> LocalRpcSession::getGroup(const Guid& guid, int flags) {
  return boost::make_shared<Group>(objectByKey(*this, DSGroup, KeyGuid, guid, flags, kGroupNotFound));
}

boost::shared_ptr<VeskObj> LocalRpcSession::getObject(const SID& sid, int flags) {
  ADObject object = objectByKey(*this, DSAny, KeySid, sid, flags, kGroupNotFound);
  const std::string category = object.category();
  if (category == AD_USER_CATEGORY || category == AD_COMPUTER_CATEGORY)
    return boost::make_shared<User>(object);
  if (category == AD_GROUP_CATEGORY) return boost::make_shared<Group>(object);
  failNotFound("SID is not a user or group");
}

boost::shared_ptr<User> LocalRpcSession::getUser2(const std::string& name, int flags) {
  return boost::make_shared<User>(objectByName2(*this, DSUser, name, flags, kUserNotFound));
}

boost::shared_ptr<Group> LocalRpcSession::getGroup2(const std::string& name, int flags) {
  return boost::make_shared<Group>(objectByName2(*this, DSGroup, name, flags, kGroupNotFound));
}

boost::shared_ptr<User> LocalRpcSession::getShadow(const std::string& name, int flags) {
  Lookup lookup(*this, IPC_OP_GET_OBJECT, DSShadow, UnixObjects, KeyName, name, flags & ~GROUP_MEMBERSHIP);
  if (lookup.askByName(name) != VR_SUCCESS) failNotFound(kUserNotFound);
  return boost::make_shared<User>(lookup.reply.getADObject());
}

}  // namespace vesk
