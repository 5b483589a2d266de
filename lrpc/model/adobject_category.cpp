#include <optional>

#include <fokrazo/adobject.h>
#include <fokrazo/attrnames.h>
#include <fokrazo/strutil.h>

namespace vesk {
namespace {

constexpr char kMapsContainer[] = "cn=nismaps";
constexpr char kAutomount[] = "cn=auto";
constexpr char kZoneMarker[] = "$VeskZoneVersion";
constexpr char kComputerZoneMarker[] = "$VeskComputerZoneVersion";

struct MapCategory {
  const std::string* marker;  // the whole display name of a map's object
  const char* place;          // part of the DN, in lower case
  const std::string* category;
};

bool holds(const std::string& text, const char* part) {
  return text.find(part) != std::string::npos;
}

// The text of the first "CN=" of a schema DN.
std::optional<std::string> firstName(const std::string& dn) {
  constexpr char kName[] = "CN=";
  size_t begin = dn.find(kName);
  if (begin == std::string::npos) return std::nullopt;
  begin += sizeof kName - 1;
  size_t end = dn.find(',', begin);
  if (end == std::string::npos) return std::nullopt;
  return dn.substr(begin, end - begin);
}

std::string containerCategory(const std::string& displayName, const std::string& dn) {
  if (holds(displayName, kZoneMarker) || holds(displayName, kComputerZoneMarker)) return VESK_ZONE_CATEGORY;
  if (holds(dn, kMapsContainer) && dn.compare(0, sizeof kAutomount - 1, kAutomount) == 0)
    return AD_AUTO_MAP_CATEGORY;
  return AD_CONTAINER_CATEGORY;
}

// The first row that matches wins.
std::string classStoreCategory(const std::string& displayName, const std::string& dn) {
  const MapCategory kMapCategories[] = {
      {&NETGROUP_VERSION, "cn=netgroup,cn=nismaps", &AD_NETGROUP_CATEGORY},
      {&PROTOCOL_VERSION, "cn=protocols,cn=nismaps", &AD_PROTOCOL_CATEGORY},
      {&RPC_VERSION, "cn=rpc,cn=nismaps", &AD_RPC_CATEGORY},
      {&HOST_VERSION, "cn=hosts,cn=nismaps", &AD_HOST_CATEGORY},
      {&ETHER_VERSION, "cn=ethers,cn=nismaps", &AD_ETHER_CATEGORY},
      {&NET_VERSION, "cn=networks,cn=nismaps", &AD_NET_CATEGORY},
      {&ALIAS_VERSION, "cn=aliases,cn=nismaps", &AD_ALIAS_CATEGORY},
      {&SERVICE_VERSION, "cn=services,cn=nismaps", &AD_SERVICE_CATEGORY},
      {&AUUSER_VERSION, "cn=audit_user,cn=nismaps", &AD_AUUSER_CATEGORY},
      {&PROFATTR_VERSION, "cn=prof_attr,cn=nismaps", &AD_PROF_ATTR_CATEGORY},
      {&EXECATTR_VERSION, "cn=exec_attr,cn=nismaps", &AD_EXEC_ATTR_CATEGORY},
      {&AUTHATTR_VERSION, "cn=auth_attr,cn=nismaps", &AD_AUTH_ATTR_CATEGORY},
      {&USERATTR_VERSION, "cn=user_attr,cn=nismaps", &AD_USER_ATTR_CATEGORY},
      {&BOOTPARAMS_VERSION, "cn=bootparams,cn=nismaps", &AD_BOOTPARAMS_CATEGORY},
      {&PRINTER_VERSION, "cn=printers,cn=nismaps", &AD_PRINTER_CATEGORY},
      {&PROJECT_VERSION, "cn=project,cn=nismaps", &AD_PROJECT_CATEGORY},
      {&NETMASK_VERSION, "cn=netmasks,cn=nismaps", &AD_NETMASK_CATEGORY},
  };
  static_assert(sizeof kMapCategories / sizeof kMapCategories[0] == 17, "maps that a zone may hold");
  for (const MapCategory& row : kMapCategories)
    if (displayName == *row.marker || holds(dn, row.place)) return *row.category;
  return holds(dn, kMapsContainer) && holds(dn, kAutomount) ? AD_AUTOMOUNT_CATEGORY : AD_CLASS_STORE_CATEGORY;
}

}  // namespace

std::string ADObject::category() {
  if (attributeExists(VESK_OBJECT_CATEGORY, true)) return (*this)[VESK_OBJECT_CATEGORY];
  if (!attributeExists(AD_OBJECT_CATEGORY, true)) return std::string();
  const std::optional<std::string> schemaName = firstName((*this)[AD_OBJECT_CATEGORY]);
  if (!schemaName) return std::string();
  const std::string dn = lower((*this)[AD_DN]);
  const std::string displayName =
      attributeExists(AD_DISPLAY_NAME, true) ? (*this)[AD_DISPLAY_NAME].front() : EMPTY_STRING;
  std::string category = *schemaName;
  if (category == AD_CONTAINER_CATEGORY || category == AD_ORGUNIT_CATEGORY)
    category = containerCategory(displayName, dn);
  else if (category == AD_CLASS_STORE_CATEGORY)
    category = classStoreCategory(displayName, dn);
  (*this)[VESK_OBJECT_CATEGORY] = category;
  return category;
}

}  // namespace vesk
