/// Deliberate misbehaviour, to test clients.
#pragma once

#include <string>
#include <vector>

namespace standin {

/// Ways to mishandle a request.
enum class Fault {
  None,
  Drop,     ///< the connection is closed; the request is not carried out
  Lose,     ///< the request is carried out, and the connection is closed without a reply
  Stall,    ///< there is no reply, and the connection stays open
  Garbage,  ///< the reply is not a message
  Empty,    ///< the reply is a frame of length 0
  Huge,     ///< the reply announces four gigabytes and ends there
  Short,    ///< the connection is closed in the middle of the reply
  Cut,      ///< the connection is closed between the reply's length and its message
  Trickle,  ///< the reply is sent one byte at a time
  Refuse,   ///< the reply's result is "not authorized"
  Restart,  ///< all connections are closed and the socket is replaced, as by a restart
};

/// Selects the fault for each request. Requests are counted from 1, over all connections.
/// Thread-safety: one thread at a time.
class Faults {
 public:
  /// Adds a fault: "WHAT" affects every request, "WHAT@N" only the Nth, "WHAT%N" every Nth.
  /// @throws Error the text has none of these forms
  void add(const std::string& text);

  /// Counts a request and returns its fault; of several, the one added first.
  Fault next();

  /// The help text: one line for each word that add() accepts.
  static std::string help();

 private:
  struct Rule {
    Fault fault;
    bool repeats;
    unsigned long number;
  };

  std::vector<Rule> m_rules;
  unsigned long m_count = 0;
};

}  // namespace standin
