#include <sys/wait.h>
#include <unistd.h>

#include <memory>
#include <unordered_map>

#include <fokrazo/adobject.h>
#include <fokrazo/adserializer.h>
#include <fokrazo/stringdict.h>
#include "bench/compared/parts.h"
#include "bench/support/measure.h"
#include "bench/support/plain_socket.h"
#include "bench/support/sample_user.h"

namespace bench {
namespace {

/// Blobs that stay in place, each with its reader.
class Blobs {
 public:
  explicit Blobs(std::vector<std::string> bytes) : m_bytes(std::move(bytes)) {
    for (std::string& blob : m_bytes)
      m_readers.push_back(std::make_unique<vesk::ADSerializer>(blob.size(), blob.data(), false));
  }
  const vesk::ADSerializer& operator[](size_t index) const { return *m_readers[index]; }
  std::string& bytes(size_t index) { return m_bytes[index]; }

 private:
  std::vector<std::string> m_bytes;
  std::vector<std::unique_ptr<vesk::ADSerializer>> m_readers;
};

void locate(const vesk::ADSerializer& blob, const Triple& names) {
  for (const std::string& name : names) {
    const unsigned char* valueCount = blob.findAttributeData(name);
    if (!valueCount) die("no such attribute");
    keep(valueCount);
  }
}

void copy(const vesk::ADSerializer& blob, const Triple& names) {
  const vesk::ADAttribute first = blob.find(names[0]), second = blob.find(names[1]),
                          third = blob.find(names[2]);
  keep(&first);
  keep(&second);
  keep(&third);
}

void measureReading() {
  const Blobs blobs(sampleBlobs(Mix::kObjects));
  Mix mix;
  measure("ours.mix3.view", [&] {
    mix.step();
    locate(blobs[mix.object()], mix.triple());
  });
  measure("ours.mix3.copy", [&] {
    mix.step();
    copy(blobs[mix.object()], mix.triple());
  });
  Blobs one({blobOf(sampleUser())});
  const Triple& names = sampleTriples()[0];
  measure("ours.find3.view", [&] { locate(one[0], names); });
  measure("ours.find3.copy", [&] { copy(one[0], names); });
  std::string& bytes = one.bytes(0);
  measure("ours.all", [&] {
    vesk::ADObject object(bytes.size(), bytes.data(), false, nullptr);
    object.deSerialize(false);
    keep(&object.attributes());
  });
}

void measureWriting() {
  vesk::ADObject object = objectOf(sampleUser());
  measure("ours.serialize", [&] { keep(vesk::ADSerializer::serialize(object)->data()); });
}

double timeOfDictionary(int checksum) {
  const uint64_t begin = now();
  keep(&vesk::GetDictionaryVector(checksum));
  keep(&vesk::GetDictionaryMap(checksum));
  return static_cast<double>(now() - begin);
}

/// Touches and frees as much memory as a list needs, to exclude page faults after a fork from the
/// measurement.
void touchMemory(int checksum) {
  const vesk::DictionaryVector entries = vesk::GetDictionaryVector(checksum);
  const vesk::DictionaryMap indexes = vesk::GetDictionaryMap(checksum);
  keep(&entries);
  keep(&indexes);
}

// A process creates the list only once, so each is timed in its own process, after two others.
double timeOfFirstUse() {
  constexpr int kWarmUps[] = {0x45829, 0x36361};
  constexpr int kTouches = 5;
  constexpr int kMeasured = 0x16090;
  int channel[2];
  if (pipe(channel) != 0) die("pipe");
  const pid_t child = fork();
  if (child == 0) {
    for (int checksum : kWarmUps) timeOfDictionary(checksum);
    for (int i = 0; i < kTouches; ++i) touchMemory(kWarmUps[0]);
    const double time = timeOfDictionary(kMeasured);
    _exit(write(channel[1], &time, sizeof time) != sizeof time);
  }
  double time = 0;
  if (read(channel[0], &time, sizeof time) != sizeof time) die("dictionary");
  waitpid(child, nullptr, 0);
  for (int end : channel) close(end);
  return time;
}

// The same strings in standard containers; many are too long for the small-string buffer.
void makeStandardContainers() {
  const std::vector<std::string> entries = vesk::GetDictionaryVector();
  std::unordered_map<std::string, int> indexes;
  indexes.reserve(entries.size());
  for (size_t i = 0; i < entries.size(); ++i) indexes.emplace(entries[i], i);
  keep(&indexes);
}

void measureDictionary() {
  constexpr int kRuns = 51;
  std::vector<double> times;
  for (int i = 0; i < kRuns; ++i) times.push_back(timeOfFirstUse());
  print("ours.dict", median(times), "ns");
  print("ours.dict.standard", nanosecondsOf(makeStandardContainers), "ns");
  const std::string known = "sAMAccountName", unknown = "sAMAccountNameX";
  const vesk::StringArray& dictionary = vesk::ADSerializer::m_dictionary;
  measure("ours.dict.probe", [&] { keep(dictionary[known]); });
  measure("ours.dict.miss", [&] { keep(dictionary[unknown]); });
}

}  // namespace

void measureModel() {
  measureReading();
  measureWriting();
  measureDictionary();
}

}  // namespace bench
