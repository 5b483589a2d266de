#include <fokrazo/log_gzip.h>

#include <sys/stat.h>
#include <zlib.h>

#include <cstdio>
#include <memory>

#include "util/file/unique_fd.h"
#include "util/thread/threads_api.h"

namespace vesk {
namespace {

constexpr unsigned int kBlock = 16384;

using File = std::unique_ptr<FILE, int (*)(FILE*)>;
using GzFile = std::unique_ptr<gzFile_s, int (*)(gzFile)>;

bool exists(const char* path) {
  struct stat ignored;
  return path != nullptr && stat(path, &ignored) == 0;
}

// From where the last copy ended.
bool compress(FILE* source, gzFile target) {
  char block[kBlock];
  clearerr(source);
  for (size_t count; (count = fread(block, 1, sizeof block, source)) > 0;)
    if (gzwrite(target, block, static_cast<unsigned int>(count)) <= 0) return false;
  return ferror(source) == 0;
}

}  // namespace

void gzip(const char* from, const char* to) {
  if (to == nullptr || !exists(from)) return;
  const CancelKeptOff cancelKeptOff;
  const File source(fopen(from, "re"), fclose);
  if (!source) return;
  const GzFile target(gzopen(to, "we"), gzclose);
  if (target) compress(source.get(), target.get());
}

// Who has written before the second copy is in it; who writes behind it can see that the file is removed.
bool moveCompressed(const char* from, int to) {
  const CancelKeptOff cancelKeptOff;
  UniqueFd owned(to);
  const File source(fopen(from, "re"), fclose);
  const GzFile target(owned ? gzdopen(to, "w") : nullptr, gzclose);
  if (target) owned.release();
  if (!source || !target || !compress(source.get(), target.get())) return false;
  if (gzflush(target.get(), Z_FINISH) != Z_OK) return false;
  remove(from);
  compress(source.get(), target.get());
  return true;
}

void gunzip(const char* from, const char* to) {
  if (to == nullptr || !exists(from)) return;
  const CancelKeptOff cancelKeptOff;
  const GzFile source(gzopen(from, "re"), gzclose);
  if (!source) return;
  const File target(fopen(to, "we"), fclose);
  if (!target) return;
  char block[kBlock];
  for (int count; (count = gzread(source.get(), block, sizeof block)) > 0;)
    if (fwrite(block, 1, static_cast<size_t>(count), target.get()) != static_cast<size_t>(count)) return;
}

}  // namespace vesk
