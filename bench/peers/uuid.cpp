// libuuid: a GUID to text in the caller's buffer, and read.

#include <uuid/uuid.h>

#include "bench/support/measure.h"
#include "bench/support/plain_socket.h"

int main() {
  using namespace bench;
  constexpr char kText[] = "6f1d2c3b-4a59-4e68-8f70-112233445566";
  constexpr size_t kTextSize = 37;
  uuid_t guid;
  char text[kTextSize];
  print("libuuid.guid.parse", nanosecondsOf([&] {
          keep(&guid);
          if (uuid_parse(kText, guid) != 0) die("parse");
        }),
        "ns");
  print("libuuid.guid.text", nanosecondsOf([&] {
          keep(&guid);
          uuid_unparse_lower(guid, text);
          keep(text[0]);
        }),
        "ns");
}
