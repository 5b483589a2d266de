// The name-service module as the C library calls it, in the private world: its status and errno for problems
// with buffers, descriptors, threads or the daemon. Each test needs a process of its own: the module's client
// remembers that the daemon was away.
// usage: nss_module_test MODULE

#include <dlfcn.h>
#include <grp.h>
#include <nss.h>
#include <pwd.h>

#include "tests/support/scratch_test.h"
#include "tests/support/standin_process.h"

namespace {

using testsupport::checkInChild;
using testsupport::openDescriptors;

constexpr char kSocket[] = "/var/velmora/daemon";
const std::vector<std::string> kAtTheSocket = {"--socket", kSocket};
constexpr char kUser[] = "lquispe";  // only in the primary group
constexpr char kUserLine[] = "lquispe:x:Liên Quispe:/home/lquispe:/bin/false:10060:20004";
constexpr char kGroup[] = "Büro";
constexpr char kAway[] = "UNAVAIL ECONNREFUSED";
constexpr size_t kLarge = 4096;
constexpr char kFill = 0x5a;

void* g_module;
std::function<void()> g_atConnect;
thread_local void (*t_atNew)() = nullptr;  // called once

template <class Function>
Function* function(const char* name) {
  return reinterpret_cast<Function*>(dlsym(g_module, (std::string("_nss_fokrazo_") + name).c_str()));
}

template <class Entry>
using ByName = nss_status(const char*, Entry*, char*, size_t, int*);
template <class Entry>
using Next = nss_status(Entry*, char*, size_t, int*);

std::string lineOf(const passwd& user) {
  std::string line = user.pw_name;
  for (const char* field : {user.pw_passwd, user.pw_gecos, user.pw_dir, user.pw_shell})
    line += std::string(":") + field;
  return line + ":" + std::to_string(user.pw_uid) + ":" + std::to_string(user.pw_gid);
}

std::string lineOf(const group& group) {
  std::string line = std::string(group.gr_name) + ":" + group.gr_passwd + ":" + std::to_string(group.gr_gid);
  for (char** member = group.gr_mem; *member; ++member) line += std::string(",") + *member;
  return line;
}

/// "SUCCESS", or the status with its errno.
std::string text(nss_status status, int error) {
  const char* const names[] = {"TRYAGAIN", "UNAVAIL", "NOTFOUND", "SUCCESS"};
  const std::string name = names[status + 2];
  return status == NSS_STATUS_SUCCESS ? name : name + " " + strerrorname_np(error);
}

/// Calls with larger and larger buffers until the entry fits, and returns it, or the status with its errno.
/// Until then nothing but the buffer may change.
template <class Entry, class Call>
std::string growUntilItFits(Call call, size_t first) {
  for (size_t size = first; size <= kLarge; ++size) {
    std::string buffer(kLarge, kFill);
    Entry entry, untouched;
    memset(&entry, kFill, sizeof entry);
    memset(&untouched, kFill, sizeof untouched);
    int error = 0;
    const nss_status status = call(&entry, buffer.data(), size, &error);
    EXPECT_EQ(buffer.find_first_not_of(kFill, size), std::string::npos) << size;
    if (status == NSS_STATUS_SUCCESS) return lineOf(entry);
    if (text(status, error) != "TRYAGAIN ERANGE") return text(status, error);
    EXPECT_EQ(memcmp(&entry, &untouched, sizeof entry), 0) << size;
  }
  return "nothing fits";
}

template <class Entry>
std::string askFor(const char* functionName, const char* name, size_t first = kLarge) {
  const auto call = [&](auto... places) { return function<ByName<Entry>>(functionName)(name, places...); };
  return growUntilItFits<Entry>(call, first);
}

std::string askFor(const char* user) {
  return askFor<passwd>("getpwnam_r", user);
}

/// Asks until the module, which has found the daemon away, turns to it again.
std::string askUntilItIsBack() {
  std::string answer = kAway;
  for (int i = 0; answer == kAway && i < 6000; ++i) {
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
    answer = askFor(kUser);
  }
  return answer;
}

TEST(NssModule, ABufferThatIsTooSmallIsReported) {
  const StandinProcess daemon(kAtTheSocket);
  EXPECT_EQ(askFor<passwd>("getpwnam_r", kUser, 0), kUserLine);
  EXPECT_EQ(askFor<group>("getgrnam_r", kGroup, 0), "Büro:x:20002,dgruber,mgruber,ygruber,rquispe");
}

/// All entries, then two items for the end of the listing. Begins each with a buffer of size `first`.
template <class Entry>
std::vector<std::string> listAll(const std::string& name, size_t first) {
  auto* const next = function<Next<Entry>>(("get" + name + "_r").c_str());
  EXPECT_EQ(function<nss_status(int)>(("set" + name).c_str())(0), NSS_STATUS_SUCCESS);
  std::vector<std::string> lines;
  for (int ends = 0; ends < 2;) {
    lines.push_back(growUntilItFits<Entry>(next, first));
    if (lines.back().find(':') == std::string::npos) ++ends;
  }
  EXPECT_EQ(function<nss_status()>(("end" + name).c_str())(), NSS_STATUS_SUCCESS);
  return lines;
}

TEST(NssModule, AnEnumerationLosesNoEntryToASmallBuffer) {
  const StandinProcess daemon(kAtTheSocket);
  const std::vector<std::string> users = listAll<passwd>("pwent", kLarge),
                                 groups = listAll<group>("grent", kLarge);
  EXPECT_EQ(users.size(), 21u);  // without a user of the sample in root's group
  EXPECT_EQ(groups.size(), 4u);  // without a group with an unsafe name
  EXPECT_EQ(users.back(), "NOTFOUND ENOENT");
  EXPECT_EQ(listAll<passwd>("pwent", 0), users);
  EXPECT_EQ(listAll<group>("grent", 0), groups);
}

TEST(NssModule, AFailureEndsAnEnumerationForGood) {
  const StandinProcess daemon({"--socket", kSocket, "--fault", "drop@3"});
  const std::vector<std::string> lines = listAll<passwd>("pwent", kLarge);
  ASSERT_EQ(lines.size(), 3u);
  EXPECT_EQ(lines[1], kAway);
  EXPECT_EQ(lines[2], kAway);
  EXPECT_EQ(listAll<passwd>("pwent", kLarge).back(), "NOTFOUND ENOENT");
}

TEST(NssModule, AChildDoesNotContinueItsParentsEnumeration) {
  const StandinProcess daemon(kAtTheSocket);
  const auto next = [] { return growUntilItFits<passwd>(function<Next<passwd>>("getpwent_r"), kLarge); };
  const std::vector<std::string> users = listAll<passwd>("pwent", kLarge);
  EXPECT_EQ(next(), users[0]);
  checkInChild([&] {
    EXPECT_EQ(next(), kAway);
    EXPECT_EQ(listAll<passwd>("pwent", kLarge), users);
  });
  EXPECT_EQ(next(), users[1]);
}

TEST(NssModule, AListingGoesOnAfterManyUnusableEntries) {
  constexpr int kUnusable = 12000;
  const auto entry = [](const std::string& name, int uid) {
    return "dn: CN=" + name + ",DC=example,DC=com\nobjectClass: user\nsAMAccountName: " + name +
           "\nuidNumber: " + std::to_string(uid) + "\ngidNumber: 20002\n\n";
  };
  std::ofstream ldif("/var/velmora/unusable.ldif");
  ldif << "version: 1\n\ndn: DC=example,DC=com\nobjectClass: domainDNS\n\n";
  for (int i = 0; i < kUnusable; ++i) ldif << entry("two words " + std::to_string(i), 60000 + i);
  ldif << entry("last", 50000);
  ldif.close();
  const StandinProcess daemon(kAtTheSocket, "/var/velmora/unusable.ldif");
  EXPECT_EQ(listAll<passwd>("pwent", kLarge).front(), "last:x::::50000:20002");
}

TEST(NssModule, EachDaemonFaultHasItsAnswer) {
  const std::pair<std::vector<std::string>, const char*> rows[] = {
      {{"drop", "lose", "short", "cut"}, kAway},
      {{"garbage", "empty"}, "UNAVAIL EIO"},
      {{"refuse"}, "UNAVAIL EACCES"},
      {{"trickle", "drop@1", "restart@1"}, kUserLine},
  };
  for (const auto& [faults, answer] : rows)
    for (const std::string& fault : faults) {
      const StandinProcess daemon({"--socket", kSocket, "--fault", fault});
      EXPECT_EQ(askFor(kUser), answer) << fault;
    }
}

TEST(NssModule, AStoppedDaemonIsUnavailableUntilItIsBack) {
  EXPECT_EQ(askFor("root"), "NOTFOUND ENOENT");  // the daemon is not asked for root
  EXPECT_EQ(askFor(kUser), kAway);
  const StandinProcess daemon(kAtTheSocket);
  EXPECT_EQ(askUntilItIsBack(), kUserLine);
}

TEST(NssModule, AHangIsNotWaitedForByEachLookup) {
  StandinProcess daemon({"--socket", kSocket, "--fault", "stall"});
  std::string answer = askFor(kUser);
  EXPECT_EQ(answer, "TRYAGAIN EAGAIN");
  // On a busy machine the first back-off times may be over before the next lookup.
  for (int i = 0; answer != kAway && i < 5; ++i) answer = askFor(kUser);
  EXPECT_EQ(answer, kAway);
  daemon.restart(kAtTheSocket);
  EXPECT_EQ(askUntilItIsBack(), kUserLine);
}

TEST(NssModule, TheDaemonDoesNotWaitForItself) {
  const int listener = socket(AF_UNIX, SOCK_STREAM, 0);
  sockaddr_un address = {AF_UNIX, {}};
  strcpy(address.sun_path, kSocket);
  ASSERT_EQ(bind(listener, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
  ASSERT_EQ(listen(listener, 5), 0);
  EXPECT_EQ(askFor(kUser), kAway);
  close(listener);
  unlink(kSocket);
}

TEST(NssModule, ACallFromInsideTheLibraryIsRefused) {
  const StandinProcess daemon(kAtTheSocket);
  std::string inner;
  g_atConnect = [&] { inner = askFor(kUser); };
  EXPECT_EQ(askFor(kUser), kUserLine);
  g_atConnect = nullptr;
  EXPECT_EQ(inner, kAway);
}

using Groups = std::vector<gid_t>;

std::string addGroups(const char* user, gid_t primary, long limit, Groups& groups) {
  using InitGroups = nss_status(const char*, gid_t, long*, long*, gid_t**, long, int*);
  long start = static_cast<long>(groups.size()), size = start;
  int error = 0;
  auto* array = static_cast<gid_t*>(malloc(sizeof(gid_t)));
  std::copy(groups.begin(), groups.end(), array);
  const nss_status status =
      function<InitGroups>("initgroups_dyn")(user, primary, &start, &size, &array, limit, &error);
  EXPECT_TRUE(start <= size && (limit <= 0 || size <= limit)) << user << ' ' << size;
  groups.assign(array, array + start);
  free(array);
  return text(status, error);
}

TEST(NssModule, GroupsAreAddedToTheCallersArray) {
  // User, primary group, limit, the groups before, the answer, the groups after.
  const std::tuple<const char*, gid_t, long, Groups, const char*, Groups> rows[] = {
      {"mgruber", 1, -1, {1}, "SUCCESS", {1, 20002}},  // the array must grow
      {"mgruber", 1, 2, {1}, "SUCCESS", {1, 20002}},   {"mgruber", 1, 1, {1}, "SUCCESS", {1}},
      {"mgruber", 1, -1, {20002}, "SUCCESS", {20002}}, {"mgruber", 20002, -1, {}, "SUCCESS", {}},
      {"nosuch", 1, -1, {1}, "NOTFOUND ENOENT", {1}},
  };
  StandinProcess daemon(kAtTheSocket);
  for (const auto& [user, primary, limit, before, answer, after] : rows) {
    Groups groups = before;
    EXPECT_EQ(addGroups(user, primary, limit, groups), answer) << user << limit;
    EXPECT_EQ(groups, after) << user << limit;
  }
  Groups groups = {1};
  daemon.restart({"--socket", kSocket, "--fault", "refuse@2"});  // one of the groups
  EXPECT_EQ(addGroups("mgruber", 1, -1, groups), "UNAVAIL EACCES");
  daemon.kill();
  EXPECT_EQ(addGroups("mgruber", 1, -1, groups), kAway);
  EXPECT_EQ(groups, Groups{1});
}

TEST(NssModule, OneDescriptorIsEnoughAndNoneMeansTryAgain) {
  const StandinProcess daemon(kAtTheSocket);
  const long open = openDescriptors();
  rlimit before;
  getrlimit(RLIMIT_NOFILE, &before);
  const int lowest = dup(0);
  close(lowest);
  Groups groups;
  const auto askWith = [&](int descriptors) {
    const rlimit few = {static_cast<rlim_t>(lowest + descriptors), before.rlim_max};
    setrlimit(RLIMIT_NOFILE, &few);
    const std::string answer = addGroups("mgruber", 1, -1, groups);
    setrlimit(RLIMIT_NOFILE, &before);
    return answer;
  };
  EXPECT_EQ(askWith(0), "TRYAGAIN ENOMEM");
  EXPECT_EQ(askWith(1), "SUCCESS");
  EXPECT_EQ(groups, Groups{20002});
  EXPECT_EQ(openDescriptors(), open) << "a login keeps no connections";
}

TEST(NssModule, ThreadsAndChildrenShareFourConnections) {
  const StandinProcess daemon(kAtTheSocket);
  errno = EDOM;
  ASSERT_EQ(askFor(kUser), kUserLine);
  EXPECT_EQ(errno, EDOM);
  const long before = openDescriptors();
  std::vector<std::thread> threads;
  for (int i = 0; i < 8; ++i)
    threads.emplace_back([] {
      for (int j = 0; j < 20; ++j)
        EXPECT_EQ(askFor(j % 2 ? kUser : "nosuch"), j % 2 ? kUserLine : "NOTFOUND ENOENT");
    });
  for (std::thread& thread : threads) thread.join();
  EXPECT_LE(openDescriptors(), before + 3);

  checkInChild([&] {
    EXPECT_EQ(askFor(kUser), kUserLine);
    EXPECT_EQ(openDescriptors(), before);
  });
  EXPECT_EQ(askFor(kUser), kUserLine);
}

TEST(NssModule, NamesAreLookedUpAtTheEndOfAThreadAndOfTheProgram) {
  const StandinProcess daemon(kAtTheSocket);
  const auto askAtTheEnd = [] {
    atexit([] { _exit(askFor(kUser) == kUserLine ? 0 : 1); });  // runs after those of the first lookup
    askFor(kUser);
    g_atConnect = [] { _exit(2); };  // the connection must still exist
    exit(3);
  };
  checkInChild(askAtTheEnd);

  static std::string answer;
  pthread_key_t key;
  pthread_key_create(&key, [](void*) { answer = askFor(kUser); });
  std::thread([&] { pthread_setspecific(key, &key); }).join();
  EXPECT_EQ(answer, kUserLine);
  pthread_key_delete(key);
}

TEST(NssModule, AChildLooksUpWhatItsParentWasAboutTo) {
  const StandinProcess daemon(kAtTheSocket);
  auto* const lookUp = function<ByName<passwd>>("getpwnam_r");
  char buffer[kLarge];
  passwd entry;
  int error = 0;
  t_atNew = [] {
    std::thread([] {
      checkInChild([] {
        alarm(10);
        EXPECT_EQ(askFor(kUser), kUserLine);
      });
    }).join();
  };
  EXPECT_EQ(lookUp(kUser, &entry, buffer, sizeof buffer, &error), NSS_STATUS_SUCCESS);
}

TEST(NssModule, CancellationWaitsUntilTheModuleReturns) {
  const StandinProcess daemon(kAtTheSocket);
  std::string answer;
  pthread_t thread;
  const auto body = [](void* result) -> void* {
    pthread_cancel(pthread_self());
    *static_cast<std::string*>(result) = askFor(kUser);
    pthread_testcancel();
    return nullptr;
  };
  pthread_create(&thread, nullptr, body, &answer);
  void* end = nullptr;
  pthread_join(thread, &end);
  EXPECT_EQ(answer, kUserLine);
  EXPECT_EQ(end, PTHREAD_CANCELED);
}

}  // namespace

// Replaces the C library's function for the module, so that a test can act in the middle of a lookup.
extern "C" __attribute__((visibility("default"))) int connect(int fd, const sockaddr* address,
                                                              socklen_t size) {
  if (g_atConnect) g_atConnect();
  return reinterpret_cast<decltype(connect)*>(dlsym(RTLD_NEXT, "connect"))(fd, address, size);
}

// Also for the module.
void* operator new(size_t size) {
  if (auto* const act = std::exchange(t_atNew, nullptr)) act();
  if (void* const memory = malloc(size)) return memory;
  throw std::bad_alloc();
}
void operator delete(void* memory) noexcept {
  free(memory);
}
void operator delete(void* memory, size_t /*size*/) noexcept {
  free(memory);
}

int main(int argc, char** argv) {
  testing::InitGoogleTest(&argc, argv);
  if (argc != 2 || !(g_module = dlopen(argv[1], RTLD_NOW))) {
    fprintf(stderr, "usage: nss_module_test MODULE\n%s\n", argc == 2 ? dlerror() : "");
    return 2;
  }
  return RUN_ALL_TESTS();
}
