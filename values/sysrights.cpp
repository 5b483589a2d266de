#include <fokrazo/sysrights.h>

namespace {

constexpr unsigned int kAuditNotRequested = 16;
constexpr unsigned int kAuditRequired = 32;
constexpr unsigned int kAlwaysPermitLogin = 64;

constexpr const char* kAuditLevels[] = {"AuditIfPossible", "AuditNotRequested", "AuditRequired"};

}  // namespace

namespace sam {

unsigned int GetAuditLevelFromSysRights(unsigned int rights) {
  if (rights & kAuditRequired) return 2;
  return rights & kAuditNotRequested ? 1 : 0;
}

std::string AuditLevelToString(unsigned int level) {
  return level < sizeof kAuditLevels / sizeof kAuditLevels[0] ? kAuditLevels[level] : "Unknown";
}

bool IsAlwaysPermitLogin(unsigned int rights) {
  return rights & kAlwaysPermitLogin;
}

unsigned int MergeSysRights(unsigned int first, unsigned int second) {
  return ((first | second) & ~kAuditNotRequested) | (first & second & kAuditNotRequested);
}

}  // namespace sam
