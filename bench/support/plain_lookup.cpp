#include "bench/support/plain_lookup.h"

#include <lber.h>

#include <cstdint>
#include <cstring>
#include <string_view>

#include <fokrazo/stringdict.h>
#include "bench/support/plain_socket.h"

namespace bench {
namespace {

constexpr size_t kCountOffset = 32;
constexpr size_t kIndexOffset = 36;
constexpr int kGetObject = 11;
constexpr int kSearch = 16;

uint32_t wordAt(const char* position) {
  uint32_t word;
  memcpy(&word, position, sizeof word);
  return word;
}

/// Iterates over the records of a serialized object.
class Reader {
 public:
  Reader(const char* blob, size_t size)
      : m_position(blob + kIndexOffset + sizeof(uint32_t) * wordAt(blob + kCountOffset)),
        m_end(blob + size) {}

  bool atEnd() const { return m_position >= m_end; }
  uint32_t word() {
    const uint32_t word = wordAt(m_position);
    m_position += sizeof word;
    return word;
  }
  std::string_view text() {
    static const vesk::DictionaryVector& dictionary = vesk::GetDictionaryVector();
    constexpr uint32_t kReference = 0x80000000;
    const uint32_t length = word();
    if (length & kReference) return dictionary[length & ~kReference];
    m_position += length;
    return {m_position - length, length};
  }
  void values(std::vector<std::string>& values) {
    uint32_t count = word();
    values.reserve(count);
    while (count-- > 0) values.emplace_back(text());
  }

 private:
  const char* m_position;
  const char* m_end;
};

/// A BER element that frees itself.
class Element {
 public:
  explicit Element(int options) : m_element(ber_alloc_t(options)) {}
  ~Element() { ber_free(m_element, 1); }
  Element(const Element&) = delete;
  Element& operator=(const Element&) = delete;
  operator BerElement*() const { return m_element; }

 private:
  BerElement* m_element;
};

void sendElement(int fd, BerElement* element) {
  berval bytes;
  ber_flatten2(element, &bytes, 0);
  checkConnection(fd);
  sendFrame(fd, bytes.bv_val, bytes.bv_len);
}

/// Receives a reply and reads its header and its status block.
void receiveStatus(int fd, BerElement* element) {
  berval bytes = {0, nullptr};
  bytes.bv_len = receiveLength(fd);
  bytes.bv_val = static_cast<char*>(ber_memalloc(bytes.bv_len + 1));
  receiveBytes(fd, bytes.bv_val, bytes.bv_len);
  bytes.bv_val[bytes.bv_len] = '\0';
  ber_init2(element, &bytes, 0);
  ber_int_t number;
  berval text[2];
  if (ber_scanf(element, "{ii}iiimiiim", &number, &number, &number, &number, &number, &text[0], &number,
                &number, &number, &text[1]) == LBER_ERROR)
    die("status block");
  for (const berval& value : text) std::string(value.bv_val, value.bv_len);
}

PlainObject unpackField(BerElement* element) {
  berval blob;
  if (ber_scanf(element, "m", &blob) == LBER_ERROR) die("object");
  return plainUnpack(blob.bv_val, blob.bv_len);
}

}  // namespace

void plainPing(int fd) {
  static const std::string request("\x30\x84\0\0\0\x06\x02\x01\0\x02\x01\0", 12);
  static std::vector<char> reply;
  checkConnection(fd);
  sendFrame(fd, request.data(), request.size());
  size_t size;
  if (!receiveFrame(fd, reply, size)) die("ping");
}

PlainObject plainUnpack(const char* blob, size_t size) {
  PlainObject object;
  Reader reader(blob, size);
  while (!reader.atEnd()) {
    const std::string_view name = reader.text();
    const auto entry = object.emplace_hint(object.end(), name, PlainAttribute());
    PlainAttribute& attribute = entry->second;
    attribute.name = name;
    attribute.lowerName = name;
    for (char& c : attribute.lowerName)
      if (c >= 'A' && c <= 'Z') c += 'a' - 'A';
    reader.values(attribute.values);
  }
  return object;
}

std::map<std::string, std::vector<std::string>> plainMap(const char* blob, size_t size) {
  std::map<std::string, std::vector<std::string>> object;
  Reader reader(blob, size);
  while (!reader.atEnd()) {
    const std::string_view name = reader.text();
    reader.values(object.emplace_hint(object.end(), name, std::vector<std::string>())->second);
  }
  return object;
}

PlainObject plainGetUser(int fd, const std::string& name) {
  Element request(0);
  ber_printf(request, "{ii}iiiiio", kGetObject, 0, 0, 2, 0, 0, 0, name.data(), ber_len_t{name.size()});
  sendElement(fd, request);
  Element reply(1);
  receiveStatus(fd, reply);
  return unpackField(reply);
}

std::vector<PlainObject> plainSearch(int fd) {
  Element request(0);
  ber_printf(request, "{ii}", kSearch, 0);
  sendElement(fd, request);
  Element reply(1);
  receiveStatus(fd, reply);
  ber_int_t count = 0;
  ber_scanf(reply, "i", &count);
  std::vector<PlainObject> objects(count);
  for (PlainObject& object : objects) object = unpackField(reply);
  return objects;
}

}  // namespace bench
