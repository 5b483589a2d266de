// libldb: three attributes of a stored object.

#include <cstdbool>
#include <cstddef>
#include <cstdint>

extern "C" {
#include <talloc.h>
// after talloc.h
#include <ldb.h>
#include <ldb_module.h>
}

#include "bench/support/measure.h"
#include "bench/support/plain_socket.h"
#include "bench/support/sample_user.h"

namespace bench {
namespace {

void require(bool condition, const char* what) {
  if (!condition) die(what);
}

ldb_val pack(ldb_context* ldb, TALLOC_CTX* memory, const Entry& entry) {
  ldb_message* message = ldb_msg_new(memory);
  message->dn = ldb_dn_new(message, ldb, entry.at("distinguishedName")[0].c_str());
  for (const auto& [name, values] : entry)
    for (const std::string& value : values)
      require(ldb_msg_add_string(message, name.c_str(), talloc_strdup(message, value.c_str())) == 0, "add");
  ldb_val packed{};
  require(ldb_pack_data(ldb, message, &packed, LDB_PACKING_FORMAT_V2) == 0, "pack");
  return packed;
}

void readThree(ldb_context* ldb, TALLOC_CTX* memory, const ldb_val& packed, const Triple& names) {
  constexpr unsigned kFlags = LDB_UNPACK_DATA_FLAG_NO_VALUES_ALLOC | LDB_UNPACK_DATA_FLAG_NO_DN;
  ldb_message* message = ldb_msg_new(memory);
  uint32_t format;
  ldb_unpack_get_format(&packed, &format);
  require(ldb_unpack_data_flags(ldb, &packed, message, kFlags) == 0, "unpack");
  for (const std::string& name : names) {
    const char* value = ldb_msg_find_attr_as_string(message, name.c_str(), nullptr);
    require(value, "no such attribute");
    keep(value);
  }
  talloc_free(message);
}

}  // namespace
}  // namespace bench

int main() {
  using namespace bench;
  TALLOC_CTX* memory = talloc_new(nullptr);
  ldb_context* ldb = ldb_init(memory, nullptr);
  const ldb_val packed = pack(ldb, memory, sampleUser());
  const Triple& names = sampleTriples()[0];
  print("libldb.find3", nanosecondsOf([&] { readThree(ldb, memory, packed, names); }), "ns");
}
