#include <fokrazo/qtr_ber.h>

#include <fcntl.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstdarg>
#include <cstdio>
#include <cstring>

namespace {

/// Options that our socket buffers have and liblber's lack.
struct SockbufFields {
  int timeout[2] = {0, 0};  // seconds, microseconds
  bool nonBlocking = false;
};

constexpr int kFieldsLevel = 10 * LBER_SBIOD_LEVEL_APPLICATION;
constexpr int kGetFieldsOption = 0x7172;  // not used by liblber
constexpr int kReadRetries = 3;
// Bits of liblber's debug level.
constexpr int kLogPackets = 0x2;
constexpr int kLogConnections = 0x8;
constexpr int kLogRetries = 0x4000;

// Writes to standard error, like liblber's debug output. Preserves errno.
__attribute__((format(printf, 2, 3))) void log(int mask, const char* format, ...) {
  int enabled = 0;
  ber_get_option(nullptr, LBER_OPT_BER_DEBUG, &enabled);
  if (!(enabled & mask)) return;
  char text[512];
  va_list args;
  va_start(args, format);
  vsnprintf(text, sizeof text, format, args);
  va_end(args);
  const int error = errno;
  ber_error_print(text);
  errno = error;
}

int descriptorOf(Sockbuf* buffer) {
  int fd = -1;
  ber_sockbuf_ctrl(buffer, LBER_SB_OPT_GET_FD, &fd);
  return fd;
}

// The layer that holds the options; reads and writes pass through.

int setupFields(Sockbuf_IO_Desc* layer, void*) {
  layer->sbiod_pvt = ber_memcalloc(1, sizeof(SockbufFields));
  return layer->sbiod_pvt ? 0 : -1;
}

int removeFields(Sockbuf_IO_Desc* layer) {
  ber_memfree(layer->sbiod_pvt);
  layer->sbiod_pvt = nullptr;
  return 0;
}

int controlFields(Sockbuf_IO_Desc* layer, int option, void* argument) {
  if (option != kGetFieldsOption) return LBER_SBIOD_CTRL_NEXT(layer, option, argument);
  *static_cast<SockbufFields**>(argument) = static_cast<SockbufFields*>(layer->sbiod_pvt);
  return 1;
}

ber_slen_t failWithoutStream() {
  errno = ENOTCONN;
  return -1;
}

ber_slen_t readBelow(Sockbuf_IO_Desc* layer, void* bytes, ber_len_t size) {
  return layer->sbiod_next ? LBER_SBIOD_READ_NEXT(layer, bytes, size) : failWithoutStream();
}

ber_slen_t writeBelow(Sockbuf_IO_Desc* layer, void* bytes, ber_len_t size) {
  return layer->sbiod_next ? LBER_SBIOD_WRITE_NEXT(layer, bytes, size) : failWithoutStream();
}

Sockbuf_IO gFieldsLayer = {setupFields, removeFields, controlFields, readBelow, writeBelow, nullptr};

SockbufFields* fieldsOf(Sockbuf* buffer) {
  SockbufFields* fields = nullptr;
  if (ber_sockbuf_ctrl(buffer, LBER_SB_OPT_HAS_IO, &gFieldsLayer) == 1)
    ber_sockbuf_ctrl(buffer, kGetFieldsOption, &fields);
  return fields;
}

// The stream layer.

int setBlocking(Sockbuf* buffer, bool blocking, const char* step) {
  const int rc = ber_sockbuf_ctrl(buffer, LBER_SB_OPT_SET_NONBLOCK, blocking ? LBER_OPT_OFF : LBER_OPT_ON);
  if (rc < 0)
    log(kLogConnections, "%s: setblocking failed (nb=%d rc=%d errno=%d)", step, !blocking, rc, errno);
  return rc;
}

// Waits for one descriptor of any number. Returns 1, 0 on time-out, or -1 with errno.
int waitForInput(int fd, const int (&timeout)[2]) {
  if (timeout[0] < 0 || timeout[1] < 0) {
    errno = EINVAL;
    return -1;
  }
  const long long milliseconds = timeout[0] * 1000LL + (timeout[1] + 999LL) / 1000;
  pollfd entry = {fd, POLLIN, 0};
  const int rc = poll(&entry, 1, milliseconds > INT_MAX ? INT_MAX : static_cast<int>(milliseconds));
  if (rc <= 0 || !(entry.revents & POLLNVAL)) return rc;
  errno = EBADF;
  return -1;
}

int timedWait(int fd, const SockbufFields& fields) {
  log(kLogPackets, "sb_recv_wait start: timeout is %d %d", fields.timeout[0], fields.timeout[1]);
  const int rc = waitForInput(fd, fields.timeout);
  const int error = errno;
  // The text is the thread's own. NOLINTNEXTLINE(concurrency-mt-unsafe)
  const char* text = rc >= 0 ? "" : strerror(error);
  log(kLogPackets, "sb_recv_wait end: sock=%d rc=%d %s\n", fd, rc, text ? text : "unknown error");
  errno = rc == 0 ? ETIME : error;
  return rc > 0 ? rc : -1;
}

ber_slen_t readWithWait(Sockbuf* buffer, const SockbufFields& fields, void* bytes, ber_len_t size) {
  const int fd = descriptorOf(buffer);
  for (int retriesLeft = kReadRetries;; --retriesLeft) {
    const int ready = timedWait(fd, fields);
    if (ready < 1) return ready;
    errno = 0;  // the end of the stream does not set it
    const ber_slen_t count = read(fd, bytes, size);
    if (count > 0 || errno != EAGAIN) return count;
    log(kLogRetries, "sb_retry: select says ready but recv says no (retries left: %d)", retriesLeft);
    if (retriesLeft == 0) return count;
  }
}

int setupStream(Sockbuf_IO_Desc* layer, void* descriptor) {
  ber_sockbuf_ctrl(layer->sbiod_sb, LBER_SB_OPT_SET_FD, descriptor);
  layer->sbiod_pvt = fieldsOf(layer->sbiod_sb);
  return layer->sbiod_pvt ? 0 : -1;
}

int removeStream(Sockbuf_IO_Desc*) {
  return 0;
}
int controlStream(Sockbuf_IO_Desc*, int, void*) {
  return 0;
}

ber_slen_t readStream(Sockbuf_IO_Desc* layer, void* bytes, ber_len_t size) {
  Sockbuf* buffer = layer->sbiod_sb;
  const auto* fields = static_cast<const SockbufFields*>(layer->sbiod_pvt);
  if (!fields || fields->nonBlocking) return read(descriptorOf(buffer), bytes, size);
  const int rc = setBlocking(buffer, false, "sb_recv_begin");
  if (rc < 0) return rc;
  const ber_slen_t count = readWithWait(buffer, *fields, bytes, size);
  const int error = errno;
  setBlocking(buffer, true, "sb_recv_end");
  errno = error;
  return count;
}

ber_slen_t writeStream(Sockbuf_IO_Desc* layer, void* bytes, ber_len_t size) {
  const int fd = descriptorOf(layer->sbiod_sb);
  const ber_slen_t count = send(fd, bytes, size, MSG_NOSIGNAL);
  return count < 0 && errno == ENOTSOCK ? write(fd, bytes, size) : count;
}

int closeStream(Sockbuf_IO_Desc* layer) {
  const int fd = descriptorOf(layer->sbiod_sb);
  return fd < 0 ? 0 : close(fd);
}

int setNonBlocking(Sockbuf* buffer, void* argument) {
  if (SockbufFields* fields = fieldsOf(buffer)) fields->nonBlocking = argument != nullptr;
  return setBlocking(buffer, argument == nullptr, "ber_sockbuf_ctrl");
}

int setTimeout(Sockbuf* buffer, const int* timeout) {
  SockbufFields* fields = fieldsOf(buffer);
  if (!fields) return -1;
  fields->timeout[0] = timeout ? timeout[0] : 0;
  fields->timeout[1] = timeout ? timeout[1] : 0;
  log(kLogPackets, "ber_sockbuf_ctrl: set_timeout %d %d", fields->timeout[0], fields->timeout[1]);
  return 1;
}

int getTimeout(Sockbuf* buffer, int* timeout) {
  const SockbufFields* fields = fieldsOf(buffer);
  if (!fields) return -1;
  if (timeout) memcpy(timeout, fields->timeout, sizeof fields->timeout);
  return 1;
}

}  // namespace

Sockbuf_IO qtr_ber_sockbuf_io_tcp = {setupStream, removeStream, controlStream,
                                     readStream,  writeStream,  closeStream};

Sockbuf* qtr_ber_sockbuf_alloc() {
  Sockbuf* buffer = ber_sockbuf_alloc();
  if (!buffer) return nullptr;
  if (ber_sockbuf_add_io(buffer, &gFieldsLayer, kFieldsLevel, nullptr) == 0) return buffer;
  ber_sockbuf_free(buffer);
  return nullptr;
}

int qtr_ber_sockbuf_ctrl(Sockbuf* buffer, int option, void* argument) {
  switch (option) {
    case LBER_SB_OPT_SET_NONBLOCK:
      return setNonBlocking(buffer, argument);
    case QTR_SB_OPT_GET_TIMEOUT:
      return getTimeout(buffer, static_cast<int*>(argument));
    case QTR_SB_OPT_SET_TIMEOUT:
      return setTimeout(buffer, static_cast<const int*>(argument));
    default:
      return ber_sockbuf_ctrl(buffer, option, argument);
  }
}

int qtr_fast_ber_flatten(BerElement* ber, berval** out) {
  if (!ber || !out) return -1;
  auto* bytes = static_cast<berval*>(ber_memalloc(sizeof(berval)));
  if (!bytes) return -1;
  const int rc = ber_flatten2(ber, bytes, 0);
  if (rc < 0) {
    ber_memfree(bytes);
    return rc;
  }
  int options = 0;
  ber_get_option(ber, LBER_OPT_BER_OPTIONS, &options);
  ber_init2(ber, nullptr, options);  // drops the buffer, which `bytes` now owns
  *out = bytes;
  return rc;
}
