/* load_library PATH SYMBOL: loads a library in this fresh process and finds a symbol in it; prints nanoseconds, and by how
   many kilobytes the resident memory has grown. */
#include <dlfcn.h>
#include <stdio.h>
#include <time.h>

static long long now(void) {
  struct timespec time;
  clock_gettime(CLOCK_MONOTONIC, &time);
  return time.tv_sec * 1000000000LL + time.tv_nsec;
}

static long resident(void) {
  char line[256];
  long kilobytes = 0;
  FILE* file = fopen("/proc/self/smaps_rollup", "r");
  if (!file) return 0;
  while (fgets(line, sizeof line, file) && sscanf(line, "Rss: %ld", &kilobytes) != 1) {
  }
  fclose(file);
  return kilobytes;
}

int main(int argc, char** argv) {
  if (argc != 3) return 2;
  const long before = resident();
  const long long begin = now();
  void* library = dlopen(argv[1], RTLD_NOW);
  void* symbol = library ? dlsym(library, argv[2]) : NULL;
  const long long time = now() - begin;
  if (!symbol) {
    fprintf(stderr, "%s\n", dlerror());
    return 1;
  }
  printf("%lld %ld\n", time, resident() - before);
  return 0;
}
