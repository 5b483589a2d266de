// velmora_sname_to_principal: service principals for Kerberos libraries.

#include <unistd.h>

#include <cerrno>
#include <cstring>

#include <fokrazo/error_util.h>
#include <fokrazo/fixed_paths.h>
#include <fokrazo/log.h>
#include <fokrazo/properties.h>
#include <fokrazo/propnames.h>
#include <fokrazo/session.h>

namespace {

// Kerberos name types (RFC 4120, 6.2).
constexpr int kNameUnknown = 0;
constexpr int kNameServiceAndHost = 3;

// Error numbers of the Kerberos library.
constexpr int kBadNameType = static_cast<int>(0x96c73ada);
constexpr int kNoSuchPrincipal = static_cast<int>(0x96c73ad8);
constexpr int kTryDns = static_cast<int>(0x96c73af5);
constexpr int kDone = 1;

std::string canonicalPrincipal(const char* host, const char* service) {
  vesk::LocalRpcSession session(vesk::paths::kDaemonSocket, false, false);
  return session.getServicePrincipal(host, service);
}

int errorIfMissing() {
  if (!vesk::Props(false, false)->getBool(vesk::PN::KRB5_PERMIT_DNS_SPN_LOOKUPS, false))
    return kNoSuchPrincipal;
  VESK_LOG_TO("lrpc.session", Debug, "SPN wasn't found in AD.  Trying DNS...");
  return kTryDns;
}

}  // namespace

int velmora_sname_to_principal(void* /*context*/, const char* host, const char* service, int type,
                               char* out) {
  if (type != kNameUnknown && type != kNameServiceAndHost) return kBadNameType;
  char localHost[64] = {};
  if (!host) {
    if (gethostname(localHost, sizeof localHost) != 0) return errno;
    host = localHost;
  }
  try {
    const std::string principal = canonicalPrincipal(host, service ? service : "host");
    strcpy(out, principal.c_str());
    return kDone;
  } catch (const vesk::NotFoundException&) {
    return errorIfMissing();
  } catch (const VESKException&) {
    return kTryDns;
  }
}
