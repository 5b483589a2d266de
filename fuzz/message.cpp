// Replies: every typed reader of <fokrazo/ipcmessage.h> on any bytes. An input is a script of readers, one
// per byte, ended by 0xff, followed by the message.

#include <sys/socket.h>

#include <cstring>
#include <functional>
#include <sstream>

#include <fokrazo/adobject.h>
#include <fokrazo/adserializer.h>
#include <fokrazo/ipc_exception.h>
#include <fokrazo/ipcmessage.h>
#include <fokrazo/qtr_ber.h>
#include <fokrazo/session.h>
#include "fuzz/fuzz_input.h"
#include "fuzz/world.h"
#include "util/file/unique_fd.h"

using namespace vesk;

namespace {

constexpr char kEndOfScript = '\xff';
constexpr size_t kLargestMessage = 64 * 1024;  // fits into a socket's buffer

std::string dumped(const ADObject& object) {
  std::ostringstream out;
  object.dump(out);
  return out.str();
}

std::string dumped(const ADObjectList& objects) {
  std::ostringstream out;
  objects.dump(out);
  return out.str();
}

std::string status(IPCReply& reply) {
  LocalRpcSession session("", false, false);
  const int result = session.updateVRErrInfo(reply);
  return std::to_string(result) + session.statusMessage() +
         LocalRpcSession::errorString(session.healthResult());
}

std::string berString(IPCReply& reply) {
  berval* bytes = reply.getBerString();
  const std::string text(bytes->bv_val ? bytes->bv_val : "", bytes->bv_len);
  qtr_ber_bvfree(bytes);
  return text;
}

std::string charStrings(IPCReply& reply) {
  char** texts = reply.getCharStringArray();
  std::string all;
  for (char** text = texts; text && *text; ++text) all += *text;
  qtr_ber_memvfree(reinterpret_cast<void**>(texts));
  return all;
}

std::string strings(IPCReply& reply) {
  std::string all;
  for (const std::string& text : reply.getStringVector()) all += text;
  return all;
}

using Reader = std::string (*)(IPCReply&);
constexpr Reader kReaders[] = {
    [](IPCReply& reply) { return std::to_string(reply.getInt()); },
    [](IPCReply& reply) { return std::to_string(reply.getPthreadT()); },
    [](IPCReply& reply) { return reply.getString(); },
    berString,
    charStrings,
    strings,
    [](IPCReply& reply) { return reply.getSid().toMSString(); },
    [](IPCReply& reply) { return reply.getGuid().toString(); },
    [](IPCReply& reply) { return dumped(reply.getADObject()); },
    [](IPCReply& reply) { return dumped(reply.getADObjectList()); },
    [](IPCReply& reply) -> std::string { reply.getAndThrowIPCException(); },
    [](IPCReply& reply) { return std::to_string(reply.hasMore()); },
    status,
};

void read(IPCReply& reply, const std::string& script) {
  for (const char step : script) {
    try {
      kReaders[static_cast<unsigned char>(step) % std::size(kReaders)](reply);
    } catch (const VESKException&) {
    }
  }
}

void receive(IPCReply& reply, const std::string& message) {
  int ends[2];
  if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) != 0) abort();
  const UniqueFd sender(ends[0]);
  const UniqueFd receiver(ends[1]);
  const auto length = static_cast<uint32_t>(message.size());
  const std::string frame = std::string(reinterpret_cast<const char*>(&length), sizeof length) + message;
  if (send(sender.get(), frame.data(), frame.size(), MSG_NOSIGNAL) != static_cast<ssize_t>(frame.size()))
    abort();
  reply.get(receiver.get());
}

bool prepare() {
  fuzz::enterWorld("log: FATAL\nlrpc.timeout: 0\n");
  return true;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static const bool prepared = prepare();
  fuzz::Input input(data, std::min(size, kLargestMessage));
  const std::string script = input.upTo(kEndOfScript);
  IPCReply reply;
  try {
    receive(reply, input.rest());
  } catch (const IOException&) {
    return prepared ? 0 : -1;
  }
  read(reply, script);
  try {
    reply.rewind();  // keeps only the part that was read
  } catch (const IOException&) {
    return 0;
  }
  read(reply, script);
  return 0;
}
