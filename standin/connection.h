/// One client of the stand-in: its socket, what has come in and what has to go out.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "standin/service.h"

namespace standin {

/// Reads frames (4 bytes of length in host order, then the message) and writes replies without ever blocking.
/// While a reply is on its way nothing more is read, so a client that does not take its replies costs no more
/// than one of them.
/// Thread-safety: one thread at a time.
class Connection {
 public:
  /// A longer frame ends the connection.
  static constexpr size_t kMostFrameBytes = 16 << 20;

  /// Owns the descriptor from here on, which is non-blocking. The peer's rights come from its credentials.
  explicit Connection(int fd);
  ~Connection();
  Connection(const Connection&) = delete;
  Connection& operator=(const Connection&) = delete;

  int fd() const { return m_fd; }
  ClientState& client() { return m_client; }
  /// The poll events to wait for.
  short wanted() const;
  /// Whether there is nothing more to do but to close.
  bool isFinished() const { return m_isFinished; }

  /// Reads what has come. After it, and after each reply has gone, nextFrame may have something.
  void receive();
  /// The message of the next complete frame, if there is one and no reply is on its way. Valid until the next
  /// call of receive or nextFrame.
  bool nextFrame(std::string_view& message);

  /// Queues bytes and sends what the socket takes.
  void send(std::string bytes);
  /// As send, a byte in each round.
  void trickle(std::string bytes);
  /// As send, and nothing more after it: the client can read it and then meets the end of the stream.
  void sendLast(std::string bytes);
  /// Goes on sending.
  void flush();
  /// Whether the client has read all that was sent.
  bool isDelivered() const;

  /// Closes at once.
  void end() { m_isFinished = true; }
  /// Neither reads nor writes any more, until the client goes.
  void fallSilent();

 private:
  void dropServed();

  int m_fd;
  ClientState m_client;
  std::string m_input;
  size_t m_served = 0;  // bytes at the front of m_input that nextFrame has handed out
  std::string m_output;
  size_t m_sent = 0;
  bool m_trickles = false;
  bool m_isLast = false;
  bool m_isSilent = false;
  bool m_isFinished = false;
};

}  // namespace standin
