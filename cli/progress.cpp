#include "cli/progress.h"

#include <unistd.h>

#include <cstdio>

namespace cli {

namespace {

constexpr std::chrono::milliseconds kFirst(500);
constexpr std::chrono::milliseconds kInterval(100);

}  // namespace

ProgressLine::ProgressLine(const char* what, bool isWanted)
    : m_what(what),
      m_isWanted(isWanted && isatty(STDERR_FILENO)),
      m_next(std::chrono::steady_clock::now() + kFirst) {}

ProgressLine::~ProgressLine() {
  if (m_isShown) fputs("\r\033[K", stderr);
}

void ProgressLine::update(size_t count) {
  if (!m_isWanted || std::chrono::steady_clock::now() < m_next) return;
  m_next = std::chrono::steady_clock::now() + kInterval;
  m_isShown = true;
  fprintf(stderr, "\r%zu %s ...\033[K", count, m_what);
}

}  // namespace cli
