#include "util/include/propnames.h"

namespace vesk {
namespace PN {

// log
const std::string ROOT_LOGGER_NAME = "log";

// logger.*: the log system
const std::string LOGGER_PROGRAM_IGNORE = "logger.program.ignore";
const std::string LOGGER_DESTINATION = "logger.destination";
const std::string LOGGER_FACILITY = "logger.facility";
const std::string LOGGER_OPENLOG = "logger.openlog";
const std::string LOGGER_QUEUE_SIZE = "logger.queue.size";
const std::string LOGGER_SHOW_MORE = "logger.showmore";
const std::string LOGGER_FILE_MAXCOUNT = "logger.file.maxcount";
const std::string LOGGER_FILE_MAXSIZE = "logger.file.maxsize";
const std::string LOGGER_FILE_FLUSH_FREQUENCY = "logger.file.flush.frequency";
const std::string LOGGER_FILE_ZIP_BACKUP = "logger.file.zip.backup";
const std::string ROOT_MEMORY_NAME = "logger.memory.log";
const std::string LOGGER_MEMORY_ENABLED = "logger.memory.enabled";
const std::string LOGGER_MEMORY_SIZE = "logger.memory.bufsize";
const std::string LOGGER_MEMORY_LOG_LEVEL = "logger.memory.log";

// lrpc.*: the local RPC client
const std::string LRPC_CONNECT_TIMEOUT = "lrpc.connect.timeout";
const std::string LRPC_TIMEOUT = "lrpc.timeout";
const std::string LRPC_SESSION_TIMEOUT = "lrpc.session.timeout";

// pam.*: the login module and its messages
const std::string PAM_SET_ENV = "pam.setenv";
const std::string PAM_PWD_MSG = "pam.password.enter.mesg";
const std::string PAM_CHG_MSG = "pam.password.change.mesg";
const std::string PAM_MUST_CHANGE_PW_MSG = "pam.password.change.required.mesg";
const std::string PAM_OLD_MSG = "pam.password.old.mesg";
const std::string PAM_NEW_MSG = "pam.password.new.mesg";
const std::string PAM_RENEW_MSG = "pam.password.confirm.mesg";
const std::string PAM_ACCOUNT_LOCKED_MSG = "pam.account.locked.mesg";
const std::string PAM_ACCT_EXPIRED_MSG = "pam.account.expired.mesg";
const std::string PAM_ACCT_DISABLED_MSG = "pam.account.disabled.mesg";
const std::string PAM_WORKSTATION_DENIED_MSG = "pam.workstation.denied.mesg";
const std::string PAM_AUTHFAIL_MSG = "pam.auth.failure.mesg";
const std::string PAM_AUTH_CREATE_KRB5_CACHE = "pam.auth.create.krb5.cache";
const std::string PAM_NOMATCH_MSG = "pam.password.new.mismatch.mesg";
const std::string PAM_NONULL_MSG = "pam.password.empty.mesg";
const std::string PAM_CHG_POLICY_VIOLATION_MSG = "pam.policy.violation.mesg";
const std::string PAM_SKEL_DIR = "pam.homeskel.dir";
const std::string PAM_TREECOPY_RETRY_DELAY = "pam.treecopy.retry.delay";
const std::string PAM_HOMEDIR_PERMS = "pam.homedir.perms";
const std::string PAM_HOMEDIR_CREATE = "pam.homedir.create";
const std::string PAM_CREATING_HOMEDIR_MSG = "pam.homedir.create.mesg";
const std::string PAM_IGNORE_USERS = "pam.ignore.users";
const std::string PAM_ALLOW_USERS = "pam.allow.users";
const std::string PAM_ALLOW_GROUPS = "pam.allow.groups";
const std::string PAM_DENY_USERS = "pam.deny.users";
const std::string PAM_DENY_GROUPS = "pam.deny.groups";
const std::string PAM_MUNGE_DISALLOWED_USERS = "pam.deny.change.shell";
const std::string PAM_PW_WILL_EXP_MSG = "pam.password.expiry.warn.mesg";
const std::string PAM_PWD_EXP_WARN = "pam.password.expiry.warn";
const std::string PAM_UID_CONFLICT = "pam.uid.conflict";
const std::string PAM_LOCAL_ACCT_CONFLICT_NAME = "pam.account.conflict.name.mesg";
const std::string PAM_LOCAL_ACCT_CONFLICT_UID = "pam.account.conflict.uid.mesg";
const std::string PAM_LOCAL_ACCT_CONFLICT_BOTH = "pam.account.conflict.both.mesg";
const std::string PAM_NO_AD_USING_LOCAL = "pam.brondalt.down.mesg";
const std::string PAM_CREATE_K5LOGIN = "pam.create.k5login";
const std::string PAM_MAPUSER = "pam.mapuser.";
const std::string PAM_ALLOW_OVERRIDE = "pam.allow.override";
const std::string PAM_ALLOW_PW_EXPIRED_ACCESS = "pam.allow.password.expired.access";
const std::string PAM_ALLOW_PW_EXPIRED_ACCESS_MSG = "pam.allow.password.expired.access.mesg";
const std::string PAM_ALLOW_PW_CHANGE = "pam.allow.password.change";
const std::string PAM_ALLOW_PW_CHANGE_MSG = "pam.allow.password.change.mesg";
const std::string PAM_CONFIG_PRECEDING_AUTHLIBS = "pam.config.preceding.authlibs";
const std::string PAM_CONFIG_PROGRAM_IGNORE = "pam.config.program.ignore";
const std::string PAM_CONFIG_PROGRAM_CHECK = "pam.config.program.check";
const std::string PAM_NTLM_AUTH_DOMAINS = "pam.ntlm.auth.domains";
const std::string PAM_SETCRED_RESPECT_SUFFICIENT = "pam.setcred.respect.sufficient";
const std::string PAM_SETCRED_SUPPORT_REINITIALIZE = "pam.setcred.support.reinitialize";
const std::string PAM_SETCRED_SUPPORT_REFRESH = "pam.setcred.support.refresh";

// nss.*: the name-service module
const std::string NSS_NOLOGIN_SHELL = "nss.shell.nologin";
const std::string NSS_NO_GROUP_MEMBERS = "nss.group.skip.members";
const std::string NSS_USER_IGNORE = "nss.user.ignore";
const std::string NSS_GROUP_IGNORE = "nss.group.ignore";
const std::string NSS_UID_IGNORE = "nss.uid.ignore";
const std::string NSS_GID_IGNORE = "nss.gid.ignore";
const std::string NSS_PROGRAM_IGNORE = "nss.program.ignore";
const std::string NSS_SQUASH_ROOT = "nss.squash.root";
const std::string NSS_MINUID = "nss.minuid";
const std::string NSS_MINGID = "nss.mingid";
const std::string NSS_NOBODY_USER = "nss.nobody.user";
const std::string NSS_NOBODY_GROUP = "nss.nobody.group";
const std::string NSS_NOBODY_UID = "nss.nobody.uid";
const std::string NSS_NOBODY_GID = "nss.nobody.gid";
const std::string NSS_PASSWD_OVERRIDE = "nss.passwd.override";
const std::string NSS_GROUP_OVERRIDE = "nss.group.override";
const std::string NSS_PASSWD_HASH = "nss.passwd.hash";
const std::string NSS_GECOS_ATTR = "nss.gecos.attribute";
const std::string NSS_SPLIT_GROUPS = "nss.split.group.membership";
const std::string NSS_SPECIALCASE_SMBD = "nss.specialcase.smbd";
const std::string NSS_RUNTIME_VAR = "nss.runtime.var.";
const std::string NSS_RUNTIME_DEFAULTVALUE_VAR = "nss.runtime.defaultvalue.var.";
const std::string IGNORE_USERS = "nss.user.ignore";

// krb5.*: Kerberos configuration
const std::string KRB5_SUPPORT_ALT_IDENTITIES = "krb5.support.alt.identities";
const std::string ACCOUNT_KEYTAB = "krb5.keytab";
const std::string ACCOUNT_SPNS = "krb5.service.principals";
const std::string ACCOUNT_TKT_ENCTYPES = "krb5.tkt.encryption.types";
const std::string ACCOUNT_KEYTAB_ENTRIES = "krb5.keytab.entries";
const std::string KRB5_CONF_UPDATE_INTERVAL = "krb5.config.update";
const std::string KRB5_CONF_UPDATE_FAIL_INTERVAL = "krb5.config.update.fail";
const std::string KRB5_FORWARDABLE_USER_TGTS = "krb5.forwardable.user.tickets";
const std::string KRB5_PERMIT_DNS_SPN_LOOKUPS = "krb5.permit.dns.spn.lookups";
const std::string KRB5_CCACHE_TYPE = "krb5.ccache_type";
const std::string KRB5_FORCE_TCP = "krb5.forcetcp";
const std::string KRB5_UDP_PREF_LIMIT = "krb5.udp.preference.limit ";
const std::string KRB5_DNSLOOKUPKDC = "krb5.use.dns.lookup.kdc";
const std::string KRB5_DNSLOOKUPREALM = "krb5.use.dns.lookup.realm";
const std::string KRB5_KDCTIMESYNC = "krb5.use.kdc.timesync";
const std::string KRB5_INFINITE_RENEWAL = "krb5.cache.infinite.renewal";
const std::string KRB5_VERIFY_CREDENTIALS = "krb5.verify.credentials";
const std::string KRB5_ALLOW_WEAK_KEYS = "krb5.allow.weak.keys";
const std::string KRB5_UNIQUE_CACHE_FILES = "krb5.unique.cache.files";
const std::string KRB5_CACHE_RENEW_INTERVAL = "krb5.cache.renew.interval";
const std::string KRB5_CACHE_POSTRENEWAL = "krb5.cache.postrenewal";
const std::string KRB5CC_CLEAN = "krb5.cache.clean";
const std::string KRB5CC_CLEAN_INTERVAL = "krb5.cache.clean.interval";
const std::string KRB5CC_CLEAN_PAM = "krb5.cache.clean.pam";
const std::string KRB5CC_CLEAN_EXCLUSION = "krb5.cache.clean.exclusion";
const std::string KRB5CC_TYPE = "krb5.cache.type";

// brondalt.*: the daemon
const std::string PAM_NONROOT_SETCRED_ALLOW = "brondalt.pam.nonroot.setcred.allow";
const std::string NTLM_SEPARATORS = "brondalt.ntlm.separators";
const std::string VESK_NTLM_DOMAINS = "brondalt.ntlm.domains";
const std::string NTLM_VERSION = "brondalt.ntlm.version";
const std::string VESK_NTLM_USE_NETLOGON = "brondalt.ntlm.use.netlogon";
const std::string NTLM_SEND_LM_RESPONSE = "brondalt.ntlm.send.lm.response";
const std::string NTLM_SMB_CONN_TIMEOUT = "brondalt.ntlm.smb.conn.timeout";
const std::string NTLM_ADNTLM_LIST_REFRESH_INTERVAL = "brondalt.ntlm.adntlm.list.refresh.interval";
const std::string UDP_SEARCH_TIMEOUT = "brondalt.udp.timeout";
const std::string LDAP_BIND_TIMEOUT = "brondalt.ldap.timeout";
const std::string TRUST_SEARCH_ENABLED = "brondalt.ldap.trust.enabled";
const std::string TRUST_SEARCH_TIMEOUT = "brondalt.ldap.trust.timeout";
const std::string TRUST_SEARCH_LOCAL = "brondalt.ldap.trust.local.domain.only";
const std::string TRUST_EXCLUDED_DOMAINS = "brondalt.ldap.trust.excluded.domains";
const std::string DOMAIN_BLOCK = "brondalt.excluded.domains";
const std::string DOMAIN_ALLOW = "brondalt.included.domains";
const std::string NTLM_BLOCK = "brondalt.excluded.ntlm.domains";
const std::string NTLM_ALLOW = "brondalt.included.ntlm.domains";
const std::string UPN_BLOCK = "brondalt.excluded.upn.suffixes";
const std::string UPN_ALLOW = "brondalt.included.upn.suffixes";
const std::string LDAP_SOCKET_CONNECT_TIMEOUT = "brondalt.ldap.socket.timeout";
const std::string VESKD_LRPC2_RECV_TIMEOUT = "brondalt.lrpc2.receive.timeout";
const std::string VESKD_LRPC2_SEND_TIMEOUT = "brondalt.lrpc2.send.timeout";
const std::string LDAP_PACKET_ENCRYPT = "brondalt.ldap.packet.encrypt";
const std::string VESKD_PAGED_SEARCH_MAX = "brondalt.paged.search.max";
const std::string VESKD_AUTOEDIT = "brondalt.autoedit";
const std::string VESKD_SOCKET = "brondalt.clients.socket";
const std::string VESKD_SOCKET2 = "brondalt.clients.socket2";
const std::string VESKD_CLIENT_IDLE_TIMEOUT = "brondalt.client.idle.timeout";
const std::string VESKD_LISTEN_BACKLOG = "brondalt.clients.listen.backlog";
const std::string VESKD_NUM_CLIENT_THREADS = "brondalt.clients.threads";
const std::string VESKD_MAX_CLIENT_THREADS = "brondalt.clients.threads.max";
const std::string VESKD_STACKSIZE_CLIENT_THREADS = "brondalt.clients.threads.stacksize";
const std::string VESKD_USE_THREAD_PRIORITY = "brondalt.clients.threads.priority";
const std::string VESKD_DATA_SEG_SIZE = "brondalt.ulimit.data.seg.size";
const std::string VESKD_CLIENTS_DONE_POLL = "brondalt.clients.threads.poll";
const std::string VESKD_USE_ALL_CPUS = "brondalt.use.all.cpus";
const std::string VESKD_MAX_ARENA_NUMBER = "brondalt.max.arena.number";
const std::string VESKD_CHECK_USN = "brondalt.cache.checkusn";
const std::string VESKD_CACHE_EXPIRES = "brondalt.cache.expires";
const std::string VESKD_CACHE_REFRESH = "brondalt.cache.refresh";
const std::string VESKD_CACHE_BUFFER_MAX = "brondalt.cache.buffer.size";
const std::string VESKD_NEGATIVE_CACHE_LIFE = "brondalt.cache.negative.lifetime";
const std::string VESKD_OBJECT_CACHE_LIFE = "brondalt.cache.object.lifetime";
const std::string VESKD_CACHE_FLUSH_INTERVAL = "brondalt.cache.flush.interval";
const std::string VESKD_CACHE_FLUSH_INTERVAL_WZ = "brondalt.cache.flush.interval.wz";
const std::string VESKD_CACHE_CLEANUP_INTERVAL = "brondalt.cache.cleanup.interval";
const std::string VESKD_CACHE_ENCRYPT = "brondalt.cache.encrypt";
const std::string VESKD_CACHE_ENCTYPE = "brondalt.cache.encryption.type";
const std::string VESKD_CACHE_DISABLE = "brondalt.cache.disable";
const std::string VESKD_CACHE_FORCE_UPDATE_INDEX = "brondalt.cache.index.update.force";
const std::string VESKD_20_COMPAT = "brondalt.version2.compatible";
const std::string USE_TOKEN_GROUPS = "brondalt.use.tokengroups";
const std::string USE_KERBEROS_PAC = "brondalt.use.pac";
const std::string USE_KERBEROS_S4U = "brondalt.use.s4u";
const std::string VESKD_GET_PRIMARY_GROUP = "brondalt.get.primarygroup.membership";
const std::string VESKD_GET_GROUP_MEMBERSHIP = "brondalt.get.group.membership";
const std::string CIMDS_GET_BUILTIN_GROUPS = "brondalt.get.builtin.membership";
const std::string VESKD_HASH_ALLOW = "brondalt.hash.allow";
const std::string VESKD_HASH_DENY = "brondalt.hash.deny";
const std::string VESKD_HASH_EXPIRES = "brondalt.hash.expires";
const std::string VESKD_PREFER_CACHE_TO_VALIDATE = "brondalt.prefer.cache.validation";
const std::string VESKD_DUMP_CORE = "brondalt.dumpcore";
const std::string KRB5_PASSWD_CHECK_S_ADDRESS = "brondalt.krb5.passwd_check_s_address";
const std::string KRB5_USE_ADDRESSES = "brondalt.krb5.use.addresses";
const std::string KRB5_SEND_NETBIOS_NAME = "brondalt.krb5.send.netbios.name";
const std::string KRB5_EXTRA_ADDRESSES = "brondalt.krb5.extra_addresses";
const std::string KRB5_MANAGED_ACCOUNTS = "brondalt.krb5.managed.accounts";
const std::string KRB5_SPNS = "brondalt.krb5.service.principals";
const std::string KRB5_TKT_ENCLIST = "brondalt.krb5.tkt.encryption.types";
const std::string KRB5_PERMITTED_ENCLIST = "brondalt.krb5.permitted.encryption.types";
const std::string KRB5_KEYTAB_CLEAN_NON_FIPS_ENCTYPES = "brondalt.krb5.keytab.clean.nonfips.enctypes";
const std::string KRB5_PASSWORD_CHANGE_DAYS = "brondalt.krb5.password.change.interval";
const std::string KRB5_PASSWORD_CHANGE_FACTOR = "brondalt.krb5.password.change.secs_per_day";
const std::string KRB5_CONFFILE_NAME = "brondalt.krb5.conf.file";
const std::string KRB5_VESKD_AUTOEDIT = "brondalt.krb5.autoedit";
const std::string KRB5_CONF_DOMAINREALM = "brondalt.krb5.conf.domain_realm";
const std::string KRB5_CONF_DOMAINREALM_STRICT = "brondalt.krb5.conf.domain_realm.strict";
const std::string KRB5_CONF_REALM_ADMIN_SERVER = "brondalt.krb5.conf.realm.admin_server";
const std::string BINDING_REFRESH_INTERVAL = "brondalt.binding.refresh.interval";
const std::string BINDING_REFRESH_FORCE = "brondalt.binding.refresh.force";
const std::string UPDATEOS_INTERVAL = "brondalt.update.os.interval";
const std::string PREVALIDATE_INTERVAL = "brondalt.prevalidate.interval";
const std::string PREVALIDATE_SERVICE = "brondalt.prevalidate.service";
const std::string PREVALIDATE_ALLOW_USERS = "brondalt.prevalidate.allow.users";
const std::string PREVALIDATE_ALLOW_GROUPS = "brondalt.prevalidate.allow.groups";
const std::string PREVALIDATE_DENY_USERS = "brondalt.prevalidate.deny.users";
const std::string PREVALIDATE_DENY_GROUPS = "brondalt.prevalidate.deny.groups";
const std::string AZMAN_REFRESH_INTERVAL = "brondalt.azman.refresh.interval";
const std::string WZ_REFRESH_INTERVAL = "brondalt.refresh.interval.wz";
const std::string DNS_REFRESH_INTERVAL = "brondalt.dynamic.dns.refresh.interval";
const std::string ALT_UPN_UPDATE_INTERVAL = "brondalt.altupn.update.interval";
const std::string MAX_BINDING_AGE = "brondalt.binding.idle.time";
const std::string QTR_WATCH_ENABLED = "brondalt.watch.enabled";
const std::string VESKD_WATCH_CHECK_TIMEOUT = "brondalt.watch.check.timeout";
const std::string VESKD_WATCH_CHECK_FREQUENCY = "brondalt.watch.check.frequency";
const std::string VESKD_WATCH_DEATH_TIMEOUT = "brondalt.watch.death.timeout";
const std::string VESKD_WATCH_STARTUP_DELAY = "brondalt.watch.startup.delay";
const std::string QTR_WATCH_FLUSH = "brondalt.watch.force.flush";
const std::string FORCE_GET_SALT = "brondalt.force.salt.lookup";
const std::string NUM_USER_OBJS = "brondalt.fetch.object.count";
const std::string CRED_EXPIRATION_INTERVAL = "brondalt.transient.cred.expiration";
const std::string SNTP_ENABLED = "brondalt.sntp.enabled";
const std::string SNTP_POLL = "brondalt.sntp.poll";
const std::string NETLOGON_PKT_SEC_TYPE = "brondalt.netlogon.packet.security.type";
const std::string NETLOGON_PKT_SEC_LEVEL_SCHANNEL = "brondalt.netlogon.packet.security.level.schannel";
const std::string NETLOGON_CACHE_CONNECTION = "brondalt.netlogon.cache.connection";
const std::string NETLOGON_CACHE_CONN_TIMEOUT = "brondalt.netlogon.cache.conn.timeout";
const std::string NETLOGON_RETRY_CONNECT_TIME = "brondalt.netlogon.retry.connect.timeout";
const std::string SAMBA_SYNC = "brondalt.samba.sync";
const std::string MAC_AUTOEDIT_DSPLUGIN = "brondalt.autoedit.dsplugin";
const std::string MAC_AUTOEDIT_DISABLE_APPLE_PLUGIN = "brondalt.autoedit.apple_adplugin";
const std::string MAC_AUTOEDIT_NETLOGIN = "brondalt.autoedit.mac.netlogin";
const std::string MAC_MAP_HOME_TO_USERS = "brondalt.mac.map.home.to.users";
const std::string VESKD_DATADIR_CHECK_INTERVAL = "brondalt.disk.check.interval";
const std::string VESKD_DATADIR_FULL_WARN_LEVEL = "brondalt.disk.check.free";
const std::string SFU_DOMAIN_LIST = "brondalt.sfu.domains";
const std::string BRONDALT_ALT_UPN = "brondalt.altupns";
const std::string HOVNEL_ENABLED = "brondalt.dynamic.dns.enabled";
const std::string HOVNEL_CMD = "brondalt.dynamic.dns.command";
const std::string HOVNEL_ERROR_FILE = "brondalt.dynamic.dns.error_file";
const std::string LOCAL_GROUP_FILE = "brondalt.local.group.file";
const std::string MERGE_LOCAL_GROUP = "brondalt.local.group.merge";
const std::string ZONED_GROUP_COUNT = "brondalt.zone.group.count";
const std::string USING_PRIVATE_GROUPS = "brondalt.iterate.private.groups";
const std::string BRONDALT_OS_NAME = "brondalt.os.name";
const std::string BRONDALT_OS_VERSION = "brondalt.os.version";
const std::string BRONDALT_OEM_ID = "brondalt.oem.id";
const std::string BRONDALT_OS_VERSION_USE_WIN7PREFIX = "brondalt.os.version.use.win7prefix";
const std::string BRONDALT_LOOKUP_BY_DISPLAY = "brondalt.user.lookup.display";
const std::string BRONDALT_ALLOW_COMPUTER_USERS = "brondalt.user.computers";
const std::string BRONDALT_CUSTOM_ATTRIBUTES = "brondalt.custom.attributes";
const std::string BRONDALT_IGNORE_SETGRPSRC = "brondalt.ignore.setgrpsrc";
const std::string BRONDALT_PARSE_NETGROUP = "brondalt.parse.netgroup";
const std::string BRONDALT_NETGROUP_AT = "brondalt.netgroup.at.replacement";
const std::string MAX_SERVERS_TRY = "brondalt.server.try.max";
const std::string UNKNOWN_PASSWORD_EXPIRE = "brondalt.unknown.password.expire";
const std::string GETDASTATUS_BYPASS = "brondalt.getdastatus.bypass";
const std::string CLEAN_SUDO_CACHE = "brondalt.sudo.clear.passwd.timestamp";
const std::string CLEAN_WUVO_CACHE = "brondalt.wuvo.clear.passwd.timestamp";
const std::string SUDO_TIMESTAMPDIR = "brondalt.sudo.timestampdir";

// gp.*: group policy mapping
const std::string GP_MAPPERS_UMASK = "gp.mappers.umask";
const std::string GP_MAPPERS_RUNMAPPERS = "gp.mappers.runmappers";
const std::string GP_MAPPERS_TIMEOUT = "gp.mappers.timeout.all";
const std::string GP_MACHINE_MAPPERS = "gp.mappers.machine";
const std::string GP_USER_MAPPERS = "gp.mappers.user";
const std::string GP_MACHINE_MAPPERS_DIR = "gp.mappers.directory.machine";
const std::string GP_USER_MAPPERS_DIR = "gp.mappers.directory.user";
const std::string GP_MAPPERS_ERROR_FILE = "gp.mappers.error_file";
const std::string GP_MACHINE_REGISTRY = "gp.reg.directory.machine";
const std::string GP_USER_REGISTRY = "gp.reg.directory.user";
const std::string GP_REFRESH_DISABLED = "gp.refresh.disable";
const std::string GP_ALL_DISABLED = "gp.disable.all";
const std::string GP_MACHINE_DISABLED = "gp.disable.machine";
const std::string GP_USER_DISABLED = "gp.disable.user";
const std::string GP_POLICY_MERGE = "gp.policies.to.merge";
const std::string GP_USER_LOGIN_RUN = "gp.user.login.run";
const std::string GP_USER_IGNORE_ERRORS = "gp.user.ignore_errors";
const std::string GP_WAIT_FOR_MACHINE_POLICY = "gp.wait_for_machine_policy";
const std::string GP_DISK_SPACE_MIN = "gp.disk.space.min";
const std::string GP_DISK_SPACE_CHECK_FOLDERS = "gp.disk.space.check.folders";

// dns.*: the resolver of the daemon
const std::string DNS_CACHE_TIMEOUT = "dns.cache.timeout";
const std::string DNS_BLOCK = "dns.block";
const std::string DNS_SWEEP_PATTERN = "dns.sweep.pattern";
const std::string DNS_DEAD_RESWEEP = "dns.dead.resweep.interval";
const std::string DNS_ALIVE_RESWEEP = "dns.alive.resweep.interval";
const std::string DNS_UDP_RETRIES = "dns.udp.retries";
const std::string DNS_TIMEOUT = "dns.timeout";
const std::string DNS_TCP_TIMEOUT = "dns.tcp.timeout";
const std::string DNS_UDP_TIMEOUTS = "dns.udp.timeouts";
const std::string DNS_SERVERS = "dns.servers";
const std::string DNS_SEARCH = "dns.search";
const std::string DNS_CACHE_NEGATIVE = "dns.cache.negative";
const std::string DNS_SORT = "dns.sort";
const std::string DNS_QUERY_ALL_SERVERS = "dns.query.all.servers";
const std::string DNS_CHANGE_CHECK = "dns.change.check.interval";
const std::string DNS_ROUTE_CHECK_PORT = "dns.route.check.port";
const std::string DNS_ROUTE_CHECK_PORT_MAX = "dns.route.check.port.max";

// auto.*: the automatic Unix schema
const std::string AUTO_SCHEMA_RIDS = "auto.schema.rids";
const std::string AUTO_SCHEMA_APPLE_SCHEME = "auto.schema.apple_scheme";
const std::string AUTO_SCHEMA_FIRST_GID = "auto.schema.first.gid";
const std::string AUTO_SCHEMA_PRIMARY_GID = "auto.schema.primary.gid";
const std::string AUTO_SCHEMA_SHELL = "auto.schema.shell";
const std::string AUTO_SCHEMA_HOMEDIR = "auto.schema.homedir";
const std::string AUTO_SCHEMA_HOMEDIR_ILLEGAL_CHARS = "auto.schema.homedir.illegal_chars";
const std::string AUTO_SCHEMA_USE_ADHOMEDIR = "auto.schema.use.adhomedir";
const std::string AUTO_SCHEMA_REMOTE_FILE_SERVICE = "auto.schema.remote.file.service";
const std::string AUTO_SCHEMA_NAME_FORMAT = "auto.schema.name.format";
const std::string AUTO_SCHEMA_DOMAIN_PREFIX = "auto.schema.domain.prefix";
const std::string AUTO_SCHEMA_PRIVATE_GROUP = "auto.schema.private.group";
const std::string AUTO_SCHEMA_ITERATE_CACHE = "auto.schema.iterate.cache";
const std::string AUTO_SCHEMA_SEARCH_RETURN_MAX = "auto.schema.search.return.max";
const std::string AUTO_SCHEMA_NAME_LOWER = "auto.schema.name.lower";
const std::string UNIX_NAME_DISALLOW_CHARS = "auto.schema.unix.name.disallow.chars";
const std::string AUTO_SCHEMA_SUBSTITUTE_CHARS = "auto.schema.substitute.chars";
const std::string AUTO_SCHEMA_MAX_UNIX_NAME_LENGTH = "auto.schema.max.unix.name.length";
const std::string AUTO_SCHEMA_ALLOW_USERS = "auto.schema.allow.users";
const std::string AUTO_SCHEMA_ALLOW_GROUPS = "auto.schema.allow.groups";
const std::string AUTO_SCHEMA_GROUPS = "auto.schema.groups";

// dc.*: domain controller selection
const std::string FAST_DC_SWEEP_PATTERN = "dc.fast.sweep.pattern";
const std::string DEEP_DC_SWEEP_PATTERN = "dc.deep.sweep.pattern";
const std::string DEAD_DC_CACHE = "dc.dead.cache.refresh";
const std::string LIVE_DC_CACHE = "dc.live.cache.refresh";
const std::string DC_SPEED_SORT = "dc.speed.sort";
const std::string DC_PENALTY_TIME = "dc.penalty.time";

// domain.*
const std::string DEAD_DOMAIN_CACHE = "domain.dead.cache.refresh";
const std::string LIVE_DOMAIN_CACHE = "domain.live.cache.refresh";

// ldap.*
const std::string LDAP_SEND_TIMEOUT = "ldap.send.timeout";
const std::string LDAP_RECV_TIMEOUT = "ldap.recv.timeout";

// ldapproxy.*
const std::string LDAPPROXY_RFC2307 = "ldapproxy.rfc2307";

// openldap.*
const std::string OPENLDAP_LOGGING_ENABLED = "openldap.logging.enabled";
const std::string OPENLDAP_LOGGING_LEVEL = "openldap.logging.level";

// smb.*
const std::string SMB_NEGOTIATE_SMB2 = "smb.negotiate.smb2";

// samba.*: Samba interoperation
const std::string SAMBA_BASE_PATH = "samba.base.path";
const std::string SAMBA_VERSION = "samba.version";
const std::string SAMBA_LIBTDB_PATH = "samba.libtdb.path";
const std::string SAMBA_INTEROP_USELIBTDB = "samba.interop.uselibtdb";

// kambrel.*: the join tool
const std::string KRB5_JOIN_CONFFILE_NAME = "kambrel.krb5.conf.file";
const std::string JOIN_PRELOAD_CACHE_TIMEOUT = "kambrel.preload.cache.timeout";
const std::string JOIN_BRONDALT_POLL_TIME = "kambrel.brondalt.poll.ms";
const std::string JOIN_BRONDALT_WAIT_TIME = "kambrel.brondalt.wait.seconds";
const std::string JOIN_SAMACCOUNTNAME_LENGTH = "kambrel.samaccountname.length";

// trelvox.*: the password tool
const std::string TRELVOX_CHANGE_DISABLED_MSG = "trelvox.password.change.disabled.mesg";
const std::string TRELVOX_CHANGE_PERM_MSG = "trelvox.password.change.perm.mesg";
const std::string TRELVOX_ACCT_DISABLED_MSG = "trelvox.account.disabled.mesg";
const std::string TRELVOX_INVALID_USER_OR_PWD_MSG = "trelvox.account.invalid.mesg";

// hovnel.*: the dynamic DNS tool
const std::string VESKD_HOVNEL_WAIT_TIME = "hovnel.wait.time";

// nelvik.*: the certificate tool
const std::string NELVIK_CERT_DIR = "nelvik.cert.dir";

// gormit.*: the id tool
const std::string GORMIT_PRESERVE_EXECUTION_BITS = "gormit.preserve.execution.bits";

// wuvo.*
const std::string WUVO_TIMESTAMPDIR = "wuvo.timestampdir";

// wz.*: the privileged-command feature
const std::string WZ_ENABLED = "wz.enabled";
const std::string WZ_WUVO_LOCATION = "wz.wuvo.location";
const std::string WZ_WUSH_LOCATION = "wz.wush.location";

// audittrail.*
const std::string AUDITTRAIL_TARGETS = "audittrail.targets";
const std::string AUDITTRAIL_WZ_COMMAND_WITH_ARGS = "audittrail.wz.command.with.args";
const std::string AUDITTRAIL_ZANTREL_SUITE_TRUSTED_PATH_MACHINECRED_SKIPDA =
    "audittrail.Zantrel_Suite.Trusted_Path.machinecred.skipda";

// mac.*: Apple hosts
const std::string MAC_DSPLUGIN_LRPC_SESSIONS = "mac.dsplugin.lrpc.sessions";
const std::string MAC_DSPLUGIN_LRPC_SESSIONS_TIMEOUT = "mac.dsplugin.lrpc.sessions.timeout";
const std::string MAC_DSPLUGIN_USERRECORD_DISTINGUISHEDNAME = "mac.dsplugin.userrecord.distinguishedname";
const std::string MAC_KERBEROS_USE_OSX_CCACHE = "mac.kerberos.use_osx_ccache";
const std::string MAC_NETWORK_HOME_PROTOCOL = "mac.network_home_protocol";
const std::string MAC_DSPLUGIN_PWCACHE_LIFETIME = "mac.dsplugin.pwcache.lifetime";
const std::string MAC_SMARTCARD_LOGIN_FORCE = "mac.smartcard.login.force";

// tokend.*
const std::string TOKEND_PIV_PIN_CACHE_TIME = "tokend.piv.pin_cache_timeout";

// lam.*
const std::string LAM_MAX_USER_COUNT = "lam.max.user.count";
const std::string LAM_MAX_GROUP_COUNT = "lam.max.group.count";
const std::string LAM_PROGRAM_NOTCOMPLIANT = "lam.program.notcompliant";
const std::string AM_METHOD_VERSION = "lam.method.version";
const std::string LAM_ATTR_LOGIN_OVERRIDE = "lam.attribute.login.override";

// aix.*
const std::string AIX_USER_INHERIT_ATTRS = "aix.user.inherit.attrs";

// rhel.*
const std::string SMARTCARD_PKCS11_MODULE = "rhel.smartcard.pkcs11.module";

// secedit.*: policy settings
const std::string LOCKOUT_ALLOW_OFFLINE_LOGIN = "secedit.system.access.lockout.allowofflinelogin";
const std::string MAX_PW_AGE = "secedit.system.access.maximumpasswordage";
const std::string MIN_PW_AGE = "secedit.system.access.minimumpasswordage";
const std::string LOCKOUT_BADCOUNT = "secedit.system.access.lockoutbadcount";
const std::string LOCKOUT_DURATION = "secedit.system.access.lockoutduration";

// zone.*
const std::string ZONE_NAME = "zone.name";

// cli.*
const std::string CLI_HOOK_PREFIX = "cli.hook.";
const std::string CLI_HOOK_TIMEOUT = "cli.hook.timeout";

// nismap.*
const std::string NIS_MAP_DN = "nismap.dn";

// kset.*
const std::string DISABLE_KSET_FILES = "kset.files.disabled";

// selinux.*
const std::string LIBSELINUX_NAME = "selinux.lib.name";

// apparmor.*
const std::string APPARMOR_CONFIG_PROFILES = "apparmor.config.profiles";

// fips.*
const std::string FIPS_MODE_ENABLE = "fips.mode.enable";

// cert.*
const std::string CERT_DOMAINTRUST_CHECK = "cert.domaintrust.check";

// adjust.*
const std::string ADJUST_OFFSET_TIME = "adjust.offset.time";

}  // namespace PN
}  // namespace vesk
