#include <fokrazo/guid.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <new>
#include <type_traits>
#include <utility>
#include <vector>

#include <boost/make_shared.hpp>

#include <fokrazo/error_util.h>
#include <fokrazo/strutil.h>
#include "util/error/throw.h"
#include "util/text/hex_digits.h"

namespace vesk {

static_assert(sizeof(Guid) == Guid::kSize && std::is_trivially_copyable_v<Guid>, "copied as 16 bytes");

namespace {

constexpr char kSource[] = "base/guid";
constexpr char kDnPrefix[] = "<GUID=";
constexpr size_t kDnPrefixSize = sizeof kDnPrefix - 1;
constexpr size_t kHexSize = 2 * Guid::kSize;
constexpr size_t kTextSize = kHexSize + 4;
constexpr size_t kSwappedSize = 18;  // the first three groups of the text form

bool startsGroup(size_t byte) {
  return byte == 4 || byte == 6 || byte == 8 || byte == 10;
}

bool isHyphen(size_t position) {
  return position == 8 || position == 13 || position == 18 || position == 23;
}

// Reverses the pairs of digits of the group at text[first], of `size` characters.
void reversePairs(std::string& text, size_t first, size_t size) {
  for (size_t low = first, high = first + size - 2; low < high; low += 2, high -= 2) {
    std::swap(text[low], text[high]);
    std::swap(text[low + 1], text[high + 1]);
  }
}

}  // namespace

const Guid NULL_GUID;

Guid::Guid(const unsigned char* bytes, size_t available) {
  std::copy_n(bytes, std::min(available, kSize), m_bytes.begin());
}

void Guid::fromString(const std::string& text) {
  auto digit = text.begin();
  auto next = [&] { return digit == text.end() ? 0 : HexToUint8(*digit++); };
  for (unsigned char& byte : m_bytes) {
    if (digit != text.end() && *digit == '-') ++digit;
    const int high = next();
    byte = static_cast<unsigned char>(high << 4 | next());
  }
}

void Guid::fromRealMSString(const std::string& text) {
  fromString(swapBytesMSGuid(text));
}

void Guid::fromHexValue(const std::string& bytes) {
  *this = Guid(reinterpret_cast<const unsigned char*>(bytes.data()), bytes.size());
}

void Guid::fromExtendedDN(const std::string& text) {
  const size_t end = kDnPrefixSize + kHexSize;
  const bool valid = text.size() > end && text.rfind(kDnPrefix, 0) == 0 && text[end] == '>' &&
                     std::all_of(text.begin() + kDnPrefixSize, text.begin() + end, IsXdigitChar);
  if (!valid) FOKRAZO_THROW(BadDataException, "BadDataException", 0, "%s not extended DN", text.c_str());
  fromString(text.substr(kDnPrefixSize, kHexSize));
}

std::string Guid::toString() const {
  std::string text(kHexSize, '\0');
  char* out = text.data();
  for (unsigned char byte : m_bytes) out = putHex(out, byte);
  return text;
}

std::string Guid::toMSString() const {
  std::string text(kTextSize, '-');
  char* out = text.data();
  for (size_t i = 0; i < kSize; ++i) out = putHex(startsGroup(i) ? out + 1 : out, m_bytes[i]);
  return text;
}

std::string Guid::toRealMSString() const {
  Guid swapped(*this);
  const auto first = swapped.m_bytes.begin();
  std::reverse(first, first + 4);
  std::reverse(first + 4, first + 6);
  std::reverse(first + 6, first + 8);
  return swapped.toMSString();
}

std::string Guid::toEscapedString() const {
  std::string text(3 * kSize, '\0');
  char* out = text.data();
  for (unsigned char byte : m_bytes) out = putEscapedHex(out, byte);
  return text;
}

std::string Guid::toDN() const {
  return kDnPrefix + toString() + ">";
}

bool Guid::isValidGuidStringFormat(const char* text) {
  if (!text || strlen(text) != kTextSize) return false;
  for (size_t i = 0; i < kTextSize; ++i)
    if (isHyphen(i) ? text[i] != '-' : !IsXdigitChar(static_cast<unsigned char>(text[i]))) return false;
  return true;
}

std::string Guid::swapBytesMSGuid(const std::string& text) {
  std::string swapped = text;
  if (swapped.size() < kSwappedSize) return swapped;
  reversePairs(swapped, 0, 8);
  reversePairs(swapped, 9, 4);
  reversePairs(swapped, 14, 4);
  return swapped;
}

/// The body of a list.
struct GuidListImpl {
  std::vector<Guid> guids;
};

GuidList::GuidList(const unsigned char* data, int size) : m_impl(boost::make_shared<GuidListImpl>()) {
  if (!data) return;
  for (int left = size; left >= static_cast<int>(Guid::kSize); left -= static_cast<int>(Guid::kSize)) {
    m_impl->guids.emplace_back(data, Guid::kSize);
    data += Guid::kSize;
  }
}

size_t GuidList::size() const {
  return m_impl ? m_impl->guids.size() : 0;
}

GuidList::const_iterator GuidList::begin() const {
  return m_impl ? m_impl->guids.data() : nullptr;
}

GuidList::const_iterator GuidList::end() const {
  return begin() + size();
}

void GuidList::insert(const Guid& guid) {
  if (!m_impl) m_impl = boost::make_shared<GuidListImpl>();
  std::vector<Guid>& guids = m_impl->guids;
  if (std::find(guids.begin(), guids.end(), guid) == guids.end()) guids.push_back(guid);
}

unsigned char* GuidList::serialize() const {
  if (empty()) return nullptr;
  const size_t bytes = size() * Guid::kSize;
  void* buffer = malloc(bytes);
  if (!buffer) throw std::bad_alloc();
  return static_cast<unsigned char*>(memcpy(buffer, begin(), bytes));
}

}  // namespace vesk
