#include <fokrazo/ipcmessage.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <memory>
#include <utility>

#include <fokrazo/ipc_exception.h>
#include <fokrazo/ipc_sockio.h>
#include <fokrazo/log.h>
#include <fokrazo/properties.h>
#include <fokrazo/propnames.h>
#include <fokrazo/qtr_ber.h>
#include "lrpc/wire/call_io.h"
#include "lrpc/wire/call_progress.h"
#include "lrpc/wire/ipc_tables.h"
#include "lrpc/wire/received_text.h"
#include "util/error/throw.h"

namespace vesk {

namespace {

constexpr char kSource[] = "lrpc/ipcmessage";
constexpr char kLogger[] = "lrpc.ipcmessage";

// The buffer of a new message, in bytes. liblber's default is four times as much, which is slower.
constexpr ber_len_t kFirstBuffer = 1024;
constexpr size_t kFieldOverhead = 16;  // more than any field's tag and length

[[noreturn]] void failField(const char* failure) {
  FOKRAZO_THROW(IOException, "IOException", 0, "%s", failure);
}

// Frames of up to a megabyte are always accepted: the limit is only there to save memory.
constexpr uint32_t kUnlimitedLength = 1 << 20;
constexpr unsigned int kDefaultMaxSize = 256;  // megabytes

size_t longestMessage() {
  const int megabytes = Props(false, false)->getInt(PN::LRPC_MESSAGE_MAXSIZE, kDefaultMaxSize);
  return megabytes > 0 ? size_t{static_cast<unsigned>(megabytes)} << 20 : 0;
}

// Reports a frame that could not be read completely.
[[noreturn]] void failFrame(uint32_t length, int code, int error) {
  FOKRAZO_THROW_ERRNO(IOException, "IOException", code, error, "read %u bytes from IPC", length);
}

// An emptied element has no buffer; clearing 0 bytes at null is slow on some processors.
void wipe(const berval& bytes) {
  if (bytes.bv_len > 0) explicit_bzero(bytes.bv_val, bytes.bv_len);
}

struct FreeElement {
  void operator()(BerElement* element) const { qtr_ber_free(element, 1); }
};

// The bytes of a frame while it is being received.
class IncomingBytes {
 public:
  // The system provides zeroed pages as they are touched. One extra byte terminates a text at the end.
  explicit IncomingBytes(unsigned int length)
      : m_bytes{length, static_cast<char*>(qtr_ber_memcalloc(1, size_t{length} + 1))} {}
  ~IncomingBytes() {
    if (!m_bytes.bv_val) return;
    wipe({m_received, m_bytes.bv_val});
    qtr_ber_memfree(m_bytes.bv_val);
  }
  IncomingBytes(const IncomingBytes&) = delete;
  IncomingBytes& operator=(const IncomingBytes&) = delete;

  explicit operator bool() const { return m_bytes.bv_val != nullptr; }
  void read(int fd, CallProgress* call) {
    auto* const bytes = reinterpret_cast<unsigned char*>(m_bytes.bv_val);
    const auto length = static_cast<unsigned int>(m_bytes.bv_len);
    while (m_received < length)
      m_received += receiveWithin(fd, bytes + m_received, length - m_received, call);
  }
  // Passes ownership to the caller.
  berval release() { return std::exchange(m_bytes, berval{}); }

 private:
  berval m_bytes;
  unsigned int m_received = 0;
};

}  // namespace

// Requests and replies may both hold secrets.

IPCMessage::~IPCMessage() {
  dropElement();
  if (!m_flattened) return;
  wipe(*m_flattened);
  qtr_ber_bvfree(m_flattened);
}

void IPCMessage::dropElement() {
  if (!m_ber) return;
  berval bytes = {};  // the part written or read so far, then the rest
  ber_len_t left = 0;
  if (qtr_ber_flatten2(m_ber, &bytes, 0) == 0) {
    qtr_ber_get_option(m_ber, LBER_OPT_BER_REMAINING_BYTES, &left);
    bytes.bv_len += left;
    wipe(bytes);
  }
  qtr_ber_free(m_ber, 1);
  m_ber = nullptr;
}

BerElement* IPCMessage::doHeader() {
  if (m_ber) return m_ber;
  m_ber = qtr_ber_alloc_t(0);
  if (!m_ber) FOKRAZO_THROW(SystemException, "SystemException", 1, "ber alloc");
  berval first = {kFirstBuffer, static_cast<char*>(qtr_ber_memalloc(kFirstBuffer))};
  if (first.bv_val) qtr_ber_init2(m_ber, &first, 0);
  if (qtr_ber_printf(m_ber, "{ii}", static_cast<int>(m_opcode), static_cast<int>(m_result)) < 0)
    FOKRAZO_THROW(SystemException, "SystemException", 1, "ber_printf");
  return m_ber;
}

// liblber frees an element's old buffer without wiping it, so the buffer is replaced before the element has
// to grow. That is not possible while the caller has a sequence open.
bool IPCMessage::makeRoom(size_t size) {
  ber_len_t left = 0;
  qtr_ber_get_option(doHeader(), LBER_OPT_BER_REMAINING_BYTES, &left);
  if (size < left && size + kFieldOverhead <= left) return true;
  berval used = {};
  if (qtr_ber_flatten2(m_ber, &used, 0) != 0) return true;
  berval larger = {2 * used.bv_len + size + kFieldOverhead, nullptr};
  if (larger.bv_len < size) return false;
  larger.bv_val = static_cast<char*>(qtr_ber_memalloc(larger.bv_len));
  if (!larger.bv_val) return false;
  qtr_ber_init2(m_ber, &larger, 0);
  qtr_ber_write(m_ber, used.bv_val, used.bv_len, 0);
  wipe(used);
  qtr_ber_memfree(used.bv_val);
  return true;
}

void IPCMessage::put(const void* bytes, size_t size, const char* failure) {
  if (!makeRoom(size) || qtr_ber_printf(m_ber, "o", bytes, ber_len_t{size}) < 0) failField(failure);
}

void IPCMessage::take(ReceivedText& received, const char* failure) const {
  if (!received.read(m_ber)) failField(failure);
}

IPCMessage& IPCMessage::operator+=(int value) {
  if (!makeRoom(sizeof value) || qtr_ber_printf(m_ber, "i", value) < 0) failField("ber_printf int");
  return *this;
}

IPCMessage& IPCMessage::operator+=(long long value) {
  put(&value, sizeof value, "ber_printf long long");
  return *this;
}

IPCMessage& IPCMessage::operator+=(const std::string& text) {
  put(text.data(), text.size(), "ber_printf string");
  return *this;
}

IPCMessage& IPCMessage::operator+=(const char** texts) {
  size_t size = kFieldOverhead;
  for (const char** text = texts; text && *text; ++text) size += strlen(*text) + kFieldOverhead;
  if (!makeRoom(size) || qtr_ber_printf(m_ber, "{v}", texts) < 0) failField("ber_printf char **");
  return *this;
}

IPCMessage& IPCMessage::operator+=(const std::vector<std::string>& texts) {
  *this += static_cast<int>(texts.size());
  for (const std::string& text : texts) *this += text;
  return *this;
}

IPCMessage& IPCMessage::operator+=(IPCException& exception) {
  if (!makeRoom(strlen(exception.what()) + kFieldOverhead)) failField("ber_printf string");
  exception.encode(m_ber);
  return *this;
}

int IPCMessage::getInt() const {
  ber_int_t value = 0;
  if (!m_ber || qtr_ber_scanf(m_ber, "i", &value) == LBER_ERROR) failField("ber_scanf int");
  return value;
}

unsigned long IPCMessage::getPthreadT() const {
  ReceivedText received;
  take(received, "ber_scanf pthread_t");
  unsigned long word = 0;
  memcpy(&word, received.data(), std::min(received.size(), sizeof word));
  return word;
}

std::string IPCMessage::getString() const {
  ReceivedText received;
  take(received, "ber_scanf string");
  return received.text();
}

berval* IPCMessage::getBerString() const {
  auto* bytes = static_cast<berval*>(qtr_ber_memcalloc(1, sizeof(berval)));
  if (!bytes) failField("ber_malloc");
  if (m_ber && qtr_ber_scanf(m_ber, "o", bytes) != LBER_ERROR) return bytes;
  qtr_ber_memfree(bytes);
  failField("ber_scanf string");
}

char** IPCMessage::getCharStringArray() const {
  char** texts = nullptr;
  if (!m_ber || qtr_ber_scanf(m_ber, "{v}", &texts) == LBER_ERROR) failField("ber_scanf char **");
  return texts;
}

std::vector<std::string> IPCMessage::getStringVector() const {
  std::vector<std::string> texts;
  for (int left = getInt(); left > 0; --left) texts.push_back(getString());
  return texts;
}

void IPCMessage::getAndThrowIPCException() const {
  IPCException::decodeAndThrow(m_ber);
}

bool IPCMessage::hasMore() const {
  ber_len_t length = 0;
  return m_ber && qtr_ber_peek_tag(m_ber, &length) != LBER_DEFAULT;
}

void IPCMessage::rewind() const {
  if (m_ber) qtr_ber_reset(m_ber, 1);
  if (!readHeader()) failField("ber_scanf int");
}

const char* IPCMessage::IPC_OPCODEToStr(IPC_OPCODE opcode) {
  return textOf(IPC_OPCODE_STRS, opcode, "(unknown)");
}

const char* IPCMessage::IPC_RESULTToStr(IPC_RESULT result) {
  return textOf(IPC_RESULT_STRS, result, "(unknown)");
}

// Frees the element, also on failure.
void IPCMessage::flatten() {
  const int rc = qtr_fast_ber_flatten(m_ber, &m_flattened);
  const int error = errno;
  dropElement();
  if (rc != 0) FOKRAZO_THROW_ERRNO(IOException, "IOException", 1, error, "ber flatten");
}

void IPCMessage::send(int fd) {
  bool midExchange = false;
  transmit(fd, midExchange, nullptr);
}

void IPCMessage::transmit(int fd, bool& midExchange, CallProgress* call) {
  doHeader();
  if (!m_flattened) flatten();
  auto length = static_cast<uint32_t>(m_flattened->bv_len);
  if (length != m_flattened->bv_len)
    FOKRAZO_THROW_ERRNO(IOException, "IOException", 1, EMSGSIZE, "ber flatten");
  VESK_LOG_TO(kLogger, Trace, "write size %d", static_cast<int>(length));
  midExchange = true;
  writeWithin(fd, reinterpret_cast<unsigned char*>(&length), sizeof length, call);
  writeWithin(fd, reinterpret_cast<unsigned char*>(m_flattened->bv_val), length, call);
}

void IPCMessage::get(int fd) {
  bool midExchange = true;
  receive(fd, midExchange, nullptr);
}

void IPCMessage::receive(int fd, bool& midExchange, CallProgress* call) {
  dropElement();
  uint32_t length = 0;
  errno = 0;
  readWithin(fd, reinterpret_cast<unsigned char*>(&length), sizeof length, call);
  VESK_LOG_TO(kLogger, Trace, "read size %d", static_cast<int>(length));
  if (length > 0) receiveBody(fd, length, call);
  midExchange = false;
  if (length == 0) failFrame(length, 1, errno);
  if (readHeader()) return;
  const int error = errno;
  dropElement();
  FOKRAZO_THROW_ERRNO(IOException, "IOException", 1, error, "ber_scanf failure (received garbled message?)");
}

void IPCMessage::receiveBody(int fd, unsigned int length, CallProgress* call) {
  if (length > kUnlimitedLength && length > longestMessage()) failFrame(length, ENOMEM, ENOMEM);
  std::unique_ptr<BerElement, FreeElement> element(qtr_ber_alloc_t(1));
  IncomingBytes bytes(length);
  if (!element || !bytes) failFrame(length, ENOMEM, ENOMEM);
  bytes.read(fd, call);
  berval message = bytes.release();
  m_ber = element.release();
  qtr_ber_init2(m_ber, &message, 0);
}

bool IPCMessage::readHeader() const {
  ber_int_t opcode = 0;
  ber_int_t result = 0;
  if (!m_ber || qtr_ber_scanf(m_ber, "{ii}", &opcode, &result) == LBER_ERROR) return false;
  m_opcode = static_cast<IPC_OPCODE>(opcode);
  m_result = static_cast<IPC_RESULT>(result);
  return true;
}

IPCRequest::IPCRequest(IPC_OPCODE opcode) {
  setOpcode(opcode);
  doHeader();
}

void IPCRequest::execute(int fd, IPCReply* reply) {
  send(fd);
  reply->get(fd);
  reply->requireSuccess();
}

void IPCReply::requireSuccess() const {
  if (result() == IPC_SUCCESS) return;
  FOKRAZO_THROW(SystemException, "SystemException", result(), "Unsuccesful IPC execute: %s",
                IPC_RESULTToStr(result()));
}

}  // namespace vesk
