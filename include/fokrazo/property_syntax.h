/// The syntax of the configuration file: keys, values, quotes, escapes, list items. Pure functions that take
/// linear time and accept any bytes.
///
/// A value passes these stages as it is read:
///   line     `key: "a  b"\tc`         as in the file
///   raw      removeWhitespaces, replaceSpecials, and then the `$` variables: lists are cut from this
///   final    removeEscapes, unescapeValue: what a lookup returns
///
/// White space is blank, tab, newline, carriage return, vertical tab and form feed, in any locale. A
/// character is escaped if an odd number of backslashes directly precedes it. A quoted region runs from an
/// unescaped quote to the next unescaped one of the same kind; the other kind has no meaning inside.
#pragma once

#include <iosfwd>
#include <list>
#include <string>

#include <fokrazo/export.h>

namespace vesk {

/// Functions on text, inherited by Properties.
struct FOKRAZO_API PropertySyntax {
  /// The items of a list.
  using ValueList = std::list<std::string>;

  /// Whether the text ends in an odd number of backslashes.
  static bool isEscaped(const std::string& text);
  /// Whether the text ends inside a quoted region.
  static bool isQuoted(const std::string& text);
  /// Whether the line begins with "#" or "!".
  static bool isComment(const std::string& line);

  /// Reads a logical line: if a line isEscaped, its last character is replaced by a blank and the next line.
  /// Comments are continued only without `skipComments`; their continuation lines lose the comment
  /// characters. `extra` is scratch space. The line is empty at the end of the stream.
  static void getLine(std::istream& stream, std::string& line, std::string& extra, bool skipComments);
  /// As above with `skipComments`.
  static void getLine(std::istream& stream, std::string& line);

  /// Splits a logical line into its key and its value, before variables are replaced. Returns false, with
  /// both untouched, for a comment and for a line without a key. Requires: three different strings.
  static bool getPropertyFromLine(const std::string& line, std::string& key, std::string& value);
  /// Builds a line that reads back as this key and value: escaped key, ": ", escaped value. `keepDollar` as
  /// in escapeValue. Returns false, with `line` untouched, for a key that no line can hold: empty, or with a
  /// newline.
  static bool putPropertyToLine(std::string& line, const std::string& key, const std::string& value,
                                bool keepDollar);
  /// The same for a list: its items escaped one by one and joined by a blank.
  static bool putPropertyToLine(std::string& line, const std::string& key, const ValueList& list,
                                bool keepDollar);

  /// Drops leading white space, replaces each run of white space outside quotes with one blank, and drops the
  /// trailing blank unless it is escaped.
  static void removeWhitespaces(std::string& value);
  /// Replaces \t, \n, \r, \v and \f with their control characters, in quotes too.
  static void replaceSpecials(std::string& value);
  /// The inverse of replaceSpecials.
  static std::string restoreSpecials(const std::string& value);
  /// Removes each backslash outside quotes and keeps the character after it.
  static void removeEscapes(std::string& value);
  /// removeQuotes, if the whole value is one quoted region. `unused` has no effect.
  static void unescapeValue(std::string& value, bool unused = false);
  /// Removes all unescaped quotes, and inside double quotes the backslashes. `unused` has no effect.
  static void removeQuotes(std::string& value, bool unused = false);
  /// The inverse: escapes control characters, quotes, backslashes, blanks and commas. A value with a blank is
  /// put into double quotes instead of escaping blanks and commas. With `keepDollar` each "$" is literal and
  /// is escaped; without, the marks of a load without expansion are removed, and `$name` is a reference.
  static std::string escapeValue(const std::string& value, bool keepDollar);

  /// As escapeValue, but quotes a value whose own quotes would be lost when it is read back.
  static std::string encodeValue(const std::string& value, bool keepDollar);
  /// The items, which may be any text, escaped for splitList and joined by blanks.
  static std::string encodeList(const ValueList& list, bool keepDollar);

  /// The items of a raw value: split at runs of white space and commas, unless quoted or escaped.
  static ValueList splitList(const std::string& raw);
  /// The items of a values file: its lines, trimmed and unescaped (unescapeValue), without blank lines and
  /// lines that begin with "#" or "!".
  static ValueList readList(std::istream& stream);
  /// The items joined by `separator`; with `escape`, each through escapeValue first.
  static std::string valueListToString(const ValueList& list, bool escape, bool keepDollar, char separator);

  /// Whether a value, without its escapes, names a values file: it begins with "file:".
  static bool isFileReference(const std::string& value);
  /// The path after "file:", trimmed.
  static std::string getFileNameFromFileReference(const std::string& value);

  /// Seconds in a unit: s, m, h, d, w, M, y. 0, with a warning in the log, for any other letter.
  static long timeFactor(char unit);
};

}  // namespace vesk
