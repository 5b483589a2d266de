#include <fokrazo/selinux_context.h>

#include <dlfcn.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstring>
#include <functional>
#include <memory>

#include <fokrazo/log.h>
#include <fokrazo/mutex.h>
#include "util/error/throw.h"
#include "util/file/open_file.h"
#include "util/hook/hooks.h"
#include "util/thread/fork_locks.h"

using vesk::Lock;
using vesk::Mutex;
using vesk::SELinuxModule;
using vesk::SystemException;
using vesk::UniqueFd;

namespace {

constexpr char kSource[] = "util/selinux_context";
constexpr char kLogger[] = "util.selinux";
constexpr char kDefaultLibrary[] = "libselinux.so.1";
constexpr const char* kEnforceFiles[] = {"/selinux/enforce", "/sys/fs/selinux/enforce"};

/// Guards the creation of the module.
Mutex& gSelinuxInstanceMutex() {
  return vesk::forkedLock(vesk::ForkOrder::SelinuxModule);
}

/// matchpathcon is not thread-safe.
Mutex& gSelinuxMutex() {
  return vesk::forkedLock(vesk::ForkOrder::SelinuxLabels);
}

using Context = std::unique_ptr<char, std::function<void(char*)>>;
using ContextObject = std::unique_ptr<void, std::function<void(void*)>>;

Context contextOf(SELinuxModule& module, char* text) {
  return Context(text, module.freecon);
}

bool isSystemWithSELinux() {
  struct stat info;
  for (const char* file : kEnforceFiles)
    if (::stat(file, &info) == 0) return true;
  return false;
}

std::string libraryName() {
  const std::string name = vesk::kHooks.selinuxLibrary();
  return name.empty() ? kDefaultLibrary : name;
}

[[noreturn]] void throwMissingFunction() {
  FOKRAZO_THROW(SystemException, "SystemException", 0, "Get SELinux API function pointer failed.");
}

// Reports a failed call, with its file.
[[noreturn]] void throwFailed(int error, const char* literal, const std::string& path) {
  FOKRAZO_THROW_ERRNO(SystemException, "SystemException", error, error, literal, path.c_str());
}

void setType(SELinuxModule& module, const std::string& path, int fd, const char* original, const char* type) {
  const ContextObject context(module.context_new(original), module.context_free);
  if (!context) throwFailed(errno, "Failed to get the original security context: %s.", path);
  const char* present = module.context_type_get(context.get());
  if (present && strcmp(present, type) == 0) {
    VESK_LOG_TO(kLogger, Trace, "selinux label of %s is ok : %s", path.c_str(), original);
    return;
  }
  if (module.context_type_set(context.get(), type) != 0)
    throwFailed(errno, "Failed to set security type: %s.", type);
  const char* wanted = module.context_str(context.get());
  if (!wanted) throwFailed(errno, "Failed to set security type: %s.", type);
  const char* outcome = module.fsetfilecon(fd, wanted) == 0 ? "Success" : "Failed";
  VESK_LOG_TO(kLogger, Debug, "%s to change the file[%s] security context from %s to %s. ", outcome,
              path.c_str(), original, wanted);
}

void adjustType(const std::string& path, const char* type) {
  SELinuxModule& module = SELinuxModule::Instance();
  const UniqueFd fd = vesk::openFile(path);
  if (!fd) throwFailed(errno, "Open %s failed. Skip SELinux check.", path);
  struct stat info;
  if (::fstat(fd.get(), &info) != 0)
    throwFailed(errno, "Failed to get file (%s) stat. Skip SELinux check.", path);
  char* text = nullptr;
  if (module.fgetfilecon(fd.get(), &text) < 0 || !text)
    throwFailed(errno, "Failed to get the original security context: %s.", path);
  const Context original = contextOf(module, text);
  setType(module, path, fd.get(), original.get(), type);
}

Context policyContext(SELinuxModule& module, const std::string& path, mode_t mode) {
  Lock lock(gSelinuxMutex());
  char* text = nullptr;
  const int result = module.matchpathcon(path.c_str(), mode, &text);
  const int error = errno;
  if (module.matchpathcon_fini) module.matchpathcon_fini();
  if (result != 0 || !text) throwFailed(error, "Failed to get the default security context for %s.", path);
  return contextOf(module, text);
}

void restoreLabel(const std::string& path) {
  SELinuxModule& module = SELinuxModule::Instance();
  struct stat info;
  if (::stat(path.c_str(), &info) != 0)
    throwFailed(errno, "Failed to get stat for (%s). Skip SELinux check.", path);
  char* text = nullptr;
  if (module.getfilecon(path.c_str(), &text) < 0 || !text)
    throwFailed(errno, "Failed to get the original security context for %s.", path);
  const Context original = contextOf(module, text);
  const Context wanted = policyContext(module, path, info.st_mode);
  if (strcmp(original.get(), wanted.get()) == 0) {
    VESK_LOG_TO(kLogger, Trace, "The context is same as default. No need to change");
    return;
  }
  const char* outcome = module.setfilecon(path.c_str(), wanted.get()) == 0 ? "Success" : "Failed";
  VESK_LOG_TO(kLogger, Debug, "%s to change the security context for '%s' from %s to %s. ", outcome,
              path.c_str(), original.get(), wanted.get());
}

}  // namespace

void AdjustSELinuxLabelType(std::string& path, const char* type) {
  try {
    adjustType(path, type);
  } catch (const SystemException& failure) {
    VESK_LOG_TO(kLogger, Warn, "%s. Please run 'restorecon' on the file '%s'", failure.what(), path.c_str());
  } catch (const std::exception&) {
    // No SELinux, as on most systems.
  }
}

void RestoreFileSELinuxLabel(const std::string& path) {
  try {
    restoreLabel(path);
  } catch (const SystemException& failure) {
    VESK_LOG_TO(kLogger, Warn, "%s. Please run 'restorecon' on '%s'", failure.what(), path.c_str());
  } catch (const std::exception&) {
    // As above.
  }
}

namespace vesk {

std::atomic<SELinuxModule*> SELinuxModule::pInstance{nullptr};

SELinuxModule& SELinuxModule::Instance() {
  SELinuxModule* instance = pInstance.load(std::memory_order_acquire);
  if (instance) return *instance;
  if (!isSystemWithSELinux())
    FOKRAZO_THROW(NotFoundException, "NotFoundException", 0, "The system does not have SELinux");
  // Before the lock, because a thread that saves the configuration sets labels with the configuration's lock
  // held.
  const std::string library = libraryName();
  Lock lock(gSelinuxInstanceMutex());
  instance = pInstance.load(std::memory_order_relaxed);
  if (!instance) {
    instance = new SELinuxModule(library);
    pInstance.store(instance, std::memory_order_release);
  }
  return *instance;
}

SELinuxModule::SELinuxModule(const std::string& library) {
  m_handle.reset(::dlopen(library.c_str(), RTLD_LAZY));
  if (!m_handle)
    FOKRAZO_THROW(SystemException, "SystemException", 0, "Load %s failed: %s", library.c_str(), ::dlerror());
  if (!find(is_selinux_enabled, "is_selinux_enabled")) throwMissingFunction();
  if (is_selinux_enabled() == 0)
    FOKRAZO_THROW(NotFoundException, "NotFoundException", 0, "SELinux is NOT enabled");
  findFunctions();
}

void SELinuxModule::findFunctions() {
  const bool all = find(context_new, "context_new") && find(context_free, "context_free") &&
                   find(context_type_get, "context_type_get") && find(context_type_set, "context_type_set") &&
                   find(context_str, "context_str") && find(fgetfilecon, "fgetfilecon") &&
                   find(fsetfilecon, "fsetfilecon") && find(getfilecon, "getfilecon") &&
                   find(setfilecon, "setfilecon") && find(freecon, "freecon") &&
                   find(matchpathcon, "matchpathcon");
  if (!all) throwMissingFunction();
  if (find(matchpathcon_fini, "matchpathcon_fini"))
    VESK_LOG_TO(kLogger, Trace, "SELinux library has matchpathcon_fini.");
  else
    VESK_LOG_TO(kLogger, Trace, "SELinux library doesn't have matchpathcon_fini.");
  VESK_LOG_TO(kLogger, Trace, "Get SELinux API function pointer success. Continue.");
}

template <class Function>
bool SELinuxModule::find(Function*& entry, const char* name) {
  entry = reinterpret_cast<Function*>(::dlsym(m_handle.get(), name));
  return entry != nullptr;
}

void SELinuxModule::Close::operator()(void* handle) const {
  ::dlclose(handle);
}

}  // namespace vesk
