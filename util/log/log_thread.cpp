// The logger's data of each thread: its name and its table of loggers.

#include <atomic>
#include <cstdlib>
#include <cstring>

#include <fokrazo/log.h>
#include "util/log/log_internal.h"
#include "util/thread/thread_internal.h"

namespace vesk {

pthread_key_t Logger::g_LoggerTableKey;
pthread_once_t Logger::g_LoggerTableKeyOnce = PTHREAD_ONCE_INIT;

namespace {

pthread_key_t gTSDKey;
pthread_once_t gTSDKeyOnce = PTHREAD_ONCE_INIT;
std::atomic<bool> gTSDKeyMade{false};
bool gLoggerTableKeyMade = false;
char* gName = nullptr;  // for a process without a threads library

void TSDKeyAlloc() {
  gTSDKeyMade = pthread_key_create(&gTSDKey, free) == 0;
}

void DestroyLoggerTable(void* table) {
  delete static_cast<LoggerTable*>(table);
}

// Whether names can be stored per thread.
bool canStoreThreadNames() {
  if (!threadsSupported()) return false;
  pthread_once(&gTSDKeyOnce, TSDKeyAlloc);
  return gTSDKeyMade;
}

// Does not create the key: most programs never name a thread.
char* threadName() {
  return gTSDKeyMade ? static_cast<char*>(pthread_getspecific(gTSDKey)) : gName;
}

LoggerTable* copyOfTree() {
  Lock lock(gNamedLoggersProtect());
  return Logger::GetLogger("") ? new LoggerTable(LoggerTree::table()) : nullptr;
}

}  // namespace

void Logger::MakeLoggerTableKey() {
  gLoggerTableKeyMade = pthread_key_create(&g_LoggerTableKey, DestroyLoggerTable) == 0;
}

boost::shared_ptr<Logger> Logger::GetThreadPrivateLogger(const std::string& name) {
  if (LoggerTree::isShutDown()) return {};
  if (!Thread::locksCount()) return GetLogger(name);
  pthread_once(&g_LoggerTableKeyOnce, MakeLoggerTableKey);
  if (!gLoggerTableKeyMade) return GetLogger(name);
  auto* table = static_cast<LoggerTable*>(pthread_getspecific(g_LoggerTableKey));
  if (table == nullptr) {
    table = copyOfTree();
    if (table == nullptr) return {};
    if (pthread_setspecific(g_LoggerTableKey, table) != 0) {
      delete table;
      return GetLogger(name);
    }
  }
  boost::shared_ptr<Logger>& entry = (*table)[name];
  if (!entry) entry = GetLogger(name);
  return entry;
}

const char* GetThreadName() {
  return threadName();
}

std::string Logger::SetThreadName(const char* name) {
  char* const old = threadName();
  const std::string oldName = old != nullptr ? old : "";
  char* const copy = name != nullptr ? strdup(name) : nullptr;
  if (!canStoreThreadNames()) {
    gName = copy;
  } else if (pthread_setspecific(gTSDKey, copy) != 0) {
    free(copy);
    return oldName;
  }
  free(old);
  return oldName;
}

}  // namespace vesk
