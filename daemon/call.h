/// One request and its reply.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <utility>

#include <fokrazo/ipcmessage.h>
#include "daemon/backend.h"
#include "daemon/client.h"
#include "daemon/service.h"

namespace brondalt {

/// Completes the reply to a request, immediately or later: an operation reads all fields and then passes a
/// completion to the back end. The reply is sent when the completion is called, or, as "system error", when
/// the last reference to the call is gone.
/// Thread-safety: one thread at a time.
class Call : public std::enable_shared_from_this<Call> {
 public:
  /// Receives the reply, or null if there is no memory for one.
  using Send = std::function<void(vesk::IPCReply*)>;

  /// `send` is called once. `service` must outlive the call.
  Call(Service& service, std::shared_ptr<Client> client, vesk::IPC_OPCODE opcode, Send send);
  ~Call();
  Call(const Call&) = delete;
  Call& operator=(const Call&) = delete;

  Backend& backend() const { return m_service.backend; }
  Client& client() const { return *m_client; }
  const Caller& caller() const { return m_client->caller; }
  /// A handle that no search has used for a long time, so that a handle from a lost connection does not match
  /// another search on a new one.
  int newSearchHandle();

  /// The completion of an operation without results.
  DoneStatus reply();
  /// The completion of an operation whose value follows the status block.
  template <class T>
  Done<T> reply() {
    return reply<T>([](vesk::IPCMessage& message, T& value) { append(message, value); });
  }
  /// As above; `write` appends the value.
  template <class T, class Write>
  Done<T> reply(Write write) {
    return [self = shared_from_this(), write = std::move(write)](Answer<T> answer) {
      self->complete(answer.status(), [&](vesk::IPCMessage& message) { write(message, *answer); });
    };
  }
  /// From now on a failure is followed by an exception with its text.
  void throwFailures() { m_throws = true; }

  /// Each of these replies immediately, or does nothing if the call is complete. None throws. `writeResults`
  /// appends what follows the status of a success.
  void complete(const Status& status, const std::function<void(vesk::IPCMessage&)>& writeResults = {});
  /// If the back end does not answer in time, `drop` is called to end the search or listing that the request
  /// reads from, because its position is then unknown.
  void onTimeOut(std::function<void(Client& client)> drop) { m_drop = std::move(drop); }
  /// Replies that the directory does not answer. Hold a reference to the call meanwhile.
  void timeOut();
  /// Replies that a listing has ended.
  void endListing();
  /// Replies with just the header.
  void completeBare(vesk::IPC_RESULT result);
  bool isComplete() const { return !m_send; }

  static void append(vesk::IPCMessage& message, int value) { message += value; }
  static void append(vesk::IPCMessage& message, const std::string& value) { message += value; }
  static void append(vesk::IPCMessage& message, const Object& value) { message += value.get(); }
  static void append(vesk::IPCMessage& message, const Objects& values);
  static void append(vesk::IPCMessage& message, const DomainNames& value);

 private:
  void writeStatus(vesk::IPCMessage& reply, const Status& status, int code) const;
  void write(const std::function<void(vesk::IPCReply& reply)>& writeReply);
  void send(vesk::IPCReply* reply);

  Service& m_service;
  std::shared_ptr<Client> m_client;
  vesk::IPC_OPCODE m_opcode;
  Send m_send;  // empty once the reply is sent
  bool m_throws = false;
  std::function<void(Client& client)> m_drop;
};

/// Reads a secret field; temporary copies are wiped.
vesk::Shredder readSecret(const vesk::IPCMessage& request);

}  // namespace brondalt
