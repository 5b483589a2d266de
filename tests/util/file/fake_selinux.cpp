// A fake libselinux, in which all files have the same label, "user:role:type:level". Environment variables
// set that label (FAKE_LABEL) and the policy's (FAKE_DEFAULT), name a failing function (FAKE_FAIL), and
// disable SELinux (FAKE_OFF).

#include <sys/types.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <string>

namespace {

bool fails(const char* function) {
  const char* failing = getenv("FAKE_FAIL");
  errno = EPERM;
  return failing && strcmp(failing, function) == 0;
}

int read(const char* function, const char* variable, char** context) {
  return fails(function) ? -1 : (*context = strdup(getenv(variable)), 0);
}

int write(const char* function, const char* context) {
  return fails(function) ? -1 : setenv("FAKE_LABEL", (std::string(context) + " written").c_str(), 1);
}

/// The target of the interface's "void*": "user:role:", the type, ":level", and the whole label.
struct FakeContext {
  std::string begin, type, end, text;
};

FakeContext& at(void* context) {
  return *static_cast<FakeContext*>(context);
}

}  // namespace

extern "C" {

// clang-format off
int is_selinux_enabled() { return getenv("FAKE_OFF") ? 0 : 1; }
void* context_new(const char* text) {
  const std::string label = text;
  const size_t type = label.find(':', label.find(':') + 1) + 1, end = label.find(':', type);
  return new FakeContext{label.substr(0, type), label.substr(type, end - type), label.substr(end), label};
}
void context_free(void* context) { delete &at(context); }
const char* context_type_get(void* context) { return at(context).type.c_str(); }
int context_type_set(void* context, const char* type) {
  at(context).text = at(context).begin + type + at(context).end;
  return fails("context_type_set") ? -1 : 0;
}
char* context_str(void* context) { return at(context).text.data(); }
int fgetfilecon(int, char** context) { return read("fgetfilecon", "FAKE_LABEL", context); }
int getfilecon(const char*, char** context) { return read("getfilecon", "FAKE_LABEL", context); }
int matchpathcon(const char*, mode_t, char** context) { return read("matchpathcon", "FAKE_DEFAULT", context); }
int fsetfilecon(int, const char* context) { return write("fsetfilecon", context); }
int setfilecon(const char*, const char* context) { return write("setfilecon", context); }
void freecon(char* context) { free(context); }
#ifndef OLD
void matchpathcon_fini() { setenv("FAKE_FINI", "called", 1); }
#endif
// clang-format on
}
