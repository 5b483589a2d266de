/// A user's system rights: bits that the daemon sends in the attribute `_SysRights`. All functions are pure
/// and thread-safe.
#pragma once

#include <string>

#include <fokrazo/export.h>

namespace sam {

/// The audit level: 0 audit if possible, 1 audit not requested, 2 audit required. Required takes precedence
/// over not requested.
FOKRAZO_API unsigned int GetAuditLevelFromSysRights(unsigned int rights);
/// The level's name, such as "AuditIfPossible"; "Unknown" for a number above 2.
FOKRAZO_API std::string AuditLevelToString(unsigned int level);
/// Whether the user may log in regardless of other settings.
FOKRAZO_API bool IsAlwaysPermitLogin(unsigned int rights);
/// The union of both sets; "audit not requested" remains only if both have it.
FOKRAZO_API unsigned int MergeSysRights(unsigned int first, unsigned int second);

}  // namespace sam
