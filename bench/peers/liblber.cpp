// liblber alone: a request of six fields, and the status block of a reply.

#include <lber.h>

#include <cstring>
#include <string>

#include "bench/support/measure.h"
#include "bench/support/plain_socket.h"

namespace bench {
namespace {

void print(BerElement* message, const std::string& text) {
  ber_printf(message, "o", text.data(), static_cast<ber_len_t>(text.size()));
}

void buildRequest() {
  static const std::string name = "alice.example@corp.example.com", domain = "corp.example.com";
  BerElement* message = ber_alloc_t(0);
  ber_printf(message, "{ii}", 31, 0);
  print(message, name);
  ber_printf(message, "i", 3);
  print(message, domain);
  for (int number : {0, 300, 1}) ber_printf(message, "i", number);
  berval bytes;
  if (ber_flatten2(message, &bytes, 0) != 0) die("flatten");
  keep(bytes.bv_val);
  ber_free(message, 1);
}

std::string statusBlock() {
  BerElement* message = ber_alloc_t(0);
  ber_printf(message, "{ii}iii", 31, 0, 0, 0, 0);
  print(message, "the operation completed");
  ber_printf(message, "iii", 0, 12, 345678);
  print(message, "connected");
  berval bytes;
  if (ber_flatten2(message, &bytes, 0) != 0) die("flatten");
  std::string result(bytes.bv_val, bytes.bv_len);
  ber_free(message, 1);
  return result;
}

// Reads it as a client must: out of memory of the message's own, field by field, with texts copied.
void parseStatus(const std::string& reply) {
  char* copy = static_cast<char*>(ber_memalloc(reply.size() + 1));
  memcpy(copy, reply.data(), reply.size());
  berval bytes{reply.size(), copy};
  BerElement* message = ber_alloc_t(LBER_USE_DER);
  ber_init2(message, &bytes, 0);
  ber_int_t opcode, result, number;
  if (ber_scanf(message, "{ii}", &opcode, &result) == LBER_ERROR) die("header");
  for (char kind : {'i', 'i', 'i', 'o', 'i', 'i', 'i', 'o'}) {
    if (kind == 'i') {
      if (ber_scanf(message, "i", &number) == LBER_ERROR) die("number");
      keep(number);
      continue;
    }
    berval text;
    if (ber_scanf(message, "o", &text) == LBER_ERROR) die("text");
    const std::string own(text.bv_val, text.bv_len);
    keep(own.data());
    ber_memfree(text.bv_val);
  }
  ber_free(message, 1);
}

}  // namespace
}  // namespace bench

int main() {
  using namespace bench;
  const std::string reply = statusBlock();
  print("liblber.build6", nanosecondsOf(buildRequest), "ns");
  print("liblber.parse8", nanosecondsOf([&] { parseStatus(reply); }), "ns");
}
