// The session's operations on the daemon itself: caches, policy, health, roles, names.

#include <fokrazo/adobject.h>
#include <fokrazo/session.h>
#include <fokrazo/strutil.h>
#include "lrpc/session/session_exchange.h"
#include "util/error/throw.h"

namespace vesk {

namespace {

constexpr char kSource[] = "lrpc/session";
constexpr char kAllUsers[] = "all users";

// Whose policy is refreshed. Wire values: never renumber.
enum PolicyTarget : int { PolicyOfComputer = 0, PolicyOfUser = 1 };

ValidationResult flush(LocalRpcSession& session, ADObject& object, int selectors, const std::string& key) {
  IPCRequest request(IPC_OP_FLUSH_CACHE);
  ((request += object) += selectors) += key;
  IPCReply reply;
  return ask(session, request, reply);
}

// The daemon's text is a format without arguments: "%%" is a per cent sign, and any other conversion stays as
// it is.
std::string formatted(const std::string& text) {
  std::string out;
  out.reserve(text.size());
  for (size_t i = 0; i < text.size(); ++i) {
    out += text[i];
    if (text.compare(i, 2, "%%") == 0) ++i;
  }
  return out;
}

bool answerIsYes(LocalRpcSession& session, IPCRequest& request) {
  IPCReply reply;
  if (ask(session, request, reply) != VR_SUCCESS)
    FOKRAZO_THROW(SystemException, "SystemException", 0, "could do sandbox test");
  return reply.getInt() != 0;
}

ADObjectList roles(LocalRpcSession& session, IPCRequest& request) {
  IPCReply reply;
  if (ask(session, request, reply) != VR_SUCCESS)
    FOKRAZO_THROW(SystemException, "SystemException", 0, "could not get roles");
  return reply.getADObjectList();
}

std::string domainName(LocalRpcSession& session, IPC_OPCODE opcode, const std::string& name) {
  IPCRequest request(opcode);
  request += name;
  IPCReply reply;
  if (askOnce(session, request, reply) != VR_SUCCESS) reply.getAndThrowIPCException();
  return reply.getString();
}

}  // namespace

ValidationResult LocalRpcSession::flushCache(const std::string& key) {
  ADObject none;
  return flush(*this, none, FLUSH_OBJ_CACHE, key);
}

ValidationResult LocalRpcSession::flushCache(ADObject& object) {
  return flush(*this, object, FLUSH_OBJ_CACHE, "");
}

ValidationResult LocalRpcSession::flushCache(unsigned int selectors) {
  ADObject none;
  return flush(*this, none, static_cast<int>(selectors), "");
}

ValidationResult LocalRpcSession::networkChange() {
  IPCRequest request(IPC_OP_NETWORK_CHANGED);
  IPCReply reply;
  return ask(*this, request, reply);
}

std::string LocalRpcSession::updateUserPolicy(const std::string& user) {
  IPCRequest request(IPC_OP_UPDATE_GP);
  (request += PolicyOfUser) += user;
  return refreshPolicy(request, "User Policy Refresh has completed.");
}

std::string LocalRpcSession::updateMachinePolicy() {
  IPCRequest request(IPC_OP_UPDATE_GP);
  request += PolicyOfComputer;
  return refreshPolicy(request, "Computer Policy Refresh has completed.");
}

// Every result but VR_EXTENDED_ERROR, failures too, is a text for people.
std::string LocalRpcSession::refreshPolicy(IPCRequest& request, const char* done) {
  IPCReply reply;
  if (askOnce(*this, request, reply) != VR_EXTENDED_ERROR)
    return m_statusMessage.empty() ? done : m_statusMessage;
  if (m_statusMessage.empty()) m_statusMessage = "Unknown error";
  FOKRAZO_THROW(SystemException, "SystemException", m_statusDetail != 0 ? m_statusDetail : VR_EXTENDED_ERROR,
                "%s", formatted(m_statusMessage).c_str());
}

std::string LocalRpcSession::getSystemInfo(unsigned int what) {
  IPCRequest request(IPC_OP_READ_BRONDALT_STATE);
  request += static_cast<int>(what);
  IPCReply reply;
  if (ask(*this, request, reply) != VR_SUCCESS)
    FOKRAZO_THROW(SystemException, "SystemException", 0, "could not get sysinfo");
  return reply.getString();
}

ValidationResult LocalRpcSession::dumpCache(const std::string& s1, const std::string& s2,
                                            const std::string& s3) {
  IPCRequest request(IPC_OP_DUMP_CACHE);
  ((request += s1) += s2) += s3;
  IPCReply reply;
  return ask(*this, request, reply);
}

bool LocalRpcSession::samEnabled() {
  IPCRequest request(IPC_OP_SAM_TEST_ENABLED);
  return answerIsYes(*this, request);
}

bool LocalRpcSession::samIsSandboxed(const std::string& user, bool flag) {
  IPCRequest request(IPC_OP_SAM_SANDBOX_TEST);
  (request += user) += flag;
  return answerIsYes(*this, request);
}

ADObjectList LocalRpcSession::samGetUserRoles(const std::string& user, bool flag) {
  IPCRequest request(IPC_OP_SAM_GET_ROLES);
  (request += user) += flag;
  return roles(*this, request);
}

ADObjectList LocalRpcSession::samGetUserRolesLocal(const std::string& user, unsigned int uid,
                                                   unsigned int gid) {
  IPCRequest request(IPC_OP_SAM_GET_ROLES_LOCAL);
  request += user;
  if (user != kAllUsers) (request += uidtoa(uid)) += gidtoa(gid);
  return roles(*this, request);
}

ValidationResult LocalRpcSession::mapDomain(const std::string& name, std::string& first, std::string& second,
                                            unsigned int options) {
  IPCRequest request(IPC_OP_MAP_DOMAIN);
  (request += name) += static_cast<int>(options);
  IPCReply reply;
  const ValidationResult result = askOnce(*this, request, reply);
  if (result != VR_SUCCESS) return result;
  std::string readFirst = reply.getString();
  second = reply.getString();
  first.swap(readFirst);
  return result;
}

std::string LocalRpcSession::getADDomain(const std::string& name) {
  return domainName(*this, IPC_OP_GET_AD_DOMAIN, name);
}

std::string LocalRpcSession::getNtlmDomain(const std::string& name) {
  return domainName(*this, IPC_OP_GET_NTLM_DOMAIN, name);
}

ValidationResult LocalRpcSession::setSessionID(const std::string& id) {
  IPCRequest request(IPC_OP_SET_SESSION_ID);
  request += id;
  IPCReply reply;
  return ask(*this, request, reply);
}

// The fetch is a probe: what counts is the status block that it leaves.
int LocalRpcSession::systemHealthInfo(bool refresh, ValidationResult& health, int& a, int& b,
                                      std::string& text) {
  if (refresh) {
    try {
      ldapFetch("", "", nullptr, false);
    } catch (const IOException&) {
      return VR_DAEMON_NOT_RUNNING;
    } catch (const VESKException&) {
    }
  }
  health = m_healthResult;
  a = m_healthValue1;
  b = m_healthValue2;
  text = m_healthMessage;
  return 0;
}

int LocalRpcSession::getFipsMode() {
  return 0;
}

}  // namespace vesk
