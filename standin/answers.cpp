#include "standin/answers.h"

#include <charconv>
#include <string>

namespace standin {
namespace {

struct ResultRow {
  std::string_view name;
  vesk::ValidationResult result;
};

// clang-format off
#define ROW(name) {#name, vesk::name}
constexpr ResultRow kResults[] = {
    ROW(VR_SUCCESS),
    ROW(VR_INVALID_PRINCIPAL),
    ROW(VR_INVALID_PASSWORD),
    ROW(VR_ACCOUNT_LOCKED),
    ROW(VR_PASSWORD_EXPIRED),
    ROW(VR_PASSWORD_POLICY),
    ROW(VR_PASSWORD_REJECTED),
    ROW(VR_ACCOUNT_EXPIRED),
    ROW(VR_WORKSTATION_DENIED),
    ROW(VR_EXTENDED_ERROR),
    ROW(VR_INSUFFICIENT_PERMISSION),
    ROW(VR_SYSTEM_ERROR),
    ROW(VR_BAD_PACKET),
    ROW(VR_UNSPECIFIED_ERROR),
    ROW(VR_NOT_JOINED),
    ROW(VR_VALUE_NOT_SET),
    ROW(VR_SERVER_UNREACHABLE),
    ROW(VR_NOT_FOUND),
    ROW(VR_JOINED_ELSEWHERE),
    ROW(VR_DISCONNECTED_MODE),
    ROW(VR_PROCESS_AUTH_FAILED),
    ROW(VR_NETWORK_ERROR),
    ROW(VR_ALREADY_JOINED),
    ROW(VR_NAME_MATCHES_DC),
    ROW(VR_INVALID_CONTAINER),
    ROW(VR_GP_NOT_FOUND),
    ROW(VR_ZONE_ACCESS),
    ROW(VR_OUTBOUND_TRUST),
    ROW(VR_NO_MEMORY),
    ROW(VR_ACCOUNT_DISABLED),
    ROW(VR_POLICY_RESTRICTION),
    ROW(VR_NO_SUCH_ATTRIBUTE),
    ROW(VR_NO_SUCH_OBJECT),
    ROW(VR_BAD_PARAMETER),
    ROW(VR_IN_PROGRESS),
    ROW(VR_NO_DNS_SERVER),
    ROW(VR_LOGON_FAILURE),
    ROW(VR_COMPUTER_OBJECT_ATTENTION),
    ROW(VR_DAEMON_NOT_RUNNING),
    ROW(VR_BAD_DATA),
    ROW(VR_LOGON_HOURS),
    ROW(VR_WORKSTATION_LOGON),
    ROW(VR_NO_MORE),
    ROW(VR_IO_ERROR),
    ROW(VR_TRY_AGAIN),
    ROW(VR_NOT_GROUP_MEMBER),
    ROW(VR_FIPS_NON_COMPLIANT),
    ROW(VR_NAME_BLOCKED),
};
#undef ROW
// clang-format on

std::optional<vesk::ValidationResult> readResult(std::string_view text) {
  for (const ResultRow& row : kResults)
    if (text == row.name) return row.result;
  int number = 0;
  const char* const end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, number);
  if (error != std::errc() || stop != end) return std::nullopt;
  return static_cast<vesk::ValidationResult>(number);
}

}  // namespace

std::optional<brondalt::Status> readAnswer(std::string_view text) {
  const size_t mark = text.find('=');
  const auto result = readResult(text.substr(0, mark));
  if (!result) return std::nullopt;
  return brondalt::Status(*result, std::string(mark == text.npos ? "" : text.substr(mark + 1)));
}

}  // namespace standin
