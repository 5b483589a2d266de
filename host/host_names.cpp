#include <netdb.h>
#include <unistd.h>

#include <cerrno>
#include <vector>

#include <fokrazo/log.h>
#include <fokrazo/osutil.h>
#include <fokrazo/setting.h>
#include <fokrazo/strutil.h>

namespace {

constexpr char kLogger[] = "base.osutil";

/// The system's name of this host, of at most `Limit` characters; empty on failure.
template <size_t Limit>
std::string systemHostName() {
  char name[Limit + 1] = {};
  return ::gethostname(name, Limit) == 0 ? name : std::string();
}

/// The resolver's canonical name for `name`, or `name` itself if it is unknown. Plain gethostbyname returns
/// shared memory under a lock that a forked child may find held forever.
std::string canonicalName(const std::string& name) {
  constexpr size_t kLargestAnswer = 1024 * 1024;
  for (std::vector<char> memory(1024);; memory.resize(2 * memory.size())) {
    hostent host;
    hostent* found = nullptr;
    int reason;
    const int error = ::gethostbyname_r(name.c_str(), &host, memory.data(), memory.size(), &found, &reason);
    if (error == ERANGE && memory.size() < kLargestAnswer) continue;
    return error == 0 && found ? found->h_name : name;
  }
}

}  // namespace

std::string shortLocalHostName() {
  const std::string name = systemHostName<64>();
  return lower(name.substr(0, name.find('.')));
}

std::string longLocalHostName() {
  const std::string name = systemHostName<263>();
  return name.empty() ? name : lower(canonicalName(name));
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
