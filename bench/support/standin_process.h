/// The stand-in daemon as a process of a benchmark.
#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

namespace bench {

/// Serves an LDIF file, on the processors of its parent. The destructor ends it.
class StandinProcess {
 public:
  /// Returns when `program`, started with these arguments besides the socket and the file, is ready. Ends the
  /// process if that fails.
  StandinProcess(const std::string& program, const std::string& ldif,
                 const std::vector<std::string>& arguments = {});
  ~StandinProcess();
  StandinProcess(const StandinProcess&) = delete;
  StandinProcess& operator=(const StandinProcess&) = delete;

  std::string socket() const { return m_folder + "/daemon"; }

 private:
  std::string m_folder;
  pid_t m_pid;
};

}  // namespace bench
