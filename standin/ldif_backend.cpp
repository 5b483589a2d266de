#include "standin/ldif_backend.h"

namespace standin {

LdifBackend::LdifBackend(const brondalt::Statistics& statistics) : m_statistics(statistics) {}
LdifBackend::~LdifBackend() = default;

brondalt::Health LdifBackend::health() const {
  // Always healthy: there is no server that could fail.
  return {vesk::VR_SUCCESS, static_cast<int>(m_directory.size()), static_cast<int>(m_statistics.requests),
          "Stand-in serving " + m_directory.domain().dnsName};
}

brondalt::Objects LdifBackend::objects(const std::vector<EntryId>& ids) {
  brondalt::Objects objects;
  for (EntryId id : ids) objects.push_back(m_objects.blob(id));
  return objects;
}

}  // namespace standin
