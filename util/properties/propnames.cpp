#include <fokrazo/propnames.h>

#include "util/text/lasting_text.h"

#define NAME FOKRAZO_LASTING_TEXT

namespace vesk {
namespace PN {

// log
NAME(ROOT_LOGGER_NAME, "log");

// logger.*: the log system
NAME(LOGGER_PROGRAM_IGNORE, "logger.program.ignore");
NAME(LOGGER_DESTINATION, "logger.destination");
NAME(LOGGER_FACILITY, "logger.facility");
NAME(LOGGER_OPENLOG, "logger.openlog");
NAME(LOGGER_QUEUE_SIZE, "logger.queue.size");
NAME(LOGGER_SHOW_MORE, "logger.showmore");
NAME(LOGGER_FILE_MAXCOUNT, "logger.file.maxcount");
NAME(LOGGER_FILE_MAXSIZE, "logger.file.maxsize");
NAME(LOGGER_FILE_FLUSH_FREQUENCY, "logger.file.flush.frequency");
NAME(LOGGER_FILE_ZIP_BACKUP, "logger.file.zip.backup");
NAME(ROOT_MEMORY_NAME, "logger.memory.log");
NAME(LOGGER_MEMORY_ENABLED, "logger.memory.enabled");
NAME(LOGGER_MEMORY_SIZE, "logger.memory.bufsize");
NAME(LOGGER_MEMORY_LOG_LEVEL, "logger.memory.log");

// lrpc.*: the local RPC client
NAME(LRPC_CONNECT_TIMEOUT, "lrpc.connect.timeout");
NAME(LRPC_TIMEOUT, "lrpc.timeout");
NAME(LRPC_SESSION_TIMEOUT, "lrpc.session.timeout");
NAME(LRPC_MESSAGE_MAXSIZE, "lrpc.message.maxsize");

// pam.*: the login module and its messages
NAME(PAM_SET_ENV, "pam.setenv");
NAME(PAM_PWD_MSG, "pam.password.enter.mesg");
NAME(PAM_CHG_MSG, "pam.password.change.mesg");
NAME(PAM_MUST_CHANGE_PW_MSG, "pam.password.change.required.mesg");
NAME(PAM_OLD_MSG, "pam.password.old.mesg");
NAME(PAM_NEW_MSG, "pam.password.new.mesg");
NAME(PAM_RENEW_MSG, "pam.password.confirm.mesg");
NAME(PAM_ACCOUNT_LOCKED_MSG, "pam.account.locked.mesg");
NAME(PAM_ACCT_EXPIRED_MSG, "pam.account.expired.mesg");
NAME(PAM_ACCT_DISABLED_MSG, "pam.account.disabled.mesg");
NAME(PAM_WORKSTATION_DENIED_MSG, "pam.workstation.denied.mesg");
NAME(PAM_AUTHFAIL_MSG, "pam.auth.failure.mesg");
NAME(PAM_AUTH_CREATE_KRB5_CACHE, "pam.auth.create.krb5.cache");
NAME(PAM_NOMATCH_MSG, "pam.password.new.mismatch.mesg");
NAME(PAM_NONULL_MSG, "pam.password.empty.mesg");
NAME(PAM_CHG_POLICY_VIOLATION_MSG, "pam.policy.violation.mesg");
NAME(PAM_SKEL_DIR, "pam.homeskel.dir");
NAME(PAM_TREECOPY_RETRY_DELAY, "pam.treecopy.retry.delay");
NAME(PAM_HOMEDIR_PERMS, "pam.homedir.perms");
NAME(PAM_HOMEDIR_CREATE, "pam.homedir.create");
NAME(PAM_CREATING_HOMEDIR_MSG, "pam.homedir.create.mesg");
NAME(PAM_IGNORE_USERS, "pam.ignore.users");
NAME(PAM_ALLOW_USERS, "pam.allow.users");
NAME(PAM_ALLOW_GROUPS, "pam.allow.groups");
NAME(PAM_DENY_USERS, "pam.deny.users");
NAME(PAM_DENY_GROUPS, "pam.deny.groups");
NAME(PAM_MUNGE_DISALLOWED_USERS, "pam.deny.change.shell");
NAME(PAM_PW_WILL_EXP_MSG, "pam.password.expiry.warn.mesg");
NAME(PAM_PWD_EXP_WARN, "pam.password.expiry.warn");
NAME(PAM_UID_CONFLICT, "pam.uid.conflict");
NAME(PAM_LOCAL_ACCT_CONFLICT_NAME, "pam.account.conflict.name.mesg");
NAME(PAM_LOCAL_ACCT_CONFLICT_UID, "pam.account.conflict.uid.mesg");
NAME(PAM_LOCAL_ACCT_CONFLICT_BOTH, "pam.account.conflict.both.mesg");
NAME(PAM_NO_AD_USING_LOCAL, "pam.brondalt.down.mesg");
NAME(PAM_CREATE_K5LOGIN, "pam.create.k5login");
NAME(PAM_MAPUSER, "pam.mapuser.");
NAME(PAM_ALLOW_OVERRIDE, "pam.allow.override");
NAME(PAM_ALLOW_PW_EXPIRED_ACCESS, "pam.allow.password.expired.access");
NAME(PAM_ALLOW_PW_EXPIRED_ACCESS_MSG, "pam.allow.password.expired.access.mesg");
NAME(PAM_ALLOW_PW_CHANGE, "pam.allow.password.change");
NAME(PAM_ALLOW_PW_CHANGE_MSG, "pam.allow.password.change.mesg");
NAME(PAM_CONFIG_PRECEDING_AUTHLIBS, "pam.config.preceding.authlibs");
NAME(PAM_CONFIG_PROGRAM_IGNORE, "pam.config.program.ignore");
NAME(PAM_CONFIG_PROGRAM_CHECK, "pam.config.program.check");
NAME(PAM_NTLM_AUTH_DOMAINS, "pam.ntlm.auth.domains");
NAME(PAM_SETCRED_RESPECT_SUFFICIENT, "pam.setcred.respect.sufficient");
NAME(PAM_SETCRED_SUPPORT_REINITIALIZE, "pam.setcred.support.reinitialize");
NAME(PAM_SETCRED_SUPPORT_REFRESH, "pam.setcred.support.refresh");

// nss.*: the name-service module
NAME(NSS_NOLOGIN_SHELL, "nss.shell.nologin");
NAME(NSS_NO_GROUP_MEMBERS, "nss.group.skip.members");
NAME(NSS_USER_IGNORE, "nss.user.ignore");
NAME(NSS_GROUP_IGNORE, "nss.group.ignore");
NAME(NSS_UID_IGNORE, "nss.uid.ignore");
NAME(NSS_GID_IGNORE, "nss.gid.ignore");
NAME(NSS_PROGRAM_IGNORE, "nss.program.ignore");
NAME(NSS_SQUASH_ROOT, "nss.squash.root");
NAME(NSS_MINUID, "nss.minuid");
NAME(NSS_MINGID, "nss.mingid");
NAME(NSS_NOBODY_USER, "nss.nobody.user");
NAME(NSS_NOBODY_GROUP, "nss.nobody.group");
NAME(NSS_NOBODY_UID, "nss.nobody.uid");
NAME(NSS_NOBODY_GID, "nss.nobody.gid");
NAME(NSS_PASSWD_OVERRIDE, "nss.passwd.override");
NAME(NSS_GROUP_OVERRIDE, "nss.group.override");
NAME(NSS_PASSWD_HASH, "nss.passwd.hash");
NAME(NSS_GECOS_ATTR, "nss.gecos.attribute");
NAME(NSS_SPLIT_GROUPS, "nss.split.group.membership");
NAME(NSS_SPECIALCASE_SMBD, "nss.specialcase.smbd");
NAME(NSS_RUNTIME_VAR, "nss.runtime.var.");
NAME(NSS_RUNTIME_DEFAULTVALUE_VAR, "nss.runtime.defaultvalue.var.");
NAME(IGNORE_USERS, "nss.user.ignore");

// krb5.*: Kerberos configuration
NAME(KRB5_SUPPORT_ALT_IDENTITIES, "krb5.support.alt.identities");
NAME(ACCOUNT_KEYTAB, "krb5.keytab");
NAME(ACCOUNT_SPNS, "krb5.service.principals");
NAME(ACCOUNT_TKT_ENCTYPES, "krb5.tkt.encryption.types");
NAME(ACCOUNT_KEYTAB_ENTRIES, "krb5.keytab.entries");
NAME(KRB5_CONF_UPDATE_INTERVAL, "krb5.config.update");
NAME(KRB5_CONF_UPDATE_FAIL_INTERVAL, "krb5.config.update.fail");
NAME(KRB5_FORWARDABLE_USER_TGTS, "krb5.forwardable.user.tickets");
NAME(KRB5_PERMIT_DNS_SPN_LOOKUPS, "krb5.permit.dns.spn.lookups");
NAME(KRB5_CCACHE_TYPE, "krb5.ccache_type");
NAME(KRB5_FORCE_TCP, "krb5.forcetcp");
NAME(KRB5_UDP_PREF_LIMIT, "krb5.udp.preference.limit ");
NAME(KRB5_DNSLOOKUPKDC, "krb5.use.dns.lookup.kdc");
NAME(KRB5_DNSLOOKUPREALM, "krb5.use.dns.lookup.realm");
NAME(KRB5_KDCTIMESYNC, "krb5.use.kdc.timesync");
NAME(KRB5_INFINITE_RENEWAL, "krb5.cache.infinite.renewal");
NAME(KRB5_VERIFY_CREDENTIALS, "krb5.verify.credentials");
NAME(KRB5_ALLOW_WEAK_KEYS, "krb5.allow.weak.keys");
NAME(KRB5_UNIQUE_CACHE_FILES, "krb5.unique.cache.files");
NAME(KRB5_CACHE_RENEW_INTERVAL, "krb5.cache.renew.interval");
NAME(KRB5_CACHE_POSTRENEWAL, "krb5.cache.postrenewal");
NAME(KRB5CC_CLEAN, "krb5.cache.clean");
NAME(KRB5CC_CLEAN_INTERVAL, "krb5.cache.clean.interval");
NAME(KRB5CC_CLEAN_PAM, "krb5.cache.clean.pam");
NAME(KRB5CC_CLEAN_EXCLUSION, "krb5.cache.clean.exclusion");
NAME(KRB5CC_TYPE, "krb5.cache.type");

// brondalt.*: the daemon
NAME(PAM_NONROOT_SETCRED_ALLOW, "brondalt.pam.nonroot.setcred.allow");
NAME(NTLM_SEPARATORS, "brondalt.ntlm.separators");
NAME(VESK_NTLM_DOMAINS, "brondalt.ntlm.domains");
NAME(NTLM_VERSION, "brondalt.ntlm.version");
NAME(VESK_NTLM_USE_NETLOGON, "brondalt.ntlm.use.netlogon");
NAME(NTLM_SEND_LM_RESPONSE, "brondalt.ntlm.send.lm.response");
NAME(NTLM_SMB_CONN_TIMEOUT, "brondalt.ntlm.smb.conn.timeout");
NAME(NTLM_ADNTLM_LIST_REFRESH_INTERVAL, "brondalt.ntlm.adntlm.list.refresh.interval");
NAME(UDP_SEARCH_TIMEOUT, "brondalt.udp.timeout");
NAME(LDAP_BIND_TIMEOUT, "brondalt.ldap.timeout");
NAME(TRUST_SEARCH_ENABLED, "brondalt.ldap.trust.enabled");
NAME(TRUST_SEARCH_TIMEOUT, "brondalt.ldap.trust.timeout");
NAME(TRUST_SEARCH_LOCAL, "brondalt.ldap.trust.local.domain.only");
NAME(TRUST_EXCLUDED_DOMAINS, "brondalt.ldap.trust.excluded.domains");
NAME(DOMAIN_BLOCK, "brondalt.excluded.domains");
NAME(DOMAIN_ALLOW, "brondalt.included.domains");
NAME(NTLM_BLOCK, "brondalt.excluded.ntlm.domains");
NAME(NTLM_ALLOW, "brondalt.included.ntlm.domains");
NAME(UPN_BLOCK, "brondalt.excluded.upn.suffixes");
NAME(UPN_ALLOW, "brondalt.included.upn.suffixes");
NAME(LDAP_SOCKET_CONNECT_TIMEOUT, "brondalt.ldap.socket.timeout");
NAME(VESKD_LRPC2_RECV_TIMEOUT, "brondalt.lrpc2.receive.timeout");
NAME(VESKD_LRPC2_SEND_TIMEOUT, "brondalt.lrpc2.send.timeout");
NAME(LDAP_PACKET_ENCRYPT, "brondalt.ldap.packet.encrypt");
NAME(VESKD_PAGED_SEARCH_MAX, "brondalt.paged.search.max");
NAME(VESKD_AUTOEDIT, "brondalt.autoedit");
NAME(VESKD_SOCKET, "brondalt.clients.socket");
NAME(VESKD_SOCKET2, "brondalt.clients.socket2");
NAME(VESKD_CLIENT_IDLE_TIMEOUT, "brondalt.client.idle.timeout");
NAME(VESKD_LISTEN_BACKLOG, "brondalt.clients.listen.backlog");
NAME(VESKD_NUM_CLIENT_THREADS, "brondalt.clients.threads");
NAME(VESKD_MAX_CLIENT_THREADS, "brondalt.clients.threads.max");
NAME(VESKD_STACKSIZE_CLIENT_THREADS, "brondalt.clients.threads.stacksize");
NAME(VESKD_USE_THREAD_PRIORITY, "brondalt.clients.threads.priority");
NAME(VESKD_DATA_SEG_SIZE, "brondalt.ulimit.data.seg.size");
NAME(VESKD_CLIENTS_DONE_POLL, "brondalt.clients.threads.poll");
NAME(VESKD_USE_ALL_CPUS, "brondalt.use.all.cpus");
NAME(VESKD_MAX_ARENA_NUMBER, "brondalt.max.arena.number");
NAME(VESKD_CHECK_USN, "brondalt.cache.checkusn");
NAME(VESKD_CACHE_EXPIRES, "brondalt.cache.expires");
NAME(VESKD_CACHE_REFRESH, "brondalt.cache.refresh");
NAME(VESKD_CACHE_BUFFER_MAX, "brondalt.cache.buffer.size");
NAME(VESKD_NEGATIVE_CACHE_LIFE, "brondalt.cache.negative.lifetime");
NAME(VESKD_OBJECT_CACHE_LIFE, "brondalt.cache.object.lifetime");
NAME(VESKD_CACHE_FLUSH_INTERVAL, "brondalt.cache.flush.interval");
NAME(VESKD_CACHE_FLUSH_INTERVAL_WZ, "brondalt.cache.flush.interval.wz");
NAME(VESKD_CACHE_CLEANUP_INTERVAL, "brondalt.cache.cleanup.interval");
NAME(VESKD_CACHE_ENCRYPT, "brondalt.cache.encrypt");
NAME(VESKD_CACHE_ENCTYPE, "brondalt.cache.encryption.type");
NAME(VESKD_CACHE_DISABLE, "brondalt.cache.disable");
NAME(VESKD_CACHE_FORCE_UPDATE_INDEX, "brondalt.cache.index.update.force");
NAME(VESKD_20_COMPAT, "brondalt.version2.compatible");
NAME(USE_TOKEN_GROUPS, "brondalt.use.tokengroups");
NAME(USE_KERBEROS_PAC, "brondalt.use.pac");
NAME(USE_KERBEROS_S4U, "brondalt.use.s4u");
NAME(VESKD_GET_PRIMARY_GROUP, "brondalt.get.primarygroup.membership");
NAME(VESKD_GET_GROUP_MEMBERSHIP, "brondalt.get.group.membership");
NAME(CIMDS_GET_BUILTIN_GROUPS, "brondalt.get.builtin.membership");
NAME(VESKD_HASH_ALLOW, "brondalt.hash.allow");
NAME(VESKD_HASH_DENY, "brondalt.hash.deny");
NAME(VESKD_HASH_EXPIRES, "brondalt.hash.expires");
NAME(VESKD_PREFER_CACHE_TO_VALIDATE, "brondalt.prefer.cache.validation");
NAME(VESKD_DUMP_CORE, "brondalt.dumpcore");
NAME(KRB5_PASSWD_CHECK_S_ADDRESS, "brondalt.krb5.passwd_check_s_address");
NAME(KRB5_USE_ADDRESSES, "brondalt.krb5.use.addresses");
NAME(KRB5_SEND_NETBIOS_NAME, "brondalt.krb5.send.netbios.name");
NAME(KRB5_EXTRA_ADDRESSES, "brondalt.krb5.extra_addresses");
NAME(KRB5_MANAGED_ACCOUNTS, "brondalt.krb5.managed.accounts");
NAME(KRB5_SPNS, "brondalt.krb5.service.principals");
NAME(KRB5_TKT_ENCLIST, "brondalt.krb5.tkt.encryption.types");
NAME(KRB5_PERMITTED_ENCLIST, "brondalt.krb5.permitted.encryption.types");
NAME(KRB5_KEYTAB_CLEAN_NON_FIPS_ENCTYPES, "brondalt.krb5.keytab.clean.nonfips.enctypes");
NAME(KRB5_PASSWORD_CHANGE_DAYS, "brondalt.krb5.password.change.interval");
NAME(KRB5_PASSWORD_CHANGE_FACTOR, "brondalt.krb5.password.change.secs_per_day");
NAME(KRB5_CONFFILE_NAME, "brondalt.krb5.conf.file");
NAME(KRB5_VESKD_AUTOEDIT, "brondalt.krb5.autoedit");
NAME(KRB5_CONF_DOMAINREALM, "brondalt.krb5.conf.domain_realm");
NAME(KRB5_CONF_DOMAINREALM_STRICT, "brondalt.krb5.conf.domain_realm.strict");
NAME(KRB5_CONF_REALM_ADMIN_SERVER, "brondalt.krb5.conf.realm.admin_server");
NAME(BINDING_REFRESH_INTERVAL, "brondalt.binding.refresh.interval");
NAME(BINDING_REFRESH_FORCE, "brondalt.binding.refresh.force");
NAME(UPDATEOS_INTERVAL, "brondalt.update.os.interval");
NAME(PREVALIDATE_INTERVAL, "brondalt.prevalidate.interval");
NAME(PREVALIDATE_SERVICE, "brondalt.prevalidate.service");
NAME(PREVALIDATE_ALLOW_USERS, "brondalt.prevalidate.allow.users");
NAME(PREVALIDATE_ALLOW_GROUPS, "brondalt.prevalidate.allow.groups");
NAME(PREVALIDATE_DENY_USERS, "brondalt.prevalidate.deny.users");
NAME(PREVALIDATE_DENY_GROUPS, "brondalt.prevalidate.deny.groups");
NAME(AZMAN_REFRESH_INTERVAL, "brondalt.azman.refresh.interval");
NAME(WZ_REFRESH_INTERVAL, "brondalt.refresh.interval.wz");
NAME(DNS_REFRESH_INTERVAL, "brondalt.dynamic.dns.refresh.interval");
NAME(ALT_UPN_UPDATE_INTERVAL, "brondalt.altupn.update.interval");
NAME(MAX_BINDING_AGE, "brondalt.binding.idle.time");
NAME(QTR_WATCH_ENABLED, "brondalt.watch.enabled");
NAME(VESKD_WATCH_CHECK_TIMEOUT, "brondalt.watch.check.timeout");
NAME(VESKD_WATCH_CHECK_FREQUENCY, "brondalt.watch.check.frequency");
NAME(VESKD_WATCH_DEATH_TIMEOUT, "brondalt.watch.death.timeout");
NAME(VESKD_WATCH_STARTUP_DELAY, "brondalt.watch.startup.delay");
NAME(QTR_WATCH_FLUSH, "brondalt.watch.force.flush");
NAME(FORCE_GET_SALT, "brondalt.force.salt.lookup");
NAME(NUM_USER_OBJS, "brondalt.fetch.object.count");
NAME(CRED_EXPIRATION_INTERVAL, "brondalt.transient.cred.expiration");
NAME(SNTP_ENABLED, "brondalt.sntp.enabled");
NAME(SNTP_POLL, "brondalt.sntp.poll");
NAME(NETLOGON_PKT_SEC_TYPE, "brondalt.netlogon.packet.security.type");
NAME(NETLOGON_PKT_SEC_LEVEL_SCHANNEL, "brondalt.netlogon.packet.security.level.schannel");
NAME(NETLOGON_CACHE_CONNECTION, "brondalt.netlogon.cache.connection");
NAME(NETLOGON_CACHE_CONN_TIMEOUT, "brondalt.netlogon.cache.conn.timeout");
NAME(NETLOGON_RETRY_CONNECT_TIME, "brondalt.netlogon.retry.connect.timeout");
NAME(SAMBA_SYNC, "brondalt.samba.sync");
NAME(MAC_AUTOEDIT_DSPLUGIN, "brondalt.autoedit.dsplugin");
NAME(MAC_AUTOEDIT_DISABLE_APPLE_PLUGIN, "brondalt.autoedit.apple_adplugin");
NAME(MAC_AUTOEDIT_NETLOGIN, "brondalt.autoedit.mac.netlogin");
NAME(MAC_MAP_HOME_TO_USERS, "brondalt.mac.map.home.to.users");
NAME(VESKD_DATADIR_CHECK_INTERVAL, "brondalt.disk.check.interval");
NAME(VESKD_DATADIR_FULL_WARN_LEVEL, "brondalt.disk.check.free");
NAME(SFU_DOMAIN_LIST, "brondalt.sfu.domains");
NAME(BRONDALT_ALT_UPN, "brondalt.altupns");
NAME(HOVNEL_ENABLED, "brondalt.dynamic.dns.enabled");
NAME(HOVNEL_CMD, "brondalt.dynamic.dns.command");
NAME(HOVNEL_ERROR_FILE, "brondalt.dynamic.dns.error_file");
NAME(LOCAL_GROUP_FILE, "brondalt.local.group.file");
NAME(MERGE_LOCAL_GROUP, "brondalt.local.group.merge");
NAME(ZONED_GROUP_COUNT, "brondalt.zone.group.count");
NAME(USING_PRIVATE_GROUPS, "brondalt.iterate.private.groups");
NAME(BRONDALT_OS_NAME, "brondalt.os.name");
NAME(BRONDALT_OS_VERSION, "brondalt.os.version");
NAME(BRONDALT_OEM_ID, "brondalt.oem.id");
NAME(BRONDALT_OS_VERSION_USE_WIN7PREFIX, "brondalt.os.version.use.win7prefix");
NAME(BRONDALT_LOOKUP_BY_DISPLAY, "brondalt.user.lookup.display");
NAME(BRONDALT_ALLOW_COMPUTER_USERS, "brondalt.user.computers");
NAME(BRONDALT_CUSTOM_ATTRIBUTES, "brondalt.custom.attributes");
NAME(BRONDALT_IGNORE_SETGRPSRC, "brondalt.ignore.setgrpsrc");
NAME(BRONDALT_PARSE_NETGROUP, "brondalt.parse.netgroup");
NAME(BRONDALT_NETGROUP_AT, "brondalt.netgroup.at.replacement");
NAME(MAX_SERVERS_TRY, "brondalt.server.try.max");
NAME(UNKNOWN_PASSWORD_EXPIRE, "brondalt.unknown.password.expire");
NAME(GETDASTATUS_BYPASS, "brondalt.getdastatus.bypass");
NAME(CLEAN_SUDO_CACHE, "brondalt.sudo.clear.passwd.timestamp");
NAME(CLEAN_WUVO_CACHE, "brondalt.wuvo.clear.passwd.timestamp");
NAME(SUDO_TIMESTAMPDIR, "brondalt.sudo.timestampdir");

// gp.*: group policy mapping
NAME(GP_MAPPERS_UMASK, "gp.mappers.umask");
NAME(GP_MAPPERS_RUNMAPPERS, "gp.mappers.runmappers");
NAME(GP_MAPPERS_TIMEOUT, "gp.mappers.timeout.all");
NAME(GP_MACHINE_MAPPERS, "gp.mappers.machine");
NAME(GP_USER_MAPPERS, "gp.mappers.user");
NAME(GP_MACHINE_MAPPERS_DIR, "gp.mappers.directory.machine");
NAME(GP_USER_MAPPERS_DIR, "gp.mappers.directory.user");
NAME(GP_MAPPERS_ERROR_FILE, "gp.mappers.error_file");
NAME(GP_MACHINE_REGISTRY, "gp.reg.directory.machine");
NAME(GP_USER_REGISTRY, "gp.reg.directory.user");
NAME(GP_REFRESH_DISABLED, "gp.refresh.disable");
NAME(GP_ALL_DISABLED, "gp.disable.all");
NAME(GP_MACHINE_DISABLED, "gp.disable.machine");
NAME(GP_USER_DISABLED, "gp.disable.user");
NAME(GP_POLICY_MERGE, "gp.policies.to.merge");
NAME(GP_USER_LOGIN_RUN, "gp.user.login.run");
NAME(GP_USER_IGNORE_ERRORS, "gp.user.ignore_errors");
NAME(GP_WAIT_FOR_MACHINE_POLICY, "gp.wait_for_machine_policy");
NAME(GP_DISK_SPACE_MIN, "gp.disk.space.min");
NAME(GP_DISK_SPACE_CHECK_FOLDERS, "gp.disk.space.check.folders");

// dns.*: the resolver of the daemon
NAME(DNS_CACHE_TIMEOUT, "dns.cache.timeout");
NAME(DNS_BLOCK, "dns.block");
NAME(DNS_SWEEP_PATTERN, "dns.sweep.pattern");
NAME(DNS_DEAD_RESWEEP, "dns.dead.resweep.interval");
NAME(DNS_ALIVE_RESWEEP, "dns.alive.resweep.interval");
NAME(DNS_UDP_RETRIES, "dns.udp.retries");
NAME(DNS_TIMEOUT, "dns.timeout");
NAME(DNS_TCP_TIMEOUT, "dns.tcp.timeout");
NAME(DNS_UDP_TIMEOUTS, "dns.udp.timeouts");
NAME(DNS_SERVERS, "dns.servers");
NAME(DNS_SEARCH, "dns.search");
NAME(DNS_CACHE_NEGATIVE, "dns.cache.negative");
NAME(DNS_SORT, "dns.sort");
NAME(DNS_QUERY_ALL_SERVERS, "dns.query.all.servers");
NAME(DNS_CHANGE_CHECK, "dns.change.check.interval");
NAME(DNS_ROUTE_CHECK_PORT, "dns.route.check.port");
NAME(DNS_ROUTE_CHECK_PORT_MAX, "dns.route.check.port.max");

// auto.*: the automatic Unix schema
NAME(AUTO_SCHEMA_RIDS, "auto.schema.rids");
NAME(AUTO_SCHEMA_APPLE_SCHEME, "auto.schema.apple_scheme");
NAME(AUTO_SCHEMA_FIRST_GID, "auto.schema.first.gid");
NAME(AUTO_SCHEMA_PRIMARY_GID, "auto.schema.primary.gid");
NAME(AUTO_SCHEMA_SHELL, "auto.schema.shell");
NAME(AUTO_SCHEMA_HOMEDIR, "auto.schema.homedir");
NAME(AUTO_SCHEMA_HOMEDIR_ILLEGAL_CHARS, "auto.schema.homedir.illegal_chars");
NAME(AUTO_SCHEMA_USE_ADHOMEDIR, "auto.schema.use.adhomedir");
NAME(AUTO_SCHEMA_REMOTE_FILE_SERVICE, "auto.schema.remote.file.service");
NAME(AUTO_SCHEMA_NAME_FORMAT, "auto.schema.name.format");
NAME(AUTO_SCHEMA_DOMAIN_PREFIX, "auto.schema.domain.prefix");
NAME(AUTO_SCHEMA_PRIVATE_GROUP, "auto.schema.private.group");
NAME(AUTO_SCHEMA_ITERATE_CACHE, "auto.schema.iterate.cache");
NAME(AUTO_SCHEMA_SEARCH_RETURN_MAX, "auto.schema.search.return.max");
NAME(AUTO_SCHEMA_NAME_LOWER, "auto.schema.name.lower");
NAME(UNIX_NAME_DISALLOW_CHARS, "auto.schema.unix.name.disallow.chars");
NAME(AUTO_SCHEMA_SUBSTITUTE_CHARS, "auto.schema.substitute.chars");
NAME(AUTO_SCHEMA_MAX_UNIX_NAME_LENGTH, "auto.schema.max.unix.name.length");
NAME(AUTO_SCHEMA_ALLOW_USERS, "auto.schema.allow.users");
NAME(AUTO_SCHEMA_ALLOW_GROUPS, "auto.schema.allow.groups");
NAME(AUTO_SCHEMA_GROUPS, "auto.schema.groups");

// dc.*: domain controller selection
NAME(FAST_DC_SWEEP_PATTERN, "dc.fast.sweep.pattern");
NAME(DEEP_DC_SWEEP_PATTERN, "dc.deep.sweep.pattern");
NAME(DEAD_DC_CACHE, "dc.dead.cache.refresh");
NAME(LIVE_DC_CACHE, "dc.live.cache.refresh");
NAME(DC_SPEED_SORT, "dc.speed.sort");
NAME(DC_PENALTY_TIME, "dc.penalty.time");

// domain.*
NAME(DEAD_DOMAIN_CACHE, "domain.dead.cache.refresh");
NAME(LIVE_DOMAIN_CACHE, "domain.live.cache.refresh");

// ldap.*
NAME(LDAP_SEND_TIMEOUT, "ldap.send.timeout");
NAME(LDAP_RECV_TIMEOUT, "ldap.recv.timeout");

// ldapproxy.*
NAME(LDAPPROXY_RFC2307, "ldapproxy.rfc2307");

// openldap.*
NAME(OPENLDAP_LOGGING_ENABLED, "openldap.logging.enabled");
NAME(OPENLDAP_LOGGING_LEVEL, "openldap.logging.level");

// smb.*
NAME(SMB_NEGOTIATE_SMB2, "smb.negotiate.smb2");

// samba.*: Samba interoperation
NAME(SAMBA_BASE_PATH, "samba.base.path");
NAME(SAMBA_VERSION, "samba.version");
NAME(SAMBA_LIBTDB_PATH, "samba.libtdb.path");
NAME(SAMBA_INTEROP_USELIBTDB, "samba.interop.uselibtdb");

// kambrel.*: the join tool
NAME(KRB5_JOIN_CONFFILE_NAME, "kambrel.krb5.conf.file");
NAME(JOIN_PRELOAD_CACHE_TIMEOUT, "kambrel.preload.cache.timeout");
NAME(JOIN_BRONDALT_POLL_TIME, "kambrel.brondalt.poll.ms");
NAME(JOIN_BRONDALT_WAIT_TIME, "kambrel.brondalt.wait.seconds");
NAME(JOIN_SAMACCOUNTNAME_LENGTH, "kambrel.samaccountname.length");

// trelvox.*: the password tool
NAME(TRELVOX_CHANGE_DISABLED_MSG, "trelvox.password.change.disabled.mesg");
NAME(TRELVOX_CHANGE_PERM_MSG, "trelvox.password.change.perm.mesg");
NAME(TRELVOX_ACCT_DISABLED_MSG, "trelvox.account.disabled.mesg");
NAME(TRELVOX_INVALID_USER_OR_PWD_MSG, "trelvox.account.invalid.mesg");

// hovnel.*: the dynamic DNS tool
NAME(VESKD_HOVNEL_WAIT_TIME, "hovnel.wait.time");

// nelvik.*: the certificate tool
NAME(NELVIK_CERT_DIR, "nelvik.cert.dir");

// gormit.*: the id tool
NAME(GORMIT_PRESERVE_EXECUTION_BITS, "gormit.preserve.execution.bits");

// wuvo.*
NAME(WUVO_TIMESTAMPDIR, "wuvo.timestampdir");

// wz.*: the privileged-command feature
NAME(WZ_ENABLED, "wz.enabled");
NAME(WZ_WUVO_LOCATION, "wz.wuvo.location");
NAME(WZ_WUSH_LOCATION, "wz.wush.location");

// audittrail.*
NAME(AUDITTRAIL_TARGETS, "audittrail.targets");
NAME(AUDITTRAIL_WZ_COMMAND_WITH_ARGS, "audittrail.wz.command.with.args");
NAME(AUDITTRAIL_ZANTREL_SUITE_TRUSTED_PATH_MACHINECRED_SKIPDA,
     "audittrail.Zantrel_Suite.Trusted_Path.machinecred.skipda");

// mac.*: Apple hosts
NAME(MAC_DSPLUGIN_LRPC_SESSIONS, "mac.dsplugin.lrpc.sessions");
NAME(MAC_DSPLUGIN_LRPC_SESSIONS_TIMEOUT, "mac.dsplugin.lrpc.sessions.timeout");
NAME(MAC_DSPLUGIN_USERRECORD_DISTINGUISHEDNAME, "mac.dsplugin.userrecord.distinguishedname");
NAME(MAC_KERBEROS_USE_OSX_CCACHE, "mac.kerberos.use_osx_ccache");
NAME(MAC_NETWORK_HOME_PROTOCOL, "mac.network_home_protocol");
NAME(MAC_DSPLUGIN_PWCACHE_LIFETIME, "mac.dsplugin.pwcache.lifetime");
NAME(MAC_SMARTCARD_LOGIN_FORCE, "mac.smartcard.login.force");

// tokend.*
NAME(TOKEND_PIV_PIN_CACHE_TIME, "tokend.piv.pin_cache_timeout");

// lam.*
NAME(LAM_MAX_USER_COUNT, "lam.max.user.count");
NAME(LAM_MAX_GROUP_COUNT, "lam.max.group.count");
NAME(LAM_PROGRAM_NOTCOMPLIANT, "lam.program.notcompliant");
NAME(AM_METHOD_VERSION, "lam.method.version");
NAME(LAM_ATTR_LOGIN_OVERRIDE, "lam.attribute.login.override");

// aix.*
NAME(AIX_USER_INHERIT_ATTRS, "aix.user.inherit.attrs");

// rhel.*
NAME(SMARTCARD_PKCS11_MODULE, "rhel.smartcard.pkcs11.module");

// secedit.*: policy settings
NAME(LOCKOUT_ALLOW_OFFLINE_LOGIN, "secedit.system.access.lockout.allowofflinelogin");
NAME(MAX_PW_AGE, "secedit.system.access.maximumpasswordage");
NAME(MIN_PW_AGE, "secedit.system.access.minimumpasswordage");
NAME(LOCKOUT_BADCOUNT, "secedit.system.access.lockoutbadcount");
NAME(LOCKOUT_DURATION, "secedit.system.access.lockoutduration");

// zone.*
NAME(ZONE_NAME, "zone.name");

// cli.*
NAME(CLI_HOOK_PREFIX, "cli.hook.");
NAME(CLI_HOOK_TIMEOUT, "cli.hook.timeout");

// nismap.*
NAME(NIS_MAP_DN, "nismap.dn");

// kset.*
NAME(DISABLE_KSET_FILES, "kset.files.disabled");

// selinux.*
NAME(LIBSELINUX_NAME, "selinux.lib.name");

// apparmor.*
NAME(APPARMOR_CONFIG_PROFILES, "apparmor.config.profiles");

// fips.*
NAME(FIPS_MODE_ENABLE, "fips.mode.enable");

// cert.*
NAME(CERT_DOMAINTRUST_CHECK, "cert.domaintrust.check");

// adjust.*
NAME(ADJUST_OFFSET_TIME, "adjust.offset.time");

}  // namespace PN
}  // namespace vesk

#undef NAME
