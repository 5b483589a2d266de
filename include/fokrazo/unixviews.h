/// Users and groups as a Unix host needs them. A view is built once from a directory object and keeps a
/// handle to it, but does not read the attributes again.
///
/// An object with a Unix id (`_Uid` for a user, `_Gid` for a group) is a Unix account and takes its Unix
/// fields from its attributes. Any other object has no Unix profile: its view is marked as not Unix and shows
/// the host's nobody identity (properties nss.nobody.*); its directory fields stay complete.
#pragma once

#include <cstdint>
#include <list>
#include <string>

#include <fokrazo/adobject.h>
#include <fokrazo/export.h>
#include <fokrazo/guid.h>
#include <fokrazo/sid.h>

namespace vesk {

/// "nobody".
FOKRAZO_API extern const std::string NOBODY;

/// What users and groups have in common.
/// Thread-safety: immutable; but its object belongs to one thread at a time.
class FOKRAZO_API VeskObj {
 public:
  virtual ~VeskObj();
  /// The Unix id, and a name, as defined in the derived classes.
  virtual unsigned int getId() const = 0;
  virtual std::string getName() const = 0;
  /// Whether the object has the Unix id.
  virtual bool isUnix() const;
  /// The object's; null if it has none.
  virtual Guid getGuid() const;
  virtual SID getSid() const;
  /// 0 for a user, 1 for a group.
  virtual int getType() const;
  /// The object's.
  virtual std::string getDN() const;
  /// A handle to the object.
  virtual ADObject getObject() const;

  /// When the object was acquired, in seconds since the epoch.
  long acquired() const { return m_acquired; }

 protected:
  /// The view is a Unix account if `object` has `idAttribute`. @throws SystemException null handle
  VeskObj(ADObject object, int objectType, const std::string& idAttribute);
  /// Copies GUID, SID and time from the object.
  void readIdentity();
  void setDN(const std::string& dn) { m_dn = dn; }
  ADObject& object() { return m_object; }

 private:
  bool m_unixEnabled;
  Guid m_guid;
  SID m_sid;
  long m_acquired = 0;
  int m_objectType;
  std::string m_dn;
  ADObject m_object;
};

/// A user.
class FOKRAZO_API User : public VeskObj {
 public:
  /// Shares `object`, and may leave empty attributes in it.
  /// @throws SystemException null handle, or an object without `_dn`
  explicit User(ADObject object);
  ~User() override;

  /// The uid.
  unsigned int getId() const override;
  /// The directory's account name; the Unix name may differ.
  std::string getName() const override;

  /// From the Unix profile; of the nobody account if there is none.
  const std::string& unixName() const { return m_unixName; }
  unsigned int gid() const { return m_gid; }
  /// The password field of a passwd line: "x" or a hash.
  const std::string& password() const { return m_password; }
  /// The Kerberos names; empty if missing.
  const std::string& servicePrincipalName() const { return m_servicePrincipalName; }
  const std::string& computedPrincipalName() const { return m_computedPrincipalName; }
  const std::string& userPrincipalName() const { return m_userPrincipalName; }
  /// The other fields of a passwd line.
  const std::string& shell() const { return m_shell; }
  const std::string& gecos() const { return m_gecos; }
  const std::string& home() const { return m_home; }
  /// One entry per value of `_groupSidList`; null for a value that is not a SID.
  const std::list<SID>& groupSids() const { return m_groupSids; }
  /// Unchanged attributes; empty if missing.
  const std::string& passwordHash() const { return m_passwordHash; }
  const std::string& workstations() const { return m_workstations; }
  const std::string& altSecurityIdentity() const { return m_altSecurityIdentity; }
  /// In the directory's units; -1 if missing.
  int64_t accountExpires() const { return m_accountExpires; }
  int64_t passwordLastSet() const { return m_passwordLastSet; }
  int64_t minPasswordAge() const { return m_minPasswordAge; }
  int64_t maxPasswordAge() const { return m_maxPasswordAge; }
  int64_t maxPasswordAgeDisplay() const { return m_maxPasswordAgeDisplay; }
  int64_t lockoutTime() const { return m_lockoutTime; }
  /// The account's control bits, and its rights on this host.
  int32_t accountControl() const { return m_accountControl; }
  bool hasBaseSysRights() const { return m_hasBaseSysRights; }
  const std::string& auditLevel() const { return m_auditLevel; }
  bool alwaysPermitLogin() const { return m_alwaysPermitLogin; }

 private:
  void readUnixProfile();
  void useNobodyProfile();
  void readPassword();
  void readPasswordFrom(const std::string& source);
  void readPrefixedPassword(const std::list<std::string>& identities);
  void readNames();
  void readTimes();
  void readAccount();
  void readSysRights();

  uint32_t m_id = 0;
  std::string m_name;
  std::string m_unixName;
  uint32_t m_gid = 0;
  std::string m_password;
  std::string m_servicePrincipalName;
  std::string m_computedPrincipalName;
  std::string m_userPrincipalName;
  std::string m_shell;
  std::string m_gecos;
  std::string m_home;
  std::list<SID> m_groupSids;
  std::string m_passwordHash;
  std::string m_workstations;
  std::string m_altSecurityIdentity;
  int64_t m_accountExpires = 0;
  int64_t m_passwordLastSet = 0;
  int64_t m_minPasswordAge = 0;
  int64_t m_maxPasswordAge = 0;
  int64_t m_maxPasswordAgeDisplay = 0;
  int64_t m_lockoutTime = 0;
  int32_t m_accountControl = 0;
  bool m_hasBaseSysRights = false;
  std::string m_auditLevel;
  bool m_alwaysPermitLogin = false;
};

/// A group.
class FOKRAZO_API Group : public VeskObj {
 public:
  /// Shares `object`, and may leave empty attributes in it.
  /// @throws SystemException null handle, or an object without `_dn`
  explicit Group(ADObject object);
  ~Group() override;

  /// The gid.
  unsigned int getId() const override;
  /// The canonical form of the group's DN: neither the account name nor the Unix name.
  std::string getName() const override;

  /// The directory's account name.
  const std::string& name() const { return m_name; }
  /// From the Unix profile; of the nobody group if there is none.
  const std::string& unixName() const { return m_unixName; }
  /// "x".
  const std::string& password() const { return m_password; }
  /// Unix names as received from the daemon, neither filtered nor sorted.
  const std::list<std::string>& members() const { return m_members; }
  /// Whether the daemon marks the group as required.
  bool required() const { return m_required; }

 private:
  void readUnixProfile();
  void useNobodyProfile();

  uint32_t m_id = 0;
  std::string m_name;
  std::string m_canonicalName;
  std::string m_unixName;
  std::string m_password;
  std::list<std::string> m_members;
  bool m_required = false;
};

}  // namespace vesk
