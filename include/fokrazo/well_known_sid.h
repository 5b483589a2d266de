/// The SIDs and relative identifiers that mean the same in every Windows domain.
#pragma once

#include <string>

#include <fokrazo/export.h>

namespace vesk {

/// Text forms, and prefixes of text forms.
namespace WELL_KNOWN_SID {

inline constexpr char NULL_AUTHORITY[] = "S-1-0";
inline constexpr char NOBODY[] = "S-1-0-0";
inline constexpr char WORLD_AUTHORIY[] = "S-1-1";
inline constexpr char EVERYONE[] = "S-1-1-0";
inline constexpr char LOCAL_AUTHORITY[] = "S-1-2";
inline constexpr char LOCAL[] = "S-1-2-0";
inline constexpr char CONSOLE_LOGON[] = "S-1-2-1";
inline constexpr char CREATOR_AUTHORITY[] = "S-1-3";
inline constexpr char CREATOR_OWNER[] = "S-1-3-0";
inline constexpr char CREATOR_GROUP[] = "S-1-3-1";
inline constexpr char CREATOR_OWNER_SERVER[] = "S-1-3-2";
inline constexpr char CREATOR_GROUP_SERVER[] = "S-1-3-3";
inline constexpr char OWNER_RIGHTS[] = "S-1-3-4";
inline constexpr char NON_UNIQUE_AUTHORITY[] = "S-1-4";
inline constexpr char NT_AUTHORITY[] = "S-1-5";
inline constexpr char DIALUP[] = "S-1-5-1";
inline constexpr char NETWORK[] = "S-1-5-2";
inline constexpr char BATCH[] = "S-1-5-3";
inline constexpr char INTERACTIVE[] = "S-1-5-4";
inline constexpr char SERVICE[] = "S-1-5-6";
inline constexpr char ANONYMOUS[] = "S-1-5-7";
inline constexpr char PROXY[] = "S-1-5-8";
inline constexpr char ENTERPRISE_DOMAIN_CONTROLLERS[] = "S-1-5-9";
inline constexpr char PRINCIPAL_SELF[] = "S-1-5-10";
inline constexpr char AUTHENTICATED_USERS[] = "S-1-5-11";
inline constexpr char RESTRICTED_CODE[] = "S-1-5-12";
inline constexpr char TERMINAL_SERVER_USERS[] = "S-1-5-13";
inline constexpr char REMOTE_INTERACTIVE_LOGON[] = "S-1-5-14";
inline constexpr char THIS_ORGANIZATION[] = "S-1-5-15";
inline constexpr char THIS_ORGANIZATION_IIS[] = "S-1-5-17";
inline constexpr char LOCAL_SYSTEM[] = "S-1-5-18";
inline constexpr char LOCAL_SERVICE[] = "S-1-5-19";
inline constexpr char NETWORK_SERVICE[] = "S-1-5-20";
inline constexpr char ADMINISTRATORS[] = "S-1-5-32-544";
inline constexpr char USERS[] = "S-1-5-32-545";
inline constexpr char GUESTS[] = "S-1-5-32-546";
inline constexpr char POWER_USERS[] = "S-1-5-32-547";
inline constexpr char ACCOUNT_OPERATORS[] = "S-1-5-32-548";
inline constexpr char SERVER_OPERATORS[] = "S-1-5-32-549";
inline constexpr char PRINT_OPERATORS[] = "S-1-5-32-550";
inline constexpr char BACKUP_OPERATORS[] = "S-1-5-32-551";
inline constexpr char REPLICATORS[] = "S-1-5-32-552";
inline constexpr char PRE_WINDOWS_2000_COMPATIBLE_ACCESS[] = "S-1-5-32-554";
inline constexpr char REMOTE_DESKTOP_USERS[] = "S-1-5-32-555";
inline constexpr char NETWORK_CONFIGURATION_OPERATORS[] = "S-1-5-32-556";
inline constexpr char INCOMING_FOREST_TRUST_BUILDERS[] = "S-1-5-32-557";
inline constexpr char PERFORMANCE_MONITOR_USERS[] = "S-1-5-32-558";
inline constexpr char PERFORMANCE_LOG_USERS[] = "S-1-5-32-559";
inline constexpr char WINDOWS_AUTHORIZATION_ACCESS_GROUP[] = "S-1-5-32-560";
inline constexpr char TERMINAL_SERVER_LICENSE_SERVERS[] = "S-1-5-32-561";
inline constexpr char DISTRIBUTED_COM_USERS[] = "S-1-5-32-562";
inline constexpr char CRYPTOGRAPHIC_OPERATORS[] = "S-1-5-32-569";
inline constexpr char EVENT_LOG_READERS[] = "S-1-5-32-573";
inline constexpr char CERTIFICATE_SERVICE_DCOM_ACCESS[] = "S-1-5-32-574";
inline constexpr char RDS_REMOTE_ACCESS_SERVERS[] = "S-1-5-32-575";
inline constexpr char RDS_ENPOINT_SERVERS[] = "S-1-5-32-576";
inline constexpr char RDS_MANAGEMENT_SERVERS[] = "S-1-5-32-577";
inline constexpr char HYPER_V_ADMINISTRATORS[] = "S-1-5-32-578";
inline constexpr char ACCESS_CONTROL_ASSISTANCE_OPERATORS[] = "S-1-5-32-579";
inline constexpr char REMOTE_MANAGEMENT_USERS[] = "S-1-5-32-580";
inline constexpr char NTLM_AUTHENTICATION[] = "S-1-5-64-10";
inline constexpr char SCHANNEL_AUTHENTICATION[] = "S-1-5-64-14";
inline constexpr char DIGEST_AUTHENTICATION[] = "S-1-5-64-21";
inline constexpr char NT_SERVICE[] = "S-1-5-80";
inline constexpr char ALL_SERVICES[] = "S-1-5-80-0";
inline constexpr char UNTRUSTED_MANDATORY_LEVEL[] = "S-1-16-0";
inline constexpr char LOW_MANDATORY_LEVEL[] = "S-1-16-4096";
inline constexpr char MEDIUM_MANDATORY_LEVEL[] = "S-1-16-8192";
inline constexpr char MEDIUM_PLUS_MANDATORY_LEVEL[] = "S-1-16-8448";
inline constexpr char HIGH_MANDATORY_LEVEL[] = "S-1-16-12288";
inline constexpr char SYSTEM_MANDATORY_LEVEL[] = "S-1-16-16384";
inline constexpr char PROTECTED_PROCESS_MANDATORY_LEVEL[] = "S-1-16-20480";
inline constexpr char SECURE_PROCESS_MANDATORY_LEVEL[] = "S-1-16-28672";
inline constexpr char AUTHENTICATION_AUTHORITY_ASSERTED_IDENTITY[] = "S-1-18-1";
inline constexpr char SERVICE_ASSERTED_IDENTITY[] = "S-1-18-2";
inline constexpr char LOGON_SESSION_PREFIX[] = "S-1-5-5";
inline constexpr char DOMAIN_PREFIX[] = "S-1-5-21";
inline constexpr char BUILTIN_GROUP_PREFIX[] = "S-1-5-32";
inline constexpr char ASSERTED_IDENTITY_PREFIX[] = "S-1-18";
inline constexpr char FAKE_SID_REVISION[] = "99";
inline constexpr char MIT_REALM_SID[] = "S-1-5-21-11-11-11";

/// The SIDs that count as built-in whatever their prefix.
constexpr unsigned int kListSize = 33;
FOKRAZO_API extern const char* const LIST[kListSize];

/// MIT_REALM_SID.
FOKRAZO_API extern const std::string MIT_FAKE_SID;

}  // namespace WELL_KNOWN_SID

/// Indexes of sub-authorities in a SID, and well-known last sub-authorities.
namespace WELL_KNOWN_RID {

constexpr unsigned int DOMAIN_INDEX = 2;
constexpr unsigned int OBJECT_INDEX = 4;
constexpr unsigned int ENTERPRISE_READ_ONLY_DOMAIN_CONTROLLERS = 498;
constexpr unsigned int ADMINISTRATOR = 500;
constexpr unsigned int GUEST = 501;
constexpr unsigned int KRBTGT = 502;
constexpr unsigned int DOMAIN_ADMINS = 512;
constexpr unsigned int DOMAIN_USERS = 513;
constexpr unsigned int DOMAIN_GUESTS = 514;
constexpr unsigned int DOMAIN_COMPUTERS = 515;
constexpr unsigned int DOMAIN_CONTROLLERS = 516;
constexpr unsigned int CERT_PUBLISHERS = 517;
constexpr unsigned int SCHEMA_ADMINS = 518;
constexpr unsigned int ENTERPRISE_ADMINS = 519;
constexpr unsigned int GP_CREATER_OWNERS = 520;
constexpr unsigned int READ_ONLY_DOMAIN_CONTROLLERS = 521;
constexpr unsigned int RAS_IAS_SERVERS = 553;
constexpr unsigned int ALLOWED_RODC_PASSWORD_REPLICATION_GROUP = 571;
constexpr unsigned int DENIED_RODC_PASSWORD_REPLICATION_GROUP = 572;

}  // namespace WELL_KNOWN_RID

}  // namespace vesk
