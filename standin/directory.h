/// The directory that the stand-in serves: all entries in memory, and the keys by which they are found.
#pragma once

#include <cstdint>
#include <ctime>
#include <deque>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include <fokrazo/sid.h>
#include "standin/entry.h"
#include "standin/membership.h"

namespace standin {

/// The domain that the entries belong to.
struct Domain {
  std::string dnsName;       ///< "example.com", in lower case; empty for a directory without a domain's DN
  std::string netbiosName;   ///< "EXAMPLE"
  std::string realm;         ///< "EXAMPLE.COM"
  std::string baseDn;        ///< DN of the domain
  EntryId entry = kNoEntry;  ///< the domain's own entry, if it is in the directory
};

/// Finds entries by name: any case of ASCII letters, though an entry that is spelled as asked for goes first,
/// and else the one that was loaded first.
class NameIndex {
 public:
  /// The empty name is no name.
  void add(const std::string& name, EntryId id);
  /// kNoEntry if there is none.
  EntryId find(std::string_view name) const;
  /// The name as it was added; null if there is none.
  const std::string* findName(std::string_view name) const;

 private:
  struct Named {
    std::string name;
    EntryId id;
  };
  const Named* findNamed(std::string_view name) const;

  std::unordered_map<std::string, std::vector<Named>> m_byFoldedName;
};

/// Which families of entries a lookup takes into account.
enum class Family { Accounts, Groups, Both };

/// The entries, kept in the order of loading. Every finder takes constant time, bar the walk over equal
/// names. Thread-safety: one thread at a time.
class Directory {
 public:
  Directory();
  ~Directory();
  Directory(const Directory&) = delete;
  Directory& operator=(const Directory&) = delete;

  /// Takes an entry in. The entry with the empty DN becomes the root entry and has no number.
  /// @throws Error there is an entry of that DN.
  EntryId add(Entry entry);
  /// Loads all entries of an LDIF file. @throws as readLdif and add.
  void load(const std::string& ldifPath);

  size_t size() const { return m_entries.size(); }
  const Entry& operator[](EntryId id) const { return m_entries[id].entry; }
  EntryKind kind(EntryId id) const { return m_entries[id].kind; }
  /// The key of an entry's DN (standin/dn_key.h).
  const std::string& key(EntryId id) const { return *m_entries[id].key; }
  const Domain& domain() const;
  /// What a search at the empty base gives: the LDIF's own entry of that name, else one made of the domain.
  const Entry& rootEntry() const;

  EntryId byDn(std::string_view dn) const;
  /// By an account's or a group's Unix name, account name, user principal name, DOMAIN\name or DN, in this
  /// order.
  EntryId byName(std::string_view name, Family family) const;
  /// By name as byName, but with only the names that Unix hosts use, or only those of the directory.
  EntryId byUnixName(std::string_view name, Family family) const;
  EntryId byWindowsName(std::string_view name, Family family) const;
  EntryId byUnixId(uint32_t id, Family family) const;
  /// By the binary SID and by the 16 bytes of a GUID.
  EntryId bySid(std::string_view sid) const;
  EntryId byGuid(std::string_view guid) const;
  /// A service principal name as its entry spells it; null if no entry has it.
  const std::string* findService(std::string_view name) const;

  /// Whether an entry is an account or a group, as `family` says.
  bool isOf(EntryId id, Family family) const;
  /// Whether `name` names the domain: its DNS or its short name, in any case.
  bool isDomainName(std::string_view name) const;

  const Membership& membership() const;
  /// The binary SIDs of all groups of an account: of those in the directory, then of those that only the
  /// account names.
  std::vector<std::string> groupSids(EntryId account) const;

  /// Replaces an attribute's values by one, and brings the entry's sequence number and time of change
  /// forward. Not for attributes by which entries are found.
  void set(EntryId id, std::string_view attribute, const std::string& value);
  /// Rises with every change; what was made of an entry holds as long as it stays the same.
  unsigned long generation() const { return m_generation; }
  /// The highest sequence number of any entry.
  int64_t highestUsn() const { return m_usn; }
  /// The SID of the domain's next new account, in binary form; empty for a domain without a SID.
  std::string nextSid() const;

 private:
  struct Names {
    NameIndex unixNames;
    NameIndex accountNames;
    NameIndex principals;
    std::unordered_map<uint32_t, EntryId> ids;
  };

  struct Slot {
    Entry entry;
    EntryKind kind;
    const std::string* key;  // that of m_byDn
  };

  void index(EntryId id);
  void indexNames(EntryId id, Names& names);
  void touch();
  void linkGroup(EntryId group, Membership& membership) const;
  void linkMember(EntryId member, Membership& membership) const;
  EntryId windowsName(std::string_view name, const Names& names) const;
  template <class Find>
  EntryId inFamilies(Family family, Find find) const;

  std::deque<Slot> m_entries;
  std::unordered_map<std::string, EntryId> m_byDn;
  Names m_accounts;
  Names m_groups;
  std::unordered_map<std::string, EntryId> m_bySid;
  std::unordered_map<std::string, EntryId> m_byGuid;
  NameIndex m_services;
  std::unique_ptr<const Entry> m_ownRoot;
  unsigned long m_generation = 1;
  int64_t m_usn = 0;

  // Made of the entries when first asked for, and again after new entries.
  mutable std::unique_ptr<const Domain> m_domain;
  mutable std::unique_ptr<const Membership> m_membership;
  mutable std::unique_ptr<const Entry> m_madeRoot;
};

/// Whether bytes are one complete binary SID.
bool isSid(const std::string& bytes);
/// The SID of its binary form; the null SID of no bytes.
vesk::SID toSid(const std::string& bytes);
/// The binary SID of an entry; empty if it has none or a damaged one.
std::string entrySid(const Entry& entry);
/// The SID of the entry's primary group; empty if it has none.
std::string primaryGroupSid(const Entry& entry);
/// The time in the directory's own form, "YYYYMMDDhhmmss.0Z".
std::string directoryTime(time_t time);

}  // namespace standin
