#include "daemon/call.h"

#include <climits>
#include <cstring>
#include <exception>

#include <fokrazo/adserializer.h>
#include <fokrazo/ipc_exception.h>
#include <fokrazo/session.h>

namespace brondalt {
namespace {

std::string textOf(const Status& status) {
  const bool isUsual = status.message.empty() && !status.isSuccess();
  return isUsual ? vesk::LocalRpcSession::errorString(status.result) : status.message;
}

}  // namespace

Call::Call(Service& service, std::shared_ptr<Client> client, vesk::IPC_OPCODE opcode, Send send)
    : m_service(service), m_client(std::move(client)), m_opcode(opcode), m_send(std::move(send)) {}

Call::~Call() {
  completeBare(vesk::IPC_SYSTEM_ERROR);
}

int Call::newSearchHandle() {
  constexpr unsigned kMaxHandles = INT_MAX;
  m_service.lastSearchHandle = m_service.lastSearchHandle % kMaxHandles + 1;
  return static_cast<int>(m_service.lastSearchHandle);
}

DoneStatus Call::reply() {
  return [self = shared_from_this()](const Status& status) { self->complete(status); };
}

void Call::complete(const Status& status, const std::function<void(vesk::IPCMessage&)>& writeResults) {
  write([&](vesk::IPCReply& reply) {
    writeStatus(reply, status, 0);
    if (status.isSuccess()) {
      if (writeResults) writeResults(reply);
    } else if (m_throws) {
      vesk::IPCException exception(textOf(status));
      reply += exception;
    }
  });
}

void Call::timeOut() {
  if (isComplete()) return;
  if (m_drop) m_drop(*m_client);
  complete(Status::away("The directory does not answer"));
}

void Call::endListing() {
  write([&](vesk::IPCReply& reply) {
    writeStatus(reply, {vesk::VR_NO_MORE, "End of list"}, vesk::END_OF_LIST);
  });
}

void Call::completeBare(vesk::IPC_RESULT result) {
  write([&](vesk::IPCReply& reply) { reply.setResult(result); });
}

void Call::write(const std::function<void(vesk::IPCReply& reply)>& writeReply) {
  if (isComplete()) return;
  try {
    vesk::IPCReply reply(m_opcode);
    writeReply(reply);
    return send(&reply);
  } catch (const std::exception&) {
    // The unfinished reply is dropped; a shorter one replaces it below.
  }
  try {
    vesk::IPCReply reply(m_opcode);
    reply.setResult(vesk::IPC_SYSTEM_ERROR);
    send(&reply);
  } catch (const std::exception&) {
    send(nullptr);
  }
}

void Call::send(vesk::IPCReply* reply) {
  const Send send = std::exchange(m_send, nullptr);
  if (send) send(reply);
}

void Call::writeStatus(vesk::IPCMessage& reply, const Status& status, int code) const {
  reply += static_cast<int>(status.result);
  reply += code;
  reply += status.detail;
  reply += textOf(status);
  const Health health = m_service.backend.health();
  reply += static_cast<int>(health.result);
  reply += health.first;
  reply += health.second;
  reply += health.message;
}

void Call::append(vesk::IPCMessage& message, const Objects& values) {
  message += static_cast<int>(values.size());
  for (const Object& value : values) append(message, value);
}

void Call::append(vesk::IPCMessage& message, const DomainNames& value) {
  (message += value.dns) += value.netbios;
}

vesk::Shredder readSecret(const vesk::IPCMessage& request) {
  std::string text = request.getString();
  vesk::Shredder secret(text);
  explicit_bzero(text.data(), text.size());
  return secret;
}

}  // namespace brondalt
