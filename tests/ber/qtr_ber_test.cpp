// Flattening without a copy, and the socket buffer's reads with a time-out.

#include "tests/support/wrapped.h"

namespace {

int gReadsThatFail = 0;  // with EAGAIN

}  // namespace

WRAPPED(ssize_t, read, (int fd, void* bytes, size_t size),
        gReadsThatFail > 0 ? (--gReadsThatFail, errno = EAGAIN, -1) : __real_read(fd, bytes, size))

namespace {

TEST(FastFlattenTest, MovesTheBufferOnceAndKeepsItOnFailure) {
  BerElement* ber = qtr_ber_alloc_t(0);
  ASSERT_GE(qtr_ber_printf(ber, "{i", 0), 0);
  berval inPlace, untouched;
  berval* bytes = &untouched;
  EXPECT_EQ(qtr_fast_ber_flatten(ber, &bytes), -1) << "the sequence is open";
  EXPECT_EQ(qtr_fast_ber_flatten(nullptr, &bytes), -1);
  EXPECT_EQ(qtr_fast_ber_flatten(ber, nullptr), -1);
  EXPECT_EQ(bytes, &untouched);
  EXPECT_GE(qtr_ber_printf(ber, "i}", 0), 0);
  ASSERT_EQ(qtr_ber_flatten2(ber, &inPlace, 0), 0);
  ASSERT_EQ(qtr_fast_ber_flatten(ber, &bytes), 0);
  EXPECT_EQ(bytes->bv_val, inPlace.bv_val);
  qtr_ber_free(ber, 1);
  EXPECT_EQ(std::string(bytes->bv_val, bytes->bv_len), std::string("\x30\x84\0\0\0\6\2\1\0\2\1\0", 12));
  qtr_ber_bvfree(bytes);
}

class SockbufTest : public ::testing::Test {
 protected:
  SockbufTest() : m_buffer(qtr_ber_sockbuf_alloc()) {
    EXPECT_EQ(socketpair(AF_UNIX, SOCK_STREAM, 0, m_ends), 0);
    EXPECT_EQ(qtr_ber_sockbuf_add_io(m_buffer, &qtr_ber_sockbuf_io_tcp, LBER_SBIOD_LEVEL_PROVIDER, m_ends),
              0);
    const int all = 0x4000 | 0x2 | 0x8;
    ber_set_option(nullptr, LBER_OPT_BER_DEBUG, &all);
    ::testing::internal::CaptureStderr();
  }
  ~SockbufTest() override {
    ::testing::internal::GetCapturedStderr();
    const int none = 0;
    ber_set_option(nullptr, LBER_OPT_BER_DEBUG, &none);
    qtr_ber_sockbuf_free(m_buffer);
    close(m_ends[1]);
    EXPECT_EQ(fcntl(m_ends[0], F_GETFL), -1) << "not closed with its buffer";
  }

  void setTimeout(int seconds, int microseconds) {
    int timeout[] = {seconds, microseconds};
    EXPECT_EQ(qtr_ber_sockbuf_ctrl(m_buffer, QTR_SB_OPT_SET_TIMEOUT, timeout), 1);
  }

  // What LDAP's reader gets from the stream through all layers: the tag, or -1 with errno.
  int readTag() {
    BerElement* ber = qtr_ber_alloc_t(0);
    ber_len_t length;
    errno = 0;
    const ber_tag_t tag = ber_get_next(m_buffer, &length, ber);
    const int error = errno;
    qtr_ber_free(ber, 1);
    errno = error;
    return static_cast<int>(tag);
  }
  int readTagThatCame() { return write(m_ends[1], "\2\1\5", 3) == 3 ? readTag() : -2; }

  // The log since the last call.
  static std::string logged() {
    std::string text = ::testing::internal::GetCapturedStderr();
    ::testing::internal::CaptureStderr();
    return text;
  }

  bool blocking() const { return !(fcntl(m_ends[0], F_GETFL) & O_NONBLOCK); }

  Sockbuf* m_buffer;
  int m_ends[2];
};

TEST_F(SockbufTest, TheTimeoutStartsAtZeroAndReadsBack) {
  int timeout[] = {9, 9};
  EXPECT_EQ(qtr_ber_sockbuf_ctrl(m_buffer, QTR_SB_OPT_GET_TIMEOUT, timeout), 1);
  EXPECT_EQ(timeout[0] + timeout[1], 0);
  setTimeout(2, 7);
  EXPECT_EQ(qtr_ber_sockbuf_ctrl(m_buffer, QTR_SB_OPT_GET_TIMEOUT, timeout), 1);
  EXPECT_EQ(timeout[0] * 10 + timeout[1], 27);
  EXPECT_EQ(qtr_ber_sockbuf_ctrl(m_buffer, QTR_SB_OPT_SET_TIMEOUT, nullptr), 1);
  EXPECT_EQ(logged(), "ber_sockbuf_ctrl: set_timeout 2 7ber_sockbuf_ctrl: set_timeout 0 0");

  Sockbuf* plain = ber_sockbuf_alloc();
  EXPECT_EQ(qtr_ber_sockbuf_ctrl(plain, QTR_SB_OPT_GET_TIMEOUT, timeout), -1);
  qtr_ber_sockbuf_free(plain);
}

TEST_F(SockbufTest, ASilentPeerMeansEtimeAndTheDescriptorBlocksAgain) {
  for (const int microseconds : {0, 1000}) {
    setTimeout(0, microseconds);
    EXPECT_EQ(readTag(), -1);
    EXPECT_EQ(errno, ETIME);
    EXPECT_TRUE(blocking());
  }
  EXPECT_EQ(readTagThatCame(), 2);
  const std::string text = logged();
  EXPECT_NE(text.find("sb_recv_wait end: sock=" + std::to_string(m_ends[0]) + " rc=1 \n"), text.npos) << text;
  EXPECT_EQ(qtr_ber_sockbuf_ctrl(m_buffer, LBER_SB_OPT_SET_NONBLOCK, LBER_OPT_ON), 1);
  setTimeout(100, 0);  // is not waited for
  EXPECT_EQ(readTag(), -1);
  EXPECT_EQ(errno, EAGAIN);
  EXPECT_FALSE(blocking());
}

TEST_F(SockbufTest, AReadWithNothingToReadIsRetriedThreeTimes) {
  gReadsThatFail = 3;
  EXPECT_EQ(readTagThatCame(), 2);
  logged();
  gReadsThatFail = 4;
  EXPECT_EQ(readTagThatCame(), -1);
  EXPECT_EQ(errno, EAGAIN);
  const std::string text = logged();
  for (const char left : {'3', '2', '1', '0'})
    EXPECT_NE(text.find(std::string("recv says no (retries left: ") + left + ")"), text.npos) << text;
}

TEST_F(SockbufTest, WritingToAClosedPeerRaisesNoSignal) {
  shutdown(m_ends[1], SHUT_RDWR);
  BerElement* ber = qtr_ber_alloc_t(0);
  ASSERT_GE(qtr_ber_printf(ber, "i", 5), 0);
  EXPECT_EQ(ber_flush2(m_buffer, ber, LBER_FLUSH_FREE_ALWAYS), -1);
  EXPECT_EQ(errno, EPIPE);
}

// What ber_flush2 and then ber_get_next return on a buffer, with errno if they fail.
std::string flushAndGet(Sockbuf* buffer) {
  const auto text = [](auto result) {
    const int number = static_cast<int>(result);
    return std::to_string(number) + (number < 0 ? " " + std::to_string(errno) : "");
  };
  BerElement* ber = qtr_ber_alloc_t(0);
  EXPECT_GE(qtr_ber_printf(ber, "i", 5), 0);
  const std::string flushed = text(ber_flush2(buffer, ber, LBER_FLUSH_FREE_ALWAYS));
  ber = qtr_ber_alloc_t(0);
  ber_len_t length;
  const std::string got = text(ber_get_next(buffer, &length, ber));
  qtr_ber_free(ber, 1);
  return flushed + ", " + got;
}

TEST(SockbufStream, MayBeAnyDescriptorButMustBeThere) {
  Sockbuf* buffer = qtr_ber_sockbuf_alloc();
  const std::string notConnected = "-1 " + std::to_string(ENOTCONN);
  EXPECT_EQ(flushAndGet(buffer), notConnected + ", " + notConnected);
  qtr_ber_sockbuf_free(buffer);

  const int null = open("/dev/null", O_RDWR | O_CLOEXEC);
  buffer = qtr_ber_sockbuf_alloc();
  EXPECT_EQ(qtr_ber_sockbuf_add_io(buffer, &qtr_ber_sockbuf_io_tcp, LBER_SBIOD_LEVEL_PROVIDER,
                                   const_cast<int*>(&null)),
            0);
  int timeout[] = {1, 0};
  EXPECT_EQ(qtr_ber_sockbuf_ctrl(buffer, QTR_SB_OPT_SET_TIMEOUT, timeout), 1);
  EXPECT_EQ(flushAndGet(buffer), "0, -1 0");
  qtr_ber_sockbuf_free(buffer);
}

}  // namespace
