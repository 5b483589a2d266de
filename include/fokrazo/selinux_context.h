/// SELinux labels of the files that the family writes. libselinux is loaded at run time; without it, labels
/// are left alone.
#pragma once

#include <sys/types.h>

#include <atomic>
#include <memory>
#include <string>

#include <fokrazo/export.h>

namespace vesk {

/// libselinux's functions, under their own names; void pointers are its context_t. One instance, which is
/// never unloaded.
class FOKRAZO_API SELinuxModule {
 public:
  /// The instance, loaded on first use; after a failure the next call tries again. Thread-safe.
  /// @throws NotFoundException the system has no SELinux, or it is disabled
  /// @throws SystemException the library (property `selinux.lib.name`) cannot be loaded or lacks a function
  static SELinuxModule& Instance();

  /// As in libselinux.
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
  /// Looks a function up; false if the library lacks it.
  template <class Function>
  bool find(Function*& entry, const char* name);

  static std::atomic<SELinuxModule*> pInstance;

  std::unique_ptr<void, Close> m_handle;
};

}  // namespace vesk

/// Sets the type in the file's SELinux label. Errors are only logged, at WARN on "util.selinux". Thread-safe.
FOKRAZO_API void AdjustSELinuxLabelType(std::string& path, const char* type);
/// Sets the label that the policy defines for the path. Errors are handled as above. Thread-safe.
FOKRAZO_API void RestoreFileSELinuxLabel(const std::string& path);

namespace vesk {

using ::AdjustSELinuxLabelType;
using ::RestoreFileSELinuxLabel;

}  // namespace vesk
