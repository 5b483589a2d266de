// Login operations: checking a user, and reporting logins to the daemon.

#include <fokrazo/adobject.h>
#include <fokrazo/log.h>
#include <fokrazo/session.h>
#include <fokrazo/shredder.h>
#include <fokrazo/strutil.h>
#include <fokrazo/unixviews.h>
#include "lrpc/session/exchange.h"
#include "util/error/throw.h"

namespace vesk {

namespace {

constexpr char kSource[] = "lrpc/session";
constexpr char kLogger[] = "lrpc.session";

// The form of the groups' names. Wire values: never renumber.
enum NameForm : int { UnixNames = 0, WindowsNames = 1, BothNames = 2 };

NameForm nameForm(int nameFlags) {
  constexpr int both = UNIX_NAME | WINDOWS_NAME;
  if ((nameFlags & both) == both) return BothNames;
  return (nameFlags & both) == UNIX_NAME ? UnixNames : WindowsNames;
}

}  // namespace

ValidationResult LocalRpcSession::validatePlainTextUser(const std::string& user, const Shredder& password,
                                                        bool daemonFlag) {
  return Exchange(*this, IPC_OP_VALIDATE_PLAINTEXT, user, password, daemonFlag).ask();
}

ValidationResult LocalRpcSession::validatePlainTextUserOnce(const std::string& user, const Shredder& password,
                                                            bool daemonFlag) {
  Exchange exchange(*this, IPC_OP_VALIDATE_PLAINTEXT, user, password, daemonFlag);
  closeConnection();
  return exchange.askOnce();
}

boost::shared_ptr<User> LocalRpcSession::validateKerberosUser(const std::string& principal,
                                                              const std::string& token) {
  Exchange exchange(*this, IPC_OP_VALIDATE_KERBEROS, principal, token);
  if (exchange.ask() != VR_SUCCESS)
    FOKRAZO_THROW(SystemException, "SystemException", 0, "failed to validate Kerberos user");
  return boost::shared_ptr<User>(new User(exchange.reply.getADObject()));
}

std::string LocalRpcSession::getNtlmChallenge(const std::string& negotiation) {
  Exchange exchange(*this, IPC_OP_NTLM_CHALLENGE, negotiation);
  if (exchange.ask() != VR_SUCCESS)
    FOKRAZO_THROW(SystemException, "SystemException", 0, "failed to get NLTM challenge");
  return exchange.reply.getString();
}

boost::shared_ptr<User> LocalRpcSession::validateNtlmUser(const std::string& response) {
  Exchange exchange(*this, IPC_OP_VALIDATE_NTLM, response);
  if (exchange.askOnce() != VR_SUCCESS)
    FOKRAZO_THROW(SystemException, "SystemException", 0, "failed to validate NTLM user");
  return boost::shared_ptr<User>(new User(exchange.reply.getADObject()));
}

ValidationResult LocalRpcSession::validateUserGroup(const std::string& user,
                                                    const std::vector<std::string>& groups, bool daemonFlag,
                                                    int nameFlags) {
  return Exchange(*this, IPC_OP_VALIDATE_USER_GROUP, user, groups, daemonFlag, nameForm(nameFlags)).ask();
}

std::string LocalRpcSession::getServicePrincipal(const std::string& host, const std::string& service) {
  Exchange exchange(*this, IPC_OP_GET_SPN, service + "/" + lower(host));
  if (exchange.ask() != VR_SUCCESS)
    FOKRAZO_THROW(NotFoundException, "NotFoundException", 0,
                  "failed to get canonicalized service principal name");
  return exchange.reply.getString();
}

bool LocalRpcSession::userLogin(const std::string& user) {
  return Exchange(*this, IPC_OP_USER_LOGIN, user).askOnce() != VR_SUCCESS;
}

bool LocalRpcSession::userLogout(const std::string& user) {
  return Exchange(*this, IPC_OP_USER_LOGOUT, user).askOnce() != VR_SUCCESS;
}

ValidationResult LocalRpcSession::renewCredentials(const std::string& user, int& count) {
  auto logger = Logger::GetThreadPrivateLogger(kLogger);
  VESK_LOG(logger, Debug, "I:LRPC::renewCredentials - user=%s", user.c_str());
  Exchange exchange(*this, IPC_OP_RENEW_CREDENTIALS, user);
  const ValidationResult result = exchange.ask();
  if (result == VR_SUCCESS) count = exchange.reply.getInt();
  VESK_LOG(logger, Debug, "O:LRPC::renewCredentials user=%s (count=%d) (rc=%d)", user.c_str(), count, result);
  return result;
}

}  // namespace vesk
