/// State shared by all requests of a daemon.
#pragma once

namespace brondalt {

class Backend;

/// Counters for administrators.
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
