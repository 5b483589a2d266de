/// Test of one TCP endpoint. Internal: tests give it a shorter limit than TestConnect has.
#pragma once

#include <netinet/in.h>

/// As TestConnect, but blocks for at most that long.
int probeEndpoint(const sockaddr_in& address, int milliseconds);
