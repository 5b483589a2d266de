/// The names of all configuration keys of the programs around brondalt. Code passes PN::LRPC_TIMEOUT, never
/// the literal. Most keys belong to the other programs; the library reads a few dozen itself.
///
/// A key is dotted text that starts with the name of its component; case is ignored. Some constants are stems
/// that code completes: LOGGER_FACILITY, LOGGER_OPENLOG, LOGGER_SHOW_MORE, ROOT_LOGGER_NAME, ROOT_MEMORY_NAME
/// and CLI_HOOK_PREFIX, the only one that ends in its dot. Two keys have two names each. Built when the
/// library is loaded, read-only from then on, and references to hidden strings, like the attribute names.
#pragma once

#include <string>

#include <fokrazo/export.h>

namespace vesk {
namespace PN {

// log
FOKRAZO_API extern const std::string& ROOT_LOGGER_NAME;

// logger.*: the log system
FOKRAZO_API extern const std::string& LOGGER_PROGRAM_IGNORE;
FOKRAZO_API extern const std::string& LOGGER_DESTINATION;
FOKRAZO_API extern const std::string& LOGGER_FACILITY;
FOKRAZO_API extern const std::string& LOGGER_OPENLOG;
FOKRAZO_API extern const std::string& LOGGER_QUEUE_SIZE;
FOKRAZO_API extern const std::string& LOGGER_SHOW_MORE;
FOKRAZO_API extern const std::string& LOGGER_FILE_MAXCOUNT;
FOKRAZO_API extern const std::string& LOGGER_FILE_MAXSIZE;
FOKRAZO_API extern const std::string& LOGGER_FILE_FLUSH_FREQUENCY;
FOKRAZO_API extern const std::string& LOGGER_FILE_ZIP_BACKUP;
FOKRAZO_API extern const std::string& ROOT_MEMORY_NAME;
FOKRAZO_API extern const std::string& LOGGER_MEMORY_ENABLED;
FOKRAZO_API extern const std::string& LOGGER_MEMORY_SIZE;
FOKRAZO_API extern const std::string& LOGGER_MEMORY_LOG_LEVEL;

// lrpc.*: the local RPC client
FOKRAZO_API extern const std::string& LRPC_CONNECT_TIMEOUT;
FOKRAZO_API extern const std::string& LRPC_TIMEOUT;
FOKRAZO_API extern const std::string& LRPC_SESSION_TIMEOUT;
FOKRAZO_API extern const std::string& LRPC_MESSAGE_MAXSIZE;

// pam.*: the login module and its messages
FOKRAZO_API extern const std::string& PAM_SET_ENV;
FOKRAZO_API extern const std::string& PAM_PWD_MSG;
FOKRAZO_API extern const std::string& PAM_CHG_MSG;
FOKRAZO_API extern const std::string& PAM_MUST_CHANGE_PW_MSG;
FOKRAZO_API extern const std::string& PAM_OLD_MSG;
FOKRAZO_API extern const std::string& PAM_NEW_MSG;
FOKRAZO_API extern const std::string& PAM_RENEW_MSG;
FOKRAZO_API extern const std::string& PAM_ACCOUNT_LOCKED_MSG;
FOKRAZO_API extern const std::string& PAM_ACCT_EXPIRED_MSG;
FOKRAZO_API extern const std::string& PAM_ACCT_DISABLED_MSG;
FOKRAZO_API extern const std::string& PAM_WORKSTATION_DENIED_MSG;
FOKRAZO_API extern const std::string& PAM_AUTHFAIL_MSG;
FOKRAZO_API extern const std::string& PAM_AUTH_CREATE_KRB5_CACHE;
FOKRAZO_API extern const std::string& PAM_NOMATCH_MSG;
FOKRAZO_API extern const std::string& PAM_NONULL_MSG;
FOKRAZO_API extern const std::string& PAM_CHG_POLICY_VIOLATION_MSG;
FOKRAZO_API extern const std::string& PAM_SKEL_DIR;
FOKRAZO_API extern const std::string& PAM_TREECOPY_RETRY_DELAY;
FOKRAZO_API extern const std::string& PAM_HOMEDIR_PERMS;
FOKRAZO_API extern const std::string& PAM_HOMEDIR_CREATE;
FOKRAZO_API extern const std::string& PAM_CREATING_HOMEDIR_MSG;
FOKRAZO_API extern const std::string& PAM_IGNORE_USERS;
FOKRAZO_API extern const std::string& PAM_ALLOW_USERS;
FOKRAZO_API extern const std::string& PAM_ALLOW_GROUPS;
FOKRAZO_API extern const std::string& PAM_DENY_USERS;
FOKRAZO_API extern const std::string& PAM_DENY_GROUPS;
FOKRAZO_API extern const std::string& PAM_MUNGE_DISALLOWED_USERS;
FOKRAZO_API extern const std::string& PAM_PW_WILL_EXP_MSG;
FOKRAZO_API extern const std::string& PAM_PWD_EXP_WARN;
FOKRAZO_API extern const std::string& PAM_UID_CONFLICT;
FOKRAZO_API extern const std::string& PAM_LOCAL_ACCT_CONFLICT_NAME;
FOKRAZO_API extern const std::string& PAM_LOCAL_ACCT_CONFLICT_UID;
FOKRAZO_API extern const std::string& PAM_LOCAL_ACCT_CONFLICT_BOTH;
FOKRAZO_API extern const std::string& PAM_NO_AD_USING_LOCAL;
FOKRAZO_API extern const std::string& PAM_CREATE_K5LOGIN;
FOKRAZO_API extern const std::string& PAM_MAPUSER;
FOKRAZO_API extern const std::string& PAM_ALLOW_OVERRIDE;
FOKRAZO_API extern const std::string& PAM_ALLOW_PW_EXPIRED_ACCESS;
FOKRAZO_API extern const std::string& PAM_ALLOW_PW_EXPIRED_ACCESS_MSG;
FOKRAZO_API extern const std::string& PAM_ALLOW_PW_CHANGE;
FOKRAZO_API extern const std::string& PAM_ALLOW_PW_CHANGE_MSG;
FOKRAZO_API extern const std::string& PAM_CONFIG_PRECEDING_AUTHLIBS;
FOKRAZO_API extern const std::string& PAM_CONFIG_PROGRAM_IGNORE;
FOKRAZO_API extern const std::string& PAM_CONFIG_PROGRAM_CHECK;
FOKRAZO_API extern const std::string& PAM_NTLM_AUTH_DOMAINS;
FOKRAZO_API extern const std::string& PAM_SETCRED_RESPECT_SUFFICIENT;
FOKRAZO_API extern const std::string& PAM_SETCRED_SUPPORT_REINITIALIZE;
FOKRAZO_API extern const std::string& PAM_SETCRED_SUPPORT_REFRESH;

// nss.*: the name-service module
FOKRAZO_API extern const std::string& NSS_NOLOGIN_SHELL;
FOKRAZO_API extern const std::string& NSS_NO_GROUP_MEMBERS;
FOKRAZO_API extern const std::string& NSS_USER_IGNORE;
FOKRAZO_API extern const std::string& NSS_GROUP_IGNORE;
FOKRAZO_API extern const std::string& NSS_UID_IGNORE;
FOKRAZO_API extern const std::string& NSS_GID_IGNORE;
FOKRAZO_API extern const std::string& NSS_PROGRAM_IGNORE;
FOKRAZO_API extern const std::string& NSS_SQUASH_ROOT;
FOKRAZO_API extern const std::string& NSS_MINUID;
FOKRAZO_API extern const std::string& NSS_MINGID;
FOKRAZO_API extern const std::string& NSS_NOBODY_USER;
FOKRAZO_API extern const std::string& NSS_NOBODY_GROUP;
FOKRAZO_API extern const std::string& NSS_NOBODY_UID;
FOKRAZO_API extern const std::string& NSS_NOBODY_GID;
FOKRAZO_API extern const std::string& NSS_PASSWD_OVERRIDE;
FOKRAZO_API extern const std::string& NSS_GROUP_OVERRIDE;
FOKRAZO_API extern const std::string& NSS_PASSWD_HASH;
FOKRAZO_API extern const std::string& NSS_GECOS_ATTR;
FOKRAZO_API extern const std::string& NSS_SPLIT_GROUPS;
FOKRAZO_API extern const std::string& NSS_SPECIALCASE_SMBD;
FOKRAZO_API extern const std::string& NSS_RUNTIME_VAR;
FOKRAZO_API extern const std::string& NSS_RUNTIME_DEFAULTVALUE_VAR;
FOKRAZO_API extern const std::string& IGNORE_USERS;

// krb5.*: Kerberos configuration
FOKRAZO_API extern const std::string& KRB5_SUPPORT_ALT_IDENTITIES;
FOKRAZO_API extern const std::string& ACCOUNT_KEYTAB;
FOKRAZO_API extern const std::string& ACCOUNT_SPNS;
FOKRAZO_API extern const std::string& ACCOUNT_TKT_ENCTYPES;
FOKRAZO_API extern const std::string& ACCOUNT_KEYTAB_ENTRIES;
FOKRAZO_API extern const std::string& KRB5_CONF_UPDATE_INTERVAL;
FOKRAZO_API extern const std::string& KRB5_CONF_UPDATE_FAIL_INTERVAL;
FOKRAZO_API extern const std::string& KRB5_FORWARDABLE_USER_TGTS;
FOKRAZO_API extern const std::string& KRB5_PERMIT_DNS_SPN_LOOKUPS;
FOKRAZO_API extern const std::string& KRB5_CCACHE_TYPE;
FOKRAZO_API extern const std::string& KRB5_FORCE_TCP;
FOKRAZO_API extern const std::string& KRB5_UDP_PREF_LIMIT;
FOKRAZO_API extern const std::string& KRB5_DNSLOOKUPKDC;
FOKRAZO_API extern const std::string& KRB5_DNSLOOKUPREALM;
FOKRAZO_API extern const std::string& KRB5_KDCTIMESYNC;
FOKRAZO_API extern const std::string& KRB5_INFINITE_RENEWAL;
FOKRAZO_API extern const std::string& KRB5_VERIFY_CREDENTIALS;
FOKRAZO_API extern const std::string& KRB5_ALLOW_WEAK_KEYS;
FOKRAZO_API extern const std::string& KRB5_UNIQUE_CACHE_FILES;
FOKRAZO_API extern const std::string& KRB5_CACHE_RENEW_INTERVAL;
FOKRAZO_API extern const std::string& KRB5_CACHE_POSTRENEWAL;
FOKRAZO_API extern const std::string& KRB5CC_CLEAN;
FOKRAZO_API extern const std::string& KRB5CC_CLEAN_INTERVAL;
FOKRAZO_API extern const std::string& KRB5CC_CLEAN_PAM;
FOKRAZO_API extern const std::string& KRB5CC_CLEAN_EXCLUSION;
FOKRAZO_API extern const std::string& KRB5CC_TYPE;

// brondalt.*: the daemon
FOKRAZO_API extern const std::string& PAM_NONROOT_SETCRED_ALLOW;
FOKRAZO_API extern const std::string& NTLM_SEPARATORS;
FOKRAZO_API extern const std::string& VESK_NTLM_DOMAINS;
FOKRAZO_API extern const std::string& NTLM_VERSION;
FOKRAZO_API extern const std::string& VESK_NTLM_USE_NETLOGON;
FOKRAZO_API extern const std::string& NTLM_SEND_LM_RESPONSE;
FOKRAZO_API extern const std::string& NTLM_SMB_CONN_TIMEOUT;
FOKRAZO_API extern const std::string& NTLM_ADNTLM_LIST_REFRESH_INTERVAL;
FOKRAZO_API extern const std::string& UDP_SEARCH_TIMEOUT;
FOKRAZO_API extern const std::string& LDAP_BIND_TIMEOUT;
FOKRAZO_API extern const std::string& TRUST_SEARCH_ENABLED;
FOKRAZO_API extern const std::string& TRUST_SEARCH_TIMEOUT;
FOKRAZO_API extern const std::string& TRUST_SEARCH_LOCAL;
FOKRAZO_API extern const std::string& TRUST_EXCLUDED_DOMAINS;
FOKRAZO_API extern const std::string& DOMAIN_BLOCK;
FOKRAZO_API extern const std::string& DOMAIN_ALLOW;
FOKRAZO_API extern const std::string& NTLM_BLOCK;
FOKRAZO_API extern const std::string& NTLM_ALLOW;
FOKRAZO_API extern const std::string& UPN_BLOCK;
FOKRAZO_API extern const std::string& UPN_ALLOW;
FOKRAZO_API extern const std::string& LDAP_SOCKET_CONNECT_TIMEOUT;
FOKRAZO_API extern const std::string& VESKD_LRPC2_RECV_TIMEOUT;
FOKRAZO_API extern const std::string& VESKD_LRPC2_SEND_TIMEOUT;
FOKRAZO_API extern const std::string& LDAP_PACKET_ENCRYPT;
FOKRAZO_API extern const std::string& VESKD_PAGED_SEARCH_MAX;
FOKRAZO_API extern const std::string& VESKD_AUTOEDIT;
FOKRAZO_API extern const std::string& VESKD_SOCKET;
FOKRAZO_API extern const std::string& VESKD_SOCKET2;
FOKRAZO_API extern const std::string& VESKD_CLIENT_IDLE_TIMEOUT;
FOKRAZO_API extern const std::string& VESKD_LISTEN_BACKLOG;
FOKRAZO_API extern const std::string& VESKD_NUM_CLIENT_THREADS;
FOKRAZO_API extern const std::string& VESKD_MAX_CLIENT_THREADS;
FOKRAZO_API extern const std::string& VESKD_STACKSIZE_CLIENT_THREADS;
FOKRAZO_API extern const std::string& VESKD_USE_THREAD_PRIORITY;
FOKRAZO_API extern const std::string& VESKD_DATA_SEG_SIZE;
FOKRAZO_API extern const std::string& VESKD_CLIENTS_DONE_POLL;
FOKRAZO_API extern const std::string& VESKD_USE_ALL_CPUS;
FOKRAZO_API extern const std::string& VESKD_MAX_ARENA_NUMBER;
FOKRAZO_API extern const std::string& VESKD_CHECK_USN;
FOKRAZO_API extern const std::string& VESKD_CACHE_EXPIRES;
FOKRAZO_API extern const std::string& VESKD_CACHE_REFRESH;
FOKRAZO_API extern const std::string& VESKD_CACHE_BUFFER_MAX;
FOKRAZO_API extern const std::string& VESKD_NEGATIVE_CACHE_LIFE;
FOKRAZO_API extern const std::string& VESKD_OBJECT_CACHE_LIFE;
FOKRAZO_API extern const std::string& VESKD_CACHE_FLUSH_INTERVAL;
FOKRAZO_API extern const std::string& VESKD_CACHE_FLUSH_INTERVAL_WZ;
FOKRAZO_API extern const std::string& VESKD_CACHE_CLEANUP_INTERVAL;
FOKRAZO_API extern const std::string& VESKD_CACHE_ENCRYPT;
FOKRAZO_API extern const std::string& VESKD_CACHE_ENCTYPE;
FOKRAZO_API extern const std::string& VESKD_CACHE_DISABLE;
FOKRAZO_API extern const std::string& VESKD_CACHE_FORCE_UPDATE_INDEX;
FOKRAZO_API extern const std::string& VESKD_20_COMPAT;
FOKRAZO_API extern const std::string& USE_TOKEN_GROUPS;
FOKRAZO_API extern const std::string& USE_KERBEROS_PAC;
FOKRAZO_API extern const std::string& USE_KERBEROS_S4U;
FOKRAZO_API extern const std::string& VESKD_GET_PRIMARY_GROUP;
FOKRAZO_API extern const std::string& VESKD_GET_GROUP_MEMBERSHIP;
FOKRAZO_API extern const std::string& CIMDS_GET_BUILTIN_GROUPS;
FOKRAZO_API extern const std::string& VESKD_HASH_ALLOW;
FOKRAZO_API extern const std::string& VESKD_HASH_DENY;
FOKRAZO_API extern const std::string& VESKD_HASH_EXPIRES;
FOKRAZO_API extern const std::string& VESKD_PREFER_CACHE_TO_VALIDATE;
FOKRAZO_API extern const std::string& VESKD_DUMP_CORE;
FOKRAZO_API extern const std::string& KRB5_PASSWD_CHECK_S_ADDRESS;
FOKRAZO_API extern const std::string& KRB5_USE_ADDRESSES;
FOKRAZO_API extern const std::string& KRB5_SEND_NETBIOS_NAME;
FOKRAZO_API extern const std::string& KRB5_EXTRA_ADDRESSES;
FOKRAZO_API extern const std::string& KRB5_MANAGED_ACCOUNTS;
FOKRAZO_API extern const std::string& KRB5_SPNS;
FOKRAZO_API extern const std::string& KRB5_TKT_ENCLIST;
FOKRAZO_API extern const std::string& KRB5_PERMITTED_ENCLIST;
FOKRAZO_API extern const std::string& KRB5_KEYTAB_CLEAN_NON_FIPS_ENCTYPES;
FOKRAZO_API extern const std::string& KRB5_PASSWORD_CHANGE_DAYS;
FOKRAZO_API extern const std::string& KRB5_PASSWORD_CHANGE_FACTOR;
FOKRAZO_API extern const std::string& KRB5_CONFFILE_NAME;
FOKRAZO_API extern const std::string& KRB5_VESKD_AUTOEDIT;
FOKRAZO_API extern const std::string& KRB5_CONF_DOMAINREALM;
FOKRAZO_API extern const std::string& KRB5_CONF_DOMAINREALM_STRICT;
FOKRAZO_API extern const std::string& KRB5_CONF_REALM_ADMIN_SERVER;
FOKRAZO_API extern const std::string& BINDING_REFRESH_INTERVAL;
FOKRAZO_API extern const std::string& BINDING_REFRESH_FORCE;
FOKRAZO_API extern const std::string& UPDATEOS_INTERVAL;
FOKRAZO_API extern const std::string& PREVALIDATE_INTERVAL;
FOKRAZO_API extern const std::string& PREVALIDATE_SERVICE;
FOKRAZO_API extern const std::string& PREVALIDATE_ALLOW_USERS;
FOKRAZO_API extern const std::string& PREVALIDATE_ALLOW_GROUPS;
FOKRAZO_API extern const std::string& PREVALIDATE_DENY_USERS;
FOKRAZO_API extern const std::string& PREVALIDATE_DENY_GROUPS;
FOKRAZO_API extern const std::string& AZMAN_REFRESH_INTERVAL;
FOKRAZO_API extern const std::string& WZ_REFRESH_INTERVAL;
FOKRAZO_API extern const std::string& DNS_REFRESH_INTERVAL;
FOKRAZO_API extern const std::string& ALT_UPN_UPDATE_INTERVAL;
FOKRAZO_API extern const std::string& MAX_BINDING_AGE;
FOKRAZO_API extern const std::string& QTR_WATCH_ENABLED;
FOKRAZO_API extern const std::string& VESKD_WATCH_CHECK_TIMEOUT;
FOKRAZO_API extern const std::string& VESKD_WATCH_CHECK_FREQUENCY;
FOKRAZO_API extern const std::string& VESKD_WATCH_DEATH_TIMEOUT;
FOKRAZO_API extern const std::string& VESKD_WATCH_STARTUP_DELAY;
FOKRAZO_API extern const std::string& QTR_WATCH_FLUSH;
FOKRAZO_API extern const std::string& FORCE_GET_SALT;
FOKRAZO_API extern const std::string& NUM_USER_OBJS;
FOKRAZO_API extern const std::string& CRED_EXPIRATION_INTERVAL;
FOKRAZO_API extern const std::string& SNTP_ENABLED;
FOKRAZO_API extern const std::string& SNTP_POLL;
FOKRAZO_API extern const std::string& NETLOGON_PKT_SEC_TYPE;
FOKRAZO_API extern const std::string& NETLOGON_PKT_SEC_LEVEL_SCHANNEL;
FOKRAZO_API extern const std::string& NETLOGON_CACHE_CONNECTION;
FOKRAZO_API extern const std::string& NETLOGON_CACHE_CONN_TIMEOUT;
FOKRAZO_API extern const std::string& NETLOGON_RETRY_CONNECT_TIME;
FOKRAZO_API extern const std::string& SAMBA_SYNC;
FOKRAZO_API extern const std::string& MAC_AUTOEDIT_DSPLUGIN;
FOKRAZO_API extern const std::string& MAC_AUTOEDIT_DISABLE_APPLE_PLUGIN;
FOKRAZO_API extern const std::string& MAC_AUTOEDIT_NETLOGIN;
FOKRAZO_API extern const std::string& MAC_MAP_HOME_TO_USERS;
FOKRAZO_API extern const std::string& VESKD_DATADIR_CHECK_INTERVAL;
FOKRAZO_API extern const std::string& VESKD_DATADIR_FULL_WARN_LEVEL;
FOKRAZO_API extern const std::string& SFU_DOMAIN_LIST;
FOKRAZO_API extern const std::string& BRONDALT_ALT_UPN;
FOKRAZO_API extern const std::string& HOVNEL_ENABLED;
FOKRAZO_API extern const std::string& HOVNEL_CMD;
FOKRAZO_API extern const std::string& HOVNEL_ERROR_FILE;
FOKRAZO_API extern const std::string& LOCAL_GROUP_FILE;
FOKRAZO_API extern const std::string& MERGE_LOCAL_GROUP;
FOKRAZO_API extern const std::string& ZONED_GROUP_COUNT;
FOKRAZO_API extern const std::string& USING_PRIVATE_GROUPS;
FOKRAZO_API extern const std::string& BRONDALT_OS_NAME;
FOKRAZO_API extern const std::string& BRONDALT_OS_VERSION;
FOKRAZO_API extern const std::string& BRONDALT_OEM_ID;
FOKRAZO_API extern const std::string& BRONDALT_OS_VERSION_USE_WIN7PREFIX;
FOKRAZO_API extern const std::string& BRONDALT_LOOKUP_BY_DISPLAY;
FOKRAZO_API extern const std::string& BRONDALT_ALLOW_COMPUTER_USERS;
FOKRAZO_API extern const std::string& BRONDALT_CUSTOM_ATTRIBUTES;
FOKRAZO_API extern const std::string& BRONDALT_IGNORE_SETGRPSRC;
FOKRAZO_API extern const std::string& BRONDALT_PARSE_NETGROUP;
FOKRAZO_API extern const std::string& BRONDALT_NETGROUP_AT;
FOKRAZO_API extern const std::string& MAX_SERVERS_TRY;
FOKRAZO_API extern const std::string& UNKNOWN_PASSWORD_EXPIRE;
FOKRAZO_API extern const std::string& GETDASTATUS_BYPASS;
FOKRAZO_API extern const std::string& CLEAN_SUDO_CACHE;
FOKRAZO_API extern const std::string& CLEAN_WUVO_CACHE;
FOKRAZO_API extern const std::string& SUDO_TIMESTAMPDIR;

// gp.*: group policy mapping
FOKRAZO_API extern const std::string& GP_MAPPERS_UMASK;
FOKRAZO_API extern const std::string& GP_MAPPERS_RUNMAPPERS;
FOKRAZO_API extern const std::string& GP_MAPPERS_TIMEOUT;
FOKRAZO_API extern const std::string& GP_MACHINE_MAPPERS;
FOKRAZO_API extern const std::string& GP_USER_MAPPERS;
FOKRAZO_API extern const std::string& GP_MACHINE_MAPPERS_DIR;
FOKRAZO_API extern const std::string& GP_USER_MAPPERS_DIR;
FOKRAZO_API extern const std::string& GP_MAPPERS_ERROR_FILE;
FOKRAZO_API extern const std::string& GP_MACHINE_REGISTRY;
FOKRAZO_API extern const std::string& GP_USER_REGISTRY;
FOKRAZO_API extern const std::string& GP_REFRESH_DISABLED;
FOKRAZO_API extern const std::string& GP_ALL_DISABLED;
FOKRAZO_API extern const std::string& GP_MACHINE_DISABLED;
FOKRAZO_API extern const std::string& GP_USER_DISABLED;
FOKRAZO_API extern const std::string& GP_POLICY_MERGE;
FOKRAZO_API extern const std::string& GP_USER_LOGIN_RUN;
FOKRAZO_API extern const std::string& GP_USER_IGNORE_ERRORS;
FOKRAZO_API extern const std::string& GP_WAIT_FOR_MACHINE_POLICY;
FOKRAZO_API extern const std::string& GP_DISK_SPACE_MIN;
FOKRAZO_API extern const std::string& GP_DISK_SPACE_CHECK_FOLDERS;

// dns.*: the resolver of the daemon
FOKRAZO_API extern const std::string& DNS_CACHE_TIMEOUT;
FOKRAZO_API extern const std::string& DNS_BLOCK;
FOKRAZO_API extern const std::string& DNS_SWEEP_PATTERN;
FOKRAZO_API extern const std::string& DNS_DEAD_RESWEEP;
FOKRAZO_API extern const std::string& DNS_ALIVE_RESWEEP;
FOKRAZO_API extern const std::string& DNS_UDP_RETRIES;
FOKRAZO_API extern const std::string& DNS_TIMEOUT;
FOKRAZO_API extern const std::string& DNS_TCP_TIMEOUT;
FOKRAZO_API extern const std::string& DNS_UDP_TIMEOUTS;
FOKRAZO_API extern const std::string& DNS_SERVERS;
FOKRAZO_API extern const std::string& DNS_SEARCH;
FOKRAZO_API extern const std::string& DNS_CACHE_NEGATIVE;
FOKRAZO_API extern const std::string& DNS_SORT;
FOKRAZO_API extern const std::string& DNS_QUERY_ALL_SERVERS;
FOKRAZO_API extern const std::string& DNS_CHANGE_CHECK;
FOKRAZO_API extern const std::string& DNS_ROUTE_CHECK_PORT;
FOKRAZO_API extern const std::string& DNS_ROUTE_CHECK_PORT_MAX;

// auto.*: the automatic Unix schema
FOKRAZO_API extern const std::string& AUTO_SCHEMA_RIDS;
FOKRAZO_API extern const std::string& AUTO_SCHEMA_APPLE_SCHEME;
FOKRAZO_API extern const std::string& AUTO_SCHEMA_FIRST_GID;
FOKRAZO_API extern const std::string& AUTO_SCHEMA_PRIMARY_GID;
FOKRAZO_API extern const std::string& AUTO_SCHEMA_SHELL;
FOKRAZO_API extern const std::string& AUTO_SCHEMA_HOMEDIR;
FOKRAZO_API extern const std::string& AUTO_SCHEMA_HOMEDIR_ILLEGAL_CHARS;
FOKRAZO_API extern const std::string& AUTO_SCHEMA_USE_ADHOMEDIR;
FOKRAZO_API extern const std::string& AUTO_SCHEMA_REMOTE_FILE_SERVICE;
FOKRAZO_API extern const std::string& AUTO_SCHEMA_NAME_FORMAT;
FOKRAZO_API extern const std::string& AUTO_SCHEMA_DOMAIN_PREFIX;
FOKRAZO_API extern const std::string& AUTO_SCHEMA_PRIVATE_GROUP;
FOKRAZO_API extern const std::string& AUTO_SCHEMA_ITERATE_CACHE;
FOKRAZO_API extern const std::string& AUTO_SCHEMA_SEARCH_RETURN_MAX;
FOKRAZO_API extern const std::string& AUTO_SCHEMA_NAME_LOWER;
FOKRAZO_API extern const std::string& UNIX_NAME_DISALLOW_CHARS;
FOKRAZO_API extern const std::string& AUTO_SCHEMA_SUBSTITUTE_CHARS;
FOKRAZO_API extern const std::string& AUTO_SCHEMA_MAX_UNIX_NAME_LENGTH;
FOKRAZO_API extern const std::string& AUTO_SCHEMA_ALLOW_USERS;
FOKRAZO_API extern const std::string& AUTO_SCHEMA_ALLOW_GROUPS;
FOKRAZO_API extern const std::string& AUTO_SCHEMA_GROUPS;

// dc.*: domain controller selection
FOKRAZO_API extern const std::string& FAST_DC_SWEEP_PATTERN;
FOKRAZO_API extern const std::string& DEEP_DC_SWEEP_PATTERN;
FOKRAZO_API extern const std::string& DEAD_DC_CACHE;
FOKRAZO_API extern const std::string& LIVE_DC_CACHE;
FOKRAZO_API extern const std::string& DC_SPEED_SORT;
FOKRAZO_API extern const std::string& DC_PENALTY_TIME;

// domain.*
FOKRAZO_API extern const std::string& DEAD_DOMAIN_CACHE;
FOKRAZO_API extern const std::string& LIVE_DOMAIN_CACHE;

// ldap.*
FOKRAZO_API extern const std::string& LDAP_SEND_TIMEOUT;
FOKRAZO_API extern const std::string& LDAP_RECV_TIMEOUT;

// ldapproxy.*
FOKRAZO_API extern const std::string& LDAPPROXY_RFC2307;

// openldap.*
FOKRAZO_API extern const std::string& OPENLDAP_LOGGING_ENABLED;
FOKRAZO_API extern const std::string& OPENLDAP_LOGGING_LEVEL;

// smb.*
FOKRAZO_API extern const std::string& SMB_NEGOTIATE_SMB2;

// samba.*: Samba interoperation
FOKRAZO_API extern const std::string& SAMBA_BASE_PATH;
FOKRAZO_API extern const std::string& SAMBA_VERSION;
FOKRAZO_API extern const std::string& SAMBA_LIBTDB_PATH;
FOKRAZO_API extern const std::string& SAMBA_INTEROP_USELIBTDB;

// kambrel.*: the join tool
FOKRAZO_API extern const std::string& KRB5_JOIN_CONFFILE_NAME;
FOKRAZO_API extern const std::string& JOIN_PRELOAD_CACHE_TIMEOUT;
FOKRAZO_API extern const std::string& JOIN_BRONDALT_POLL_TIME;
FOKRAZO_API extern const std::string& JOIN_BRONDALT_WAIT_TIME;
FOKRAZO_API extern const std::string& JOIN_SAMACCOUNTNAME_LENGTH;

// trelvox.*: the password tool
FOKRAZO_API extern const std::string& TRELVOX_CHANGE_DISABLED_MSG;
FOKRAZO_API extern const std::string& TRELVOX_CHANGE_PERM_MSG;
FOKRAZO_API extern const std::string& TRELVOX_ACCT_DISABLED_MSG;
FOKRAZO_API extern const std::string& TRELVOX_INVALID_USER_OR_PWD_MSG;

// hovnel.*: the dynamic DNS tool
FOKRAZO_API extern const std::string& VESKD_HOVNEL_WAIT_TIME;

// nelvik.*: the certificate tool
FOKRAZO_API extern const std::string& NELVIK_CERT_DIR;

// gormit.*: the id tool
FOKRAZO_API extern const std::string& GORMIT_PRESERVE_EXECUTION_BITS;

// wuvo.*
FOKRAZO_API extern const std::string& WUVO_TIMESTAMPDIR;

// wz.*: the privileged-command feature
FOKRAZO_API extern const std::string& WZ_ENABLED;
FOKRAZO_API extern const std::string& WZ_WUVO_LOCATION;
FOKRAZO_API extern const std::string& WZ_WUSH_LOCATION;

// audittrail.*
FOKRAZO_API extern const std::string& AUDITTRAIL_TARGETS;
FOKRAZO_API extern const std::string& AUDITTRAIL_WZ_COMMAND_WITH_ARGS;
FOKRAZO_API extern const std::string& AUDITTRAIL_ZANTREL_SUITE_TRUSTED_PATH_MACHINECRED_SKIPDA;

// mac.*: Apple hosts
FOKRAZO_API extern const std::string& MAC_DSPLUGIN_LRPC_SESSIONS;
FOKRAZO_API extern const std::string& MAC_DSPLUGIN_LRPC_SESSIONS_TIMEOUT;
FOKRAZO_API extern const std::string& MAC_DSPLUGIN_USERRECORD_DISTINGUISHEDNAME;
FOKRAZO_API extern const std::string& MAC_KERBEROS_USE_OSX_CCACHE;
FOKRAZO_API extern const std::string& MAC_NETWORK_HOME_PROTOCOL;
FOKRAZO_API extern const std::string& MAC_DSPLUGIN_PWCACHE_LIFETIME;
FOKRAZO_API extern const std::string& MAC_SMARTCARD_LOGIN_FORCE;

// tokend.*
FOKRAZO_API extern const std::string& TOKEND_PIV_PIN_CACHE_TIME;

// lam.*
FOKRAZO_API extern const std::string& LAM_MAX_USER_COUNT;
FOKRAZO_API extern const std::string& LAM_MAX_GROUP_COUNT;
FOKRAZO_API extern const std::string& LAM_PROGRAM_NOTCOMPLIANT;
FOKRAZO_API extern const std::string& AM_METHOD_VERSION;
FOKRAZO_API extern const std::string& LAM_ATTR_LOGIN_OVERRIDE;

// aix.*
FOKRAZO_API extern const std::string& AIX_USER_INHERIT_ATTRS;

// rhel.*
FOKRAZO_API extern const std::string& SMARTCARD_PKCS11_MODULE;

// secedit.*: policy settings
FOKRAZO_API extern const std::string& LOCKOUT_ALLOW_OFFLINE_LOGIN;
FOKRAZO_API extern const std::string& MAX_PW_AGE;
FOKRAZO_API extern const std::string& MIN_PW_AGE;
FOKRAZO_API extern const std::string& LOCKOUT_BADCOUNT;
FOKRAZO_API extern const std::string& LOCKOUT_DURATION;

// zone.*
FOKRAZO_API extern const std::string& ZONE_NAME;

// cli.*
FOKRAZO_API extern const std::string& CLI_HOOK_PREFIX;
FOKRAZO_API extern const std::string& CLI_HOOK_TIMEOUT;

// nismap.*
FOKRAZO_API extern const std::string& NIS_MAP_DN;

// kset.*
FOKRAZO_API extern const std::string& DISABLE_KSET_FILES;

// selinux.*
FOKRAZO_API extern const std::string& LIBSELINUX_NAME;

// apparmor.*
FOKRAZO_API extern const std::string& APPARMOR_CONFIG_PROFILES;

// fips.*
FOKRAZO_API extern const std::string& FIPS_MODE_ENABLE;

// cert.*
FOKRAZO_API extern const std::string& CERT_DOMAINTRUST_CHECK;

// adjust.*
FOKRAZO_API extern const std::string& ADJUST_OFFSET_TIME;

}  // namespace PN
}  // namespace vesk
