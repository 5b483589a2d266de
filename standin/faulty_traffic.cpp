#include "standin/faulty_traffic.h"

#include <cstdint>
#include <string>
#include <utility>

namespace standin {
namespace {

constexpr uint32_t kHugeLength = UINT32_MAX;
constexpr char kGarbage[] = "This is no message.";

brondalt::Traffic::Verdict verdictOf(Fault fault) {
  using Verdict = brondalt::Traffic::Verdict;
  switch (fault) {
    case Fault::Drop:
      return Verdict::Close;
    case Fault::Stall:
      return Verdict::Ignore;
    case Fault::Refuse:
      return Verdict::Refuse;
    case Fault::Restart:
      return Verdict::Restart;
    default:
      return Verdict::CarryOut;
  }
}

}  // namespace

brondalt::Traffic::Admission FaultyTraffic::admit() {
  const Fault fault = m_faults.next();
  return {verdictOf(fault), static_cast<int>(fault), m_treatment.delay, m_treatment.answer};
}

void FaultyTraffic::deliver(brondalt::Connection& connection, std::string_view message, int mark) {
  using brondalt::frame;
  std::string bytes = frame(message);
  switch (static_cast<Fault>(mark)) {
    case Fault::Lose:
      return connection.end();
    case Fault::Garbage:
      return connection.send(frame(kGarbage));
    case Fault::Empty:
      return connection.send(frame(""));
    case Fault::Huge:
      return connection.send(std::string(reinterpret_cast<const char*>(&kHugeLength), sizeof kHugeLength));
    case Fault::Short:
      return connection.sendLast(bytes.substr(0, sizeof(uint32_t) + message.size() / 2));
    case Fault::Cut:
      return connection.sendLast(bytes.substr(0, sizeof(uint32_t)));
    case Fault::Trickle:
      return connection.send(std::move(bytes), 1);
    default:
      return connection.send(std::move(bytes));
  }
}

}  // namespace standin
