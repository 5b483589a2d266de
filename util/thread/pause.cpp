#include "util/thread/pause.h"

#include <fokrazo/thread.h>

namespace vesk {
namespace pause {

std::atomic<void (*)(long milliseconds)> replacement{nullptr};

void forMilliseconds(long milliseconds) {
  if (auto* function = replacement.load())
    function(milliseconds);
  else
    Thread::sleep(milliseconds / 1000, milliseconds % 1000 * 1'000'000);
}

}  // namespace pause
}  // namespace vesk
