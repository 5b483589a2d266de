/// Which texts of a directory may become the names and paths of a host's accounts.
///
/// A directory accepts nearly any text as a name. A host does not expect that: scripts put a user's name into
/// paths and command lines, and `passwd` and `group` are lines of fields. So modules pass on only what means
/// the same in all of these places, and treat any other account as missing. The rule is the same for all
/// modules, so that a host never has half an account.
///
/// All functions are pure, and safe in any thread. None of them asks whether an account exists.
#pragma once

#include <string>

#include <fokrazo/export.h>

namespace vesk {

/// Whether a text can be the name of a user or a group:
///
/// - well-formed UTF-8 of 1 to 255 bytes, the longest login name and file name of the system;
/// - characters: ASCII letters and digits, `_ . - + @`, and every visible character outside ASCII, as in
///   "Büro" and "Søren". No blanks, slashes, backslashes, quotes, control characters, and none of the other
///   ASCII characters that have a meaning to a shell or in a line of fields. No invisible characters and no
///   marks that change the direction of text: two names must not look the same. (Letters that look alike,
///   such as a Latin and a Cyrillic "a", are not distinguished.)
/// - the first character is a letter, a digit or `_`: not the sign of an option, of a hidden file or of a
///   netgroup;
/// - `$` is allowed as the last character, where computer accounts have it;
/// - not digits alone, which programs take for an id.
FOKRAZO_API bool isSafeAccountName(const std::string& name);

/// Whether a text is worth asking the daemon for: a safe name, or one with its domain in front as in
/// `DOMAIN\name`, where the domain is a safe name too. The account that the daemon finds has a name of its
/// own, to which isSafeAccountName applies.
FOKRAZO_API bool isSafeAccountKey(const std::string& key);

/// Whether a text can be a home directory or a login shell: empty, which passwd(5) defines, or an absolute
/// path of at most 4095 bytes. Its components are made of the characters of a safe name, with blanks between
/// them and in any order, but none is "." or "..".
FOKRAZO_API bool isSafeAccountPath(const std::string& path);

}  // namespace vesk
