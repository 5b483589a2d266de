#include <netdb.h>
#include <unistd.h>

#include "base/osutil.h"
#include "util/fork_locks.h"
#include "util/include/log.h"
#include "util/include/mutex.h"
#include "util/include/setting.h"
#include "util/include/strutil.h"

using vesk::Lock;
using vesk::Mutex;

namespace {

constexpr char kLogger[] = "base.osutil";

/// The system's name of this host, of at most `Limit` characters; empty on failure.
template <size_t Limit>
std::string systemHostName() {
  char name[Limit + 1] = {};
  return ::gethostname(name, Limit) == 0 ? name : std::string();
}

}  // namespace

std::string shortLocalHostName() {
  const std::string name = systemHostName<64>();
  return lower(name.substr(0, name.find('.')));
}

std::string longLocalHostName() {
  const std::string name = systemHostName<263>();
  if (name.empty()) return name;
  // gethostbyname answers in memory that all share.
  static Mutex& resolverMutex = vesk::heldOverFork(vesk::ForkOrder::Resolver, *new Mutex);
  Lock lock(resolverMutex);
  const hostent* host = ::gethostbyname(name.c_str());  // NOLINT(concurrency-mt-unsafe)
  return lower(host ? host->h_name : name);
}

std::string longJoinedHostName() {
  return lower(vesk::loadSetting(SETTING_HOST_NAME, false));
}

std::string shortJoinedHostName() {
  const std::string name = vesk::loadSetting(SETTING_HOST_NAME, false);
  const size_t dot = name.find('.');
  if (dot == std::string::npos)
    VESK_LOG_TO(kLogger, Error, "No dots found in the joinname %s.", name.c_str());
  return lower(name.substr(0, dot));
}

std::string PreW2KHostName() {
  std::string name = vesk::GetSetting(SETTING_PREW2K_HOST_NAME, std::string());
  if (!name.empty()) return name;
  name = shortJoinedHostName();
  if (::getuid() == 0) vesk::saveSetting(SETTING_PREW2K_HOST_NAME, name, vesk::SETTING_PUBLIC, true, true);
  return name;
}

std::string SamHostName() {
  return lower(PreW2KHostName() + "$");
}
