// Runs a program in a private world: PROGRAM sees a copy of /etc that it may change, an empty /etc/velmora,
// /var/velmora, /var/log and /var/run, and a /dev with no log socket, and it sees itself as root. The host
// stays as it is. Where the kernel grants no namespaces it exits with 77, which the test runner reports as
// skipped.

#include <dirent.h>
#include <fcntl.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <initializer_list>
#include <string>
#include <system_error>

namespace fs = std::filesystem;

namespace {

constexpr int kSkipped = 77;

[[noreturn]] void skip(const char* what) {
  fprintf(stderr, "private_world: skipped, %s: %s\n", what, strerror(errno));
  exit(kSkipped);
}

[[noreturn]] void fail(const std::string& what) {
  fprintf(stderr, "private_world: %s: %s\n", what.c_str(), strerror(errno));
  exit(1);
}

void writeText(const char* path, const std::string& text) {
  std::ofstream file(path);
  file << text;
  file.close();
  if (!file) fail(path);
}

// The id maps must stand before the first file is made: until then every new file has no owner.
void enterNamespaces() {
  const uid_t uid = geteuid();
  const gid_t gid = getegid();
  if (uid == 0 && unshare(CLONE_NEWNS) == 0) return;
  if (unshare(CLONE_NEWUSER | CLONE_NEWNS) != 0) skip("no namespaces here");
  writeText("/proc/self/setgroups", "deny");
  writeText("/proc/self/uid_map", "0 " + std::to_string(uid) + " 1");
  writeText("/proc/self/gid_map", "0 " + std::to_string(gid) + " 1");
}

void mountOver(const fs::path& source, const fs::path& target) {
  if (mount(source.c_str(), target.c_str(), nullptr, MS_BIND | MS_REC, nullptr) != 0)
    fail("bind " + target.string());
}

void makeDirectory(const fs::path& path, mode_t mode) {
  if (mkdir(path.c_str(), mode) != 0 && errno != EEXIST) fail("mkdir " + path.string());
  if (chmod(path.c_str(), mode) != 0) fail("chmod " + path.string());
}

// What the caller may not read is left out.
void copyTree(const fs::path& from, const fs::path& to) {
  std::error_code ignored;
  for (const fs::directory_entry& entry : fs::directory_iterator(from, ignored)) {
    const fs::path target = to / entry.path().filename();
    if (entry.is_symlink(ignored)) {
      fs::copy_symlink(entry.path(), target, ignored);
    } else if (entry.is_directory(ignored)) {
      makeDirectory(target, 0755);
      copyTree(entry.path(), target);
    } else if (entry.is_regular_file(ignored)) {
      fs::copy_file(entry.path(), target, ignored);
    }
  }
}

void makeEtc(const fs::path& stage) {
  makeDirectory(stage, 0755);
  copyTree("/etc", stage);
  fs::remove_all(stage / "velmora");
  makeDirectory(stage / "velmora", 0755);
}

// All of /var but what the library writes stays the host's.
void makeVar(const fs::path& stage) {
  makeDirectory(stage, 0755);
  for (const char* fresh : {"velmora", "log", "run"}) makeDirectory(stage / fresh, 0755);
  for (const fs::directory_entry& entry : fs::directory_iterator("/var")) {
    const std::string name = entry.path().filename();
    if (name == "velmora" || name == "log" || name == "run" || name == "zantrel") continue;
    const fs::path target = stage / name;
    if (entry.is_symlink()) {
      fs::copy_symlink(entry.path(), target);
    } else if (entry.is_directory()) {
      makeDirectory(target, 0755);
      mountOver(entry.path(), target);
    }
  }
}

// Device nodes cannot be made in a user namespace, so the host's are mounted in.
void makeDev(const fs::path& stage) {
  makeDirectory(stage, 0755);
  for (const char* node : {"null", "zero", "full", "random", "urandom", "tty", "ptmx"}) {
    const fs::path device = fs::path("/dev") / node;
    if (!fs::exists(device)) continue;
    if (fs::is_symlink(device)) {
      fs::copy_symlink(device, stage / node);
      continue;
    }
    close(open((stage / node).c_str(), O_CREAT | O_WRONLY, 0666));
    mountOver(device, stage / node);
  }
  for (const char* directory : {"pts", "shm"}) {
    if (!fs::is_directory(fs::path("/dev") / directory)) continue;
    makeDirectory(stage / directory, 0755);
    mountOver(fs::path("/dev") / directory, stage / directory);
  }
  fs::create_symlink("/proc/self/fd", stage / "fd");
  fs::create_symlink("/proc/self/fd/0", stage / "stdin");
  fs::create_symlink("/proc/self/fd/1", stage / "stdout");
  fs::create_symlink("/proc/self/fd/2", stage / "stderr");
}

void makeWorld() {
  if (mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0) skip("mounts cannot be made private");
  char stageName[] = "/tmp/private-world-XXXXXX";
  if (mkdtemp(stageName) == nullptr) fail("mkdtemp");
  const fs::path stage = stageName;
  if (mount("tmpfs", stageName, "tmpfs", 0, "mode=0755") != 0) {
    rmdir(stageName);
    skip("no tmpfs here");
  }
  umask(022);
  makeEtc(stage / "etc");
  makeVar(stage / "var");
  makeDev(stage / "dev");
  for (const char* name : {"etc", "var", "dev"}) mountOver(stage / name, fs::path("/") / name);
  if (umount2(stageName, MNT_DETACH) != 0 || rmdir(stageName) != 0) fail("leaving the stage");
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 2) {
    fprintf(stderr, "usage: private_world PROGRAM [ARGUMENT ...]\n");
    return 2;
  }
  enterNamespaces();
  try {
    makeWorld();
  } catch (const std::exception& error) {
    fprintf(stderr, "private_world: %s\n", error.what());
    return 1;
  }
  execvp(argv[1], argv + 1);
  fail(argv[1]);
}
