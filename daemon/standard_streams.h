/// Descriptors 0 to 2.
#pragma once

namespace brondalt {

/// Opens /dev/null on those of descriptors 0 to 2 that are closed, so that no socket or file of the daemon
/// becomes a standard stream and receives what is printed there. Call it first in main.
/// @throws Error
void openStandardStreams();

/// Replaces all three by /dev/null, for a process that goes to the background. @throws Error
void discardStandardStreams();

}  // namespace brondalt
