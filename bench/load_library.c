/* load_library PATH SYMBOL: loads a library in this fresh process and finds a symbol in it; prints nanoseconds. */
#include <dlfcn.h>
#include <stdio.h>
#include <time.h>

static long long now(void) {
  struct timespec time;
  clock_gettime(CLOCK_MONOTONIC, &time);
  return time.tv_sec * 1000000000LL + time.tv_nsec;
}

int main(int argc, char** argv) {
  if (argc != 3) return 2;
  const long long begin = now();
  void* library = dlopen(argv[1], RTLD_NOW);
  void* symbol = library ? dlsym(library, argv[2]) : NULL;
  const long long time = now() - begin;
  if (!symbol) {
    fprintf(stderr, "%s\n", dlerror());
    return 1;
  }
  printf("%lld\n", time);
  return 0;
}
