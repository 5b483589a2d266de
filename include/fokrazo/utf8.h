/// Untrusted UTF-8, character by character: what is well-formed, and what controls a terminal. Thread-safe.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace vesk {

/// One character.
struct Utf8Character {
  char32_t code;  ///< the code point
  size_t length;  ///< in bytes; 0 if the text is malformed here or ends
};

/// Decodes the character at `position`, as RFC 3629 defines: no overlong form, no surrogate, nothing above
/// U+10FFFF.
inline Utf8Character utf8At(std::string_view text, size_t position) {
  const auto byteAt = [&text](size_t i) -> unsigned char { return i < text.size() ? text[i] : 0; };
  const unsigned char lead = byteAt(position);
  if (lead < 0x80) return {lead, position < text.size() ? size_t{1} : 0};
  const size_t length = lead >= 0xf0 ? 4 : lead >= 0xe0 ? 3 : 2;
  if (lead < 0xc2 || lead > 0xf4) return {0, 0};
  char32_t code = lead & (0x7fu >> length);
  for (size_t i = 1; i < length; ++i) {
    if ((byteAt(position + i) & 0xc0) != 0x80) return {0, 0};
    code = code << 6 | (byteAt(position + i) & 0x3fu);
  }
  const bool isOverlong = (length == 3 && code < 0x800) || (length == 4 && code < 0x10000);
  const bool isSurrogate = code >= 0xd800 && code <= 0xdfff;
  return isOverlong || isSurrogate || code > 0x10ffff ? Utf8Character{0, 0} : Utf8Character{code, length};
}

/// Whether a terminal acts on the character: the control characters U+0000 to U+001F and U+007F to U+009F,
/// and invisible ones that can disguise a line: direction marks, line separators and tags.
inline bool isTerminalControl(char32_t code) {
  const bool isControl = code < 0x20 || (code >= 0x7f && code <= 0x9f);
  const bool isDirectionMark = code == 0x61c || code == 0x200e || code == 0x200f ||
                               (code >= 0x202a && code <= 0x202e) || (code >= 0x2066 && code <= 0x2069);
  const bool isLineSeparator = code == 0x2028 || code == 0x2029;
  const bool isTag = code >= 0xe0000 && code <= 0xe007f;
  return isControl || isDirectionMark || isLineSeparator || isTag;
}

/// The text with "?" for each terminal control, except the bytes in `kept`, and for each byte that is not
/// UTF-8.
inline std::string withoutTerminalControls(std::string_view text, std::string_view kept = {}) {
  std::string out;
  for (size_t i = 0; i < text.size();) {
    const Utf8Character character = utf8At(text, i);
    const size_t length = character.length == 0 ? 1 : character.length;
    const bool isHarmless = character.length != 0 && !isTerminalControl(character.code);
    if (isHarmless || kept.find(text[i]) != std::string_view::npos)
      out += text.substr(i, length);
    else
      out += '?';
    i += length;
  }
  return out;
}

}  // namespace vesk
