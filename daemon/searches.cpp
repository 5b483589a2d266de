#include "daemon/handlers.h"

#include <memory>
#include <utility>

#include <lber.h>

#include "daemon/call.h"

namespace brondalt {
namespace {

constexpr size_t kUsualPageSize = 100;
/// Clients cannot close paged searches, so opening one more ends the oldest.
constexpr size_t kMaxPagedSearches = 64;

using Names = std::vector<std::string>;

/// A search with its limit, or page size; 0 means none.
struct LimitedQuery {
  SearchQuery query;
  size_t limit;
};

Names readNames(handlers::Request request) {
  struct Free {
    void operator()(char** names) const { ber_memvfree(reinterpret_cast<void**>(names)); }
  };
  const std::unique_ptr<char*, Free> names(request.getCharStringArray());
  Names result;
  for (char** name = names.get(); name && *name; ++name) result.emplace_back(*name);
  return result;
}

LimitedQuery readQuery(handlers::Request request) {
  LimitedQuery read;
  read.query.domain = request.getString();
  read.query.base = request.getString();
  read.query.filter = request.getString();
  read.query.attributes = readNames(request);
  read.query.scope = static_cast<vesk::LdapSearchScopeType>(request.getInt());
  const int limit = request.getInt();
  read.limit = limit > 0 ? static_cast<size_t>(limit) : 0;
  request.getInt();
  return read;
}

int keep(Call& call, std::unique_ptr<Search> search, size_t pageSize) {
  auto& open = call.client().searches;
  if (open.size() >= kMaxPagedSearches) open.erase(open.begin());
  const int handle = call.newSearchHandle();
  open[handle] = {std::move(search), pageSize};
  return handle;
}

}  // namespace

void handlers::ldapSearch(Call& call, Request request) {
  const LimitedQuery read = readQuery(request);
  call.backend().search(call.caller(), read.query, read.limit, call.reply<Objects>());
}

void handlers::ldapPagedSearch(Call& call, Request request) {
  const LimitedQuery read = readQuery(request);
  const size_t pageSize = read.limit ? read.limit : kUsualPageSize;
  call.backend().openSearch(call.caller(), read.query,
                            [self = call.shared_from_this(), reply = call.reply<int>(),
                             pageSize](Answer<std::unique_ptr<Search>> answer) {
                              if (self->isComplete()) return;  // timed out: its handle is unknown
                              if (!answer) return reply(answer.status());
                              reply(keep(*self, std::move(*answer), pageSize));
                            });
}

void handlers::ldapPagedNext(Call& call, Request request) {
  const int handle = request.getInt();
  const auto found = call.client().searches.find(handle);
  if (found == call.client().searches.end())
    return call.complete({vesk::VR_BAD_PARAMETER, "No such paged search"});
  const PagedSearch paged = found->second;  // a copy: the completion may drop the client's
  call.onTimeOut([handle](Client& client) { client.searches.erase(handle); });
  paged.search->next(paged.pageSize, [self = call.shared_from_this(), reply = call.reply<Objects>(),
                                      handle](Answer<Objects> answer) {
    // The reply may trigger the client's next request, which must not find a search that has ended. The
    // search may own this completion, so it is destroyed last.
    decltype(Client::searches)::node_type ended;
    if (answer && (*answer).empty()) ended = self->client().searches.extract(handle);
    reply(std::move(answer));
  });
}

void handlers::ldapFetch(Call& call, Request request) {
  const std::string domain = request.getString();
  const std::string dn = request.getString();
  const Names attributes = readNames(request);
  request.getInt();
  call.backend().fetch(call.caller(), domain, dn, attributes, call.reply<Object>());
}

}  // namespace brondalt
