// The session's operations around logins: who is let in, and who is told of it.

#include <fokrazo/adobject.h>
#include <fokrazo/log.h>
#include <fokrazo/session.h>
#include <fokrazo/shredder.h>
#include <fokrazo/strutil.h>
#include <fokrazo/unixviews.h>
#include "lrpc/session/session_exchange.h"
#include "util/error/throw.h"

namespace vesk {

namespace {

constexpr char kSource[] = "lrpc/session";
constexpr char kLogger[] = "lrpc.session";

// How the daemon is told which names the groups have.
int nameForm(int nameFlags) {
  constexpr int both = UNIX_NAME | WINDOWS_NAME;
  if ((nameFlags & both) == both) return 2;
  return (nameFlags & both) == UNIX_NAME ? 0 : 1;
}

bool notify(LocalRpcSession& session, IPC_OPCODE opcode, const std::string& user) {
  IPCRequest request(opcode);
  request += user;
  IPCReply reply;
  return askOnce(session, request, reply) != VR_SUCCESS;
}

}  // namespace

ValidationResult LocalRpcSession::validatePlainTextUser(const std::string& user, const Shredder& password,
                                                        bool flag) {
  IPCRequest request(IPC_OP_VALIDATE_PLAINTEXT);
  ((request += user) += password) += flag;
  IPCReply reply;
  return ask(*this, request, reply);
}

boost::shared_ptr<User> LocalRpcSession::validateKerberosUser(const std::string& first,
                                                              const std::string& second) {
  IPCRequest request(IPC_OP_VALIDATE_KERBEROS);
  (request += first) += second;
  IPCReply reply;
  if (ask(*this, request, reply) != VR_SUCCESS)
    FOKRAZO_THROW(SystemException, "SystemException", 0, "failed to validate Kerberos user");
  return boost::shared_ptr<User>(new User(reply.getADObject()));
}

std::string LocalRpcSession::getNtlmChallenge(const std::string& data) {
  IPCRequest request(IPC_OP_NTLM_CHALLENGE);
  request += data;
  IPCReply reply;
  if (ask(*this, request, reply) != VR_SUCCESS)
    FOKRAZO_THROW(SystemException, "SystemException", 0, "failed to get NLTM challenge");
  return reply.getString();
}

boost::shared_ptr<User> LocalRpcSession::validateNtlmUser(const std::string& data) {
  IPCRequest request(IPC_OP_VALIDATE_NTLM);
  request += data;
  IPCReply reply;
  if (askOnce(*this, request, reply) != VR_SUCCESS)
    FOKRAZO_THROW(SystemException, "SystemException", 0, "failed to validate NTLM user");
  return boost::shared_ptr<User>(new User(reply.getADObject()));
}

ValidationResult LocalRpcSession::validateUserGroup(const std::string& user,
                                                    const std::vector<std::string>& groups, bool flag,
                                                    int nameFlags) {
  IPCRequest request(IPC_OP_VALIDATE_USER_GROUP);
  request += user;
  request += groups;
  (request += flag) += nameForm(nameFlags);
  IPCReply reply;
  return ask(*this, request, reply);
}

std::string LocalRpcSession::getServicePrincipal(const std::string& host, const std::string& service) {
  IPCRequest request(IPC_OP_GET_SPN);
  request += service + "/" + lower(host);
  IPCReply reply;
  if (ask(*this, request, reply) != VR_SUCCESS)
    FOKRAZO_THROW(NotFoundException, "NotFoundException", 0,
                  "failed to get canonicalized service principal name");
  return reply.getString();
}

bool LocalRpcSession::userLogin(const std::string& user) {
  return notify(*this, IPC_OP_USER_LOGIN, user);
}
bool LocalRpcSession::userLogout(const std::string& user) {
  return notify(*this, IPC_OP_USER_LOGOUT, user);
}

ValidationResult LocalRpcSession::renewCredentials(const std::string& user, int& count) {
  auto logger = Logger::GetThreadPrivateLogger(kLogger);
  VESK_LOG(logger, Debug, "I:LRPC::renewCredentials - user=%s", user.c_str());
  IPCRequest request(IPC_OP_RENEW_CREDENTIALS);
  request += user;
  IPCReply reply;
  const ValidationResult result = ask(*this, request, reply);
  if (result == VR_SUCCESS) count = reply.getInt();
  VESK_LOG(logger, Debug, "O:LRPC::renewCredentials user=%s (count=%d) (rc=%d)", user.c_str(), count, result);
  return result;
}

}  // namespace vesk
