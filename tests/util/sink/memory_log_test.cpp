// The memory log, read from another process's memory, as an administrator would; and the write cache.

#include "tests/support/rows.h"
#include "tests/support/scratch_test.h"
#include "tests/support/syslog_socket.h"

using namespace vesk;
using testsupport::checkInChild;

namespace {

constexpr char kLogger[] = "com.zantrel.logger";

// The output of docs/memory-log.sh for a child that has done `work` and waits.
template <class Work>
Texts memoryLogOf(Work work) {
  const pid_t child = fork();
  if (child == 0) {
    work();
    raise(SIGSTOP);
  }
  waitpid(child, nullptr, WUNTRACED);
  const std::string script = "sh '" TEST_SOURCE_DIR "/docs/memory-log.sh' ";
  EXPECT_EQ(system((script + std::to_string(child) + " > /var/log/memory").c_str()), 0);
  kill(child, SIGKILL);
  waitpid(child, nullptr, 0);
  Texts lines;
  std::ifstream output("/var/log/memory");
  for (std::string line; std::getline(output, line);) lines.push_back(line);
  return lines;
}

void start() {
  Logger::SetBufferActive(true);
  CircularBuffer::GetCircularBuffer()->init({}, 1);  // the smallest ring
  configure(
      "log: DISABLED\nlogger.memory.enabled: true\nlogger.memory.log: DEBUG\n"
      "logger.memory.log.com.zantrel.logger: DISABLED\n");
}

TEST(MemoryLogTest, SizesHaveTheirLimits) {
  for (const auto& [text, size] : testsupport::rowsOf<2>("util/sink/rows.txt", "memory: size, what counts")) {
    configure("logger.memory.bufsize: " + text + "\n");
    EXPECT_EQ(std::to_string(CircularBuffer::configuredSize()), size) << text;
  }
}

// Each in its own child, so that no copy of one log is found in the next.
TEST(MemoryLogTest, TheNewestEntriesAreFoundByTheirMarkers) {
  checkInChild([] {
    const Texts lines = memoryLogOf([] {
      start();
      for (int i = 0; i < 500; ++i)
        VESK_LOG_TO("ring", Debug, "entry %d of %s", i, i % 7 == 0 ? "a longer kind" : "some");
      VESK_LOG_TO("ring", Trace, "below the level");
      VESK_LOG_TO("ring", Debug, "%s", std::string(1500, 'z').c_str());
      VESK_LOG_TO("ring", Info, "the newest");
    });
    ASSERT_TRUE(lines.size() > 50 && lines.size() < 200);
    EXPECT_NE(lines.back().find("]: INFO  ring the newest"), std::string::npos) << lines.back();
    const std::string& cut = lines[lines.size() - 2];
    EXPECT_EQ(cut.size(), 1023u);
    EXPECT_EQ(cut.substr(1000), std::string(23, 'z'));
    for (size_t i = 1; i + 2 < lines.size(); ++i) {  // the first may be half overwritten
      const std::string number = std::to_string(i + 502 - lines.size());
      EXPECT_EQ(lines[i].rfind("_cbuf 2", 0), 0u) << lines[i];
      EXPECT_NE(lines[i].find("DEBUG ring entry " + number + " of "), std::string::npos) << lines[i];
    }
  });
}

// Ten entries leave 240 bytes of the ring; an eleventh fits exactly, or starts again at the front.
TEST(MemoryLogTest, AnEntryIsNeverSplitAtTheRingsEnd) {
  for (const int length : {227, 228})
    checkInChild([length] {
      const Texts lines = memoryLogOf([length] {
        start();
        char buffer[256];
        const int prefix =
            strlen("_cbuf ") + BuildMessagePrefix(buffer, sizeof buffer, "") + strlen("DEBUG ring ");
        for (int i = 0; i < 10; ++i) VESK_LOG_TO("ring", Debug, "%*d", 999 - prefix, i);
        VESK_LOG_TO("ring", Debug, "%*d", length - prefix, 10);
      });
      ASSERT_EQ(lines.size(), length == 227 ? 11u : 10u);
      EXPECT_EQ(lines.front().substr(lines.front().size() - 2), length == 227 ? " 0" : " 1");
      EXPECT_EQ(lines.back().substr(lines.back().size() - 3), " 10");
    });
}

TEST(MemoryLogTest, ChangesOfItsStateAreLogged) {
  SyslogSocket syslogd;
  configure("");
  checkInChild([] {
    Logger::ReconfigureBuffer(true, "INFO");
    Logger::SetBufferActive(true);
    configure("logger.memory.enabled: yes\n");
    Logger::ReconfigureBuffer(true, "NONE");
    EXPECT_EQ(Logger::GetLogger("")->getEffectiveMemoryLevel(), Logger::Info);
    Logger::SetBufferActive(false);
    EXPECT_FALSE(CircularBuffer::GetCircularBuffer()->init(Logger::GetLogger(kLogger)));
    EXPECT_TRUE(CircularBuffer::GetCircularBuffer()->isEnabled());
  });
  Texts expected;
  for (const auto& [text] : testsupport::rowsOf<1>("util/sink/rows.txt", "changes of the memory log"))
    expected.push_back(std::string("WARN  ") + kLogger + " " + text);
  EXPECT_EQ(syslogd.texts(), expected);
}

__attribute__((format(printf, 2, 3))) void print(LogCache& cache, const char* format, ...) {
  va_list args;
  va_start(args, format);
  cache.vsappend(format, args);
  va_end(args);
}

TEST(LogCacheTest, AnySizePassesAnyTextAndLosesItWithoutAStream) {
  const std::string zeros(3 * 1023, '0');
  const std::string all = "!000007" + zeros.substr(0, 1022) + "7" + zeros.substr(0, 2 * 1023) + "ab?";
  for (const unsigned int size : {0, 1, 2, 1023, 1024, 1025, 1030, 5000}) {
    char* content = nullptr;
    size_t length = 0;
    FILE* file = open_memstream(&content, &length);
    {
      LogCache cache(size);
      EXPECT_EQ(cache.isActive(), size > 0);
      cache.append("lost");
      cache.flush();
      cache.reconfigure(size, file);
      cache.append('!');
      for (const int width : {6, 1023, 1024, 3000}) print(cache, "%0*d", width, 7);
      print(cache, "ab%cd", '\0');
      cache.reconfigure(size == 0 ? 0 : 16, nullptr);
      cache.append("?");
    }
    fclose(file);
    EXPECT_EQ(std::string(content, length), size == 0 ? "" : all) << size;
    free(content);
  }
}

}  // namespace
