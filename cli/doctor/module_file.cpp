#include "cli/doctor/module_file.h"

#include <dlfcn.h>
#include <glob.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <set>
#include <sstream>
#include <vector>

#include <fokrazo/strutil.h>
#include "cli/child_pipe.h"
#include "cli/doctor/shell_word.h"
#include "cli/doctor/tampering.h"
#include "cli/doctor/text_file.h"
#include "cli/shown.h"

namespace cli {

const ModuleKind kNameServiceModule = {"libnss_fokrazo.so.2", "", "_nss_fokrazo_getpwnam_r",
                                       "libnss-fokrazo"};
const ModuleKind kPamModule = {"pam_fokrazo.so", "/security", "pam_sm_authenticate", "libpam-fokrazo"};

namespace {

constexpr std::chrono::seconds kLongestLoading(5);
constexpr size_t kLongestFault = 300;  // what is shown of a message

// The folders of the loader's configuration, as ldconfig(8) reads it. Each file is read once, because files
// may include each other.
class LoaderConfig {
 public:
  LoaderConfig() { read("/etc/ld.so.conf"); }
  const std::vector<std::string>& folders() const { return m_folders; }

 private:
  void read(const std::string& file) {
    if (!m_files.insert(file).second) return;
    for (const std::string& line : linesOf(file)) {
      std::istringstream words(line.substr(0, line.find('#')));
      std::string word;
      words >> word;
      if (word == "include")
        while (words >> word) include(word);
      else if (!word.empty() && word[0] == '/')
        m_folders.push_back(word);
    }
  }

  void include(const std::string& pattern) {
    glob_t found = {};
    const std::string path = pattern.compare(0, 1, "/") == 0 ? pattern : "/etc/" + pattern;
    if (glob(path.c_str(), 0, nullptr, &found) == 0)
      for (size_t i = 0; i < found.gl_pathc; ++i) read(found.gl_pathv[i]);
    globfree(&found);
  }

  std::vector<std::string> m_folders;
  std::set<std::string> m_files;
};

std::vector<std::string> libraryFolders() {
  std::vector<std::string> folders;
  Dl_info library = {};
  if (dladdr(reinterpret_cast<void*>(&getpid), &library) != 0 && library.dli_fname[0] == '/') {
    const std::string path = library.dli_fname;
    folders.push_back(path.substr(0, path.rfind('/')));
  }
  folders.insert(folders.end(), {"/lib64", "/lib", "/usr/lib64", "/usr/lib"});
  const LoaderConfig config;
  folders.insert(folders.end(), config.folders().begin(), config.folders().end());
  return folders;
}

// In the child: tries to load the module and writes why that fails.
[[noreturn]] void tryLoading(const ModuleKind& kind, const std::string& path, int out) {
  std::string failure;
  void* module = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
  if (!module) {
    failure = dlerror();
    if (failure.compare(0, path.size() + 2, path + ": ") == 0) failure.erase(0, path.size() + 2);
  } else if (!dlsym(module, kind.function)) {
    failure = std::string("it has no function ") + kind.function;
  }
  const ssize_t written = write(out, failure.data(), failure.size());
  _exit(written == static_cast<ssize_t>(failure.size()) ? 0 : 1);
}

// Why the module cannot be loaded; empty if it can.
std::string loadingFault(const ModuleKind& kind, const std::string& path) {
  int ends[2];
  if (!openPipe(ends)) return std::string("no pipe: ") + strerror(errno);
  const pid_t child = fork();
  if (child == 0) tryLoading(kind, path, ends[1]);
  close(ends[1]);
  std::string failure;
  const auto end = std::chrono::steady_clock::now() + kLongestLoading;
  if (child > 0) readWithin(ends[0], end, failure, kLongestFault);
  close(ends[0]);
  if (child < 0) return std::string("no process: ") + strerror(errno);
  const std::optional<int> status = reap(child, end);
  if (!status) return "loading it does not end";
  return WIFEXITED(*status) && WEXITSTATUS(*status) == 0 ? failure : "loading it ends the program";
}

}  // namespace

std::string findModule(const ModuleKind& kind) {
  for (const std::string& folder : libraryFolders()) {
    const std::string path = folder + kind.subfolder + '/' + kind.file;
    if (access(path.c_str(), F_OK) == 0) return path;
  }
  return "";
}

void checkModule(Findings& findings, const ModuleKind& kind, const std::string& path) {
  if (!checkTampering(findings, path)) return;
  const std::string fault = loadingFault(kind, path);
  if (!fault.empty())
    findings.problem(shown(path) + " cannot be loaded: " + shown(fault), "install it again",
                     "apt-get install --reinstall " + std::string(kind.package));
}

std::string installCommand(const ModuleKind& kind) {
  return std::string("apt-get install ") + kind.package;
}

}  // namespace cli
