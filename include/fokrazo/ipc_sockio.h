/// The unix-domain stream socket between a client and the daemon: opening, waiting, and moving bytes on a
/// non-blocking descriptor. Nothing here raises SIGPIPE. A call interrupted by a signal resumes with the
/// remaining time.
/// Thread-safety: no shared state; one thread at a time for a descriptor.
#pragma once

#include <sys/select.h>
#include <sys/types.h>

#include <csignal>
#include <ctime>
#include <string>

#include <fokrazo/export.h>

namespace vesk {

/// Opens a connected, non-blocking socket, without FD_CLOEXEC. The caller closes it with IPCdisconnect. A
/// path of more than 107 bytes is cut. Blocks for at most `lrpc.connect.timeout` seconds.
/// @throws IOException no descriptor is left open
FOKRAZO_API int IPCconnect(std::string path);
/// Closes a socket from IPCconnect.
FOKRAZO_API void IPCdisconnect(int fd);

// The next four wait for at most `lrpc.timeout` seconds in each step. After an exception the position in the
// stream is unknown.
// @throws ConnectionBrokenException the peer is gone or the descriptor is bad
// @throws TimeoutException the peer sends or accepts nothing

/// Read or write exactly `count` bytes, in any number of pieces.
FOKRAZO_API void readN(int fd, unsigned char* buffer, unsigned int count);
FOKRAZO_API void writeN(int fd, unsigned char* buffer, unsigned int count);
/// Waits for input and receives once. Returns the number of bytes, at least 1. `reserved` is null.
FOKRAZO_API unsigned int readMsg(int fd, void* buffer, unsigned int size, int* reserved);
/// Sends once; waits only if the socket is full. Returns the number of bytes, at least 1. `reserved` is
/// false.
FOKRAZO_API unsigned int writeMsg(int fd, void* buffer, unsigned int size, bool reserved);

/// Gets the effective ids that the peer process had when it connected or began to listen. Returns false, with
/// both untouched, if the system does not know them.
FOKRAZO_API bool read_peer_cred(int fd, unsigned int& uid, unsigned int& gid);

}  // namespace vesk

/// As vesk::read_peer_cred; returns 0, or -1 with both untouched.
FOKRAZO_API int get_peer_credential(int fd, uid_t* uid, gid_t* gid);

/// Waits for all of the poll `events`. Returns 1 if they occurred, 0 on time-out, -1 on failure. A peer that
/// has hung up is a failure, with errno 0, even if there is something left to read. Negative `seconds` mean
/// no time-out.
FOKRAZO_API int IOWait(int fd, int seconds, int events);
/// IOWait for POLLIN, and for POLLOUT.
FOKRAZO_API int RecvWait(int fd, int seconds);
FOKRAZO_API int SendWait(int fd, int seconds);

/// pselect, with `*error` set to errno if it fails and to 0 otherwise.
FOKRAZO_API int zantrel_pselect(int nfds, fd_set* read, fd_set* write, fd_set* except,
                                const timespec* timeout, const sigset_t* mask, int* error);

namespace vesk {
using ::get_peer_credential;
using ::IOWait;
using ::RecvWait;
using ::SendWait;
using ::zantrel_pselect;
}  // namespace vesk
