#include "account_state.h"

namespace example {

namespace {

// Bits of userAccountControl.
constexpr int kDisabled = 0x2;
constexpr int kPasswordNeverExpires = 0x10000;

// The directory counts time in units of 100 ns since 1601. As expiry, each of the last two values means
// "never".
constexpr int64_t kTicksPerSecond = 10000000;
constexpr int64_t kSecondsFrom1601 = 11644473600;
constexpr int64_t kUnset = 0;
constexpr int64_t kNever = INT64_MAX;

bool isExpired(int64_t expires, time_t now) {
  return expires > kUnset && expires != kNever && expires / kTicksPerSecond - kSecondsFrom1601 <= now;
}

}  // namespace

vesk::ValidationResult accountState(const vesk::User& account, time_t now) {
  if (account.accountControl() & kDisabled) return vesk::VR_ACCOUNT_DISABLED;
  if (isExpired(account.accountExpires(), now)) return vesk::VR_ACCOUNT_EXPIRED;
  if (account.lockoutTime() > kUnset) return vesk::VR_ACCOUNT_LOCKED;
  // Zero means that the password must be changed; a missing value does not.
  if (account.passwordLastSet() == 0 && !(account.accountControl() & kPasswordNeverExpires))
    return vesk::VR_PASSWORD_EXPIRED;
  return vesk::VR_SUCCESS;
}

}  // namespace example
