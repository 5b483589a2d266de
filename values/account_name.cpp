#include <fokrazo/account_name.h>

#include <algorithm>
#include <climits>

#include <fokrazo/utf8.h>

namespace vesk {

namespace {

constexpr size_t kLongestName = 255;  // LOGIN_NAME_MAX without its terminator, and NAME_MAX

// Non-ASCII characters that are invisible or look like a blank: Unicode's controls, separators, format
// characters and fillers, private use, and noncharacters.
constexpr struct {
  char32_t first;
  char32_t last;
} kInvisible[] = {
    {0x80, 0xa0},       {0xad, 0xad},       {0x34f, 0x34f},      {0x61c, 0x61c},   {0x115f, 0x1160},
    {0x1680, 0x1680},   {0x17b4, 0x17b5},   {0x180b, 0x180f},    {0x2000, 0x200f}, {0x2028, 0x202f},
    {0x205f, 0x206f},   {0x2800, 0x2800},   {0x3000, 0x3000},    {0x3164, 0x3164}, {0xe000, 0xf8ff},
    {0xfdd0, 0xfdef},   {0xfe00, 0xfe0f},   {0xfeff, 0xfeff},    {0xffa0, 0xffa0}, {0xfff0, 0xffff},
    {0x1bca0, 0x1bca3}, {0x1d173, 0x1d17a}, {0xe0000, 0x10ffff},
};

bool isInvisible(char32_t code) {
  for (const auto& range : kInvisible)
    if (code >= range.first && code <= range.last) return true;
  return (code & 0xfffe) == 0xfffe;  // the last two of each plane
}

bool isAsciiDigit(char32_t code) {
  return code >= '0' && code <= '9';
}

bool isFirstCharacter(char32_t code) {
  const char32_t folded = code | 0x20;
  return (folded >= 'a' && folded <= 'z') || isAsciiDigit(code) || code == '_' ||
         (code >= 0x80 && !isInvisible(code));
}

bool isNameCharacter(char32_t code) {
  return isFirstCharacter(code) || code == '.' || code == '-' || code == '+' || code == '@';
}

// Whether the text is well-formed and `isAllowed` accepts every character.
template <class IsAllowed>
bool consistsOf(const std::string& text, IsAllowed isAllowed) {
  for (size_t position = 0; position < text.size();) {
    const Utf8Character character = utf8At(text, position);
    if (character.length == 0 || !isAllowed(character.code)) return false;
    position += character.length;
  }
  return true;
}

bool isSafeComponent(const std::string& component) {
  if (component == "." || component == "..") return false;
  return consistsOf(component, [](char32_t code) { return isNameCharacter(code) || code == ' '; });
}

}  // namespace

bool isSafeAccountName(const std::string& name) {
  if (name.empty() || name.size() > kLongestName) return false;
  if (consistsOf(name, isAsciiDigit)) return false;
  const std::string body = name.back() == '$' ? name.substr(0, name.size() - 1) : name;
  return !body.empty() && isFirstCharacter(utf8At(body, 0).code) && consistsOf(body, isNameCharacter);
}

bool isSafeAccountKey(const std::string& key) {
  const size_t separator = key.find('\\');
  if (separator == std::string::npos) return isSafeAccountName(key);
  return isSafeAccountName(key.substr(0, separator)) && isSafeAccountName(key.substr(separator + 1));
}

bool isSafeAccountPath(const std::string& path) {
  if (path.empty()) return true;
  if (path[0] != '/' || path.size() >= PATH_MAX) return false;
  for (size_t begin = 1; begin <= path.size();) {
    const size_t end = std::min(path.find('/', begin), path.size());
    if (!isSafeComponent(path.substr(begin, end - begin))) return false;
    begin = end + 1;
  }
  return true;
}

}  // namespace vesk
