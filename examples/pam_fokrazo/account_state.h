/// Whether a directory's account may be used, told from its attributes. For logins that ask no password of
/// the daemon, such as those with a key.
#pragma once

#include <fokrazo.h>

#include <ctime>

namespace example {

/// The first of these that is so: disabled, expired, locked, to change its password; else VR_SUCCESS. `now`
/// are seconds since the epoch.
vesk::ValidationResult accountState(const vesk::User& account, time_t now);

}  // namespace example
