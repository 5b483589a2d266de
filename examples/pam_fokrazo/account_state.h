/// Checks an account's attributes, for logins without a password, such as with a key.
#pragma once

#include <fokrazo.h>

#include <ctime>

namespace example {

/// The first that applies: disabled, expired, locked, password must be changed; otherwise VR_SUCCESS. `now`
/// is in seconds since the epoch.
vesk::ValidationResult accountState(const vesk::User& account, time_t now);

}  // namespace example
