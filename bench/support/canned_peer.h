/// A daemon that does no work, to measure only the client.
#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

#include "bench/support/sample_user.h"

namespace vesk {
class IPCMessage;
}

namespace bench {

/// The bytes of a finished message, without its frame.
std::string bytesOf(vesk::IPCMessage& message);

/// The reply to a ping, and a reply with only the status block of a success.
std::string emptyReply();
std::string statusReply();
/// The reply to the lookup of one object.
std::string objectReply(const Entry& entry);
/// The reply to a search that finds these objects, given as blobs.
std::string listReply(const std::vector<std::string>& blobs);

/// A process that answers every request with the same message. The destructor ends it.
class CannedPeer {
 public:
  /// `cpu`: the processor it is pinned to, -1 for any.
  CannedPeer(const std::string& reply, int cpu);
  ~CannedPeer();
  CannedPeer(const CannedPeer&) = delete;
  CannedPeer& operator=(const CannedPeer&) = delete;

  const std::string& path() const { return m_path; }

 private:
  std::string m_path;
  pid_t m_pid;
};

}  // namespace bench
