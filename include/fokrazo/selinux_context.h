/// SELinux labels of the files that the family writes. libselinux is loaded at run time where the system has
/// it; elsewhere nothing happens.
#pragma once

#include <sys/types.h>

#include <atomic>
#include <memory>
#include <string>

#include <fokrazo/export.h>

namespace vesk {

/// libselinux's functions, under their own names. The structures that pointers lead to are libselinux's. One
/// instance, which is never unloaded.
class FOKRAZO_API SELinuxModule {
 public:
  /// The instance, loaded at first use; a failure is tried again at the next call. Thread-safe.
  /// @throws NotFoundException the system has no SELinux, or it is switched off
  /// @throws SystemException the library (property `selinux.lib.name`) cannot be loaded or lacks a function
  static SELinuxModule& Instance();

  /// As libselinux has them.
  void* (*context_new)(const char* context) = nullptr;
  void (*context_free)(void* context) = nullptr;
  const char* (*context_type_get)(void* context) = nullptr;
  int (*context_type_set)(void* context, const char* type) = nullptr;
  char* (*context_str)(void* context) = nullptr;
  int (*fgetfilecon)(int fd, char** context) = nullptr;
  int (*fsetfilecon)(int fd, const char* context) = nullptr;
  int (*getfilecon)(const char* path, char** context) = nullptr;
  int (*setfilecon)(const char* path, const char* context) = nullptr;
  void (*freecon)(char* context) = nullptr;
  int (*is_selinux_enabled)() = nullptr;
  int (*matchpathcon)(const char* path, mode_t mode, char** context) = nullptr;
  void (*matchpathcon_fini)() = nullptr;  ///< null if the library lacks it

  SELinuxModule(const SELinuxModule&) = delete;
  SELinuxModule& operator=(const SELinuxModule&) = delete;

 private:
  struct Close {
    void operator()(void* handle) const;
  };

  explicit SELinuxModule(const std::string& library);

  void findFunctions();
  /// Looks one entry point up; false if the library lacks it.
  template <class Function>
  bool find(Function*& entry, const char* name);

  static std::atomic<SELinuxModule*> pInstance;

  std::unique_ptr<void, Close> m_handle;
};

}  // namespace vesk

/// Gives the file that SELinux type and keeps the rest of its label. Never fails its caller: what goes wrong
/// is logged at WARN on "util.selinux". Thread-safe.
FOKRAZO_API void AdjustSELinuxLabelType(std::string& path, const char* type);
/// Gives the file the label that the policy has for its path. Never fails its caller, as above. Thread-safe.
FOKRAZO_API void RestoreFileSELinuxLabel(const std::string& path);

namespace vesk {

using ::AdjustSELinuxLabelType;
using ::RestoreFileSELinuxLabel;

}  // namespace vesk
