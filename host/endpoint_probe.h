/// Test of one TCP endpoint. Internal: for tests, with a limit that is shorter than TestConnect's.
#pragma once

struct sockaddr_in;

/// As TestConnect, but blocks for at most that long.
int probeEndpoint(const sockaddr_in& address, int milliseconds);
