/// Answers that a client keeps for a while. Internal.
#pragma once

#include <list>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>

#include <boost/shared_ptr.hpp>

#include <fokrazo/client_options.h>
#include <fokrazo/object_key.h>
#include <fokrazo/session_types.h>
#include <fokrazo/unixviews.h>
#include "lrpc/client/client_state.h"
#include "util/thread/deadline.h"

namespace vesk {

/// Users and groups, and names for which there is none, each with its time to live; beyond the limits the one
/// that was not asked for longest goes first. Thread-safety: any thread.
class ReplyCache {
 public:
  /// A kept answer: null if there is no such object.
  using Answer = boost::shared_ptr<const VeskObj>;
  /// Taken before the daemon is asked: what was asked before a clear() is not kept after it.
  using Ticket = unsigned long;

  explicit ReplyCache(const CacheOptions& options) : m_options(options) {}

  bool isOn() const { return m_options.entries > 0; }
  /// The key of a lookup.
  static std::string keyOf(DSObjectType type, const ObjectKey& key, int flags);
  std::optional<Answer> find(const std::string& key);
  Ticket ticket();
  void keep(Ticket ticket, const std::string& key, const Answer& answer);
  void clear();

 private:
  struct Entry {
    std::string key;
    Answer answer;
    size_t size;
    Deadline end;
  };
  using Entries = std::list<Entry>;  // the one asked for last comes first

  struct State {
    Entries entries;
    std::unordered_map<std::string_view, Entries::iterator> index;  // its keys are those of the entries
    size_t bytes = 0;
    Ticket clears = 0;

    void erase(Entries::iterator entry, Entries& erased);
  };

  const CacheOptions m_options;
  ClientState<State> m_state FOKRAZO_GUARDED_BY(clientsMutex());
};

}  // namespace vesk
