/// The operations of the stand-in, one for each opcode that a session sends. The request's fields and those
/// behind the reply's status block stand with each.
#pragma once

namespace standin {

class Call;

namespace handlers {

// lookups.cpp. "@#" in place of a name asks for the next entry of the open listing of that object type.
/// int type, int scope, int key kind, int, int, key; object.
void getObject(Call& call);
/// int type, int, int; nothing.
void startList(Call& call);
/// int type, int; nothing.
void endList(Call& call);

// searches.cpp. The empty domain is the one that is served.
/// domain, base, filter, attributes, int scope, int limit (0: none), int; list of objects.
void ldapSearch(Call& call);
/// domain, base, filter, attributes, int scope, int entries a page (0: 100), int; int handle.
void ldapPagedSearch(Call& call);
/// int handle; list of objects, empty behind the last one.
void ldapPagedNext(Call& call);
/// domain, DN ("" is the root entry), attributes, int; object.
void ldapFetch(Call& call);

// logins.cpp. What stands for a ticket or a challenge's response is told there.
/// nothing; nothing.
void authRequest(Call& call);
/// user, password, int; nothing.
void validatePlainText(Call& call);
/// principal, token; object.
void validateKerberos(Call& call);
/// data; challenge.
void ntlmChallenge(Call& call);
/// token; object.
void validateNtlm(Call& call);
/// user, groups, int, int form of the names (0 Unix, 1 directory, 2 both); nothing.
void validateUserGroup(Call& call);
/// user; nothing.
void userLogin(Call& call);
/// user; nothing.
void userLogout(Call& call);
/// user; int number of credentials.
void renewCredentials(Call& call);
/// user, domain, token, int; session key.
void samLogon(Call& call);

// passwords.cpp
/// user, old password, new password, int; nothing.
void changePassword(Call& call);
/// user, password, administrator, administrator's password; nothing.
void setPassword(Call& call);
/// user, password; nothing.
void setPasswordKrb5(Call& call);
/// user, password, uid, gid, full name, home, shell, container [, administrator, password]; nothing.
void addUser(Call& call);
/// computer ("" is this one), password, administrator ("" is none), administrator's password; nothing.
void setMachinePassword(Call& call);
/// user, new password, old password, and two that do not matter; nothing.
void samChangePassword(Call& call);

// administration.cpp
/// object, int selectors, key; nothing.
void flushCache(Call& call);
/// int target (0 computer, 1 user) [, user]; nothing.
void updatePolicy(Call& call);
/// nothing; nothing.
void networkChanged(Call& call);
/// int what; text.
void readState(Call& call);
/// three strings; nothing.
void dumpCache(Call& call);
/// id; nothing.
void setSessionId(Call& call);
/// "service/host"; principal.
void getServicePrincipal(Call& call);
/// name, int; DNS name, short name.
void mapDomain(Call& call);
/// name of a domain or an account; DNS name.
void getAdDomain(Call& call);
/// name of a domain or an account; short name.
void getNtlmDomain(Call& call);
/// nothing; int.
void rolesEnabled(Call& call);
/// user, int; int.
void rolesSandboxed(Call& call);
/// user or "all users", int; list of objects.
void getRoles(Call& call);
/// user, uid, gid, or "all users" alone; list of objects.
void getRolesLocal(Call& call);

}  // namespace handlers
}  // namespace standin
