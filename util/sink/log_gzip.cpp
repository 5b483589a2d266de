#include <fokrazo/log_gzip.h>

#include <sys/stat.h>
#include <zlib.h>

#include <cstdio>
#include <memory>
#include <new>

#include "util/file/open_file.h"
#include "util/file/unique_fd.h"
#include "util/thread/thread_internal.h"

namespace vesk {
namespace {

// Bytes copied at a time. The block is not on the stack, because log calls may compress.
constexpr unsigned int kBlock = 16384;

using Block = std::unique_ptr<char[]>;

Block makeBlock() {
  return Block(new (std::nothrow) char[kBlock]);
}

using File = std::unique_ptr<FILE, int (*)(FILE*)>;
using GzFile = std::unique_ptr<gzFile_s, int (*)(gzFile)>;

bool exists(const char* path) {
  struct stat ignored;
  return path != nullptr && stat(path, &ignored) == 0;
}

File fileOn(UniqueFd fd, const char* mode) {
  File file(fd ? fdopen(fd.get(), mode) : nullptr, fclose);
  if (file) fd.release();
  return file;
}

GzFile gzFileOn(UniqueFd fd, const char* mode) {
  GzFile file(fd ? gzdopen(fd.get(), mode) : nullptr, gzclose);
  if (file) fd.release();
  return file;
}

UniqueFd openTarget(const char* path) {
  constexpr mode_t kUmaskDecides = 0666;
  return openFile(path, Open::Write | Open::Create | Open::Truncate, kUmaskDecides);
}

// Continues after the last call.
bool compress(FILE* source, gzFile target) {
  const Block block = makeBlock();
  if (!block) return false;
  clearerr(source);
  for (size_t count; (count = fread(block.get(), 1, kBlock, source)) > 0;)
    if (gzwrite(target, block.get(), static_cast<unsigned int>(count)) <= 0) return false;
  return ferror(source) == 0;
}

}  // namespace

void gzip(const char* from, const char* to) {
  if (to == nullptr || !exists(from)) return;
  const CancelKeptOff cancelKeptOff;
  const File source = fileOn(openFile(from), "r");
  if (!source) return;
  const GzFile target = gzFileOn(openTarget(to), "w");
  if (target) compress(source.get(), target.get());
}

// Copies again after removing the file, to include lines written meanwhile. Later writers notice the removal.
bool moveCompressed(const char* from, int to) {
  const CancelKeptOff cancelKeptOff;
  const GzFile target = gzFileOn(UniqueFd(to), "w");
  const File source = fileOn(openFile(from), "r");
  if (!source || !target || !compress(source.get(), target.get())) return false;
  if (gzflush(target.get(), Z_FINISH) != Z_OK) return false;
  remove(from);
  compress(source.get(), target.get());
  return true;
}

void gunzip(const char* from, const char* to) {
  if (to == nullptr || !exists(from)) return;
  const CancelKeptOff cancelKeptOff;
  const GzFile source = gzFileOn(openFile(from), "r");
  if (!source) return;
  const File target = fileOn(openTarget(to), "w");
  if (!target) return;
  const Block block = makeBlock();
  if (!block) return;
  for (int count; (count = gzread(source.get(), block.get(), kBlock)) > 0;)
    if (fwrite(block.get(), 1, static_cast<size_t>(count), target.get()) != static_cast<size_t>(count))
      return;
}

}  // namespace vesk
