/// The operations of the protocol, one for each opcode that a session sends. A handler reads the fields of
/// the request and passes them to the back end. The comments list the fields of the request; then, after the
/// semicolon, those that follow the reply's status block.
#pragma once

#include <fokrazo/ipcmessage.h>

namespace brondalt {

class Call;

namespace handlers {

using Request = const vesk::IPCMessage&;

// lookups.cpp. "@#" instead of a name means the next entry of the open listing of that object type.
/// int type, int scope, int key kind, int fresh, int membership, key; object.
void getObject(Call& call, Request request);
/// int type, int, int; nothing.
void startList(Call& call, Request request);
/// int type, int; nothing.
void endList(Call& call, Request request);

// searches.cpp
/// domain, base, filter, attributes, int scope, int limit (0: none), int; list of objects.
void ldapSearch(Call& call, Request request);
/// domain, base, filter, attributes, int scope, int entries per page (0: 100), int; int handle.
void ldapPagedSearch(Call& call, Request request);
/// int handle; list of objects, empty after the last one.
void ldapPagedNext(Call& call, Request request);
/// domain, DN ("" is the root entry), attributes, int; object.
void ldapFetch(Call& call, Request request);

// logins.cpp
/// nothing; nothing.
void authRequest(Call& call, Request request);
/// user, password, int; nothing.
void validatePlainText(Call& call, Request request);
/// principal, token; object.
void validateKerberos(Call& call, Request request);
/// data; challenge.
void ntlmChallenge(Call& call, Request request);
/// token; object.
void validateNtlm(Call& call, Request request);
/// user, groups, int, int kind of names (0 Unix, 1 directory, 2 both); nothing.
void validateUserGroup(Call& call, Request request);
/// user; nothing.
void userLogin(Call& call, Request request);
/// user; nothing.
void userLogout(Call& call, Request request);
/// user; int number of credentials.
void renewCredentials(Call& call, Request request);
/// user, domain, token, int; session key.
void samLogon(Call& call, Request request);

// passwords.cpp
/// user, old password, new password, int; nothing.
void changePassword(Call& call, Request request);
/// user, password, administrator, administrator's password; nothing.
void setPassword(Call& call, Request request);
/// user, password; nothing.
void setPasswordKrb5(Call& call, Request request);
/// user, password, uid, gid, full name, home, shell, container [, administrator, password]; nothing.
void addUser(Call& call, Request request);
/// computer ("" is this one), password, administrator ("" is none), administrator's password; nothing.
void setMachinePassword(Call& call, Request request);
/// user, new password, old password, two unused strings; nothing.
void samChangePassword(Call& call, Request request);

// administration.cpp
/// object, int selectors, key; nothing.
void flushCache(Call& call, Request request);
/// int target (0 computer, 1 user) [, user]; nothing.
void updatePolicy(Call& call, Request request);
/// nothing; nothing.
void networkChanged(Call& call, Request request);
/// int what; text.
void readState(Call& call, Request request);
/// three strings; nothing.
void dumpCache(Call& call, Request request);
/// id; nothing.
void setSessionId(Call& call, Request request);
/// "service/host"; principal.
void getServicePrincipal(Call& call, Request request);
/// name, int; DNS name, short name.
void mapDomain(Call& call, Request request);
/// name of a domain or an account; DNS name.
void getAdDomain(Call& call, Request request);
/// name of a domain or an account; short name.
void getNtlmDomain(Call& call, Request request);
/// nothing; int.
void rolesEnabled(Call& call, Request request);
/// user, int; int.
void rolesSandboxed(Call& call, Request request);
/// user or "all users", int; list of objects.
void getRoles(Call& call, Request request);
/// user, uid, gid, or only "all users"; list of objects.
void getRolesLocal(Call& call, Request request);

}  // namespace handlers
}  // namespace brondalt
