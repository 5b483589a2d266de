// The memory log, read the way an administrator reads it: from another process's memory. And the write cache.

#include <gtest/gtest.h>

#include <cstdio>
#include <sstream>

#include "tests/support/scratch_test.h"
#include "tests/util/syslog_socket.h"
#include "util/include/circular_buffer.h"
#include "util/include/log.h"
#include "util/include/log_cache.h"

using namespace vesk;
using testsupport::inChild;
using Texts = std::vector<std::string>;

namespace {

// The output of docs/memory-log.sh for a child that has done `work` and waits.
template <class Work>
std::string memoryLogOf(Work work) {
  int ready[2], done[2];
  if (pipe(ready) != 0 || pipe(done) != 0) abort();
  const pid_t child = fork();
  char byte = 0;
  if (child == 0) {
    ::close(done[1]);
    work();
    if (::write(ready[1], &byte, 1) == 1 && ::read(done[0], &byte, 1) >= 0) _exit(0);
  }
  ::close(ready[1]);
  std::string output;
  if (::read(ready[0], &byte, 1) == 1) {
    FILE* script = popen(("sh " TEST_SOURCE_DIR "/docs/memory-log.sh " + std::to_string(child)).c_str(), "r");
    for (int c; (c = fgetc(script)) != EOF;) output += static_cast<char>(c);
    pclose(script);
  }
  for (const int end : {ready[0], done[0], done[1]}) ::close(end);
  waitpid(child, nullptr, 0);
  return output;
}

Texts linesIn(const std::string& text) {
  Texts lines;
  std::istringstream stream(text);
  for (std::string line; std::getline(stream, line);) lines.push_back(line);
  return lines;
}

void start(const std::string& size) {
  Logger::SetBufferActive(true);
  configure(
      "log: DISABLED\nlogger.memory.enabled: true\nlogger.memory.log: DEBUG\n"
      "logger.memory.log.com.zantrel.logger: DISABLED\n" +
      (size.empty() ? size : "logger.memory.bufsize: " + size + "\n"));
}

TEST(MemoryLogTest, SizesHaveTheirLimits) {
  const struct {
    const char* text;
    unsigned int bytes;
  } rows[] = {{"", 131072},  {"5", 10240}, {"64", 65536},
              {"-7", 10240}, {"x", 10240}, {"2147483647", 2147483647}};
  for (const auto& row : rows) {
    configure(std::string("logger.memory.bufsize: ") + row.text + "\n");
    EXPECT_EQ(CircularBuffer::configuredSize(), row.bytes) << row.text;
  }
}

void expectTheNewestEntries() {
  const std::string output = memoryLogOf([] {
    start("10");
    for (int i = 0; i < 500; ++i)
      VESK_LOG_TO("ring", Debug, "entry %d of %s", i, i % 7 == 0 ? "a longer kind" : "some");
    VESK_LOG_TO("ring", Trace, "below the level");
    VESK_LOG_TO("ring", Debug, "%s", std::string(1500, 'z').c_str());
    VESK_LOG_TO("ring", Info, "the newest");
  });
  const Texts lines = linesIn(output);
  ASSERT_GT(lines.size(), 50u);
  ASSERT_LT(lines.size(), 200u);
  EXPECT_NE(lines.back().find("]: INFO  ring the newest"), std::string::npos) << lines.back();
  const std::string& cut = lines[lines.size() - 2];
  EXPECT_EQ(cut.size(), 1023u);
  EXPECT_EQ(cut.substr(1000), std::string(23, 'z'));
  int number = 0, last = 0;
  for (size_t i = 1; i + 2 < lines.size(); ++i) {  // the first may be half overwritten
    ASSERT_EQ(lines[i].rfind("_cbuf 2", 0), 0u) << lines[i];
    ASSERT_EQ(sscanf(lines[i].c_str() + lines[i].find("ring entry"), "ring entry %d", &number), 1)
        << lines[i];
    if (i > 1) {
      EXPECT_EQ(number, last + 1);
    }
    last = number;
  }
  EXPECT_EQ(last, 499);
}

// Each in a child of its own, so that no copy of one log is found among the entries of the next.
TEST(MemoryLogTest, TheNewestEntriesAreFoundByTheirMarkers) {
  EXPECT_EQ(inChild(expectTheNewestEntries), 0);
}

void expectRoomToTheByte(int length) {
  const Texts lines = linesIn(memoryLogOf([length] {
    start("10");
    char buffer[256];
    const int prefix = BuildMessagePrefix(buffer, sizeof buffer, "_cbuf ") + strlen("DEBUG ring ");
    for (int i = 0; i < 10; ++i) VESK_LOG_TO("ring", Debug, "%*d", 999 - prefix, i);
    VESK_LOG_TO("ring", Debug, "%*d", length - prefix, 10);
  }));
  ASSERT_EQ(lines.size(), length == 227 ? 11u : 10u);
  EXPECT_EQ(lines.front().substr(lines.front().size() - 2), length == 227 ? " 0" : " 1");
  EXPECT_EQ(lines.back().substr(lines.back().size() - 3), " 10");
}

// Ten entries leave 240 bytes of the ring; an eleventh has room to the byte, or starts over at the front.
TEST(MemoryLogTest, AnEntryIsNeverSplitAtTheRingsEnd) {
  for (const int length : {227, 228}) {
    EXPECT_EQ(inChild([length] { expectRoomToTheByte(length); }), 0) << length;
  }
}

TEST(MemoryLogTest, WhatIsReportedOfIt) {
  SyslogSocket syslogd;
  configure("");
  EXPECT_EQ(inChild([] {
              Logger::ReconfigureBuffer(true, "INFO");
              Logger::SetBufferActive(true);
              configure("logger.memory.enabled: yes\n");
              Logger::ReconfigureBuffer(true, "NONE");
              EXPECT_EQ(Logger::GetLogger("")->getEffectiveMemoryLevel(), Logger::Info);
              Logger::ReconfigureBuffer(false, "ERROR");
              EXPECT_EQ(Logger::GetLogger("")->getEffectiveMemoryLevel(), Logger::Error);
              EXPECT_TRUE(CircularBuffer::GetCircularBuffer()->isEnabled());
              Logger::SetBufferActive(false);
              EXPECT_FALSE(CircularBuffer::GetCircularBuffer()->init(Logger::GetLogger("own")));
              EXPECT_TRUE(CircularBuffer::GetCircularBuffer()->isEnabled());
            }),
            0);
  Texts texts = syslogd.texts();
  EXPECT_EQ(texts, (Texts{
                       "WARN  com.zantrel.logger Cannot reconfigure circular buffer, as its not activated",
                       "WARN  com.zantrel.logger CircularBuffer.init() - initalized and enabled=true",
                       "WARN  com.zantrel.logger circular buffer has been enabled",
                       "WARN  com.zantrel.logger Circular buffer log level cannot be NONE. Using 'INFO'.",
                       "WARN  com.zantrel.logger CircularBuffer.init() - already initialized",
                       "WARN  own CircularBuffer.init() -  not activated",
                   }));
}

TEST(LogCacheTest, AnySizePassesAnyText) {
  const std::string text = "0123456789abcdef";
  for (unsigned int size = 0; size < 20; ++size) {
    FILE* file = tmpfile();
    {
      LogCache cache(size, file);
      EXPECT_EQ(cache.isActive(), size > 0);
      cache.append(text.c_str());
      cache.append('!');
      cache.append("");
      cache.append(text.c_str());
    }
    char content[64] = {};
    rewind(file);
    const size_t length = fread(content, 1, sizeof content, file);
    EXPECT_EQ(std::string(content, length), size == 0 ? "" : text + "!" + text) << size;
    fclose(file);
  }
}

TEST(LogCacheTest, WithoutAStreamTheContentIsLost) {
  FILE* file = tmpfile();
  LogCache cache(64);
  cache.append("lost");
  cache.flush();
  cache.reconfigure(64, file);
  cache.append("kept");
  cache.reconfigure(32, nullptr);
  EXPECT_EQ(ftell(file), 4);
  cache.reconfigure(0, nullptr);
  EXPECT_FALSE(cache.isActive());
  cache.append("dropped");
  EXPECT_EQ(ftell(file), 4);
  fclose(file);
}

}  // namespace
