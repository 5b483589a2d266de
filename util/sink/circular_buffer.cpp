#include <fokrazo/circular_buffer.h>

#include <algorithm>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include <fokrazo/log.h>
#include <fokrazo/mutex.h>
#include <fokrazo/properties.h>
#include <fokrazo/propnames.h>
#include "util/log/log_internal.h"
#include "util/sink/circular_buffer_internal.h"
#include "util/sink/log_text.h"
#include "util/text/made_once.h"

namespace vesk {
namespace {

constexpr char kLead[] = "_cbuf ";
constexpr char kMoniker[] = "\n_cbuf_END__\n";
constexpr unsigned int kMonikerLength = sizeof kMoniker - 1;
static_assert(kMonikerLength == 13, "the end marker with both its newlines");

constexpr unsigned int kScratchSize = 1024;  // plus a byte that is always 0
constexpr int kPrefixSize = 256;
constexpr unsigned int kDefaultSize = 0x20000;
constexpr unsigned int kSmallestSize = 10240;
static_assert(kSmallestSize >= kScratchSize + kMonikerLength, "any entry has room in any ring");

MadeOnce<boost::shared_ptr<CircularBuffer>> gBuffer;

}  // namespace

boost::shared_ptr<CircularBuffer>& gCircularBuffer() {
  return gBuffer.get();
}

void memoryLogInChild(bool intact) {
  const boost::shared_ptr<CircularBuffer>* const buffer = gBuffer.ifMade();
  if (!intact && buffer != nullptr && *buffer) (*buffer)->restart();
}

int memoryLevel(const std::string& text, const boost::shared_ptr<Logger>& logger) {
  const int level = TextToLevel(text);
  if (level != Logger::kInherit) return level;
  VESK_LOG(logger, Warn, "Circular buffer log level cannot be NONE. Using 'INFO'.");
  return Logger::Info;
}

CircularBuffer::CircularBuffer() : m_scratch(static_cast<char*>(calloc(kScratchSize + 1, 1))) {
  if (m_scratch != nullptr) strcpy(m_scratch, kLead);
}

CircularBuffer::~CircularBuffer() {
  free(m_start);
  free(m_scratch);
}

boost::shared_ptr<CircularBuffer> CircularBuffer::GetCircularBuffer() {
  Lock lock(gLogMessageProtect());
  return gCircularBuffer();
}

unsigned int CircularBuffer::configuredSize() {
  const std::string text = Props(false, false)->getString(PN::LOGGER_MEMORY_SIZE);
  if (text.empty()) return kDefaultSize;
  const int kilobytes = atoi(text.c_str());
  if (kilobytes < static_cast<int>(kSmallestSize >> 10)) return kSmallestSize;
  return kilobytes > INT_MAX >> 10 ? INT_MAX : static_cast<unsigned int>(kilobytes) << 10;
}

bool CircularBuffer::init(boost::shared_ptr<Logger> logger) {
  return init(logger, configuredSize());
}

bool CircularBuffer::init(boost::shared_ptr<Logger> logger, unsigned int bytes) {
  if (!isActive()) {
    VESK_LOG(logger, Warn, "CircularBuffer.init() -  not activated");
    return false;
  }
  if (isEnabled()) {
    VESK_LOG(logger, Warn, "CircularBuffer.init() - already initialized");
    return true;
  }
  if (!makeRing(bytes)) return false;
  VESK_LOG(logger, Warn, "CircularBuffer.init() - initalized and enabled=true");
  return true;
}

bool CircularBuffer::makeRing(unsigned int bytes) {
  Lock lock(gLogMessageProtect());
  if (isEnabled()) return true;
  if (m_scratch == nullptr) return false;
  m_size = std::max(bytes, kSmallestSize);
  m_start = static_cast<char*>(calloc(m_size, 1));
  if (m_start == nullptr) return false;
  m_current = m_start;
  m_enabled = true;
  gMemoryLogStarted = true;
  return true;
}

void CircularBuffer::log(const char* format, va_list args) {
  if (!isEnabled()) return;
  Lock lock(gLogMessageProtect());
  BuildMessagePrefix(m_scratch, kPrefixSize, kLead);
  const size_t prefix = strlen(m_scratch);
  const size_t length = prefix + formatEscaped(m_scratch + prefix, kScratchSize - prefix, format, args);
  m_scratch[kScratchSize] = '\0';
  put(static_cast<unsigned int>(length));
  memset(m_scratch, ' ', kScratchSize);
}

void CircularBuffer::restart() {
  if (!isEnabled()) return;
  memset(m_start, 0, m_size);
  m_current = m_start;
}

// The next entry overwrites the end marker except its leading newline, which ends this entry's line.
void CircularBuffer::put(unsigned int length) {
  const auto left = static_cast<unsigned int>(m_start + m_size - m_current);
  if (length + kMonikerLength > left) {
    memset(m_current, ' ', left);
    m_current = m_start;
  }
  memcpy(m_current, m_scratch, length);
  memcpy(m_current + length, kMoniker, kMonikerLength);
  m_current += length + 1;
}

void CircularBuffer::reconfigure(bool enable, std::string level) {
  const boost::shared_ptr<Logger> logger = Logger::GetLogger(kLoggingLogger);
  if (!isActive()) {
    VESK_LOG(logger, Warn, "Cannot reconfigure circular buffer, as its not activated");
    return;
  }
  const int number = memoryLevel(level, logger);
  if (const boost::shared_ptr<Logger> root = Logger::GetLogger("")) LoggerTree::setMemoryLevel(*root, number);
  if (enable) init(logger);
}

void Logger::SetBufferActive(bool active) {
  GetLogger("");
  if (const auto buffer = CircularBuffer::GetCircularBuffer()) buffer->setActive(active);
}

void Logger::ReconfigureBuffer(bool enable, std::string level) {
  GetLogger("");
  if (const auto buffer = CircularBuffer::GetCircularBuffer()) buffer->reconfigure(enable, std::move(level));
}

}  // namespace vesk
