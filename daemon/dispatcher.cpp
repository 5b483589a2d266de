#include "daemon/dispatcher.h"

#include <utility>

#include <fokrazo/error_util.h>
#include "daemon/handlers.h"

namespace brondalt {
namespace {

struct OperationRow {
  vesk::IPC_OPCODE opcode;
  void (*handle)(Call& call, handlers::Request request);
  bool throws = false;  // a failure is followed by an exception with its text
};

constexpr bool kThrows = true;

// Without ping and stop, whose replies have no status block.
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
    {vesk::IPC_OP_LDAP_SEARCH, handlers::ldapSearch, kThrows},
    {vesk::IPC_OP_UPDATE_GP, handlers::updatePolicy},
    {vesk::IPC_OP_ADD_NEW_USER, handlers::addUser},
    {vesk::IPC_OP_GET_SPN, handlers::getServicePrincipal},
    {vesk::IPC_OP_LDAP_FETCH, handlers::ldapFetch, kThrows},
    {vesk::IPC_OP_LDAP_PAGED_SEARCH, handlers::ldapPagedSearch, kThrows},
    {vesk::IPC_OP_LDAP_PAGED_NEXT, handlers::ldapPagedNext, kThrows},
    {vesk::IPC_OP_FLUSH_CACHE, handlers::flushCache},
    {vesk::IPC_OP_USER_LOGIN, handlers::userLogin},
    {vesk::IPC_OP_USER_LOGOUT, handlers::userLogout},
    {vesk::IPC_OP_GET_NTLM_DOMAIN, handlers::getNtlmDomain, kThrows},
    {vesk::IPC_OP_MAP_DOMAIN, handlers::mapDomain},
    {vesk::IPC_OP_SET_MACHINE_PASSWORD, handlers::setMachinePassword},
    {vesk::IPC_OP_MSRPC_USER_AUTH, handlers::samLogon},
    {vesk::IPC_OP_MSRPC_CHANGE_PASSWORD_MSCHAP2, handlers::samChangePassword},
    {vesk::IPC_OP_GET_AD_DOMAIN, handlers::getAdDomain, kThrows},
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

void carryOutRow(Call& call, const vesk::IPCMessage& request, const std::optional<Status>& answer) {
  const OperationRow* row = findOperation(request.opcode());
  if (!row) return call.completeBare(vesk::IPC_BAD_DATA);
  if (row->throws) call.throwFailures();
  if (answer && row->opcode != vesk::IPC_OP_AUTH_REQUEST) return call.complete(*answer);
  try {
    row->handle(call, request);
  } catch (const VESKException&) {
    call.completeBare(vesk::IPC_BAD_DATA);
  } catch (const std::exception&) {
    call.completeBare(vesk::IPC_SYSTEM_ERROR);
  }
}

}  // namespace

Dispatcher::Dispatcher(Service& service, std::function<void()> onStop)
    : m_service(service), m_onStop(std::move(onStop)) {}

std::weak_ptr<Call> Dispatcher::carryOut(std::shared_ptr<Client> client, const vesk::IPCMessage& request,
                                         Call::Send send, const std::optional<Status>& answer) {
  ++m_service.statistics.requests;
  const auto call = std::make_shared<Call>(m_service, std::move(client), request.opcode(), std::move(send));
  switch (request.opcode()) {
    case vesk::IPC_OP_PING:
      call->completeBare(vesk::IPC_SUCCESS);
      break;
    case vesk::IPC_OP_STOP:
      stop(*call);
      break;
    default:
      carryOutRow(*call, request, answer);
  }
  return call;
}

void Dispatcher::stop(Call& call) {
  if (!call.caller().mayAdminister) return call.completeBare(vesk::IPC_NOT_AUTHORIZED);
  m_onStop();
  call.completeBare(vesk::IPC_SUCCESS);
}

}  // namespace brondalt
