// C functions for characters out of range and strings that may be null.
#include <cctype>
#include <cstdio>
#include <cstring>

#include <fokrazo/strutil.h>

namespace {

// The range of the C library's character table.
bool inTable(int c) {
  return c >= -1 && c <= 255;
}

int convertLetter(int c, int (*isLetter)(int), int (*convert)(int)) {
  if (c < -128 || c > 255 || c == EOF) return c;
  int byte = static_cast<unsigned char>(c);
  return isLetter(byte) ? convert(byte) : c;
}

}  // namespace

int IsAlphaChar(int c) {
  return inTable(c) ? isalpha(c) : 0;
}
int IsAlnumChar(int c) {
  return inTable(c) ? isalnum(c) : 0;
}
int IsCntrlChar(int c) {
  return inTable(c) ? iscntrl(c) : 0;
}
int IsDigitChar(int c) {
  return inTable(c) ? isdigit(c) : 0;
}
int IsGraphChar(int c) {
  return inTable(c) ? isgraph(c) : 0;
}
int IsLowerChar(int c) {
  return inTable(c) ? islower(c) : 0;
}
int IsPrintChar(int c) {
  return inTable(c) ? isprint(c) : 0;
}
int IsPunctChar(int c) {
  return inTable(c) ? ispunct(c) : 0;
}
int IsSpaceChar(int c) {
  return inTable(c) ? isspace(c) : 0;
}
int IsUpperChar(int c) {
  return inTable(c) ? isupper(c) : 0;
}
int IsXdigitChar(int c) {
  return inTable(c) ? isxdigit(c) : 0;
}

bool IsDigitStr(const char* text) {
  if (!text || !*text) return false;
  while (IsDigitChar(static_cast<unsigned char>(*text))) ++text;
  return !*text;
}

int SafeToUpper(int c) {
  return convertLetter(c, islower, toupper);
}
int SafeToLower(int c) {
  return convertLetter(c, isupper, tolower);
}

ssize_t SafeStrnChr(const char* text, size_t n, int c) {
  if (!text) return -1;
  for (size_t i = 0; i + 1 < n; ++i) {
    if (text[i] == static_cast<char>(c)) return static_cast<ssize_t>(i);
    if (!text[i]) return -1;
  }
  return -1;
}

char* SafeStrnCpy(char* dst, const char* src, size_t n) {
  if (!dst) return dst;
  size_t length = src && n > 1 ? strnlen(src, n - 1) : 0;
  if (length > 0) memcpy(dst, src, length);
  dst[length] = '\0';
  return dst;
}

char* SafeStrDup(const char* text) {
  return strdup(text ? text : "");
}

int SafeStrnCmp(const char* a, const char* b, size_t n) {
  if (a && b) return strncmp(a, b, n);
  if (a && *a) return 1;
  if (b && *b) return -1;
  return 0;
}
