/// Which strings from a directory may become the names and paths of a host's accounts.
///
/// A directory accepts almost any text as a name; a host does not. Scripts put user names into paths and
/// command lines, and `passwd` and `group` separate their fields with colons. So modules pass on only names
/// that mean the same in all of these places, and treat every other account as missing. All modules apply the
/// same rule, so a host never has half an account.
///
/// All functions are pure and thread-safe. None of them checks whether an account exists.
#pragma once

#include <string>

#include <fokrazo/export.h>

namespace vesk {

/// Whether `name` can be the name of a user or a group:
///
/// - well-formed UTF-8 of 1 to 255 bytes, the longest login name and file name of the system;
/// - characters: ASCII letters and digits, `_ . - + @`, and every visible character outside ASCII, as in
///   "Büro" and "Søren". No blanks, slashes, backslashes, quotes, control characters, and none of the other
///   ASCII characters that have a meaning to a shell or in `passwd`. No invisible characters and no
///   marks that change the direction of text: two names must not look the same. (Letters that look alike,
///   such as a Latin and a Cyrillic "a", are not distinguished.)
/// - the first character is a letter, a digit or `_`, so the name cannot be read as an option, a hidden file
/// or a netgroup;
/// - `$` is allowed as the last character, as in computer accounts;
/// - not only digits, which programs would take for an id.
FOKRAZO_API bool isSafeAccountName(const std::string& name);

/// Whether `key` is worth looking up: a safe name, or `DOMAIN\name` where both parts are safe names. The
/// account that the daemon finds may have another name; check that with isSafeAccountName.
FOKRAZO_API bool isSafeAccountKey(const std::string& key);

/// Whether `path` can be a home directory or a login shell: empty, which passwd(5) allows, or an absolute
/// path of at most 4095 bytes. Its components consist of the characters of a safe name, in any order, with
/// blanks between them; none is "." or "..".
FOKRAZO_API bool isSafeAccountPath(const std::string& path);

}  // namespace vesk
