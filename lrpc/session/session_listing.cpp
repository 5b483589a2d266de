// The session's listings and searches.

#include <fokrazo/adobject.h>
#include <fokrazo/paged_search.h>
#include <fokrazo/session.h>
#include "lrpc/session/session_exchange.h"

namespace vesk {

namespace {

bool startList(LocalRpcSession& session, DSObjectType kind, bool flag) {
  IPCRequest request(IPC_OP_START_LIST);
  request += kind;
  request += 0;
  request += flag;
  IPCReply reply;
  return ask(session, request, reply) != VR_SUCCESS;
}

bool endList(LocalRpcSession& session, DSObjectType kind) {
  IPCRequest request(IPC_OP_END_LIST);
  request += kind;
  request += 0;
  IPCReply reply;
  return askOnce(session, request, reply) != VR_SUCCESS;
}

// What a search sends, whether its result comes at once or in pages.
struct Search {
  const std::string& s1;
  const std::string& s2;
  const std::string& s3;
  const char** attributes;
  LdapSearchScopeType scope;
  int limit;
  bool flag;

  void make(LocalRpcSession& session, IPC_OPCODE opcode, IPCReply& reply) const {
    IPCRequest request(opcode);
    ((request += s1) += s2) += s3;
    request += attributes;
    ((request += scope) += limit) += flag;
    if (ask(session, request, reply) != VR_SUCCESS) reply.getAndThrowIPCException();
  }
};

}  // namespace

bool LocalRpcSession::startListUser() {
  return startList(*this, DSUser, false);
}
bool LocalRpcSession::startListGroup(bool flag) {
  return startList(*this, DSGroup, flag);
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

ADObjectList LocalRpcSession::ldapSearch(const std::string& s1, const std::string& s2, const std::string& s3,
                                         const char** attributes, LdapSearchScopeType scope, int limit,
                                         bool flag) {
  IPCReply reply;
  Search{s1, s2, s3, attributes, scope, limit, flag}.make(*this, IPC_OP_LDAP_SEARCH, reply);
  return reply.getADObjectList();
}

PagedSearchHandle LocalRpcSession::ldapPagedSearch(const std::string& s1, const std::string& s2,
                                                   const std::string& s3, const char** attributes,
                                                   LdapSearchScopeType scope, int limit, bool flag) {
  IPCReply reply;
  Search{s1, s2, s3, attributes, scope, limit, flag}.make(*this, IPC_OP_LDAP_PAGED_SEARCH, reply);
  return PagedSearchHandle(this, reply.getInt());
}

ADObject LocalRpcSession::ldapFetch(const std::string& s1, const std::string& s2, const char** attributes,
                                    bool flag) {
  IPCRequest request(IPC_OP_LDAP_FETCH);
  (request += s1) += s2;
  request += attributes;
  request += flag;
  IPCReply reply;
  if (ask(*this, request, reply) != VR_SUCCESS) reply.getAndThrowIPCException();
  return reply.getADObject();
}

}  // namespace vesk
