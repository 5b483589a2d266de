// Splitting.
#include <cstdlib>
#include <utility>

#include <fokrazo/strutil.h>

namespace {

enum class EmptyFields { Drop, Keep };

// `findCut` returns the position of the next delimiter, npos if there is none.
template <class FindCut, class Fields>
void cutAt(const std::string& text, FindCut findCut, EmptyFields emptyFields, Fields& fields) {
  for (size_t start = 0;;) {
    size_t end = findCut(start);
    size_t length = (end == text.npos ? text.size() : end) - start;
    if (length > 0 || emptyFields == EmptyFields::Keep) fields.emplace_back(text, start, length);
    if (end == text.npos) return;
    start = end + 1;
  }
}

template <class Delimiters, class Fields>
void cutAtAny(const std::string& text, const Delimiters& delimiters, EmptyFields emptyFields,
              Fields& fields) {
  cutAt(
      text, [&](size_t from) { return text.find_first_of(delimiters, from); }, emptyFields, fields);
}

size_t findUnescaped(const std::string& text, const std::string& delimiters, size_t from) {
  size_t found = text.find_first_of(delimiters, from);
  while (found != text.npos && found > 0 && text[found - 1] == '\\')
    found = text.find_first_of(delimiters, found + 1);
  return found;
}

bool isByteOfEthersAddr(const std::string& field) {
  size_t first = field.find_first_not_of('0');
  if (first == field.npos) return field.at(0) == '0';
  const std::string digits = lower(field.substr(first));
  unsigned long number = strtoul(digits.c_str(), nullptr, 16);
  return number <= 255 && itoa(static_cast<int>(number), 16) == digits;
}

}  // namespace

void split(const std::string& text, const std::string& delimiters, std::list<std::string>& list) {
  cutAtAny(text, delimiters, EmptyFields::Drop, list);
}

void splitWithEscape(const std::string& text, const std::string& delimiters, std::list<std::string>& list,
                     bool keepEmpty) {
  if (text.empty()) return;
  cutAt(
      text, [&](size_t from) { return findUnescaped(text, delimiters, from); },
      keepEmpty ? EmptyFields::Keep : EmptyFields::Drop, list);
}

void CrackString(const std::string& delimiters, const std::string& text, std::vector<std::string>& fields) {
  cutAtAny(text, delimiters, EmptyFields::Drop, fields);
}

void StringSplit(const std::string& delimiters, const std::string& text, std::vector<std::string>& fields) {
  cutAtAny(text, delimiters, EmptyFields::Keep, fields);
}

void StringSplit(char delimiter, const std::string& text, std::vector<std::string>& fields) {
  cutAtAny(text, delimiter, EmptyFields::Keep, fields);
}

bool isValidEthersAddr(const std::string& text) {
  std::vector<std::string> fields;
  StringSplit(':', text, fields);
  if (fields.size() != 6) return false;
  for (const std::string& field : fields)
    if (!isByteOfEthersAddr(field)) return false;
  return true;
}
