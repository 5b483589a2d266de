#include <fokrazo/int64.h>

#include <ostream>

namespace vesk {

const Int64 Int64::ZERO(0);
const Int64 Int64::MAXINT64(9223372036854775807);

Int64::Int64(const std::string& text) {
  bool negative = !text.empty() && text[0] == '-';
  uint64_t value = 0;  // unsigned: it wraps around without harm
  for (size_t i = negative ? 1 : 0; i < text.size(); ++i)
    value = value * 10 + static_cast<unsigned char>(text[i]) - uint64_t{'0'};
  m_value = static_cast<int64_t>(negative ? 0 - value : value);
}

Int64::operator std::string() const {
  return std::to_string(m_value);
}

std::ostream& operator<<(std::ostream& out, const Int64& number) {
  return out << static_cast<std::string>(number);
}

}  // namespace vesk
