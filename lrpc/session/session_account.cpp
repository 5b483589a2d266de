// The session's operations that change passwords and accounts.

#include <initializer_list>

#include <fokrazo/attrnames.h>
#include <fokrazo/log.h>
#include <fokrazo/session.h>
#include <fokrazo/shredder.h>
#include "lrpc/session/session_exchange.h"

namespace vesk {

namespace {

constexpr char kLogger[] = "lrpc.session";

// The fields of a request, by reference: no copy of a secret is made on the way into the message.
using Fields = std::initializer_list<const std::string*>;

void put(IPCRequest& request, Fields fields) {
  for (const std::string* field : fields) request += *field;
}

ValidationResult changeOnce(LocalRpcSession& session, IPC_OPCODE opcode, Fields fields) {
  IPCRequest request(opcode);
  put(request, fields);
  IPCReply reply;
  return askOnce(session, request, reply);
}

}  // namespace

ValidationResult LocalRpcSession::changePassword(const std::string& user, const Shredder& oldPassword,
                                                 const Shredder& newPassword, bool flag) {
  IPCRequest request(IPC_OP_CHANGE_PASSWORD);
  put(request, {&user, &oldPassword, &newPassword});
  request += flag;
  IPCReply reply;
  return askOnce(*this, request, reply);
}

ValidationResult LocalRpcSession::setPassword(const std::string& user, const Shredder& password,
                                              const std::string& adminUser, const Shredder& adminPassword) {
  return changeOnce(*this, IPC_OP_SET_PASSWORD, {&user, &password, &adminUser, &adminPassword});
}

ValidationResult LocalRpcSession::setPasswordKrb5(const std::string& user, const Shredder& password) {
  return changeOnce(*this, IPC_OP_SET_PASSWORD_KRB5, {&user, &password});
}

ValidationResult LocalRpcSession::addUser(const std::string& user, const Shredder& password,
                                          const std::string& a1, const std::string& a2, const std::string& a3,
                                          const std::string& a4, const std::string& a5, const std::string& a6,
                                          const std::string& adminUser, const Shredder& adminPassword) {
  return changeOnce(*this, IPC_OP_ADD_NEW_USER,
                    {&user, &password, &a1, &a2, &a3, &a4, &a5, &a6, &adminUser, &adminPassword});
}

// The daemon tells this form from the other by the number of fields.
ValidationResult LocalRpcSession::addUserKrb5(const std::string& user, const Shredder& password,
                                              const std::string& a1, const std::string& a2,
                                              const std::string& a3, const std::string& a4,
                                              const std::string& a5, const std::string& a6) {
  return changeOnce(*this, IPC_OP_ADD_NEW_USER, {&user, &password, &a1, &a2, &a3, &a4, &a5, &a6});
}

ValidationResult LocalRpcSession::setMachinePassword(const std::string& user, const Shredder& password,
                                                     const std::string& adminUser,
                                                     const Shredder& adminPassword) {
  auto logger = Logger::GetThreadPrivateLogger(kLogger);
  IPCRequest request(IPC_OP_SET_MACHINE_PASSWORD);
  put(request, {&user, &password, &adminUser, &adminPassword});
  IPCReply reply;
  const ValidationResult result = ask(*this, request, reply);
  VESK_LOG(logger, Debug, "LocalRpcSession::setMachinePassword returns (%d)", result);
  return result;
}

ValidationResult LocalRpcSession::setMachinePassword(const Shredder& password) {
  return setMachinePassword(EMPTY_STRING, password, EMPTY_STRING, Shredder());
}

ValidationResult LocalRpcSession::netLogonSamLogon(const std::string& user, const std::string& s2,
                                                   const std::string& s3, unsigned int n, std::string& result,
                                                   int& ntStatus, std::string& errorText) {
  auto logger = Logger::GetThreadPrivateLogger(kLogger);
  VESK_LOG(logger, Debug, "I:LRPC::netLogonSamLogon - user=%s", user.c_str());
  ntStatus = 0;
  IPCRequest request(IPC_OP_MSRPC_USER_AUTH);
  put(request, {&user, &s2, &s3});
  request += static_cast<int>(n);
  IPCReply reply;
  const ValidationResult outcome = ask(*this, request, reply);
  ntStatus = m_statusDetail;
  errorText = m_statusMessage;
  if (outcome == VR_SUCCESS) result = reply.getString();
  VESK_LOG(logger, Debug, "O:LRPC::netLogonSamLogon - user=%s (rc=%d) (ntStatus=0x%x)", user.c_str(), outcome,
           static_cast<unsigned>(ntStatus));
  return outcome;
}

ValidationResult LocalRpcSession::samChangeUserPassword2(const std::string& user, const std::string& s2,
                                                         const std::string& s3, const std::string& s4,
                                                         const std::string& s5, int& ntStatus,
                                                         std::string& errorText) {
  auto logger = Logger::GetThreadPrivateLogger(kLogger);
  VESK_LOG(logger, Debug, "I:LRPC::samChangeUserPassword2 - user=%s", user.c_str());
  ntStatus = 0;
  IPCRequest request(IPC_OP_MSRPC_CHANGE_PASSWORD_MSCHAP2);
  put(request, {&user, &s2, &s3, &s4, &s5});
  IPCReply reply;
  const ValidationResult outcome = ask(*this, request, reply);
  ntStatus = m_statusDetail;
  errorText = m_statusMessage;
  VESK_LOG(logger, Debug, "O:LRPC::samChangeUserPassword - user=%s (rc=%d) (ntStatus=0x%x)", user.c_str(),
           outcome, static_cast<unsigned>(ntStatus));
  return outcome;
}

}  // namespace vesk
