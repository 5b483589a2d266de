/// Helpers for text: numbers, case, searching, splitting, printable and hexadecimal forms, and the character
/// and string functions of C for arguments that may be null or out of range. All are pure functions. Letters,
/// blanks and printable characters are those of ASCII in every locale, except in the tests of a single
/// character (IsAlphaChar and the like), in SafeToUpper and SafeToLower, and in 16-bit text, which go by the
/// locale of the program.
#pragma once

#include <sys/types.h>

#include <cstddef>
#include <cstdint>
#include <ctime>
#include <list>
#include <string>
#include <vector>

#include <fokrazo/export.h>

/// "true" and "false".
FOKRAZO_API extern const std::string STRCLS_TRUE;
FOKRAZO_API extern const std::string STRCLS_FALSE;

// Numbers to text. Radix 16 is lower-case hexadecimal, 8 is octal, and anything else decimal. A negative int
// is shown in two's complement in hexadecimal and octal.

FOKRAZO_API std::string itoa(int value, int radix);
FOKRAZO_API std::string uitoa(unsigned int value, int radix);
FOKRAZO_API std::string ulltoa(unsigned long long value, int radix);
/// As "%f" prints it, cut at 63 characters.
FOKRAZO_API std::string dbltoa(double value);
/// A Unix id in decimal.
FOKRAZO_API std::string uidtoa(unsigned int uid);
FOKRAZO_API std::string gidtoa(unsigned int gid);
/// STRCLS_TRUE or STRCLS_FALSE.
FOKRAZO_API const std::string& booltostr(bool value);
/// Text to a number, as strtoul reads it with base 0: "0x10" is 16 and "010" is 8. A number that does not fit
/// becomes the largest one; "-2" is 4294967294.
FOKRAZO_API unsigned int atoui(const char* text);

// Case and white space.

namespace vesk {
/// The character, in lower case if it is an ASCII letter, whatever the locale.
constexpr char asciiLower(char c) {
  return static_cast<char>('A' <= c && c <= 'Z' ? c + ('a' - 'A') : c);
}
}  // namespace vesk

/// The text with its ASCII letters in that case, whatever the locale. All other bytes stay as they are.
FOKRAZO_API std::string lower(const std::string& text);
FOKRAZO_API std::string upper(const std::string& text);
/// 16-bit text, unit by unit.
FOKRAZO_API std::u16string lower(const std::u16string& text);
FOKRAZO_API std::u16string upper(const std::u16string& text);
/// Without leading and trailing blanks, tabs, newlines, carriage returns, form feeds and vertical tabs.
FOKRAZO_API std::string trimWhiteSpace(const std::string& text);

// Searching.

/// Whether a null-terminated list holds the text in any case. A null list holds nothing.
FOKRAZO_API bool contains(const char* const* list, const std::string& text);
/// Whether `part` occurs in the text in any case.
FOKRAZO_API bool contains(const std::string& text, const char* part);
FOKRAZO_API bool contains(const std::string& text, const std::string& part);
/// Whether the text is one of the list.
FOKRAZO_API bool stringInList(const std::list<std::string>& list, const std::string& text,
                              bool caseSensitive);
/// Whether one of the shell patterns matches the text.
FOKRAZO_API bool stringMatchPatternList(const std::list<std::string>& patterns, const std::string& text,
                                        bool caseSensitive);
/// Whether the text, with `trim` the text without white space around it, begins with `prefix`.
FOKRAZO_API bool startsWith(const std::string& text, const char* prefix, bool trim, bool caseSensitive);
FOKRAZO_API bool startsWith(const std::string& text, const std::string& prefix, bool trim,
                            bool caseSensitive);
/// Whether the text, with `trim` the text without white space around it, is longer than `suffix` and ends
/// with it. Mind the last argument: here true ignores case.
FOKRAZO_API bool endsWith(const std::string& text, const std::string& suffix, bool trim, bool ignoreCase);
FOKRAZO_API bool EndsWith(const std::string& text, const std::string& suffix, bool trim, bool ignoreCase);

// Lists to text.

/// The entries with the separator between them; leading empty entries leave no trace.
FOKRAZO_API std::string concat(const std::list<std::string>& list, const std::string& separator);
/// concat with ", ".
FOKRAZO_API std::string StringListToString(const std::list<std::string>& list);
/// Appends a value, after ", " unless `text` is empty, and counts it. If `count` has reached `limit`, appends
/// ",...<truncated>" instead and returns true.
FOKRAZO_API bool AddValue(std::string& text, const std::string& value, int& count, int limit);
/// The first `limit` values, the rest shown as ",...<truncated>".
FOKRAZO_API std::string PrettyPrint(const std::list<std::string>& values, int limit);
FOKRAZO_API std::string PrettyPrint(const std::vector<std::string>& values, int limit);
FOKRAZO_API std::string PrettyPrint(const std::vector<int>& values, int limit);
/// printf into a string; what is beyond 511 characters is cut.
FOKRAZO_API std::string VS(const char* format, ...) FOKRAZO_PRINTF(1, 2);
/// Local time as ctime prints it, without the newline; "ctime_r failed" if it cannot.
FOKRAZO_API std::string strtime(const time_t* time);

// Names.

/// The name up to the first occurrence of `suffix`, which may be in the middle; all of it if there is none.
FOKRAZO_API std::string StripSuffix(const std::string& name, const std::string& suffix);
/// The name, with separator and suffix appended unless it contains the separator already.
FOKRAZO_API std::string AddSuffix(const std::string& name, const std::string& separator,
                                  const std::string& suffix);

// Printable forms.

/// Whether each byte is printable.
FOKRAZO_API bool isprintable(const std::string& text);
/// Two lower-case digits for each byte.
FOKRAZO_API std::string tohex(const std::string& bytes);
/// The text as it is if it is printable, else tohex.
FOKRAZO_API std::string printable(const std::string& text);
/// The text as a value of the configuration file: "$", backslashes, and blanks at both ends after a
/// backslash, control characters as \n, \t, \f, \r, and other unprintable bytes as \0x and their hexadecimal
/// number.
FOKRAZO_API std::string EscapeSpecialChars(const std::string& text);

// Hexadecimal digits and bytes.

/// The value of a digit of either case; 0 for any other character.
FOKRAZO_API uint8_t HexToUint8(char digit);
/// A little-endian number of `n` bytes. 0 for `n` below 1; bytes after the eighth are ignored.
FOKRAZO_API uint64_t Uint8ArrayToUint64(const unsigned char* bytes, int n);
/// Fills all `n` bytes of `out` from pairs of digits, from the last pair backwards if `fromEnd`; with 0 once
/// there are no digits left.
FOKRAZO_API void HexToUint8Array(const std::string& hex, unsigned char* out, unsigned int n,
                                 bool fromEnd = true);
/// Two upper-case digits for each byte, from the last byte to the first if `fromEnd`.
FOKRAZO_API std::string Uint8ArrayToHex(const unsigned char* bytes, int n, bool fromEnd = true);
/// A backslash before each pair of digits: \AB\12 for AB12.
FOKRAZO_API std::string HexToHexEscaped(const std::string& hex);
/// Whether the text is six hexadecimal numbers up to ff between colons.
/// @throws std::out_of_range a field is empty.
FOKRAZO_API bool isValidEthersAddr(const std::string& text);

// Splitting. Each function appends to its output and never clears it.

/// Cuts at any of the delimiters and skips empty fields.
FOKRAZO_API void split(const std::string& text, const std::string& delimiters, std::list<std::string>& list);
/// Cuts at any of the delimiters that has no backslash right before it; the backslash stays in the field.
/// Empty fields are kept only if asked for, and an empty text has no field at all.
FOKRAZO_API void splitWithEscape(const std::string& text, const std::string& delimiters,
                                 std::list<std::string>& list, bool keepEmpty);
/// Cuts at any of the delimiters and drops empty fields.
FOKRAZO_API void CrackString(const std::string& delimiters, const std::string& text,
                             std::vector<std::string>& fields);
/// Cuts at any of the delimiters, or at one character, and keeps all fields.
FOKRAZO_API void StringSplit(const std::string& delimiters, const std::string& text,
                             std::vector<std::string>& fields);
FOKRAZO_API void StringSplit(char delimiter, const std::string& text, std::vector<std::string>& fields);

// Tests of a character; 0 for any number outside -1 to 255.

FOKRAZO_API int IsAlphaChar(int c);
FOKRAZO_API int IsAlnumChar(int c);
FOKRAZO_API int IsCntrlChar(int c);
FOKRAZO_API int IsDigitChar(int c);
FOKRAZO_API int IsGraphChar(int c);
FOKRAZO_API int IsLowerChar(int c);
FOKRAZO_API int IsPrintChar(int c);
FOKRAZO_API int IsPunctChar(int c);
FOKRAZO_API int IsSpaceChar(int c);
FOKRAZO_API int IsUpperChar(int c);
FOKRAZO_API int IsXdigitChar(int c);
/// Whether the text is neither null nor empty and holds digits only.
FOKRAZO_API bool IsDigitStr(const char* text);
/// A letter in the other case; a char of either sign may be passed. Any other number comes back unchanged.
FOKRAZO_API int SafeToUpper(int c);
FOKRAZO_API int SafeToLower(int c);

// C strings that may be null.

/// Index of the first `c` among the first n - 1 bytes, the terminator included; -1 if there is none.
FOKRAZO_API ssize_t SafeStrnChr(const char* text, size_t n, int c);
/// Copies at most n - 1 bytes and always terminates; returns `dst`, which may be null. A null `src` counts as
/// empty. One byte is written even if `n` is 0.
FOKRAZO_API char* SafeStrnCpy(char* dst, const char* src, size_t n);
/// A copy from malloc, which the caller frees; a null text counts as empty. Null if there is no memory.
FOKRAZO_API char* SafeStrDup(const char* text);
/// strncmp; null equals the empty text and comes before any other.
FOKRAZO_API int SafeStrnCmp(const char* a, const char* b, size_t n);

namespace vesk {

using ::AddSuffix;
using ::AddValue;
using ::atoui;
using ::booltostr;
using ::concat;
using ::contains;
using ::CrackString;
using ::dbltoa;
using ::endsWith;
using ::EndsWith;
using ::EscapeSpecialChars;
using ::gidtoa;
using ::HexToHexEscaped;
using ::HexToUint8;
using ::HexToUint8Array;
using ::IsAlnumChar;
using ::IsAlphaChar;
using ::IsCntrlChar;
using ::IsDigitChar;
using ::IsDigitStr;
using ::IsGraphChar;
using ::IsLowerChar;
using ::isprintable;
using ::IsPrintChar;
using ::IsPunctChar;
using ::IsSpaceChar;
using ::IsUpperChar;
using ::isValidEthersAddr;
using ::IsXdigitChar;
using ::itoa;
using ::lower;
using ::PrettyPrint;
using ::printable;
using ::SafeStrDup;
using ::SafeStrnChr;
using ::SafeStrnCmp;
using ::SafeStrnCpy;
using ::SafeToLower;
using ::SafeToUpper;
using ::split;
using ::splitWithEscape;
using ::startsWith;
using ::STRCLS_FALSE;
using ::STRCLS_TRUE;
using ::stringInList;
using ::StringListToString;
using ::stringMatchPatternList;
using ::StringSplit;
using ::StripSuffix;
using ::strtime;
using ::tohex;
using ::trimWhiteSpace;
using ::uidtoa;
using ::Uint8ArrayToHex;
using ::Uint8ArrayToUint64;
using ::uitoa;
using ::ulltoa;
using ::upper;
using ::VS;

}  // namespace vesk
