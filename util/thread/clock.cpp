#include "util/thread/clock.h"

namespace vesk {
namespace dayclock {

std::atomic<long> offset{0};

}  // namespace dayclock
}  // namespace vesk
