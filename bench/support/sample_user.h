/// The user that the benchmarks look up: 45 attributes, 2.9 kB in a message.
#pragma once

#include <map>
#include <string>
#include <vector>

namespace vesk {
class ADObject;
}

namespace bench {

using Entry = std::map<std::string, std::vector<std::string>>;

/// Variant 0 has all attributes. The others lack some, and have values of other lengths, so that the branch
/// predictor cannot learn one object.
Entry sampleUser(int variant = 0);
/// Variant 0 with its DN in the attribute that the daemon sets and typed views read.
Entry daemonUser();

vesk::ADObject objectOf(const Entry& entry);
/// Its serialized form.
std::string blobOf(const Entry& entry);
std::vector<std::string> sampleBlobs(int count);

/// Three attribute names that all variants have.
using Triple = std::vector<std::string>;
const std::vector<Triple>& sampleTriples();

/// Iterates over numbers in an unpredictable order.
class Scatter {
 public:
  unsigned next() {
    m_state = m_state * 1664525u + 1013904223u;
    return m_state >> 8;
  }

 private:
  unsigned m_state = 1;
};

/// Chooses another object and other names on every call.
class Mix {
 public:
  static constexpr int kObjects = 128;

  void step() {
    const unsigned number = m_scatter.next();
    m_object = (number >> 8) % kObjects;
    m_triple = (number >> 16) % sampleTriples().size();
  }
  unsigned object() const { return m_object; }
  const Triple& triple() const { return sampleTriples()[m_triple]; }

 private:
  Scatter m_scatter;
  unsigned m_object = 0;
  unsigned m_triple = 0;
};

}  // namespace bench
