#include "standin/call.h"

#include <fokrazo/ipc_exception.h>
#include <fokrazo/session.h>

namespace standin {

vesk::IPCMessage& Call::succeed(const std::string& message) {
  writeStatus(vesk::VR_SUCCESS, 0, 0, message);
  return m_reply;
}

void Call::refuse(vesk::ValidationResult result, const std::string& message, int statusCode, int detail) {
  writeStatus(result, statusCode, detail, message);
}

void Call::fail(vesk::ValidationResult result, const std::string& message) {
  writeStatus(result, 0, 0, message);
  vesk::IPCException exception(message);
  m_reply += exception;
}

void Call::answer(vesk::ValidationResult result, int detail) {
  bool isSuccess = result == vesk::VR_SUCCESS;
  writeStatus(result, 0, detail, isSuccess ? std::string() : vesk::LocalRpcSession::errorString(result));
}

void Call::writeStatus(vesk::ValidationResult result, int statusCode, int detail,
                       const std::string& message) {
  m_reply += static_cast<int>(result);
  m_reply += statusCode;
  m_reply += detail;
  m_reply += message;
  // The stand-in's own health is always good: it has no server that could fail it.
  m_reply += static_cast<int>(vesk::VR_SUCCESS);
  m_reply += static_cast<int>(service.directory.size());
  m_reply += static_cast<int>(service.requests);
  m_reply += "Stand-in serving " + service.directory.domain().dnsName;
}

}  // namespace standin
