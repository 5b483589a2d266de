/// The daemon's state for each client.
#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "daemon/backend.h"

namespace brondalt {

struct PagedSearch {
  std::shared_ptr<Search> search;  ///< shared only with a next() that has not returned
  size_t pageSize;
};

/// Lives as long as one connection.
struct Client {
  Caller caller;
  std::map<vesk::DSObjectType, std::shared_ptr<Listing>> listings;  ///< shared as above
  std::map<int, PagedSearch> searches;                              ///< by handle
  std::string challenge;                                            ///< of the current NTLM exchange
};

}  // namespace brondalt
