/// The socket of one client: what has come in, and what has to go out.
#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>

#include "daemon/client.h"
#include "daemon/descriptor.h"
#include "daemon/event_loop.h"
#include "daemon/frame_reader.h"

namespace brondalt {

/// Reads requests and writes replies without ever blocking, one after the other: while a request is carried
/// out or its reply is on its way, nothing more is read. A client that does not take its replies therefore
/// costs no more than one of them.
/// Thread-safety: one thread at a time.
class Connection {
 public:
  /// The peer's rights come from its credentials. A frame of more than `mostFrameBytes` ends the connection.
  Connection(Descriptor fd, size_t mostFrameBytes);
  /// Wipes what was not sent.
  ~Connection();
  Connection(const Connection&) = delete;
  Connection& operator=(const Connection&) = delete;

  int fd() const { return m_fd.get(); }
  const std::shared_ptr<Client>& client() const { return m_client; }
  /// The events of the loop to wait for.
  unsigned wanted() const;
  /// Whether there is nothing left to do but to close.
  bool isFinished() const { return m_state == State::Finished; }
  /// Whether it waits for the rest of a request, for the back end, or for the client to take a reply.
  bool isUnderWay() const;
  /// Whether it waits for the back end.
  bool isAnswering() const { return m_state == State::Answering; }
  /// When it last made progress.
  EventLoop::Clock::time_point lastProgress() const { return m_lastProgress; }

  /// Handles events of the loop, by receiving or sending. Afterwards nextRequest may have something.
  void handle(unsigned events);
  /// Takes the next complete request, if there is one and the connection is idle. Valid until the next call
  /// of handle or nextRequest. The connection is then answering until one of the calls below.
  bool nextRequest(std::string_view& message);

  /// Ends a request with these bytes, which are sent as the socket takes them.
  void send(std::string bytes);
  /// As send, one byte in each round of the loop.
  void trickle(std::string bytes);
  /// As send; afterwards the client finds the end of the stream.
  void sendLast(std::string bytes);
  /// Whether the client has read all that was sent.
  bool isDelivered() const;

  /// Closes at once.
  void end() { m_state = State::Finished; }
  /// Neither reads nor writes any more, until the client closes.
  void fallSilent() { m_state = State::Silent; }

 private:
  enum class State { Idle, Answering, Sending, Silent, Finished };

  void receive();
  void flush();
  void finishReply();

  Descriptor m_fd;
  std::shared_ptr<Client> m_client = std::make_shared<Client>();
  FrameReader m_input;
  State m_state = State::Idle;
  EventLoop::Clock::time_point m_lastProgress = EventLoop::Clock::now();
  std::string m_output;
  size_t m_sent = 0;
  bool m_trickles = false;
  bool m_isLast = false;
};

}  // namespace brondalt
