/// One request as the operations see it, and the reply that they write.
#pragma once

#include <string>

#include <fokrazo/ipcmessage.h>
#include <fokrazo/validation_result.h>
#include "standin/service.h"

namespace standin {

/// Carries one request to its operation. An operation reads all fields of the request, then calls one of
/// succeed, refuse and fail, once, and after succeed appends the fields that follow the status block.
class Call {
 public:
  Call(Service& service, ClientState& client, const vesk::IPCMessage& request, vesk::IPCReply& reply)
      : service(service), client(client), request(request), m_reply(reply) {}

  Service& service;
  ClientState& client;
  const vesk::IPCMessage& request;

  /// Writes the status block of a success; what follows it goes to the message returned.
  vesk::IPCMessage& succeed(const std::string& message = std::string());
  /// Writes the status block of a failure, which ends the reply. VR_SUCCESS is no failure but allowed.
  void refuse(vesk::ValidationResult result, const std::string& message, int statusCode = 0, int detail = 0);
  /// As refuse, with a remote exception of the same message behind it.
  void fail(vesk::ValidationResult result, const std::string& message);
  /// refuse, with the result's own text; a success is one, too.
  void answer(vesk::ValidationResult result, int detail = 0);

  /// The account of a name; kNoEntry if there is none.
  EntryId account(const std::string& name) const { return service.directory.byName(name, Family::Accounts); }

 private:
  void writeStatus(vesk::ValidationResult result, int statusCode, int detail, const std::string& message);

  vesk::IPCReply& m_reply;
};

}  // namespace standin
