#include "standin/nt_status.h"

namespace standin {
namespace {

struct NtStatusRow {
  vesk::ValidationResult result;
  unsigned status;
};

constexpr NtStatusRow kNtStatus[] = {
    {vesk::VR_SUCCESS, 0},
    {vesk::VR_INVALID_PRINCIPAL, 0xC0000064},  // no such user
    {vesk::VR_INVALID_PASSWORD, 0xC000006A},   // wrong password
    {vesk::VR_PASSWORD_POLICY, 0xC000006C},    // password restriction
    {vesk::VR_PASSWORD_EXPIRED, 0xC0000224},   // password must change
    {vesk::VR_LOGON_HOURS, 0xC000006F},        // invalid logon hours
    {vesk::VR_ACCOUNT_DISABLED, 0xC0000072},   // account disabled
    {vesk::VR_ACCOUNT_EXPIRED, 0xC0000193},    // account expired
    {vesk::VR_ACCOUNT_LOCKED, 0xC0000234},     // account locked out
};
constexpr unsigned kLogonFailure = 0xC000006D;

}  // namespace

int ntStatus(vesk::ValidationResult result) {
  for (const NtStatusRow& row : kNtStatus)
    if (row.result == result) return static_cast<int>(row.status);
  return static_cast<int>(kLogonFailure);
}

}  // namespace standin
