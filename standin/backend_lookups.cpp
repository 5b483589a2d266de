#include "standin/ldif_backend.h"

#include "standin/unix_profile.h"

namespace standin {
namespace {

using namespace brondalt;

Family familyOf(vesk::DSObjectType type) {
  switch (type) {
    case vesk::DSGroup:
      return Family::Groups;
    case vesk::DSAny:
      return Family::Both;
    default:
      return Family::Accounts;
  }
}

EntryId findByName(const Directory& directory, const std::string& name, const Selection& selection) {
  const EntryId id = directory.byName(name, familyOf(selection.type));
  return id == kNoEntry && selection.type == vesk::DSAny ? directory.byDn(name) : id;
}

/// Finds the entry for a key.
struct Finder {
  const Directory& directory;
  const Selection& selection;

  EntryId operator()(const std::string& name) const { return findByName(directory, name, selection); }
  EntryId operator()(const vesk::Guid& guid) const {
    return directory.byGuid({reinterpret_cast<const char*>(guid.bytes()), vesk::Guid::kSize});
  }
  EntryId operator()(uint32_t id) const { return directory.byUnixId(id, familyOf(selection.type)); }
  EntryId operator()(const vesk::SID& sid) const { return directory.bySid(sid.bytes()); }
};

/// Whether the entry found is in the selection.
bool fits(const Directory& directory, EntryId id, const Selection& selection) {
  if (selection.type != vesk::DSAny && !directory.isOf(id, familyOf(selection.type))) return false;
  return !selection.isUnixOnly || unixId(directory[id]);
}

/// Whether an entry belongs in a listing. Computers have accounts, but are not listed as users.
bool isListed(const Directory& directory, EntryId id, const Selection& selection) {
  const EntryKind kind = selection.type == vesk::DSGroup ? EntryKind::Group : EntryKind::User;
  return directory.kind(id) == kind && (!selection.isUnixOnly || unixId(directory[id]));
}

}  // namespace

class LdifBackend::LdifListing : public Listing {
 public:
  LdifListing(const Directory& directory, AttributeMap& objects)
      : m_directory(directory), m_objects(objects) {}

  void next(const Selection& selection, Done<Object> done) override {
    while (m_next < m_directory.size()) {
      const EntryId id = m_next++;
      if (isListed(m_directory, id, selection)) return done(m_objects.blob(id));
    }
    done(Object());
  }

 private:
  const Directory& m_directory;
  AttributeMap& m_objects;
  EntryId m_next = 0;
};

// The stand-in has no cache to bypass, and always includes memberships.
void LdifBackend::find(const Caller&, const Selection& selection, const LookupKey& key, Done<Object> done) {
  const EntryId id = std::visit(Finder{m_directory, selection}, key);
  if (id == kNoEntry || !fits(m_directory, id, selection)) return done(Status::notFound());
  done(m_objects.blob(id));
}

void LdifBackend::openListing(const Caller&, vesk::DSObjectType, Done<std::unique_ptr<Listing>> done) {
  done(std::unique_ptr<Listing>(std::make_unique<LdifListing>(m_directory, m_objects)));
}

}  // namespace standin
