// Operations that change passwords and accounts.

#include <fokrazo/attrnames.h>
#include <fokrazo/log.h>
#include <fokrazo/session.h>
#include <fokrazo/shredder.h>
#include "lrpc/session/exchange.h"

namespace vesk {

namespace {

constexpr char kLogger[] = "lrpc.session";

}  // namespace

ValidationResult LocalRpcSession::changePassword(const std::string& user, const Shredder& oldPassword,
                                                 const Shredder& newPassword, bool daemonFlag) {
  return Exchange(*this, IPC_OP_CHANGE_PASSWORD, user, oldPassword, newPassword, daemonFlag).askOnce();
}

ValidationResult LocalRpcSession::setPassword(const std::string& user, const Shredder& password,
                                              const std::string& adminUser, const Shredder& adminPassword) {
  return Exchange(*this, IPC_OP_SET_PASSWORD, user, password, adminUser, adminPassword).askOnce();
}

ValidationResult LocalRpcSession::setPasswordKrb5(const std::string& user, const Shredder& password) {
  return Exchange(*this, IPC_OP_SET_PASSWORD_KRB5, user, password).askOnce();
}

ValidationResult LocalRpcSession::addUser(const std::string& user, const Shredder& password,
                                          const std::string& uid, const std::string& gid,
                                          const std::string& fullName, const std::string& home,
                                          const std::string& shell, const std::string& container,
                                          const std::string& adminUser, const Shredder& adminPassword) {
  return Exchange(*this, IPC_OP_ADD_NEW_USER, user, password, uid, gid, fullName, home, shell, container,
                  adminUser, adminPassword)
      .askOnce();
}

// The daemon distinguishes the two forms by the number of fields.
ValidationResult LocalRpcSession::addUserKrb5(const std::string& user, const Shredder& password,
                                              const std::string& uid, const std::string& gid,
                                              const std::string& fullName, const std::string& home,
                                              const std::string& shell, const std::string& container) {
  return Exchange(*this, IPC_OP_ADD_NEW_USER, user, password, uid, gid, fullName, home, shell, container)
      .askOnce();
}

ValidationResult LocalRpcSession::setMachinePassword(const std::string& computer, const Shredder& password,
                                                     const std::string& adminUser,
                                                     const Shredder& adminPassword) {
  auto logger = Logger::GetThreadPrivateLogger(kLogger);
  const ValidationResult result =
      Exchange(*this, IPC_OP_SET_MACHINE_PASSWORD, computer, password, adminUser, adminPassword).ask();
  VESK_LOG(logger, Debug, "LocalRpcSession::setMachinePassword returns (%d)", result);
  return result;
}

ValidationResult LocalRpcSession::setMachinePassword(const Shredder& password) {
  return setMachinePassword(EMPTY_STRING, password, EMPTY_STRING, Shredder());
}

ValidationResult LocalRpcSession::netLogonSamLogon(const std::string& user, const std::string& domain,
                                                   const std::string& token, unsigned int daemonOption,
                                                   std::string& sessionKey, int& ntStatus,
                                                   std::string& errorText) {
  auto logger = Logger::GetThreadPrivateLogger(kLogger);
  VESK_LOG(logger, Debug, "I:LRPC::netLogonSamLogon - user=%s", user.c_str());
  ntStatus = 0;
  Exchange exchange(*this, IPC_OP_MSRPC_USER_AUTH, user, domain, token, static_cast<int>(daemonOption));
  const ValidationResult result = exchange.ask();
  ntStatus = m_statusDetail;
  errorText = m_statusMessage;
  if (result == VR_SUCCESS) sessionKey = exchange.reply.getString();
  VESK_LOG(logger, Debug, "O:LRPC::netLogonSamLogon - user=%s (rc=%d) (ntStatus=0x%x)", user.c_str(), result,
           static_cast<unsigned>(ntStatus));
  return result;
}

ValidationResult LocalRpcSession::samChangeUserPassword2(
    const std::string& user, const std::string& newPassword, const std::string& oldPassword,
    const std::string& daemonText1, const std::string& daemonText2, int& ntStatus, std::string& errorText) {
  auto logger = Logger::GetThreadPrivateLogger(kLogger);
  VESK_LOG(logger, Debug, "I:LRPC::samChangeUserPassword2 - user=%s", user.c_str());
  ntStatus = 0;
  Exchange exchange(*this, IPC_OP_MSRPC_CHANGE_PASSWORD_MSCHAP2, user, newPassword, oldPassword, daemonText1,
                    daemonText2);
  const ValidationResult result = exchange.ask();
  ntStatus = m_statusDetail;
  errorText = m_statusMessage;
  VESK_LOG(logger, Debug, "O:LRPC::samChangeUserPassword - user=%s (rc=%d) (ntStatus=0x%x)", user.c_str(),
           result, static_cast<unsigned>(ntStatus));
  return result;
}

}  // namespace vesk
