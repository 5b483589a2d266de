/// Misbehaviour on demand, so that a person or a test can see how a client takes it.
#pragma once

#include <string>
#include <vector>

namespace standin {

/// What may go wrong with one request.
enum class Fault {
  None,
  Drop,     ///< the connection is closed; the request is not carried out
  Lose,     ///< the request is carried out, and the connection is closed without a reply
  Stall,    ///< neither a reply nor an end
  Garbage,  ///< the reply is bytes that are no message
  Empty,    ///< the reply is a frame of length 0
  Huge,     ///< the reply announces four gigabytes, of which none come
  Short,    ///< the connection is closed in the middle of the reply
  Cut,      ///< the connection is closed between the reply's length and its message
  Trickle,  ///< the reply comes one byte at a time
  Refuse,   ///< the reply's result is "not authorized"
  Restart,  ///< every connection is closed and the socket made anew, as by a restart
};

/// Which request is hit by what. Requests are counted from 1, over all connections.
/// Thread-safety: one thread at a time.
class Faults {
 public:
  /// Adds the fault that a text tells: "WHAT" hits every request, "WHAT@N" the Nth alone, "WHAT%N" every Nth.
  /// @throws Error the text tells none.
  void add(const std::string& text);

  /// Counts one request and tells what hits it: of several faults the first that was added.
  Fault next();

  /// One line for each word that add() takes, for the help text.
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
