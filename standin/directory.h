/// The stand-in's directory: all entries, in memory, with indexes.
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
  std::string dnsName;       ///< "example.com", in lower case; empty if no entry's DN names a domain
  std::string netbiosName;   ///< "EXAMPLE"
  std::string realm;         ///< "EXAMPLE.COM"
  std::string baseDn;        ///< DN of the domain
  EntryId entry = kNoEntry;  ///< the domain's entry, if present
};

/// Finds entries by name, ignoring the case of ASCII letters. Of several matches the exact spelling wins,
/// otherwise the first one loaded.
class NameIndex {
 public:
  /// Does nothing for the empty name.
  void add(const std::string& name, EntryId id);
  /// kNoEntry if nothing matches.
  EntryId find(std::string_view name) const;
  /// The matching name as it was added; null if nothing matches.
  const std::string* findName(std::string_view name) const;

 private:
  struct Named {
    std::string name;
    EntryId id;
  };
  const Named* findNamed(std::string_view name) const;

  std::unordered_map<std::string, std::vector<Named>> m_byFoldedName;
};

/// The kinds of entries that a lookup considers.
enum class Family { Accounts, Groups, Both };

/// The entries, in the order of loading. Lookups take constant time, plus the number of equal names.
/// Thread-safety: one thread at a time.
class Directory {
 public:
  Directory();
  ~Directory();
  Directory(const Directory&) = delete;
  Directory& operator=(const Directory&) = delete;

  /// Adds an entry and returns its number. An entry with the empty DN becomes the root entry, which has no
  /// number: returns kNoEntry.
  /// @throws Error an entry with this DN already exists
  EntryId add(Entry entry);
  /// Loads all entries of an LDIF file. @throws as readLdif and add
  void load(const std::string& ldifPath);

  size_t size() const { return m_entries.size(); }
  const Entry& operator[](EntryId id) const { return m_entries[id].entry; }
  EntryKind kind(EntryId id) const { return m_entries[id].kind; }
  /// The key of an entry's DN (standin/dn_key.h).
  const std::string& key(EntryId id) const { return *m_entries[id].key; }
  const Domain& domain() const;
  /// The result of a search at the empty base (RFC 4512, 5.1): the loaded entry with the empty DN, or one
  /// derived from the domain; in either case with the present time as its currentTime.
  Entry rootEntry() const;

  EntryId byDn(std::string_view dn) const;
  /// Tries the Unix name, account name, user principal name, DOMAIN\name and DN, in this order.
  EntryId byName(std::string_view name, Family family) const;
  /// As byName, but by Unix names only, or by directory names only.
  EntryId byUnixName(std::string_view name, Family family) const;
  EntryId byWindowsName(std::string_view name, Family family) const;
  EntryId byUnixId(uint32_t id, Family family) const;
  /// By the binary SID and by the 16 bytes of a GUID.
  EntryId bySid(std::string_view sid) const;
  EntryId byGuid(std::string_view guid) const;
  /// The service principal name in its entry's spelling; null if no entry has it.
  const std::string* findService(std::string_view name) const;

  /// Whether an entry is of these kinds.
  bool isOf(EntryId id, Family family) const;
  /// Whether `name` is the domain's DNS or short name, ignoring case.
  bool isDomainName(std::string_view name) const;

  const Membership& membership() const;
  /// The binary SIDs of all groups of an account: first those in the directory, then those found only in the
  /// account's tokenGroups.
  std::vector<std::string> groupSids(EntryId account) const;

  /// Sets an attribute to one value, and updates the entry's sequence number and time of change. Not for
  /// indexed attributes.
  void set(EntryId id, std::string_view attribute, const std::string& value);
  /// Increases with every change. Data derived from entries is valid until then.
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
  Entry derivedRoot() const;
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

  // Derived from the entries on first use, and again after additions.
  mutable std::unique_ptr<const Domain> m_domain;
  mutable std::unique_ptr<const Membership> m_membership;
};

/// Whether the bytes are exactly one binary SID.
bool isSid(const std::string& bytes);
/// The SID with this binary form; the null SID for no bytes.
vesk::SID toSid(const std::string& bytes);
/// The binary SID of an entry; empty if it has none or it is malformed.
std::string entrySid(const Entry& entry);
/// The SID of the entry's primary group; empty if it has none.
std::string primaryGroupSid(const Entry& entry);
/// The time in the directory's format, "YYYYMMDDhhmmss.0Z".
std::string directoryTime(time_t time);

}  // namespace standin
