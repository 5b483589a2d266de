#include "standin/ldif_backend.h"

#include <utility>

#include <fokrazo/adserializer.h>
#include "standin/error.h"
#include "standin/search.h"

namespace standin {

using namespace brondalt;

/// The objects found by a search, with the wanted attributes.
class LdifBackend::LdifSearch : public brondalt::Search {
 public:
  /// @throws Error as standin::Search, and for any other domain
  LdifSearch(const Directory& directory, AttributeMap& objects, const SearchQuery& query)
      : m_objects(objects),
        m_entries(directory, query.base, query.scope, query.filter),
        m_attributes(query.attributes) {}

  void next(size_t limit, Done<Objects> done) override { done(next(limit)); }

  Objects next(size_t limit) {
    if (m_entries.findsRoot() && !std::exchange(m_rootIsDone, true)) return {m_objects.root(m_attributes)};
    Objects found;
    for (EntryId id : m_entries.next(limit)) found.push_back(m_objects.blob(id, m_attributes));
    return found;
  }

 private:
  AttributeMap& m_objects;
  standin::Search m_entries;
  std::vector<std::string> m_attributes;
  bool m_rootIsDone = false;
};

LdifBackend::LdifSearch LdifBackend::makeSearch(const SearchQuery& query) {
  if (!query.domain.empty() && !m_directory.isDomainName(query.domain))
    throw Error("Unknown domain: " + query.domain);
  return LdifSearch(m_directory, m_objects, query);
}

void LdifBackend::search(const Caller&, const SearchQuery& query, size_t limit, Done<Objects> done) {
  try {
    done(makeSearch(query).next(limit ? limit : SIZE_MAX));
  } catch (const Error& error) {
    done(Status(vesk::VR_BAD_PARAMETER, error.what()));
  }
}

void LdifBackend::openSearch(const Caller&, const SearchQuery& query,
                             Done<std::unique_ptr<brondalt::Search>> done) {
  try {
    done(std::unique_ptr<brondalt::Search>(std::make_unique<LdifSearch>(makeSearch(query))));
  } catch (const Error& error) {
    done(Status(vesk::VR_BAD_PARAMETER, error.what()));
  }
}

void LdifBackend::fetch(const Caller&, const std::string& domain, const std::string& dn,
                        const std::vector<std::string>& attributes, Done<Object> done) {
  if (!domain.empty() && !m_directory.isDomainName(domain))
    return done(Status(vesk::VR_BAD_PARAMETER, "Unknown domain: " + domain));
  if (dn.empty()) return done(m_objects.root(attributes));
  const EntryId id = m_directory.byDn(dn);
  if (id == kNoEntry) return done(Status(vesk::VR_NO_SUCH_OBJECT, "No such object"));
  done(m_objects.blob(id, attributes));
}

}  // namespace standin
