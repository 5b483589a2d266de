#include "standin/ldif_reader.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>

#include <lber.h>
#include <ldap.h>

#include <ldif.h>

#include <fokrazo/ascii.h>
#include "standin/error.h"

namespace standin {
namespace {

struct CloseLdif {
  void operator()(LDIFFP* file) const { ldif_close(file); }
};

/// The buffer of a record, which the LDIF functions enlarge as needed.
struct RecordBuffer {
  char* text = nullptr;
  int size = 0;

  RecordBuffer() = default;
  RecordBuffer(const RecordBuffer&) = delete;
  RecordBuffer& operator=(const RecordBuffer&) = delete;
  ~RecordBuffer() { ber_memfree(text); }
};

/// One line of a record. Name and value point into the line, unless the value was decoded.
class Line {
 public:
  /// False if the line is malformed.
  bool parse(char* text) { return ldif_parse_line2(text, &m_name, &m_value, &m_ownsValue) == 0; }
  ~Line() {
    if (m_ownsValue) ber_memfree(m_value.bv_val);
  }
  std::string_view name() const { return {m_name.bv_val, m_name.bv_len}; }
  std::string value() const {
    return m_value.bv_val ? std::string(m_value.bv_val, m_value.bv_len) : std::string();
  }

 private:
  berval m_name = {};
  berval m_value = {};
  int m_ownsValue = 0;
};

/// Parses a record into an entry. A record with only the version line has no entry.
class RecordParser {
 public:
  RecordParser(const std::string& path, unsigned long line) : m_path(path), m_line(line) {}

  std::unique_ptr<Entry> parse(char* text) {
    char* next = text;
    while (char* line = ldif_getline(&next)) take(line);
    return std::move(m_entry);
  }

 private:
  void take(char* text) {
    Line line;
    if (!line.parse(text)) fail("malformed line");
    std::string_view name = line.name();
    if (m_entry) {
      takeAttribute(name, line.value());
    } else if (vesk::equalIgnoringCase(name, "dn")) {
      m_entry = std::make_unique<Entry>(line.value());
    } else if (!vesk::equalIgnoringCase(name, "version")) {
      fail("does not begin with its dn");
    }
  }

  void takeAttribute(std::string_view name, std::string value) {
    if (!vesk::equalIgnoringCase(name, "changetype")) {
      m_entry->add(name, std::move(value));
    } else if (!vesk::equalIgnoringCase(value, "add")) {
      fail("not a content record");
    }
  }

  [[noreturn]] void fail(const char* why) {
    throw Error(m_path + ": the record at line " + std::to_string(m_line) + ": " + why);
  }

  const std::string& m_path;
  unsigned long m_line;
  std::unique_ptr<Entry> m_entry;
};

}  // namespace

void readLdif(const std::string& path, const std::function<void(Entry&&)>& take) {
  std::unique_ptr<LDIFFP, CloseLdif> file(ldif_open(path.c_str(), "r"));
  if (!file) throw Error(path + ": " + strerror(errno));
  RecordBuffer record;
  unsigned long line = 0;
  for (;;) {
    unsigned long start = line + 1;
    int result = ldif_read_record(file.get(), &line, &record.text, &record.size);
    if (result == 0) return;
    if (result < 0) throw Error(path + ": the record at line " + std::to_string(start) + " cannot be read");
    std::unique_ptr<Entry> entry = RecordParser(path, start).parse(record.text);
    if (entry) take(std::move(*entry));
  }
}

}  // namespace standin
