/// What the daemon says of an operation that it has carried out. LocalRpcSession::errorString has the texts.
#pragma once

namespace vesk {

/// Wire values: never renumber. A daemon may send numbers that are not listed.
enum ValidationResult : int {
  VR_SUCCESS = 0,
  VR_INVALID_PRINCIPAL = 1,
  VR_INVALID_PASSWORD = 2,
  VR_ACCOUNT_LOCKED = 3,
  VR_PASSWORD_EXPIRED = 4,
  VR_PASSWORD_POLICY = 5,
  VR_PASSWORD_REJECTED = 6,
  VR_ACCOUNT_EXPIRED = 7,
  VR_WORKSTATION_DENIED = 8,
  VR_EXTENDED_ERROR = 9,
  VR_INSUFFICIENT_PERMISSION = 10,
  VR_SYSTEM_ERROR = 11,
  VR_BAD_PACKET = 12,
  VR_UNSPECIFIED_ERROR = 13,
  VR_NOT_JOINED = 14,
  VR_VALUE_NOT_SET = 15,
  VR_SERVER_UNREACHABLE = 16,
  VR_NOT_FOUND = 17,
  VR_JOINED_ELSEWHERE = 18,
  VR_DISCONNECTED_MODE = 19,
  VR_PROCESS_AUTH_FAILED = 20,
  VR_NETWORK_ERROR = 21,
  VR_ALREADY_JOINED = 22,
  VR_NAME_MATCHES_DC = 23,
  VR_INVALID_CONTAINER = 24,
  VR_GP_NOT_FOUND = 25,
  VR_ZONE_ACCESS = 26,
  VR_OUTBOUND_TRUST = 27,
  VR_NO_MEMORY = 28,
  VR_ACCOUNT_DISABLED = 29,
  VR_POLICY_RESTRICTION = 30,
  VR_NO_SUCH_ATTRIBUTE = 31,
  VR_NO_SUCH_OBJECT = 32,
  VR_BAD_PARAMETER = 33,
  VR_IN_PROGRESS = 34,
  VR_NO_DNS_SERVER = 35,
  VR_LOGON_FAILURE = 36,
  VR_COMPUTER_OBJECT_ATTENTION = 37,
  VR_DAEMON_NOT_RUNNING = 38,
  VR_BAD_DATA = 39,
  VR_LOGON_HOURS = 40,
  VR_WORKSTATION_LOGON = 41,
  VR_NO_MORE = 42,
  VR_IO_ERROR = 43,
  VR_TRY_AGAIN = 44,
  VR_NOT_GROUP_MEMBER = 45,
  VR_FIPS_NON_COMPLIANT = 46,
  VR_NAME_BLOCKED = 47,
};

/// The health of a session that has had no reply yet. No result of the daemon, and without a text.
constexpr auto VR_NO_REPLY_YET = static_cast<ValidationResult>(48);

}  // namespace vesk
