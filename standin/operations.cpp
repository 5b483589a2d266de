#include "standin/operations.h"

#include <new>

#include <fokrazo/error_util.h>
#include "standin/call.h"
#include "standin/handlers.h"

namespace standin {
namespace {

struct OperationRow {
  vesk::IPC_OPCODE opcode;
  void (*handle)(Call& call);
};

// Ping and stop have replies without a status block and stand apart.
constexpr OperationRow kOperations[] = {
    {vesk::IPC_OP_SET_SESSION_ID, handlers::setSessionId},
    {vesk::IPC_OP_VALIDATE_PLAINTEXT, handlers::validatePlainText},
    {vesk::IPC_OP_VALIDATE_KERBEROS, handlers::validateKerberos},
    {vesk::IPC_OP_NTLM_CHALLENGE, handlers::ntlmChallenge},
    {vesk::IPC_OP_VALIDATE_NTLM, handlers::validateNtlm},
    {vesk::IPC_OP_CHANGE_PASSWORD, handlers::changePassword},
    {vesk::IPC_OP_SET_PASSWORD, handlers::setPassword},
    {vesk::IPC_OP_SET_PASSWORD_KRB5, handlers::setPasswordKrb5},
    {vesk::IPC_OP_VALIDATE_USER_GROUP, handlers::validateUserGroup},
    {vesk::IPC_OP_GET_OBJECT, handlers::getObject},
    {vesk::IPC_OP_GET_OBJECT2, handlers::getObject},
    {vesk::IPC_OP_START_LIST, handlers::startList},
    {vesk::IPC_OP_END_LIST, handlers::endList},
    {vesk::IPC_OP_AUTH_REQUEST, handlers::authRequest},
    {vesk::IPC_OP_LDAP_SEARCH, handlers::ldapSearch},
    {vesk::IPC_OP_UPDATE_GP, handlers::updatePolicy},
    {vesk::IPC_OP_ADD_NEW_USER, handlers::addUser},
    {vesk::IPC_OP_GET_SPN, handlers::getServicePrincipal},
    {vesk::IPC_OP_LDAP_FETCH, handlers::ldapFetch},
    {vesk::IPC_OP_LDAP_PAGED_SEARCH, handlers::ldapPagedSearch},
    {vesk::IPC_OP_LDAP_PAGED_NEXT, handlers::ldapPagedNext},
    {vesk::IPC_OP_FLUSH_CACHE, handlers::flushCache},
    {vesk::IPC_OP_USER_LOGIN, handlers::userLogin},
    {vesk::IPC_OP_USER_LOGOUT, handlers::userLogout},
    {vesk::IPC_OP_GET_NTLM_DOMAIN, handlers::getNtlmDomain},
    {vesk::IPC_OP_MAP_DOMAIN, handlers::mapDomain},
    {vesk::IPC_OP_SET_MACHINE_PASSWORD, handlers::setMachinePassword},
    {vesk::IPC_OP_MSRPC_USER_AUTH, handlers::samLogon},
    {vesk::IPC_OP_MSRPC_CHANGE_PASSWORD_MSCHAP2, handlers::samChangePassword},
    {vesk::IPC_OP_GET_AD_DOMAIN, handlers::getAdDomain},
    {vesk::IPC_OP_NETWORK_CHANGED, handlers::networkChanged},
    {vesk::IPC_OP_READ_BRONDALT_STATE, handlers::readState},
    {vesk::IPC_OP_RENEW_CREDENTIALS, handlers::renewCredentials},
    {vesk::IPC_OP_DUMP_CACHE, handlers::dumpCache},
    {vesk::IPC_OP_SAM_GET_ROLES, handlers::getRoles},
    {vesk::IPC_OP_SAM_GET_ROLES_LOCAL, handlers::getRolesLocal},
    {vesk::IPC_OP_SAM_SANDBOX_TEST, handlers::rolesSandboxed},
    {vesk::IPC_OP_SAM_TEST_ENABLED, handlers::rolesEnabled},
};

const OperationRow* findOperation(vesk::IPC_OPCODE opcode) {
  for (const OperationRow& row : kOperations)
    if (row.opcode == opcode) return &row;
  return nullptr;
}

std::unique_ptr<vesk::IPCReply> stop(Service& service, const ClientState& client) {
  if (!client.mayAdminister) return bareReply(vesk::IPC_OP_STOP, vesk::IPC_NOT_AUTHORIZED);
  service.stopIsWanted = true;
  return bareReply(vesk::IPC_OP_STOP, vesk::IPC_SUCCESS);
}

}  // namespace

std::unique_ptr<vesk::IPCReply> bareReply(vesk::IPC_OPCODE opcode, vesk::IPC_RESULT result) {
  auto reply = std::make_unique<vesk::IPCReply>(opcode);
  reply->setResult(result);
  return reply;
}

std::unique_ptr<vesk::IPCReply> carryOut(Service& service, ClientState& client,
                                         const vesk::IPCMessage& request) {
  vesk::IPC_OPCODE opcode = request.opcode();
  ++service.requests;
  if (opcode == vesk::IPC_OP_PING) return bareReply(opcode, vesk::IPC_SUCCESS);
  if (opcode == vesk::IPC_OP_STOP) return stop(service, client);
  const OperationRow* row = findOperation(opcode);
  if (!row) return bareReply(opcode, vesk::IPC_BAD_DATA);
  try {
    auto reply = std::make_unique<vesk::IPCReply>(opcode);
    Call call(service, client, request, *reply);
    row->handle(call);
    return reply;
  } catch (const VESKException&) {
    return bareReply(opcode, vesk::IPC_BAD_DATA);
  } catch (const std::bad_alloc&) {
    throw;
  } catch (const std::exception&) {
    return bareReply(opcode, vesk::IPC_SYSTEM_ERROR);
  }
}

}  // namespace standin
