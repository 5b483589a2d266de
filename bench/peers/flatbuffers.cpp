// FlatBuffers: attributes of the sample users, located and copied.

#include "bench/peers/attribute.h"
#include "bench/support/measure.h"
#include "bench/support/plain_socket.h"
#include "bench/support/sample_user.h"
#include "user_generated.h"

namespace bench {
namespace {

std::string encode(const Entry& entry) {
  flatbuffers::FlatBufferBuilder builder;
  std::vector<flatbuffers::Offset<schema::Attribute>> attributes;
  for (const auto& [name, values] : entry)
    attributes.push_back(
        schema::CreateAttribute(builder, builder.CreateString(name), builder.CreateVectorOfStrings(values)));
  const auto sorted = builder.CreateVectorOfSortedTables(&attributes);
  builder.Finish(schema::CreateUser(builder, sorted));
  return {reinterpret_cast<const char*>(builder.GetBufferPointer()), builder.GetSize()};
}

const schema::Attribute& find(const std::string& object, const std::string& name) {
  const auto* found = schema::GetUser(object.data())->attributes()->LookupByKey(name.c_str());
  if (!found) die("no such attribute");
  return *found;
}

void locate(const std::string& object, const Triple& names) {
  for (const std::string& name : names) keep(find(object, name).values()->Get(0)->c_str());
}

void copy(const std::string& object, const Triple& names) {
  for (const std::string& name : names) {
    const schema::Attribute& found = find(object, name);
    Attribute attribute(name, found.values()->size());
    for (const auto* value : *found.values()) attribute.values.push_back(value->str());
    keep(attribute.values.data());
  }
}

}  // namespace
}  // namespace bench

int main() {
  using namespace bench;
  std::vector<std::string> objects;
  for (int i = 0; i < Mix::kObjects; ++i) objects.push_back(encode(sampleUser(i * 3 + 1)));
  Mix mix;
  print("flatbuffers.mix3.view", nanosecondsOf([&] {
          mix.step();
          locate(objects[mix.object()], mix.triple());
        }),
        "ns");
  print("flatbuffers.mix3.copy", nanosecondsOf([&] {
          mix.step();
          copy(objects[mix.object()], mix.triple());
        }),
        "ns");
}
