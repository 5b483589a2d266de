/// A user's system rights: one set of bits, as the daemon sends it in the attribute `_SysRights`.
#pragma once

#include <string>

#include <fokrazo/export.h>

namespace sam {

/// 0 audit if possible, 1 audit not requested, 2 audit required. Required beats not requested.
FOKRAZO_API unsigned int GetAuditLevelFromSysRights(unsigned int rights);
/// The level's name, such as "AuditIfPossible"; "Unknown" for any number above 2.
FOKRAZO_API std::string AuditLevelToString(unsigned int level);
/// Whether the user may log in whatever else is configured.
FOKRAZO_API bool IsAlwaysPermitLogin(unsigned int rights);
/// What either side grants; audit is not requested only if both sides say so.
FOKRAZO_API unsigned int MergeSysRights(unsigned int first, unsigned int second);

}  // namespace sam
