// A stand-in for libselinux: the label of a file is the text of the file with ".label" behind its name. The
// environment tells it what to do: FAKE_SELINUX_FAIL names a function that fails, FAKE_SELINUX_OFF switches
// SELinux off, FAKE_SELINUX_DEFAULT is the policy's label. Labels are "user:role:type:level".

#include <sys/types.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <string>

namespace {

struct Context {
  std::string head;
  std::string type;
  std::string tail;
  std::string text;
};

bool fails(const char* function) {
  const char* wanted = getenv("FAKE_SELINUX_FAIL");
  if (!wanted || strcmp(wanted, function) != 0) return false;
  errno = EPERM;
  return true;
}

std::string pathOf(int fd) {
  char buffer[PATH_MAX] = "";
  if (readlink(("/proc/self/fd/" + std::to_string(fd)).c_str(), buffer, sizeof buffer - 1) < 0) return "";
  return buffer;
}

int readLabel(const std::string& path, char** context) {
  std::ifstream file(path + ".label");
  std::string label;
  if (!std::getline(file, label)) {
    errno = ENODATA;
    return -1;
  }
  *context = strdup(label.c_str());
  return static_cast<int>(label.size() + 1);
}

int writeLabel(const std::string& path, const char* context) {
  std::ofstream file(path + ".label");
  file << context << " written\n";
  return 0;
}

}  // namespace

extern "C" {

int is_selinux_enabled() {
  return getenv("FAKE_SELINUX_OFF") ? 0 : 1;
}

void* context_new(const char* text) {
  const std::string label = text;
  const size_t type = label.find(':', label.find(':') + 1) + 1;
  const size_t tail = label.find(':', type);
  return new Context{label.substr(0, type), label.substr(type, tail - type), label.substr(tail), ""};
}

void context_free(void* context) {
  delete static_cast<Context*>(context);
}

const char* context_type_get(void* context) {
  return static_cast<Context*>(context)->type.c_str();
}

int context_type_set(void* context, const char* type) {
  if (fails("context_type_set")) return -1;
  static_cast<Context*>(context)->type = type;
  return 0;
}

char* context_str(void* context) {
  Context& parts = *static_cast<Context*>(context);
  parts.text = parts.head + parts.type + parts.tail;
  return parts.text.data();
}

int fgetfilecon(int fd, char** context) {
  return fails("fgetfilecon") ? -1 : readLabel(pathOf(fd), context);
}

int fsetfilecon(int fd, const char* context) {
  return fails("fsetfilecon") ? -1 : writeLabel(pathOf(fd), context);
}

int getfilecon(const char* path, char** context) {
  return fails("getfilecon") ? -1 : readLabel(path, context);
}

int matchpathcon(const char*, mode_t, char** context) {
  if (fails("matchpathcon")) return -1;
  *context = strdup(getenv("FAKE_SELINUX_DEFAULT"));
  return 0;
}

void freecon(char* context) {
  free(context);
}

#ifndef INCOMPLETE
int setfilecon(const char* path, const char* context) {
  return fails("setfilecon") ? -1 : writeLabel(path, context);
}

void matchpathcon_fini() {
  setenv("FAKE_SELINUX_FINI", "called", 1);
}
#endif
}
