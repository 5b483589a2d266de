// Operations on the daemon itself: caches, policy, health, roles, names.

#include <fokrazo/adobject.h>
#include <fokrazo/session.h>
#include <fokrazo/strutil.h>
#include "lrpc/session/exchange.h"
#include "util/error/throw.h"

namespace vesk {

namespace {

constexpr char kSource[] = "lrpc/session";
constexpr char kAllUsers[] = "all users";

// The policy to refresh. Wire values: never renumber.
enum PolicyTarget : int { PolicyOfComputer = 0, PolicyOfUser = 1 };

ValidationResult flush(LocalRpcSession& session, ADObject& object, unsigned int selectors,
                       const std::string& key) {
  return Exchange(session, IPC_OP_FLUSH_CACHE, object, static_cast<int>(selectors), key).ask();
}

// The daemon's text is a format without arguments: "%%" becomes "%"; any other conversion is kept.
std::string formatted(const std::string& text) {
  std::string out;
  out.reserve(text.size());
  for (size_t i = 0; i < text.size(); ++i) {
    out += text[i];
    if (text.compare(i, 2, "%%") == 0) ++i;
  }
  return out;
}

bool isYes(Exchange exchange) {
  if (exchange.ask() != VR_SUCCESS)
    FOKRAZO_THROW(SystemException, "SystemException", 0, "could do sandbox test");
  return exchange.reply.getInt() != 0;
}

ADObjectList receiveRoles(Exchange exchange) {
  if (exchange.ask() != VR_SUCCESS)
    FOKRAZO_THROW(SystemException, "SystemException", 0, "could not get roles");
  return exchange.reply.getADObjectList();
}

std::string domainName(LocalRpcSession& session, IPC_OPCODE opcode, const std::string& name) {
  Exchange exchange(session, opcode, name);
  if (exchange.askOnce() != VR_SUCCESS) exchange.reply.getAndThrowIPCException();
  return exchange.reply.getString();
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
  return flush(*this, none, selectors, "");
}

ValidationResult LocalRpcSession::networkChange() {
  return Exchange(*this, IPC_OP_NETWORK_CHANGED).ask();
}

std::string LocalRpcSession::updateUserPolicy(const std::string& user) {
  Exchange exchange(*this, IPC_OP_UPDATE_GP, PolicyOfUser, user);
  return refreshPolicy(exchange, "User Policy Refresh has completed.");
}

std::string LocalRpcSession::updateMachinePolicy() {
  Exchange exchange(*this, IPC_OP_UPDATE_GP, PolicyOfComputer);
  return refreshPolicy(exchange, "Computer Policy Refresh has completed.");
}

// Except for VR_EXTENDED_ERROR, failures too are returned as human-readable text.
std::string LocalRpcSession::refreshPolicy(Exchange& exchange, const char* done) {
  if (exchange.askOnce() != VR_EXTENDED_ERROR) return m_statusMessage.empty() ? done : m_statusMessage;
  if (m_statusMessage.empty()) m_statusMessage = "Unknown error";
  FOKRAZO_THROW(SystemException, "SystemException", m_statusDetail != 0 ? m_statusDetail : VR_EXTENDED_ERROR,
                "%s", formatted(m_statusMessage).c_str());
}

std::string LocalRpcSession::getSystemInfo(unsigned int what) {
  Exchange exchange(*this, IPC_OP_READ_BRONDALT_STATE, static_cast<int>(what));
  if (exchange.ask() != VR_SUCCESS)
    FOKRAZO_THROW(SystemException, "SystemException", 0, "could not get sysinfo");
  return exchange.reply.getString();
}

ValidationResult LocalRpcSession::dumpCache(const std::string& daemonText1, const std::string& daemonText2,
                                            const std::string& daemonText3) {
  return Exchange(*this, IPC_OP_DUMP_CACHE, daemonText1, daemonText2, daemonText3).ask();
}

bool LocalRpcSession::samEnabled() {
  return isYes(Exchange(*this, IPC_OP_SAM_TEST_ENABLED));
}

bool LocalRpcSession::samIsSandboxed(const std::string& user, bool daemonFlag) {
  return isYes(Exchange(*this, IPC_OP_SAM_SANDBOX_TEST, user, daemonFlag));
}

ADObjectList LocalRpcSession::samGetUserRoles(const std::string& user, bool daemonFlag) {
  return receiveRoles(Exchange(*this, IPC_OP_SAM_GET_ROLES, user, daemonFlag));
}

ADObjectList LocalRpcSession::samGetUserRolesLocal(const std::string& user, unsigned int uid,
                                                   unsigned int gid) {
  if (user == kAllUsers) return receiveRoles(Exchange(*this, IPC_OP_SAM_GET_ROLES_LOCAL, user));
  return receiveRoles(Exchange(*this, IPC_OP_SAM_GET_ROLES_LOCAL, user, uidtoa(uid), gidtoa(gid)));
}

ValidationResult LocalRpcSession::mapDomain(const std::string& name, std::string& dnsName,
                                            std::string& shortName, unsigned int daemonOptions) {
  Exchange exchange(*this, IPC_OP_MAP_DOMAIN, name, static_cast<int>(daemonOptions));
  const ValidationResult result = exchange.askOnce();
  if (result != VR_SUCCESS) return result;
  std::string first = exchange.reply.getString();
  shortName = exchange.reply.getString();
  dnsName.swap(first);
  return result;
}

std::string LocalRpcSession::getADDomain(const std::string& name) {
  return domainName(*this, IPC_OP_GET_AD_DOMAIN, name);
}

std::string LocalRpcSession::getNtlmDomain(const std::string& name) {
  return domainName(*this, IPC_OP_GET_NTLM_DOMAIN, name);
}

ValidationResult LocalRpcSession::setSessionID(const std::string& id) {
  return Exchange(*this, IPC_OP_SET_SESSION_ID, id).ask();
}

// The fetch is only a probe: the answer is in its status block.
int LocalRpcSession::systemHealthInfo(bool refresh, ValidationResult& health, int& value1, int& value2,
                                      std::string& text) {
  const SessionHold hold(*this);
  if (refresh) {
    try {
      ldapFetch("", "", nullptr, false);
    } catch (const IOException&) {
      return VR_DAEMON_NOT_RUNNING;
    } catch (const VESKException&) {
    }
  }
  health = m_healthResult;
  value1 = m_healthValue1;
  value2 = m_healthValue2;
  text = m_healthMessage;
  return 0;
}

int LocalRpcSession::getFipsMode() {
  return 0;
}

}  // namespace vesk
