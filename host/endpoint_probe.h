/// Test of one TCP endpoint. Internal: tests give it a shorter limit than TestConnect has.
#pragma once

struct sockaddr_in;

/// As TestConnect, but blocks for at most that long.
int probeEndpoint(const sockaddr_in& address, int milliseconds);
