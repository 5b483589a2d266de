#include "standin/handlers.h"

#include <climits>
#include <memory>
#include <utility>

#include <lber.h>

#include <fokrazo/adserializer.h>
#include <fokrazo/attrnames.h>
#include "standin/call.h"
#include "standin/error.h"

namespace standin {
namespace {

constexpr size_t kUsualPageSize = 100;
/// A client cannot give up a paged search, so the oldest goes when it opens more than this.
constexpr size_t kMostPagedSearches = 64;

using Names = std::vector<std::string>;

/// The fields that all searches have.
struct Query {
  std::string domain;
  std::string base;
  std::string filter;
  Names attributes;
  int scope;
  size_t limit;
};

Names readNames(const vesk::IPCMessage& request) {
  struct Free {
    void operator()(char** names) const { ber_memvfree(reinterpret_cast<void**>(names)); }
  };
  std::unique_ptr<char*, Free> names(request.getCharStringArray());
  Names result;
  for (char** name = names.get(); name && *name; ++name) result.emplace_back(*name);
  return result;
}

Query readQuery(const vesk::IPCMessage& request) {
  Query query;
  query.domain = request.getString();
  query.base = request.getString();
  query.filter = request.getString();
  query.attributes = readNames(request);
  query.scope = request.getInt();
  int limit = request.getInt();
  query.limit = limit > 0 ? static_cast<size_t>(limit) : 0;
  request.getInt();
  return query;
}

Search openSearch(const Directory& directory, const Query& query) {
  if (!query.domain.empty() && !directory.isDomainName(query.domain))
    throw Error("Unknown domain: " + query.domain);
  return Search(directory, query.base, query.scope, query.filter);
}

/// Writes a list: its count, then each object. A complete object goes out as it lies ready.
void writeList(vesk::IPCMessage& reply, AttributeMap& objects, const std::vector<EntryId>& ids,
               const Names& attributes) {
  reply += static_cast<int>(ids.size());
  for (EntryId id : ids) {
    if (attributes.empty()) {
      reply += objects.blob(id);
      continue;
    }
    vesk::ADObject object = objects.object(id, attributes);
    reply += object;
  }
}

void writeRoot(vesk::IPCMessage& reply, const AttributeMap& objects, const Names& attributes) {
  vesk::ADObject root = objects.rootObject(attributes);
  reply += 1;
  reply += root;
}

}  // namespace

void handlers::ldapSearch(Call& call) {
  Query query = readQuery(call.request);
  try {
    Search search = openSearch(call.service.directory, query);
    if (search.findsRoot()) return writeRoot(call.succeed(), call.service.objects, query.attributes);
    std::vector<EntryId> found = search.next(query.limit ? query.limit : SIZE_MAX);
    writeList(call.succeed(), call.service.objects, found, query.attributes);
  } catch (const Error& error) {
    call.fail(vesk::VR_BAD_PARAMETER, error.what());
  }
}

void handlers::ldapPagedSearch(Call& call) {
  Query query = readQuery(call.request);
  try {
    PagedSearch search = {openSearch(call.service.directory, query), query.attributes,
                          query.limit ? query.limit : kUsualPageSize};
    std::map<int, PagedSearch>& open = call.client.searches;
    if (open.size() >= kMostPagedSearches) open.erase(open.begin());
    int handle = ++call.service.lastSearchHandle;
    open.emplace(handle, std::move(search));
    call.succeed() += handle;
  } catch (const Error& error) {
    call.fail(vesk::VR_BAD_PARAMETER, error.what());
  }
}

void handlers::ldapPagedNext(Call& call) {
  auto found = call.client.searches.find(call.request.getInt());
  if (found == call.client.searches.end()) return call.fail(vesk::VR_BAD_PARAMETER, "No such paged search");
  PagedSearch& paged = found->second;
  if (paged.search.findsRoot() && !std::exchange(paged.rootIsDone, true))
    return writeRoot(call.succeed(), call.service.objects, paged.attributes);
  std::vector<EntryId> page = paged.search.next(paged.pageSize);
  writeList(call.succeed(), call.service.objects, page, paged.attributes);
  if (page.empty()) call.client.searches.erase(found);
}

void handlers::ldapFetch(Call& call) {
  std::string domain = call.request.getString();
  std::string dn = call.request.getString();
  Names attributes = readNames(call.request);
  call.request.getInt();
  const Directory& directory = call.service.directory;
  if (!domain.empty() && !directory.isDomainName(domain))
    return call.fail(vesk::VR_BAD_PARAMETER, "Unknown domain: " + domain);
  EntryId id = dn.empty() ? kNoEntry : directory.byDn(dn);
  if (!dn.empty() && id == kNoEntry) return call.fail(vesk::VR_NO_SUCH_OBJECT, "No such object");
  vesk::ADObject object =
      dn.empty() ? call.service.objects.rootObject(attributes) : call.service.objects.object(id, attributes);
  call.succeed() += object;
}

}  // namespace standin
