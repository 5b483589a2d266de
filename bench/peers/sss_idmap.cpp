// libsss_idmap: a SID to text, and read.

extern "C" {
#include <sss_idmap.h>
#include <stdbool.h>
}

#include "bench/support/measure.h"
#include "bench/support/plain_socket.h"

int main() {
  using namespace bench;
  constexpr char kText[] = "S-1-5-21-1004336348-1177238915-682003330-51234";
  sss_idmap_ctx* context = nullptr;
  uint8_t* sid = nullptr;
  size_t size = 0;
  if (sss_idmap_init(nullptr, nullptr, nullptr, &context) != IDMAP_SUCCESS ||
      sss_idmap_sid_to_bin_sid(context, kText, &sid, &size) != IDMAP_SUCCESS)
    die("SID");
  print("sss_idmap.sid.text", nanosecondsOf([&] {
          char* text = nullptr;
          if (sss_idmap_bin_sid_to_sid(context, sid, size, &text) != IDMAP_SUCCESS) die("text");
          keep(text);
          sss_idmap_free_sid(context, text);
        }),
        "ns");
  print("sss_idmap.sid.parse", nanosecondsOf([&] {
          uint8_t* bytes = nullptr;
          size_t length = 0;
          if (sss_idmap_sid_to_bin_sid(context, kText, &bytes, &length) != IDMAP_SUCCESS) die("parse");
          keep(bytes);
          sss_idmap_free_bin_sid(context, bytes);
        }),
        "ns");
}
