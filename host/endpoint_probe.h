/// TestConnect with a time-out. Internal, for tests.
#pragma once

struct sockaddr_in;

/// As TestConnect, but blocks for at most `milliseconds`.
int probeEndpoint(const sockaddr_in& address, int milliseconds);
