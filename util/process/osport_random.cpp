// Thread-safe replacements for the C library's generators. They get these names only in the linker, because
// <stdlib.h> declares its functions as non-throwing, and a failing mutex throws.
#include <cstdlib>

#include <fokrazo/export.h>
#include "util/thread/clock.h"
#include "util/thread/fork_locks.h"
#include "util/thread/mutex_internal.h"

extern "C" {
FOKRAZO_API long drawRandom() __asm__("random");
FOKRAZO_API int drawRand() __asm__("rand");
FOKRAZO_API void seedRandom(unsigned int seed) __asm__("srandom");
FOKRAZO_API void seedRand(unsigned int seed) __asm__("srand");
}

namespace {

bool gSeeded = false;  // guarded by the mutex below

// Always locked, even if threads are not created by Thread.
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

// The first number drawn reseeds from the clock, so only later calls have a lasting effect.
void seedRandom(unsigned int seed) {
  const vesk::BriefHold hold(gRandomMutex());
  srand48(seed);
}

void seedRand(unsigned int seed) {
  seedRandom(seed);
}

// NOLINTEND(concurrency-mt-unsafe)
