/// The socket of one client, with its input and output.
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

/// Reads requests and writes replies one at a time and never blocks. While a request is carried out or its
/// reply is being sent, nothing more is read, so a client that does not read its replies costs at most one of
/// them.
/// Thread-safety: one thread at a time.
class Connection {
 public:
  /// The peer's credentials determine its rights. A frame of more than `maxFrameBytes` ends the connection.
  Connection(Descriptor fd, size_t maxFrameBytes);
  /// Wipes unsent bytes.
  ~Connection();
  Connection(const Connection&) = delete;
  Connection& operator=(const Connection&) = delete;

  int fd() const { return m_fd.get(); }
  const std::shared_ptr<Client>& client() const { return m_client; }
  /// The loop events to wait for.
  unsigned wanted() const;
  /// Whether the connection should be closed.
  bool isFinished() const { return m_state == State::Finished; }
  /// Whether it waits for the rest of a request, for the back end, or for the client to take a reply.
  bool isBusy() const;
  /// Whether it waits for the back end.
  bool isAnswering() const { return m_state == State::Answering; }
  /// When it last made progress.
  EventLoop::Clock::time_point lastProgress() const { return m_lastProgress; }

  /// Handles loop events by receiving or sending. A request may then be available from nextRequest.
  void handle(unsigned events);
  /// Takes the next complete request, if there is one and the connection is idle. `message` is valid until
  /// the next call of handle or nextRequest. The connection is then answering until one of the calls below.
  bool nextRequest(std::string_view& message);

  /// Answers the request with these bytes, sent as the socket accepts them, at most `mostAtOnce` in each
  /// round of the loop.
  void send(std::string bytes, size_t mostAtOnce = std::string::npos);
  /// As send, followed by the end of the stream.
  void sendLast(std::string bytes);
  /// Whether the client has read all that was sent.
  bool isDelivered() const;

  /// Closes immediately.
  void end() { m_state = State::Finished; }
  /// Stops reading and writing until the client closes.
  void stall() { m_state = State::Stalled; }

 private:
  enum class State { Idle, Answering, Sending, Stalled, Finished };

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
  size_t m_mostAtOnce = std::string::npos;
  bool m_isLast = false;
};

}  // namespace brondalt
