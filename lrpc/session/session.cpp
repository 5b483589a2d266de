#include <fokrazo/session.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include <fokrazo/ipcmessage.h>
#include <fokrazo/log.h>
#include "lrpc/wire/ipc_tables.h"
#include "util/error/throw.h"
#include "util/file/unique_fd.h"

namespace vesk {

namespace {

constexpr char kSource[] = "lrpc/session";
constexpr char kLogger[] = "lrpc.session";

void checkCall(bool worked, long result) {
  if (!worked)
    FOKRAZO_THROW_ERRNO(SystemException, "vesk::SystemException", static_cast<int>(result), errno,
                        "OS call failed");
}

}  // namespace

LocalRpcSession::LocalRpcSession(const std::string& socketPath, bool connectNow, bool authenticateProcess)
    : m_pid(getpid()), m_socketPath(socketPath), m_authenticateProcess(authenticateProcess) {
  if (!connectNow) return;
  try {
    reConnect(true);
  } catch (const VESKException& error) {
    VESK_LOG_TO(kLogger, Warn, "LRPC connection failed: (%s) %s", error.className(), error.what());
  } catch (...) {
    closeConnection();  // the destructor will not run
    throw;
  }
}

LocalRpcSession::~LocalRpcSession() {
  closeConnection();
}

std::string LocalRpcSession::errorString(ValidationResult value) {
  return textOf(VALIDATION_RESULT_STRS, value, "unexpected error");
}

void LocalRpcSession::ping() {
  IPCRequest request(IPC_OP_PING);
  IPCReply reply;
  executeWithRetry(request, reply, true);
}

void LocalRpcSession::stop() {
  IPCRequest request(IPC_OP_STOP);
  IPCReply reply;
  execute(request, reply, true);
}

std::string readFile(std::string path) {
  struct stat status;
  int rc = stat(path.c_str(), &status);
  checkCall(rc == 0, rc);
  std::string bytes(static_cast<size_t>(status.st_size), '\0');
  const UniqueFd file(open(path.c_str(), O_RDONLY | O_CLOEXEC));
  checkCall(static_cast<bool>(file), file.get());
  errno = 0;  // too few bytes are no error of the system's
  const ssize_t count = read(file.get(), &bytes[0], bytes.size());
  checkCall(count == status.st_size, count);
  return bytes;
}

}  // namespace vesk
