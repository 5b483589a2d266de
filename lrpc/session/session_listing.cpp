// Listings and searches.

#include <fokrazo/adobject.h>
#include <fokrazo/paged_search.h>
#include <fokrazo/session.h>
#include "lrpc/session/exchange.h"

namespace vesk {

namespace {

// The second field of both requests, always 0.
constexpr int kUnused = 0;

bool startList(LocalRpcSession& session, DSObjectType kind, bool daemonFlag) {
  return Exchange(session, IPC_OP_START_LIST, kind, kUnused, daemonFlag).ask() != VR_SUCCESS;
}

bool endList(LocalRpcSession& session, DSObjectType kind) {
  return Exchange(session, IPC_OP_END_LIST, kind, kUnused).askOnce() != VR_SUCCESS;
}

// After a failure the reply contains the daemon's exception.
IPCReply& replyOrThrow(Exchange& exchange) {
  if (exchange.ask() != VR_SUCCESS) exchange.reply.getAndThrowIPCException();
  return exchange.reply;
}

}  // namespace

bool LocalRpcSession::startListUser() {
  return startList(*this, DSUser, false);
}
bool LocalRpcSession::startListGroup(bool daemonFlag) {
  return startList(*this, DSGroup, daemonFlag);
}
bool LocalRpcSession::startListShadow() {
  return startList(*this, DSShadow, false);
}
bool LocalRpcSession::endListUser() {
  return endList(*this, DSUser);
}
bool LocalRpcSession::endListGroup() {
  return endList(*this, DSGroup);
}
bool LocalRpcSession::endListShadow() {
  return endList(*this, DSShadow);
}

ADObjectList LocalRpcSession::ldapSearch(const std::string& domain, const std::string& baseDn,
                                         const std::string& filter, const char** attributes,
                                         LdapSearchScopeType scope, int limit, bool daemonFlag) {
  Exchange exchange(*this, IPC_OP_LDAP_SEARCH, domain, baseDn, filter, attributes, scope, limit, daemonFlag);
  return replyOrThrow(exchange).getADObjectList();
}

PagedSearchHandle LocalRpcSession::ldapPagedSearch(const std::string& domain, const std::string& baseDn,
                                                   const std::string& filter, const char** attributes,
                                                   LdapSearchScopeType scope, int pageSize, bool daemonFlag) {
  Exchange exchange(*this, IPC_OP_LDAP_PAGED_SEARCH, domain, baseDn, filter, attributes, scope, pageSize,
                    daemonFlag);
  return PagedSearchHandle(this, replyOrThrow(exchange).getInt());
}

ADObject LocalRpcSession::ldapFetch(const std::string& domain, const std::string& dn, const char** attributes,
                                    bool daemonFlag) {
  Exchange exchange(*this, IPC_OP_LDAP_FETCH, domain, dn, attributes, daemonFlag);
  return replyOrThrow(exchange).getADObject();
}

}  // namespace vesk
