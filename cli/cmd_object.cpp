// Serialized objects, without the daemon: blob, dict.

#include <algorithm>
#include <cstdio>
#include <memory>
#include <sstream>

#include <fokrazo/adobject.h>
#include <fokrazo/adserializer.h>
#include <fokrazo/error_util.h>
#include <fokrazo/stringarray.h>
#include <fokrazo/stringdict.h>
#include <fokrazo/strutil.h>
#include "cli/command.h"
#include "cli/did_you_mean.h"
#include "cli/views.h"
#include "cli/whole_blob.h"

namespace cli {

namespace {

using namespace vesk;

// Far larger than any directory object.
constexpr size_t kLargestBlob = size_t{1} << 30;

std::string nameOf(const std::string& path) {
  return path == "-" ? "standard input" : path;
}

std::string readAll(const std::string& path) {
  std::unique_ptr<FILE, int (*)(FILE*)> opened(nullptr, fclose);
  FILE* file = stdin;
  if (path != "-") {
    opened.reset(fopen(path.c_str(), "re"));
    file = opened.get();
  }
  if (!file) throw UnreadableError(nameOf(path));
  std::string bytes;
  char buffer[16384];
  while (size_t count = fread(buffer, 1, sizeof buffer, file)) {
    bytes.append(buffer, count);
    if (bytes.size() > kLargestBlob) throw Failure(kFailed, nameOf(path) + ": larger than any object");
  }
  if (ferror(file)) throw UnreadableError(nameOf(path));
  return bytes;
}

int checksumOf(const std::string& release) {
  try {
    return GetDictionarySum(release);
  } catch (const NotFoundException&) {
    const std::string near = closest(release, {version, version + kReleaseRows - 1});
    throw RefusedError("release " + release + " is not known" +
                       (near.empty() ? "" : "; did you mean " + near + '?') +
                       " ('fokrazo dict --releases' lists all)");
  }
}

StringArray dictionaryOf(int checksum) {
  return {&GetDictionaryMap(checksum), &GetDictionaryVector(checksum)};
}

// Prints the header and the attributes that have been read.
void dumpObject(const ADObject& object) {
  std::ostringstream dump;
  dump << "Serialized Data\n"
       << "  ADOHeader:\n"
       << "    m_acquired: " << object.acquired() << '\n'
       << "    m_guid: " << object.guid().toString() << '\n'
       << "    m_usn: " << object.usn() << '\n'
       << "    isIndexed: " << (object.indexed() ? 1 : 0) << '\n';
  for (const auto& entry : object.attributes()) {
    dump << "  ";
    entry.second.dump(dump);
  }
  Output::print(dump.str());
}

// Prints as much of a damaged object as can be read, for a person to judge.
void dumpRemains(std::string& bytes, const StringArray& dictionary) {
  if (bytes.size() < ADSerializer::kHeaderSize) return;
  ADObject object(static_cast<unsigned>(bytes.size()), bytes.data(), false, nullptr);
  try {
    object.deSerialize(ADSerializer::kHeaderSize, dictionary, true);
  } catch (const VESKException&) {  // the caller reports the damage
  }
  dumpObject(object);
}

ExitStatus showBlob(Output& output, std::string bytes, const StringArray& dictionary,
                    const std::string* attribute) {
  try {
    requireWhole(bytes, static_cast<uint32_t>(dictionary.count()));
  } catch (const DamagedBlob&) {
    if (!output.json() && !attribute) dumpRemains(bytes, dictionary);
    throw;
  }
  ADObject object(static_cast<unsigned>(bytes.size()), bytes.data(), false, nullptr);
  object.deSerialize(ADSerializer::kHeaderSize, dictionary, true);
  if (attribute) {
    if (!object.attributeExists(*attribute, false))
      throw RefusedError("the object has no attribute " + shown(*attribute));
    output.record(Record().texts(*attribute, object[*attribute]));
  } else if (output.json()) {
    output.record(recordOf(object));
  } else {
    dumpObject(object);
  }
  return kFound;
}

ExitStatus blob(Invocation& invocation) {
  std::string attribute;
  const bool one = invocation.arguments.option("--attribute", attribute);
  std::string release;
  const bool isOld = invocation.arguments.option("--as-of-release", release);
  const std::string path = invocation.arguments.hasOperand() ? invocation.arguments.operand("") : "-";
  invocation.arguments.done();

  const StringArray dictionary = dictionaryOf(isOld ? checksumOf(release) : GetDictionarySum());
  try {
    return showBlob(invocation.output, readAll(path), dictionary, one ? &attribute : nullptr);
  } catch (const DamagedBlob& error) {
    throw std::runtime_error(nameOf(path) + " is not a whole serialized object: " + error.what());
  }
}

const DictionaryVector& entriesOf(int sum) {
  try {
    return GetDictionaryVector(sum);
  } catch (const NotFoundException&) {
    throw RefusedError("no release has the checksum " + uitoa(static_cast<unsigned>(sum), 16) +
                       " ('fokrazo dict --releases' lists all)");
  }
}

int takeChecksum(Arguments& arguments) {
  std::string text;
  if (arguments.option("--release", text)) return checksumOf(text);
  if (!arguments.option("--sum", text)) return GetDictionarySum();
  char* end = nullptr;
  const unsigned long sum = strtoul(text.c_str(), &end, 16);
  if (text.empty() || *end != '\0' || sum > INT32_MAX) throw UsageError("'" + text + "' is not a checksum");
  return static_cast<int>(sum);
}

void printEntry(Output& output, int index, const std::string& text) {
  output.record(Record().number("index", index).text("text", text), std::to_string(index) + ' ' + text);
}

ExitStatus listReleases(Output& output) {
  if (!output.json()) ShowDictionarysList();
  for (int row = 0; output.json() && row < kReleaseRows - 1; ++row)
    output.record(
        Record().text("release", version[row]).text("sum", uitoa(static_cast<unsigned>(vesk::sum[row]), 16)));
  return kFound;
}

ExitStatus dict(Invocation& invocation) {
  if (invocation.arguments.flag("--releases")) {
    invocation.arguments.done();
    return listReleases(invocation.output);
  }
  const int sum = takeChecksum(invocation.arguments);
  const DictionaryVector& entries = entriesOf(sum);
  const std::vector<std::string> keys = invocation.arguments.operands();
  if (keys.empty())
    for (size_t i = 0; i < entries.size(); ++i)
      printEntry(invocation.output, static_cast<int>(i), entries[i]);
  const StringArray dictionary = dictionaryOf(sum);
  ExitStatus status = kFound;
  for (const std::string& key : keys) {
    unsigned number = 0;
    const bool isIndex = readNumber(key, number);
    const int index = isIndex ? static_cast<int>(std::min<size_t>(number, INT32_MAX)) : dictionary[key];
    if (index >= 0 && static_cast<size_t>(index) < entries.size()) {
      printEntry(invocation.output, index, entries[index]);
    } else {
      invocation.output.fail(RefusedError("the dictionary has no entry " + shown(key)));
      status = kRefused;
    }
  }
  return status;
}

constexpr Option kBlobOptions[] = {
    {"--attribute", "NAME", "show only this attribute"},
    {"--as-of-release", "VERSION", "read it with the dictionary of this release (see dict --releases)"},
};
constexpr Option kDictOptions[] = {
    {"--sum", "HEX", "show the dictionary with this checksum, not the current one"},
    {"--release", "VERSION", "show the dictionary of this release"},
    {"--releases", nullptr, "list the releases and their checksums"},
};

const Command kCommands[] = {
    {"blob", "[FILE|-]", "show a serialized object", blob, kBlobOptions,
     "Reads standard input if there is no FILE. If the object is damaged, shows what can be read of\n"
     "it, unless --json or --attribute is given, and exits with status 4.\n"},
    {"dict", "[INDEX|TEXT …]", "show the string dictionary of serialized objects", dict, kDictOptions,
     "Prints the entries with the given indices or texts, or all of them.\n"},
};

}  // namespace

Family objectCommands() {
  return {"Inspect serialized objects", kCommands, std::size(kCommands)};
}

}  // namespace cli
