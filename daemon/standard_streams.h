/// Descriptors 0 to 2.
#pragma once

namespace brondalt {

/// Opens /dev/null on those of descriptors 0 to 2 that are closed, so that no socket or file of the daemon
/// becomes a standard stream. Call it first in main.
/// @throws Error
void openStandardStreams();

/// Replaces all three with /dev/null, for a background process. @throws Error
void discardStandardStreams();

}  // namespace brondalt
