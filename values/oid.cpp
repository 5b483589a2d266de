#include <fokrazo/oid.h>

#include <strings.h>

#include <algorithm>
#include <cstring>

#include <fokrazo/error_util.h>
#include "util/error/throw.h"

namespace vesk {

namespace {
constexpr char kSource[] = "base/oid";
}  // namespace

const Oid NULL_OID;

Oid::Oid(const unsigned char* bytes, unsigned int size) {
  if (size > kMaxSize) FOKRAZO_THROW(BadDataException, "BadDataException", 0, "OID too long: %u bytes", size);
  if (size > 0) memcpy(m_value, bytes, size);
  m_size = size;
}

Oid::Oid(const Oid& other) : Oid(other.m_value, other.m_size) {}

Oid& Oid::operator=(const Oid& other) {
  if (this == &other) return *this;
  setNull();
  memcpy(m_value, other.m_value, other.m_size);
  m_size = other.m_size;
  return *this;
}

Oid::~Oid() {
  setNull();
}

bool Oid::isNull() const {
  return std::all_of(m_value, m_value + m_size, [](unsigned char byte) { return byte == 0; });
}

void Oid::setNull() {
  explicit_bzero(m_value, sizeof m_value);  // the compiler would remove a plain memset from the destructor
  m_size = 0;
}

bool Oid::operator==(const Oid& other) const {
  return m_size == other.m_size && memcmp(m_value, other.m_value, m_size) == 0;
}

}  // namespace vesk
