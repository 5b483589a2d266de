/// What the stand-in knows: of the directory, and of each of its clients.
#pragma once

#include <map>
#include <string>

#include "standin/accounts.h"
#include "standin/attribute_map.h"
#include "standin/directory.h"
#include "standin/search.h"

namespace standin {

/// A paged search of a client.
struct PagedSearch {
  Search search;
  std::vector<std::string> attributes;
  size_t pageSize;
  bool rootIsDone = false;
};

/// What belongs to one connection and ends with it.
struct ClientState {
  bool mayAdminister = false;           ///< the peer is root or runs as the stand-in's own user
  std::map<int, EntryId> listings;      ///< open listings: where the next entry is looked for, by object type
  std::map<int, PagedSearch> searches;  ///< open paged searches by handle
  std::string sessionId;                ///< the client's own name for the connection, for the log alone
  std::string challenge;                ///< of the NTLM exchange that has begun
};

/// What all connections share.
/// Thread-safety: one thread at a time.
struct Service {
  Directory directory;
  Accounts accounts{directory};
  AttributeMap objects{directory};
  /// Never the same twice, so that the handle of a lost connection is not another search's on a new one.
  int lastSearchHandle = 0;
  unsigned long requests = 0;
  bool networkHasChanged = false;
  bool stopIsWanted = false;
};

}  // namespace standin
