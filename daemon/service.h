/// What all requests of a daemon share.
#pragma once

namespace brondalt {

class Backend;

/// Counters for people who look after the daemon.
struct Statistics {
  unsigned long requests = 0;
  unsigned long restarts = 0;
};

struct Service {
  Backend& backend;
  Statistics& statistics;
  unsigned lastSearchHandle = 0;
};

}  // namespace brondalt
