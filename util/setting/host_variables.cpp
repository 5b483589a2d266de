#include "util/setting/host_variables.h"

#include <cstring>

#include <fokrazo/error_util.h>
#include <fokrazo/setting.h>
#include "util/setting/setting_internal.h"

namespace vesk {
namespace {

constexpr char kZoneVariable[] = "ZONE";
constexpr char kUnknown[] = "<unknown>";

struct HostVariable {
  const char* name;
  const char* setting;
};

constexpr HostVariable kHostVariables[] = {
    {"JOINNAME", SETTING_HOST_NAME},           //
    {"PREW2KNAME", SETTING_PREW2K_HOST_NAME},  //
    {"SITE", SETTING_MACHINE_SITE},            //
    {"DOMAIN", SETTING_DOMAIN_NAME},           //
    {kZoneVariable, SETTING_ZONE_REALNAME},    //
};

/// The first component of a distinguished name; any other text unchanged.
std::string shortZoneName(const std::string& zone) {
  size_t begin = zone.find("CN=");
  if (begin == std::string::npos) begin = zone.find("OU=");
  if (begin == std::string::npos) return zone;
  begin += 3;
  return zone.substr(begin, zone.find(',', begin) - begin);
}

// A machine that is not joined has none of them; checking first is cheaper than five exceptions.
bool isSet(const char* name) {
  const LockedStore store;
  return store->values.count(name) != 0 || SettingExists(name);
}

std::string readSetting(const char* name) {
  try {
    return isSet(name) ? loadSettingFromFile(name) : kUnknown;
  } catch (const VESKException&) {
    return kUnknown;
  }
}

}  // namespace

std::map<std::string, std::string> hostVariables() {
  std::map<std::string, std::string> variables;
  for (const HostVariable& variable : kHostVariables) {
    std::string value = readSetting(variable.setting);
    if (variable.name == kZoneVariable && value != kUnknown) value = shortZoneName(value);
    variables[variable.name] = std::move(value);
  }
  return variables;
}

}  // namespace vesk
