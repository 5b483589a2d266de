#include "standin/unix_profile.h"

#include <charconv>

#include <fokrazo/attrnames.h>
#include "standin/entry.h"

namespace standin {

const std::string& eitherValue(const Entry& entry, const std::string& first, const std::string& second) {
  const std::string& value = entry.first(first);
  return value.empty() ? entry.first(second) : value;
}

const std::string& unixName(const Entry& entry) {
  const std::string& name = eitherValue(entry, AD_R2_USERNAME, AD_USERNAME);
  return name.empty() ? entry.first(AD_CN) : name;
}

std::optional<uint32_t> toUnixId(const std::string& text) {
  long long number = 0;
  auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
  if (number < INT32_MIN || number > static_cast<long long>(UINT32_MAX)) return std::nullopt;
  return static_cast<uint32_t>(number);
}

std::optional<uint32_t> unixId(const Entry& entry) {
  if (entry.isAccount()) return toUnixId(eitherValue(entry, AD_R2_UID, SFU_UID));
  if (entry.kind() == EntryKind::Group) return toUnixId(eitherValue(entry, AD_R2_GID, SFU_GID));
  return std::nullopt;
}

}  // namespace standin
