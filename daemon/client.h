/// What the daemon keeps for each of its clients.
#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "daemon/backend.h"

namespace brondalt {

struct PagedSearch {
  std::unique_ptr<Search> search;
  size_t pageSize;
};

/// Belongs to one connection and ends with it.
struct Client {
  Caller caller;
  std::map<vesk::DSObjectType, std::unique_ptr<Listing>> listings;
  std::map<int, PagedSearch> searches;  ///< by handle
  std::string challenge;                ///< of the NTLM exchange that has begun
};

}  // namespace brondalt
