/// String helpers: numbers, case, searching, splitting, printable and hexadecimal forms, and C's character
/// and string functions for arguments that may be null or out of range. All are pure and thread-safe.
/// Letters, blanks and printable characters are those of ASCII in every locale; only the tests of single
/// characters (IsAlphaChar and others), SafeToUpper, SafeToLower and the functions for 16-bit text use the
/// program's locale.
#pragma once

#include <sys/types.h>

#include <cstddef>
#include <cstdint>
#include <ctime>
#include <list>
#include <string>
#include <vector>

#include <fokrazo/ascii.h>
#include <fokrazo/export.h>

/// "true" and "false".
FOKRAZO_API extern const std::string STRCLS_TRUE;
FOKRAZO_API extern const std::string STRCLS_FALSE;

// Numbers to text. Radix 16 is lower-case hexadecimal, 8 is octal, and any other is decimal. Hexadecimal and
// octal show a negative int in two's complement.

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
/// Converts text as strtoul does with base 0: "0x10" is 16 and "010" is 8. Too large a number becomes the
/// largest one; "-2" is 4294967294.
FOKRAZO_API unsigned int atoui(const char* text);

// Case and white space.

/// The text with its ASCII letters in that case, whatever the locale; other bytes are unchanged.
FOKRAZO_API std::string lower(const std::string& text);
FOKRAZO_API std::string upper(const std::string& text);
/// 16-bit text, unit by unit.
FOKRAZO_API std::u16string lower(const std::u16string& text);
FOKRAZO_API std::u16string upper(const std::u16string& text);
/// Without leading and trailing blanks, tabs, newlines, carriage returns, form feeds and vertical tabs.
FOKRAZO_API std::string trimWhiteSpace(const std::string& text);

// Searching.

/// Whether a null-terminated list contains the text, ignoring case. A null list is empty.
FOKRAZO_API bool contains(const char* const* list, const std::string& text);
/// Whether `part` occurs in the text, ignoring case.
FOKRAZO_API bool contains(const std::string& text, const char* part);
FOKRAZO_API bool contains(const std::string& text, const std::string& part);
/// Whether the list contains the text.
FOKRAZO_API bool stringInList(const std::list<std::string>& list, const std::string& text,
                              bool caseSensitive);
/// Whether one of the shell patterns matches the text.
FOKRAZO_API bool stringMatchPatternList(const std::list<std::string>& patterns, const std::string& text,
                                        bool caseSensitive);
/// Whether the text, trimmed of white space with `trim`, begins with `prefix`.
FOKRAZO_API bool startsWith(const std::string& text, const char* prefix, bool trim, bool caseSensitive);
FOKRAZO_API bool startsWith(const std::string& text, const std::string& prefix, bool trim,
                            bool caseSensitive);
/// Whether the text, trimmed of white space with `trim`, is longer than `suffix` and ends with it. Note:
/// unlike in startsWith, a last argument of true ignores case.
FOKRAZO_API bool endsWith(const std::string& text, const std::string& suffix, bool trim, bool ignoreCase);
FOKRAZO_API bool EndsWith(const std::string& text, const std::string& suffix, bool trim, bool ignoreCase);

// Lists to text.

/// The entries joined by the separator; leading empty entries are dropped.
FOKRAZO_API std::string concat(const std::list<std::string>& list, const std::string& separator);
/// concat with ", ".
FOKRAZO_API std::string StringListToString(const std::list<std::string>& list);
/// Appends a value, after ", " unless `text` is empty, and counts it. If `count` has reached `limit`, appends
/// ",...<truncated>" instead and returns true.
FOKRAZO_API bool AddValue(std::string& text, const std::string& value, int& count, int limit);
/// The first `limit` values; ",...<truncated>" replaces the rest.
FOKRAZO_API std::string PrettyPrint(const std::list<std::string>& values, int limit);
FOKRAZO_API std::string PrettyPrint(const std::vector<std::string>& values, int limit);
FOKRAZO_API std::string PrettyPrint(const std::vector<int>& values, int limit);
/// printf into a string, cut at 511 characters.
FOKRAZO_API std::string VS(const char* format, ...) FOKRAZO_PRINTF(1, 2);
/// Local time as ctime prints it, without the newline; "ctime_r failed" on failure.
FOKRAZO_API std::string strtime(const time_t* time);

// Names.

/// The name up to the first occurrence of `suffix`, even in the middle; the whole name if there is none.
FOKRAZO_API std::string StripSuffix(const std::string& name, const std::string& suffix);
/// The name, with separator and suffix appended unless it already contains the separator.
FOKRAZO_API std::string AddSuffix(const std::string& name, const std::string& separator,
                                  const std::string& suffix);

// Printable forms.

/// Whether all bytes are printable.
FOKRAZO_API bool isprintable(const std::string& text);
/// Two lower-case digits for each byte.
FOKRAZO_API std::string tohex(const std::string& bytes);
/// The text itself if it is printable, else tohex.
FOKRAZO_API std::string printable(const std::string& text);
/// The text as a value of the configuration file: a backslash before "$", backslashes and blanks at either
/// end; control characters as \n, \t, \f, \r; other unprintable bytes as \0x and hexadecimal digits.
FOKRAZO_API std::string EscapeSpecialChars(const std::string& text);

// Hexadecimal digits and bytes.

/// The value of a digit of either case; 0 for any other character.
FOKRAZO_API uint8_t HexToUint8(char digit);
/// Reads a little-endian number of `n` bytes. Bytes after the eighth are ignored; 0 for `n` below 1.
FOKRAZO_API uint64_t Uint8ArrayToUint64(const unsigned char* bytes, int n);
/// Fills `n` bytes of `out` from pairs of digits, starting with the last pair if `fromEnd`, and then with
/// zeros.
FOKRAZO_API void HexToUint8Array(const std::string& hex, unsigned char* out, unsigned int n,
                                 bool fromEnd = true);
/// Two upper-case digits for each byte, from the last byte to the first if `fromEnd`.
FOKRAZO_API std::string Uint8ArrayToHex(const unsigned char* bytes, int n, bool fromEnd = true);
/// Puts a backslash before each pair of digits: \AB\12 for AB12.
FOKRAZO_API std::string HexToHexEscaped(const std::string& hex);
/// Whether the text is six hexadecimal numbers up to ff, separated by colons.
/// @throws std::out_of_range a field is empty
FOKRAZO_API bool isValidEthersAddr(const std::string& text);

// Splitting. All functions append to their output.

/// Splits at any of the delimiters and skips empty fields.
FOKRAZO_API void split(const std::string& text, const std::string& delimiters, std::list<std::string>& list);
/// Splits at any delimiter that is not preceded by a backslash; the backslash stays in the field. Empty
/// fields are kept only with `keepEmpty`; an empty text has no fields.
FOKRAZO_API void splitWithEscape(const std::string& text, const std::string& delimiters,
                                 std::list<std::string>& list, bool keepEmpty);
/// Splits at any of the delimiters and skips empty fields.
FOKRAZO_API void CrackString(const std::string& delimiters, const std::string& text,
                             std::vector<std::string>& fields);
/// Splits at any of the delimiters, or at one character, and keeps empty fields.
FOKRAZO_API void StringSplit(const std::string& delimiters, const std::string& text,
                             std::vector<std::string>& fields);
FOKRAZO_API void StringSplit(char delimiter, const std::string& text, std::vector<std::string>& fields);

// Character tests; 0 for numbers outside -1 to 255.

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
/// Whether the text is not null, not empty, and all digits.
FOKRAZO_API bool IsDigitStr(const char* text);
/// Convert a letter's case; a negative char is allowed. Other numbers are returned unchanged.
FOKRAZO_API int SafeToUpper(int c);
FOKRAZO_API int SafeToLower(int c);

// Functions for C strings that may be null.

/// The index of the first `c` among the first n - 1 bytes, terminator included; -1 if there is none.
FOKRAZO_API ssize_t SafeStrnChr(const char* text, size_t n, int c);
/// Copies at most n - 1 bytes and always terminates, even if `n` is 0, which writes one byte. Returns `dst`,
/// which may be null. A null `src` counts as empty.
FOKRAZO_API char* SafeStrnCpy(char* dst, const char* src, size_t n);
/// A copy that the caller frees with free(); a null text counts as empty. Null if there is no memory.
FOKRAZO_API char* SafeStrDup(const char* text);
/// strncmp; null counts as empty.
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
