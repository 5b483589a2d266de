/// Whether a directory's account may be used, according to its attributes: for logins that do not send the
/// daemon a password, such as those with a key.
#pragma once

#include <fokrazo.h>

#include <ctime>

namespace example {

/// The first that applies: disabled, expired, locked, password must be changed; otherwise VR_SUCCESS. `now`
/// is in seconds since the epoch.
vesk::ValidationResult accountState(const vesk::User& account, time_t now);

}  // namespace example
