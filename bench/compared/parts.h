/// The parts of the program `compared`. Each prints its figures; none depends on another.
#pragma once

#include <string>

namespace bench {

/// Sessions against a canned peer, both on one processor.
void measureExchanges();
/// Sessions against `program`, the stand-in daemon, with 300 accounts; both on one processor.
void measureStandin(const std::string& program);
/// The cost of exchanges by size of an object and length of a list.
void measureCurves();
/// Messages without a socket.
void measureMessages();
/// Reading and writing serialized objects, and the dictionary.
void measureModel();
/// SIDs, GUIDs and names as text.
void measureValues();
/// Reading a configuration file.
void measureConfig();
/// Locks and queues.
void measureRuntime();
/// Log messages: disabled, into a file, and through the background thread.
void measureLogging();

}  // namespace bench
