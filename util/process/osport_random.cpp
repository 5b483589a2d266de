// Thread-safe replacements for the system's generators. They have the system's names only for the linker:
// <stdlib.h> promises that its functions throw nothing, which a failing mutex would break.
#include <cstdlib>

#include <fokrazo/export.h>
#include "util/thread/clock.h"
#include "util/thread/fork_locks.h"
#include "util/thread/threads_api.h"

extern "C" {
FOKRAZO_API long drawRandom() __asm__("random");
FOKRAZO_API int drawRand() __asm__("rand");
FOKRAZO_API void seedRandom(unsigned int seed) __asm__("srandom");
FOKRAZO_API void seedRand(unsigned int seed) __asm__("srand");
}

namespace {

bool gSeeded = false;  // guarded by the mutex below

// Locked in every program, even one whose threads are not made by Thread.
vesk::Mutex& gRandomMutex() {
  return vesk::forkedLock(vesk::ForkOrder::RandomNumbers);
}

}  // namespace

// The generator is used only under that mutex.
// NOLINTBEGIN(concurrency-mt-unsafe)

long drawRandom() {
  const vesk::BriefHold hold(gRandomMutex());
  if (!gSeeded) srand48(vesk::dayclock::now());
  gSeeded = true;
  return lrand48();
}

int drawRand() {
  return static_cast<int>(drawRandom());
}

// The first number drawn still reseeds from the clock, so only a call after it has an effect that lasts.
void seedRandom(unsigned int seed) {
  const vesk::BriefHold hold(gRandomMutex());
  srand48(seed);
}

void seedRand(unsigned int seed) {
  seedRandom(seed);
}

// NOLINTEND(concurrency-mt-unsafe)
