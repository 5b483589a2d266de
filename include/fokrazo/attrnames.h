/// Names of attributes, categories and markers. Code writes obj[VESK_UID], never the literal. Some constants
/// share a text on purpose. All are built when the library is loaded and stay until the process ends; other
/// code that runs at load time must not read them. Each is a reference to a hidden string, so that the loader
/// need not resolve hundreds of strings by name.
#pragma once

#include <string>

#include <fokrazo/dn.h>
#include <fokrazo/export.h>

namespace vesk {

class Guid;

/// How an operation may use a cache.
enum CacheOps : int {
  COPS_NOCACHE = 0,
  COPS_WONLY = 2,
  COPS_RONLY = 5,
  COPS_DEFAULTS = 7,
  COPS_REFRESH_RONLY = 13,
  COPS_REFRESH = 15,
  COPS_NOXREAD = 19,
  COPS_CACHE_ONLY = 83,
  COPS_EXPIRE_REFRESH = 271,
  COPS_CLIENT_DEFAULTS = 1031,
  COPS_CLIENT_REFRESH = 1039,
};

}  // namespace vesk

/// The system's own bookkeeping: entries of naming-service maps.
FOKRAZO_API extern const std::string& VESK_NETGROUP_NAME;
FOKRAZO_API extern const std::string& VESK_NETGROUP_MEMBER_GROUPS;
FOKRAZO_API extern const std::string& VESK_NETGROUP_TRIPLES;
FOKRAZO_API extern const std::string& VESK_NETGROUP_ALL_TRIPLES;
FOKRAZO_API extern const std::string& VESK_NETGROUP_AD_GROUPS;
FOKRAZO_API extern const std::string& VESK_PROTOCOL_NAME;
FOKRAZO_API extern const std::string& VESK_PROTOCOL_NUMBER;
FOKRAZO_API extern const std::string& VESK_PROTOCOL_ALIASES;
FOKRAZO_API extern const std::string& VESK_RPC_NAME;
FOKRAZO_API extern const std::string& VESK_RPC_NUMBER;
FOKRAZO_API extern const std::string& VESK_RPC_ALIASES;
FOKRAZO_API extern const std::string& VESK_NET_NAME;
FOKRAZO_API extern const std::string& VESK_NET_NET;
FOKRAZO_API extern const std::string& VESK_NET_ALIASES;
FOKRAZO_API extern const std::string& VESK_HOST_NAME;
FOKRAZO_API extern const std::string& VESK_HOST_IPADDR;
FOKRAZO_API extern const std::string& VESK_HOST_ALIASES;
FOKRAZO_API extern const std::string& VESK_ETHER_ADDR;
FOKRAZO_API extern const std::string& VESK_ETHER_NAME;
FOKRAZO_API extern const std::string& VESK_ALIAS_NAME;
FOKRAZO_API extern const std::string& VESK_ALIAS_MEMBERS;
FOKRAZO_API extern const std::string& VESK_SERVICE_NAME;
FOKRAZO_API extern const std::string& VESK_SERVICE_PORT;
FOKRAZO_API extern const std::string& VESK_SERVICE_PROTO;
FOKRAZO_API extern const std::string& VESK_SERVICE_ALIASES;
FOKRAZO_API extern const std::string& VESK_AUUSER_NAME;
FOKRAZO_API extern const std::string& VESK_AUUSER_ALWAYS;
FOKRAZO_API extern const std::string& VESK_AUUSER_NEVER;
FOKRAZO_API extern const std::string& VESK_PROF_ATTR_NAME;
FOKRAZO_API extern const std::string& VESK_PROF_ATTR_RES1;
FOKRAZO_API extern const std::string& VESK_PROF_ATTR_RES2;
FOKRAZO_API extern const std::string& VESK_PROF_ATTR_DESC;
FOKRAZO_API extern const std::string& VESK_PROF_ATTR_ATTR;
FOKRAZO_API extern const std::string& VESK_EXEC_ATTR_NAME;
FOKRAZO_API extern const std::string& VESK_EXEC_ATTR_POLICY;
FOKRAZO_API extern const std::string& VESK_EXEC_ATTR_TYPE;
FOKRAZO_API extern const std::string& VESK_EXEC_ATTR_RES1;
FOKRAZO_API extern const std::string& VESK_EXEC_ATTR_RES2;
FOKRAZO_API extern const std::string& VESK_EXEC_ATTR_ID;
FOKRAZO_API extern const std::string& VESK_EXEC_ATTR_ATTR;
FOKRAZO_API extern const std::string& VESK_AUTH_ATTR_NAME;
FOKRAZO_API extern const std::string& VESK_AUTH_ATTR_RES1;
FOKRAZO_API extern const std::string& VESK_AUTH_ATTR_RES2;
FOKRAZO_API extern const std::string& VESK_AUTH_ATTR_SHORT_DESC;
FOKRAZO_API extern const std::string& VESK_AUTH_ATTR_LONG_DESC;
FOKRAZO_API extern const std::string& VESK_AUTH_ATTR_ATTR;
FOKRAZO_API extern const std::string& VESK_USER_ATTR_NAME;
FOKRAZO_API extern const std::string& VESK_USER_ATTR_QUALIFIER;
FOKRAZO_API extern const std::string& VESK_USER_ATTR_RES1;
FOKRAZO_API extern const std::string& VESK_USER_ATTR_RES2;
FOKRAZO_API extern const std::string& VESK_USER_ATTR_ATTR;
FOKRAZO_API extern const std::string& VESK_BOOTPARAMS_NAME;
FOKRAZO_API extern const std::string& VESK_BOOTPARAMS_DESC;
FOKRAZO_API extern const std::string& VESK_PRINTER_NAME;
FOKRAZO_API extern const std::string& VESK_PRINTER_DESC;
FOKRAZO_API extern const std::string& VESK_PRINTER_ALIASES;
FOKRAZO_API extern const std::string& VESK_PROJECT_NAME;
FOKRAZO_API extern const std::string& VESK_PROJECT_PROJID;
FOKRAZO_API extern const std::string& VESK_PROJECT_COMMENT;
FOKRAZO_API extern const std::string& VESK_PROJECT_USERS;
FOKRAZO_API extern const std::string& VESK_PROJECT_GROUPS;
FOKRAZO_API extern const std::string& VESK_PROJECT_ATTR;
FOKRAZO_API extern const std::string& VESK_NETMASK_NAME;
FOKRAZO_API extern const std::string& VESK_NETMASK_MASK;
FOKRAZO_API extern const std::string& VESK_AUTO_KEY;
FOKRAZO_API extern const std::string& VESK_AUTO_INFO;
FOKRAZO_API extern const std::string& VESK_AUTO_MAPNAME;

/// Bookkeeping: domains and their controllers.
FOKRAZO_API extern const std::string& VESK_MASTERDC;
FOKRAZO_API extern const std::string& VESK_SITE;
FOKRAZO_API extern const std::string& VESK_FOREST_NAME;
FOKRAZO_API extern const std::string& VESK_DOMAIN_NAME;
FOKRAZO_API extern const std::string& VESK_GC_LIST;
FOKRAZO_API extern const std::string& VESK_DC_LIST;
FOKRAZO_API extern const std::string& VESK_DEAD;
FOKRAZO_API extern const std::string& VESK_LAST_SWEEP;
FOKRAZO_API extern const std::string& VESK_DNS_NAME;
FOKRAZO_API extern const std::string& VESK_DC_GOOD;
FOKRAZO_API extern const std::string& VESK_DC_LAST_RESPONSE_TIME;
FOKRAZO_API extern const std::string& VESK_DC_LAST_SNIFF;
FOKRAZO_API extern const std::string& VESK_DC_TYPE;
FOKRAZO_API extern const std::string& VESK_DC_FLAGS;
FOKRAZO_API extern const std::string& VESK_DC_NBDOMAIN_NAME;
FOKRAZO_API extern const std::string& VESK_DC_SITE;
FOKRAZO_API extern const std::string& VESK_DC_CLOSEST_SITE;
FOKRAZO_API extern const std::string& VESK_DC_VERSION;

/// Bookkeeping: zones.
FOKRAZO_API extern const std::string& VESK_ZONE_VISIBLE;
FOKRAZO_API extern const std::string& VESK_ZONE_NAME;
FOKRAZO_API extern const std::string& VESK_SHELL_ENABLED;
FOKRAZO_API extern const std::string& VESK_COMP_ENABLED;
FOKRAZO_API extern const std::string& VESK_CPU;
FOKRAZO_API extern const std::string& VESK_TOMCAT_ENABLED;
FOKRAZO_API extern const std::string& VESK_JBOSS_ENABLED;
FOKRAZO_API extern const std::string& VESK_WEBLOGIC_ENABLED;
FOKRAZO_API extern const std::string& VESK_WEBSPHERE_ENABLED;
FOKRAZO_API extern const std::string& VESK_ZONE_GUID;
FOKRAZO_API extern const std::string& VESK_ZONE_SFU;
FOKRAZO_API extern const std::string& VESK_ZONE_SCHEMA;
FOKRAZO_API extern const std::string& VESK_ZONE_DESCRIPTION;
FOKRAZO_API extern const std::string& VESK_ZONE_PWSYNC;
FOKRAZO_API extern const std::string& VESK_ZONE_BASE;
FOKRAZO_API extern const std::string& VESK_ALT_DOMAINS;
FOKRAZO_API extern const std::string& VESK_PARENT_LINK;
FOKRAZO_API extern const std::string& VESK_ZONE_CATEGORY;

/// Bookkeeping: AIX account items.
FOKRAZO_API extern const std::string& VESK_ADMIN;
FOKRAZO_API extern const std::string& VESK_ADMGROUPS;
FOKRAZO_API extern const std::string& VESK_AUDITCLASSES;
FOKRAZO_API extern const std::string& VESK_DAEMON;
FOKRAZO_API extern const std::string& VESK_LOGINCHK;
FOKRAZO_API extern const std::string& VESK_RLOGINCHK;
FOKRAZO_API extern const std::string& VESK_SUCHK;
FOKRAZO_API extern const std::string& VESK_SUGROUPS;
FOKRAZO_API extern const std::string& VESK_TPATH;
FOKRAZO_API extern const std::string& VESK_TTY;
FOKRAZO_API extern const std::string& VESK_UFSIZE;
FOKRAZO_API extern const std::string& VESK_UCORE;
FOKRAZO_API extern const std::string& VESK_UCPU;
FOKRAZO_API extern const std::string& VESK_UDATA;
FOKRAZO_API extern const std::string& VESK_URSS;
FOKRAZO_API extern const std::string& VESK_USTACK;
FOKRAZO_API extern const std::string& VESK_UNOFILES;
FOKRAZO_API extern const std::string& VESK_UMASK;
FOKRAZO_API extern const std::string& VESK_CAPABILITIES;
FOKRAZO_API extern const std::string& VESK_ROLES;
FOKRAZO_API extern const std::string& VESK_UFSIZE_HARD;
FOKRAZO_API extern const std::string& VESK_UCORE_HARD;
FOKRAZO_API extern const std::string& VESK_UCPU_HARD;
FOKRAZO_API extern const std::string& VESK_UDATA_HARD;
FOKRAZO_API extern const std::string& VESK_URSS_HARD;
FOKRAZO_API extern const std::string& VESK_USTACK_HARD;
FOKRAZO_API extern const std::string& VESK_UNOFILES_HARD;
FOKRAZO_API extern const std::string& VESK_ULIMIT;
FOKRAZO_API extern const std::string& VESK_UTHREADS;
FOKRAZO_API extern const std::string& VESK_UNPROC;
FOKRAZO_API extern const std::string& VESK_UTHREADS_HARD;
FOKRAZO_API extern const std::string& VESK_UNPROC_HARD;
FOKRAZO_API extern const std::string& VESK_USL;
FOKRAZO_API extern const std::string& VESK_UDEFSL;
FOKRAZO_API extern const std::string& VESK_UEFFSL;
FOKRAZO_API extern const std::string& VESK_UMAXSL;
FOKRAZO_API extern const std::string& VESK_UMINSL;
FOKRAZO_API extern const std::string& VESK_UTL;
FOKRAZO_API extern const std::string& VESK_UDEFTL;
FOKRAZO_API extern const std::string& VESK_UEFFTL;
FOKRAZO_API extern const std::string& VESK_UMAXTL;
FOKRAZO_API extern const std::string& VESK_UMINTL;
FOKRAZO_API extern const std::string& VESK_UMAXCL;
FOKRAZO_API extern const std::string& VESK_UMINCL;

/// Bookkeeping: shadow password fields.
FOKRAZO_API extern const std::string& VESK_USERPASSWORD;
FOKRAZO_API extern const std::string& VESK_SHADOW_LASTCHANGE;
FOKRAZO_API extern const std::string& VESK_SHADOW_MIN;
FOKRAZO_API extern const std::string& VESK_SHADOW_MAX;
FOKRAZO_API extern const std::string& VESK_SHADOW_WARNING;
FOKRAZO_API extern const std::string& VESK_SHADOW_INACTIVE;
FOKRAZO_API extern const std::string& VESK_SHADOW_EXPIRE;
FOKRAZO_API extern const std::string& VESK_SHADOW_FLAG;

/// Bookkeeping: attributes that an administrator maps to others.
FOKRAZO_API extern const std::string& VESK_ALT_MAP_USERNAME;
FOKRAZO_API extern const std::string& VESK_ALT_MAP_UID;
FOKRAZO_API extern const std::string& VESK_ALT_MAP_GID;
FOKRAZO_API extern const std::string& VESK_ALT_MAP_SHELL;
FOKRAZO_API extern const std::string& VESK_ALT_MAP_GECOS;
FOKRAZO_API extern const std::string& VESK_ALT_MAP_HOMEDIR;
FOKRAZO_API extern const std::string& VESK_ALT_MAP_GROUPNAME;
FOKRAZO_API extern const std::string& VESK_ALT_MAP_GROUP_GID;
FOKRAZO_API extern const std::string& VESK_ALT_MAP_NISDOMAIN;

/// Bookkeeping: group membership and lookup lists.
FOKRAZO_API extern const std::string& VESK_SYSRIGHTS;
FOKRAZO_API extern const std::string& VESK_SYSRIGHTS_ACQUIRED;
FOKRAZO_API extern const std::string& VESK_SYSRIGHTS_FROM_USERGROUPS;
FOKRAZO_API extern const std::string& VESK_PRIMARY_GROUP_MEMBERSHIP;
FOKRAZO_API extern const std::string& VESK_GROUP_MEMBERS;
FOKRAZO_API extern const std::string& VESK_GROUP_MEMBERS_DN;
FOKRAZO_API extern const std::string& VESK_GROUP_MEMBERS_BKUP;
FOKRAZO_API extern const std::string& VESK_EXPANDED_AD_MEMBERS;
FOKRAZO_API extern const std::string& VESK_COMPUTER_MEMBERS;
FOKRAZO_API extern const std::string& VESK_MEMBERSHIP_OVR;
FOKRAZO_API extern const std::string& VESK_SUB_GROUPS;
FOKRAZO_API extern const std::string& VESK_REQUIRED;
FOKRAZO_API extern const std::string& VESK_GROUPS;
FOKRAZO_API extern const std::string& VESK_PRIMARY_GROUP;
FOKRAZO_API extern const std::string& VESK_UNIX_GROUPS;
FOKRAZO_API extern const std::string& VESK_UNIX_GIDS;
FOKRAZO_API extern const std::string& VESK_REQUIRED_GIDS;
FOKRAZO_API extern const std::string& VESK_REQUIRED_GROUPS;
FOKRAZO_API extern const std::string& VESK_UPDATE_MEMBERSHIP_NEEDED;
FOKRAZO_API extern const std::string& VESK_MEMBERSHIP_ACQUIRED;
FOKRAZO_API extern const std::string& VESK_UNIX_MEMBERSHIP_ACQUIRED;
FOKRAZO_API extern const std::string& VESK_SEARCH_LIST;
FOKRAZO_API extern const std::string& VESK_SEARCH_SID_LIST;
FOKRAZO_API extern const std::string& VESK_SEARCH_SID_LIST_POPULATED;
FOKRAZO_API extern const std::string& VESK_UNKNOWN_SIDS;
FOKRAZO_API extern const std::string& VESK_UNKNOWN_SIDS_TEMP;

/// Bookkeeping: identity, object state, password, ticket and cache.
FOKRAZO_API extern const std::string& VESK_ALT_KEY;
FOKRAZO_API extern const std::string& VESK_UID;
FOKRAZO_API extern const std::string& VESK_GID;
FOKRAZO_API extern const std::string& VESK_UIDNEXT;
FOKRAZO_API extern const std::string& VESK_GIDNEXT;
FOKRAZO_API extern const std::string& VESK_DEFAULT_SHELL;
FOKRAZO_API extern const std::string& VESK_DEFAULT_HOME;
FOKRAZO_API extern const std::string& VESK_SHELL;
FOKRAZO_API extern const std::string& VESK_GECOS;
FOKRAZO_API extern const std::string& VESK_HOMEDIR;
FOKRAZO_API extern const std::string& VESK_PARTIAL_USER_INFO;
FOKRAZO_API extern const std::string& VESK_NTLM_USERNAME;
FOKRAZO_API extern const std::string& VESK_ALT_PWHASH;
FOKRAZO_API extern const std::string& VESK_USER_PWSYNC;
FOKRAZO_API extern const std::string& VESK_USER_PRINCIPAL_NAME;
FOKRAZO_API extern const std::string& VESK_VERSION;
FOKRAZO_API extern const std::string& VESK_DEFAULT_GID;
FOKRAZO_API extern const std::string& VESK_GUID;
FOKRAZO_API extern const std::string& VESK_KERBEROS_NAME;
FOKRAZO_API extern const std::string& VESK_OBJ_DEPTH;
FOKRAZO_API extern const std::string& VESK_NISDOMAIN;
FOKRAZO_API extern const std::string& VESK_DICTIONARY_SUM;
FOKRAZO_API extern const std::string& VESK_MANAGED_BY;
FOKRAZO_API extern const std::string& VESK_OBJ_EXTENDED;
FOKRAZO_API extern const std::string& VESK_OBJ_EXTENDED_LAST;
FOKRAZO_API extern const std::string& VESK_UPN;
FOKRAZO_API extern const std::string& VESK_IS_FOREIGN;
FOKRAZO_API extern const std::string& VESK_EXT_FILTER;
FOKRAZO_API extern const std::string& VESK_EXT_APPLIED;
FOKRAZO_API extern const std::string& VESK_SID;
FOKRAZO_API extern const std::string& VESK_OBJ_TYPE;
FOKRAZO_API extern const std::string& VESK_PASSWD_HASH;
FOKRAZO_API extern const std::string& VESK_PASSWD_SALT;
FOKRAZO_API extern const std::string& VESK_USER_SERVICE_TICKET;
FOKRAZO_API extern const std::string& VESK_USER_SERVICE_TICKET_USN;
FOKRAZO_API extern const std::string& VESK_USER_SALT;
FOKRAZO_API extern const std::string& VESK_HASH_TIME;
FOKRAZO_API extern const std::string& VESK_LDAP_FILTER;
FOKRAZO_API extern const std::string& VESK_OBJECT_CATEGORY;
FOKRAZO_API extern const std::string& VESK_EXTOBJ_USN;
FOKRAZO_API extern const std::string& VESK_PREFER_AD_LOGIN;
FOKRAZO_API extern const std::string& VESK_FAILED_AUTH_COUNT;
FOKRAZO_API extern const std::string& VESK_LOCKOUT_TIME;
FOKRAZO_API extern const std::string& VESK_PSO_MAX_PW_AGE;
FOKRAZO_API extern const std::string& VESK_PSO_MIN_PW_AGE;
FOKRAZO_API extern const std::string& VESK_PSO_BADCOUNT;
FOKRAZO_API extern const std::string& VESK_PSO_DURATION;
FOKRAZO_API extern const std::string& VESK_NSSENTRY_INVALID;
FOKRAZO_API extern const std::string& VESK_NONEXIST;
FOKRAZO_API extern const std::string& VESK_MARKER_CATEGORY;
FOKRAZO_API extern const std::string& VESK_IS_FAKEOBJECT;
FOKRAZO_API extern const std::string& VESK_OBJECT_EXPIRETIME;
FOKRAZO_API extern const std::string& VESK_USER_REAL_SHELL;
FOKRAZO_API extern const std::string& VESK_ATTRIBUTE_HASH;
FOKRAZO_API extern const std::string& VESK_OBJ_REFRESHED_FROM_AD;
FOKRAZO_API extern const std::string& VESK_UNIXNAME;
FOKRAZO_API extern const std::string& VESK_USERNAME;
FOKRAZO_API extern const std::string& VESK_GROUPNAME;

/// The directory schema, by LDAP display names.
FOKRAZO_API extern const std::string& AD_OBJECT_CLASS;
FOKRAZO_API extern const std::string& AD_OBJECT_SID;
FOKRAZO_API extern const std::string& AD_SID_HISTORY;
FOKRAZO_API extern const std::string& AD_USER_PRINCIPAL_NAME;
FOKRAZO_API extern const std::string& AD_GROUP_TYPE;
FOKRAZO_API extern const std::string& AD_USER_EXPIRE;
FOKRAZO_API extern const std::string& AD_PWCHG_LAST;
FOKRAZO_API extern const std::string& AD_USER_WORKSTATIONS;
FOKRAZO_API extern const std::string& AD_OS_NAME;
FOKRAZO_API extern const std::string& AD_OS_VERSION;
FOKRAZO_API extern const std::string& AD_OS_SERVICEPACK;
FOKRAZO_API extern const std::string& AD_LOCAL_POLICY;
FOKRAZO_API extern const std::string& AD_PRIMARY_GID;
FOKRAZO_API extern const std::string& AD_PRIMARY_GROUP_TOKEN;
FOKRAZO_API extern const std::string& AD_HIGHEST_USN;
FOKRAZO_API extern const std::string& AD_ROOT_NAMING_CTX;
FOKRAZO_API extern const std::string& AD_GROUP_MEMBERS;
FOKRAZO_API extern const std::string& AD_SERVER_PRINCIPAL_NAME;
FOKRAZO_API extern const std::string& AD_DESCRIPTION;
FOKRAZO_API extern const std::string& AD_SID;
FOKRAZO_API extern const std::string& AD_KEY_VERSION_NUMBER;
FOKRAZO_API extern const std::string& AD_SUPPORTED_ENCTYPES;
FOKRAZO_API extern const std::string& AD_KEYWORDS;
FOKRAZO_API extern const std::string& AD_MANAGED_BY;
FOKRAZO_API extern const std::string& AD_MANAGED_OBJECTS;
FOKRAZO_API extern const std::string& AD_CANONICAL_NAME;
FOKRAZO_API extern const std::string& AD_DISTINGUISHED_NAME;
FOKRAZO_API extern const std::string& AD_DEFAULT_NAMING_CTX;
FOKRAZO_API extern const std::string& AD_LDAP_SERVICE_NAME;
FOKRAZO_API extern const std::string& AD_FLAGS;
FOKRAZO_API extern const std::string& AD_DNS_NAME;
FOKRAZO_API extern const std::string& AD_HOME_DIRECTORY;
FOKRAZO_API extern const std::string& AD_HOME_DRIVE;
FOKRAZO_API extern const std::string& AD_TRUST_ATTRIBUTES;
FOKRAZO_API extern const std::string& AD_TRUST_DIRECTION;
FOKRAZO_API extern const std::string& AD_TRUST_TYPE;
FOKRAZO_API extern const std::string& AD_FLAT_NAME;
FOKRAZO_API extern const std::string& AD_NC_NAME;
FOKRAZO_API extern const std::string& AD_NETBIOS_NAME;
FOKRAZO_API extern const std::string& AD_USER_ACCNT_CONTROL;
FOKRAZO_API extern const std::string& AD_DISPLAY_NAME;
FOKRAZO_API extern const std::string& AD_NAME;
FOKRAZO_API extern const std::string& AD_GIVEN_NAME;
FOKRAZO_API extern const std::string& AD_SN;
FOKRAZO_API extern const std::string& AD_CN;
FOKRAZO_API extern const std::string& AD_OU;
FOKRAZO_API extern const std::string& AD_MEMBEROF;
FOKRAZO_API extern const std::string& AD_LAST_LOGON;
FOKRAZO_API extern const std::string& AD_LOGON_COUNT;
FOKRAZO_API extern const std::string& AD_LOCKOUT_TIME;
FOKRAZO_API extern const std::string& AD_LOGON_HOURS;
FOKRAZO_API extern const std::string& AD_BADPW_TIME;
FOKRAZO_API extern const std::string& AD_BADPW_COUNT;
FOKRAZO_API extern const std::string& AD_WHEN_CREATED;
FOKRAZO_API extern const std::string& AD_WHEN_CHANGED;
FOKRAZO_API extern const std::string& AD_USN_CREATED;
FOKRAZO_API extern const std::string& AD_USN_CHANGED;
FOKRAZO_API extern const std::string& AD_MODIFY_TIME;
FOKRAZO_API extern const std::string& AD_TOKEN_GROUPS;
FOKRAZO_API extern const std::string& AD_TOKEN_GROUPS_GAU;
FOKRAZO_API extern const std::string& AD_ALT_UPN;
FOKRAZO_API extern const std::string& AD_RESULTANT_PSO;
FOKRAZO_API extern const std::string& AD_PASSWORD_EXPIRY;
FOKRAZO_API extern const std::string& AD_PSO_MAX_PW_AGE;
FOKRAZO_API extern const std::string& AD_PSO_MIN_PW_AGE;
FOKRAZO_API extern const std::string& AD_PSO_BADCOUNT;
FOKRAZO_API extern const std::string& AD_PSO_DURATION;
FOKRAZO_API extern const std::string& AD_ALT_PWSYNC_PWHASH;
FOKRAZO_API extern const std::string& AD_NT_SECDESC;
FOKRAZO_API extern const std::string& AD_MAIL;
FOKRAZO_API extern const std::string& AD_DEPARTMENT;
FOKRAZO_API extern const std::string& AD_MOBILE;
FOKRAZO_API extern const std::string& AD_TITLE;
FOKRAZO_API extern const std::string& AD_TELEPHONE_NUMBER;
FOKRAZO_API extern const std::string& AD_ADM_DESCRIPTION;
FOKRAZO_API extern const std::string& AD_WBEM_PATH;
FOKRAZO_API extern const std::string& AD_USERNAME;
FOKRAZO_API extern const std::string& AD_GROUPNAME;

/// Categories, as ADObject::category returns them.
FOKRAZO_API extern const std::string& AD_OBJECT_CATEGORY;
FOKRAZO_API extern const std::string& AD_GROUP_CATEGORY;
FOKRAZO_API extern const std::string& AD_USER_CATEGORY;
FOKRAZO_API extern const std::string& AD_COMPUTER_CATEGORY;
FOKRAZO_API extern const std::string& AD_CONTAINER_CATEGORY;
FOKRAZO_API extern const std::string& AD_ORGUNIT_CATEGORY;
FOKRAZO_API extern const std::string& AD_SCP_CATEGORY;
FOKRAZO_API extern const std::string& AD_CLASS_STORE_CATEGORY;
FOKRAZO_API extern const std::string& AD_FSP_CATEGORY;
FOKRAZO_API extern const std::string& AD_TRUSTED_DN_CATEGORY;
FOKRAZO_API extern const std::string& AD_DOMAIN_DNS_CATEGORY;
FOKRAZO_API extern const std::string& AD_NETGROUP_CATEGORY;
FOKRAZO_API extern const std::string& AD_PROTOCOL_CATEGORY;
FOKRAZO_API extern const std::string& AD_RPC_CATEGORY;
FOKRAZO_API extern const std::string& AD_HOST_CATEGORY;
FOKRAZO_API extern const std::string& AD_ETHER_CATEGORY;
FOKRAZO_API extern const std::string& AD_NET_CATEGORY;
FOKRAZO_API extern const std::string& AD_PASSWORD_SETTING_CATEGORY;
FOKRAZO_API extern const std::string& AD_SHADOW_CATEGORY;
FOKRAZO_API extern const std::string& AD_POSIX_USER_CATEGORY;
FOKRAZO_API extern const std::string& AD_POSIX_GROUP_CATEGORY;
FOKRAZO_API extern const std::string& AD_ALIAS_CATEGORY;
FOKRAZO_API extern const std::string& AD_SERVICE_CATEGORY;
FOKRAZO_API extern const std::string& AD_AUUSER_CATEGORY;
FOKRAZO_API extern const std::string& AD_PROF_ATTR_CATEGORY;
FOKRAZO_API extern const std::string& AD_EXEC_ATTR_CATEGORY;
FOKRAZO_API extern const std::string& AD_AUTH_ATTR_CATEGORY;
FOKRAZO_API extern const std::string& AD_USER_ATTR_CATEGORY;
FOKRAZO_API extern const std::string& AD_BOOTPARAMS_CATEGORY;
FOKRAZO_API extern const std::string& AD_PRINTER_CATEGORY;
FOKRAZO_API extern const std::string& AD_PROJECT_CATEGORY;
FOKRAZO_API extern const std::string& AD_NETMASK_CATEGORY;
FOKRAZO_API extern const std::string& AD_AUTOMOUNT_CATEGORY;
FOKRAZO_API extern const std::string& AD_AUTO_MAP_CATEGORY;
FOKRAZO_API extern const std::string& AD_CLSSTORE_CATEGORY;

/// RFC 2307 attributes.
FOKRAZO_API extern const std::string& AD_R2_USERNAME;
FOKRAZO_API extern const std::string& AD_R2_UID;
FOKRAZO_API extern const std::string& AD_R2_GID;
FOKRAZO_API extern const std::string& AD_R2_SHELL;
FOKRAZO_API extern const std::string& AD_R2_HOMEDIR;
FOKRAZO_API extern const std::string& AD_R2_GROUP_MEMBERS;
FOKRAZO_API extern const std::string& AD_R2_PASSWORD;
FOKRAZO_API extern const std::string& AD_R2_GECOS;

/// Services for UNIX schema.
FOKRAZO_API extern const std::string& SFU_UID;
FOKRAZO_API extern const std::string& SFU_GID;
FOKRAZO_API extern const std::string& SFU_SHELL;
FOKRAZO_API extern const std::string& SFU_GECOS;
FOKRAZO_API extern const std::string& SFU_HOMEDIR;
FOKRAZO_API extern const std::string& SFU_PASSWORD;
FOKRAZO_API extern const std::string& SFU_DOMAIN;
FOKRAZO_API extern const std::string& SFU_GROUP_MEMBERS;
FOKRAZO_API extern const std::string& SFU_USERNAME;
FOKRAZO_API extern const std::string& SFU_GROUPNAME;

/// Authorization Manager schema.
FOKRAZO_API extern const std::string& AZ_ROLE_OPS;
FOKRAZO_API extern const std::string& AZ_ROLE_CLASS;
FOKRAZO_API extern const std::string& AZ_ROLE_MEMBERS;
FOKRAZO_API extern const std::string& AZ_ROLE_TASKS;
FOKRAZO_API extern const std::string& AZ_APP_CLASS;
FOKRAZO_API extern const std::string& AZ_APP_GROUP_QUERY;
FOKRAZO_API extern const std::string& AZ_APP_GROUP_NON_MEMBERS;
FOKRAZO_API extern const std::string& AZ_APP_DATA;
FOKRAZO_API extern const std::string& AZ_APP_NAME;
FOKRAZO_API extern const std::string& AZ_OP_CLASS;
FOKRAZO_API extern const std::string& AZ_OP_ID;
FOKRAZO_API extern const std::string& AZ_SCOPE_CLASS;
FOKRAZO_API extern const std::string& AZ_SCOPE_NAME;
FOKRAZO_API extern const std::string& AZ_STORE_CLASS;
FOKRAZO_API extern const std::string& AZ_TASK_CLASS;
FOKRAZO_API extern const std::string& AZ_TASK_IS_ROLE;
FOKRAZO_API extern const std::string& AZ_TASK_OPS;
FOKRAZO_API extern const std::string& AZ_TASK_TASKS;

/// Object classes.
FOKRAZO_API extern const std::string& AD_OC_TOP;
FOKRAZO_API extern const std::string& AD_OC_PERSON;
FOKRAZO_API extern const std::string& AD_OC_ORG_PERSON;
FOKRAZO_API extern const std::string& AD_OC_COMPUTER;

/// Fixed GUIDs, in the form that their users expect: containers as the digits of the text form; schema
/// entries as the digits of the stored bytes (AD_GUID_RESET_PASSWORD with hyphens); interfaces and enrolment
/// rights with hyphens.
FOKRAZO_API extern const std::string& AD_GUID_COMPUTERS_CONTAINER;
FOKRAZO_API extern const std::string& AD_GUID_USERS_CONTAINER;
FOKRAZO_API extern const std::string& AD_GUID_DOMAIN_CONTROLLERS_CONTAINER;
FOKRAZO_API extern const std::string& AD_GUID_SYSTEM_CONTAINER;
FOKRAZO_API extern const std::string& AD_GUID_SD_APPLY_GROUP_POLICY;
FOKRAZO_API extern const std::string& AD_GUID_SD_SCP_KEYWORDS;
FOKRAZO_API extern const std::string& AD_GUID_RESET_PASSWORD;
FOKRAZO_API extern const std::string& AD_GUID_OSVERSION;
FOKRAZO_API extern const std::string& AD_GUID_OSSERVICEPACK;
FOKRAZO_API extern const std::string& AD_GUID_OSHOTFIX;
FOKRAZO_API extern const std::string& AD_GUID_OS;
FOKRAZO_API extern const std::string& AD_GUID_UAC;
FOKRAZO_API extern const std::string& AD_GUID_SPN;
FOKRAZO_API extern const std::string& AD_GUID_DNS_HOSTNAME;
FOKRAZO_API extern const std::string& AD_GUID_DISPLAYNAME;
FOKRAZO_API extern const std::string& AD_GUID_MANAGEDBY;
FOKRAZO_API extern const std::string& AD_GUID_I_NETLOGON;
FOKRAZO_API extern const std::string& AD_GUID_I_LSARPC;
FOKRAZO_API extern const std::string& AD_GUID_I_DSSETUP;
FOKRAZO_API extern const std::string& AD_GUID_I_SAMR;
FOKRAZO_API extern const std::string& AD_GUID_I_DRSUAPI;
FOKRAZO_API extern const std::string& AD_GUID_I_EPMP;
FOKRAZO_API extern const std::string& AD_GUID_I_CERT_PASSAGE;
FOKRAZO_API extern const std::string& AD_GUID_AUTOENROLL_ALLOW;
FOKRAZO_API extern const std::string& AD_GUID_ENROLL_ALLOW;

/// Markers that a zone's map object carries in its display name.
FOKRAZO_API extern const std::string& AUTOMOUNT_MAP_VERSION;
FOKRAZO_API extern const std::string& NETGROUP_VERSION;
FOKRAZO_API extern const std::string& PROTOCOL_VERSION;
FOKRAZO_API extern const std::string& RPC_VERSION;
FOKRAZO_API extern const std::string& HOST_VERSION;
FOKRAZO_API extern const std::string& ETHER_VERSION;
FOKRAZO_API extern const std::string& NET_VERSION;
FOKRAZO_API extern const std::string& NETMASK_VERSION;
FOKRAZO_API extern const std::string& ALIAS_VERSION;
FOKRAZO_API extern const std::string& SERVICE_VERSION;
FOKRAZO_API extern const std::string& AUUSER_VERSION;
FOKRAZO_API extern const std::string& PROFATTR_VERSION;
FOKRAZO_API extern const std::string& EXECATTR_VERSION;
FOKRAZO_API extern const std::string& AUTHATTR_VERSION;
FOKRAZO_API extern const std::string& USERATTR_VERSION;
FOKRAZO_API extern const std::string& BOOTPARAMS_VERSION;
FOKRAZO_API extern const std::string& PRINTER_VERSION;
FOKRAZO_API extern const std::string& PROJECT_VERSION;
FOKRAZO_API extern const std::string& AUTOMOUNT_VERSION;
FOKRAZO_API extern const std::string& AUTOMASTER_VERSION;

/// The fixed GUID of each such map.
FOKRAZO_API extern const std::string& NETGROUP_VERSION_GUID;
FOKRAZO_API extern const std::string& PROTOCOL_VERSION_GUID;
FOKRAZO_API extern const std::string& RPC_VERSION_GUID;
FOKRAZO_API extern const std::string& HOST_VERSION_GUID;
FOKRAZO_API extern const std::string& ETHER_VERSION_GUID;
FOKRAZO_API extern const std::string& NET_VERSION_GUID;
FOKRAZO_API extern const std::string& NETMASK_VERSION_GUID;
FOKRAZO_API extern const std::string& ALIAS_VERSION_GUID;
FOKRAZO_API extern const std::string& SERVICE_VERSION_GUID;
FOKRAZO_API extern const std::string& AUUSER_VERSION_GUID;
FOKRAZO_API extern const std::string& PROFATTR_VERSION_GUID;
FOKRAZO_API extern const std::string& EXECATTR_VERSION_GUID;
FOKRAZO_API extern const std::string& AUTHATTR_VERSION_GUID;
FOKRAZO_API extern const std::string& USERATTR_VERSION_GUID;
FOKRAZO_API extern const std::string& BOOTPARAMS_VERSION_GUID;
FOKRAZO_API extern const std::string& PRINTER_VERSION_GUID;
FOKRAZO_API extern const std::string& PROJECT_VERSION_GUID;
FOKRAZO_API extern const std::string& AUTOMOUNT_VERSION_GUID;
FOKRAZO_API extern const std::string& AUTOMASTER_VERSION_GUID;
FOKRAZO_API extern const std::string& GENERIC_VERSION_GUID;

/// AIX account attribute keys, each matching the VESK_ constant of the same stem.
FOKRAZO_API extern const std::string& ADMIN_ATTR;
FOKRAZO_API extern const std::string& ADMGROUPS_ATTR;
FOKRAZO_API extern const std::string& AUDITCLASSES_ATTR;
FOKRAZO_API extern const std::string& DAEMON_ATTR;
FOKRAZO_API extern const std::string& LOGINCHK_ATTR;
FOKRAZO_API extern const std::string& RLOGINCHK_ATTR;
FOKRAZO_API extern const std::string& SUCHK_ATTR;
FOKRAZO_API extern const std::string& SUGROUPS_ATTR;
FOKRAZO_API extern const std::string& TPATH_ATTR;
FOKRAZO_API extern const std::string& TTY_ATTR;
FOKRAZO_API extern const std::string& UFSIZE_ATTR;
FOKRAZO_API extern const std::string& UCORE_ATTR;
FOKRAZO_API extern const std::string& UCPU_ATTR;
FOKRAZO_API extern const std::string& UDATA_ATTR;
FOKRAZO_API extern const std::string& URSS_ATTR;
FOKRAZO_API extern const std::string& USTACK_ATTR;
FOKRAZO_API extern const std::string& UNOFILES_ATTR;
FOKRAZO_API extern const std::string& UMASK_ATTR;
FOKRAZO_API extern const std::string& CAPABILITIES_ATTR;
FOKRAZO_API extern const std::string& ROLES_ATTR;
FOKRAZO_API extern const std::string& UFSIZE_HARD_ATTR;
FOKRAZO_API extern const std::string& UCORE_HARD_ATTR;
FOKRAZO_API extern const std::string& UCPU_HARD_ATTR;
FOKRAZO_API extern const std::string& UDATA_HARD_ATTR;
FOKRAZO_API extern const std::string& URSS_HARD_ATTR;
FOKRAZO_API extern const std::string& USTACK_HARD_ATTR;
FOKRAZO_API extern const std::string& UNOFILES_HARD_ATTR;
FOKRAZO_API extern const std::string& ULIMIT_ATTR;
FOKRAZO_API extern const std::string& UTHREADS_ATTR;
FOKRAZO_API extern const std::string& UNPROC_ATTR;
FOKRAZO_API extern const std::string& UTHREADS_HARD_ATTR;
FOKRAZO_API extern const std::string& UNPROC_HARD_ATTR;
FOKRAZO_API extern const std::string& USL_ATTR;
FOKRAZO_API extern const std::string& UDEFSL_ATTR;
FOKRAZO_API extern const std::string& UEFFSL_ATTR;
FOKRAZO_API extern const std::string& UMAXSL_ATTR;
FOKRAZO_API extern const std::string& UMINSL_ATTR;
FOKRAZO_API extern const std::string& UTL_ATTR;
FOKRAZO_API extern const std::string& UDEFTL_ATTR;
FOKRAZO_API extern const std::string& UEFFTL_ATTR;
FOKRAZO_API extern const std::string& UMAXTL_ATTR;
FOKRAZO_API extern const std::string& UMINTL_ATTR;
FOKRAZO_API extern const std::string& UMAXCL_ATTR;
FOKRAZO_API extern const std::string& UMINCL_ATTR;

/// Other names, values and prefixes. See also <fokrazo/dn.h>, included here, and MAIN_RUN_QUEUE in
/// <fokrazo/runqueue.h>.
FOKRAZO_API extern const std::string& DS_GROUP_OBJ;
FOKRAZO_API extern const std::string& EMPTY_STRING;
FOKRAZO_API extern const std::string& AD_ANY;
FOKRAZO_API extern const std::string& MSRPC_TRUST_FLAGS;
FOKRAZO_API extern const std::string& MSRPC_PARENT_INDEX;
FOKRAZO_API extern const std::string& AD_MIT_USER;
FOKRAZO_API extern const std::string& AD_PWCHG_WARN;
FOKRAZO_API extern const std::string& AD_PWCHG_MIN;
FOKRAZO_API extern const std::string& AD_PWCHG_MAX;
FOKRAZO_API extern const std::string& AD_PWCHG_MAX_DISPLAY;
FOKRAZO_API extern const std::string& AD_DN;
FOKRAZO_API extern const std::string& AD_SERVER;
FOKRAZO_API extern const std::string& GP_SAMACCOUNTTYPE;
FOKRAZO_API extern const std::string& VESK_CN_NONEXIST;
FOKRAZO_API extern const std::string& VESK_CN_MARKER;
FOKRAZO_API extern const std::string& VESK_SEARCH_MARKER;
FOKRAZO_API extern const std::string& AD_CATEGORY_SCHEMA;
FOKRAZO_API extern const std::string& VESK_FOREIGN_SERVER;
FOKRAZO_API extern const std::string& AD_DN_ONLY;
FOKRAZO_API extern const std::string& AD_ALL_OBJECTS;
FOKRAZO_API extern const std::string& SAM_PREFIX;
FOKRAZO_API extern const std::string& ALTGUID_ATTR;
FOKRAZO_API extern const std::string& VESK_EXT_CATEGORY;

/// The client's cache protocol.
FOKRAZO_API extern const std::string& VESK_CACHE_COOKIE;
FOKRAZO_API extern const std::string& VESK_LAST_PAGE;
FOKRAZO_API extern const std::string& VESK_PAGE_INTERRUPTED;

/// Versions of a cache, as the GUIDs stored in it.
FOKRAZO_API extern const vesk::Guid QTR_CACHE_VERSION;
FOKRAZO_API extern const vesk::Guid QTR_ENCRYPTED_CACHE_VERSION;
