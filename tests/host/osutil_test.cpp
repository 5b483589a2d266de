
#include <arpa/inet.h>
#include <sys/utsname.h>
#include <utmp.h>
#include <utmpx.h>

#include <regex>

#include "host/endpoint_probe.h"
#include "tests/support/rows.h"
#include "tests/support/world_test.h"
#include "tests/support/wrapped.h"
#include "util/file/unique_fd.h"

using namespace testsupport;
using namespace vesk;

namespace {

std::string gCommand;

const char* moved(const char* path) {
  return strcmp(path, "/usr/bin/lsb_release") == 0 ? gCommand.c_str() : path;
}

}  // namespace

// Replace system calls (-Wl,--wrap), to use the test's lsb_release instead of the machine's.
WRAPPED(int, access, (const char* path, int mode), __real_access(moved(path), mode))
WRAPPED(int, execve, (const char* path, char* const* argv, char* const* environment),
        __real_execve(moved(path), argv, environment))

namespace {

using Names = std::list<std::string>;

const std::string kLongName(32, 'n');

class OsUtilTest : public WorldTest {
 protected:
  void SetUp() override {
    WorldTest::SetUp();
    if (IsSkipped()) return;
    clearSettingsMap();
    clearReleaseFiles();
    gCommand = in("lsb_release");
    setenv("INJECTED", "by the caller", 1);
  }

  static void clearReleaseFiles() {
    const std::filesystem::directory_iterator etc("/etc");
    for (const std::filesystem::path& entry : std::vector<std::filesystem::path>(etc, {}))
      if (std::regex_search(entry.filename().string(), std::regex("release|version")))
        std::filesystem::remove_all(entry);
    put("/etc/os-release", "# or that of the machine in /usr/lib counts\n");
  }

  /// Installs an lsb_release that prints that text; none for the empty text.
  static void installCommand(const std::string& output) {
    unlink(gCommand.c_str());
    if (!output.empty())
      put(gCommand, "#!/bin/sh\nprintf '%s' '" + output + "'$INJECTED\necho noise >&2\nexit 1\n");
    chmod(gCommand.c_str(), 0755);
  }
};

TEST_F(OsUtilTest, DistributionsAreRecognised) {
  utsname kernel;
  ASSERT_EQ(uname(&kernel), 0);
  for (const auto& [command, file, content, system, release] : rowsOf<5>("host/releases.txt", "releases")) {
    clearReleaseFiles();
    installCommand(command);
    put("/etc/" + file, content);
    std::string os = "old", version = "old";
    try {
      OSVersion(os, version);
    } catch (const std::out_of_range&) {
      os = version = "too short";
    }
    EXPECT_EQ(os, system != "-" ? system : kernel.sysname) << content;
    EXPECT_EQ(version, release != "-" ? release : kernel.release) << content;
  }
}

TEST_F(OsUtilTest, SkipsWhatIsNoFile) {
  put(in("target"), "NAME=Planted\nVERSION_ID=1\n");
  shell("ln -s $PWD/target /etc/linked-release; mkdir /etc/dir-release; mkfifo -m 600 /etc/pipe-release");
  std::string os = "untouched", version = os;
  EXPECT_FALSE(linuxDistro(os, version));
  EXPECT_EQ(os + version, "untoucheduntouched");
  EXPECT_TRUE(isLogged("linuxDistroBySearch: OS and version not found"));
  shell("ln -sf $PWD/target /etc/os-release");
  OSVersion(os, version);
  EXPECT_NE(os, "Planted");
}

/// Writes login records. A name may fill its field.
void writeRecords(const std::string& path) {
  const std::tuple<short, std::string, const char*> rows[] = {
      {USER_PROCESS, "", "pts/9"},        {BOOT_TIME, "reboot", "~"},
      {USER_PROCESS, "bob", "pts/0"},     {USER_PROCESS, "alice", "console"},
      {USER_PROCESS, kLongName, "pts/1"}, {USER_PROCESS, "alice", "pts/3"}};
  std::ofstream file(path, std::ios::binary);
  for (const auto& [type, user, line] : rows) {
    utmpx record = {};
    record.ut_type = type;
    record.ut_tv.tv_sec = 1000;
    user.copy(record.ut_user, sizeof record.ut_user);
    strcpy(record.ut_line, line);
    file.write(reinterpret_cast<const char*>(&record), sizeof record);
  }
}

TEST_F(OsUtilTest, LoginsAreCountedAndTheOlderInterfaceShowsEachAsAUser) {
  writeRecords("/var/run/utmp");
  checkInChild([] {
    const long descriptors = openDescriptors();
    EXPECT_EQ(currentUsers(false), (Names{"bob", "alice", kLongName, "alice"}));
    EXPECT_EQ(currentUsers(true), (Names{"alice", "bob", kLongName}));
    EXPECT_EQ(CurrentLogons("alice"), 2);
    EXPECT_EQ(currentUsers(2).size(), 4u);
    installCommand("Distributor ID:\tMac OS X\nRelease:\t10.4.11\n");
    EXPECT_EQ(currentUsers(2), Names{"alice"});
    EXPECT_TRUE(isLogged("Skipping non-console user(bob) on Mac OS X 10.4.11"));
    EXPECT_EQ(openDescriptors(), descriptors);
  });
  unlink("/var/run/utmp");
  writeRecords(in("utmp"));
  checkInChild([this] {
    utmpname(in("utmp").c_str());
    EXPECT_EQ(currentUsers(false), (Names{"reboot", "bob", "alice", std::string(31, 'n'), "alice"}));
    internal_setutxent();
    const utmpx* record = internal_getutxent();
    ASSERT_NE(record, nullptr);
    EXPECT_TRUE(record->ut_type == USER_PROCESS && record->ut_tv.tv_sec == 1000) << record->ut_type;
    EXPECT_STREQ(record->ut_line, "~");
    internal_endutxent();
  });
}

TEST_F(OsUtilTest, JoinedNamesComeFromTheSettings) {
  for (const auto& name : {shortJoinedHostName, longJoinedHostName, PreW2KHostName, SamHostName})
    EXPECT_THROW(name(), IOException) << "not joined";
  saveSetting(SETTING_HOST_NAME, "Srv.Example.COM", SETTING_PUBLIC, false, true);
  EXPECT_EQ(longJoinedHostName() + " " + shortJoinedHostName(), "srv.example.com srv");
  if (canBeOrdinaryUser()) checkInChild([] { EXPECT_EQ(PreW2KHostName(), "srv"); }, kOrdinaryUser);
  EXPECT_FALSE(SettingExists(SETTING_PREW2K_HOST_NAME)) << "only root stores it";
  EXPECT_EQ(SamHostName(), "srv$");
  EXPECT_EQ(get("/var/velmora/kset.prew2k.host"), "srv");
  EXPECT_EQ(modeOf("/var/velmora/kset.prew2k.host"), S_IFREG | 0644u);
  saveSetting(SETTING_PREW2K_HOST_NAME, "SRVOLD", SETTING_PUBLIC, false, true);
  EXPECT_EQ(PreW2KHostName() + " " + SamHostName(), "SRVOLD srvold$");
  for (const char* name : {"DOTLESS", ""}) {
    clearSettingsMap();
    put("/var/velmora/kset.host", name);
    EXPECT_EQ(shortJoinedHostName(), *name ? "dotless" : "");
    EXPECT_TRUE(isLogged("No dots found in the joinname " + std::string(name) + "."));
  }
}

TEST_F(OsUtilTest, LocalNamesComeFromTheSystem) {
  put("/etc/nsswitch.conf", "hosts: files\n");
  put("/etc/hosts", "127.0.0.5 Canonical.Example Box.Example.Com " + std::string(5000, 'a') + "\n");
  if (inChild([] { ASSERT_EQ(unshare(CLONE_NEWUTS), 0); }) != 0)
    GTEST_SKIP() << "the host's name cannot be set";
  checkInChild([] {
    ASSERT_EQ(unshare(CLONE_NEWUTS), 0);
    const std::string rows[][3] = {{"Box.Example.Com", "box", "canonical.example"},
                                   {std::string(64, 'H'), "", std::string(64, 'h')}};
    for (const auto& [name, shortName, longName] : rows) {
      ASSERT_EQ(sethostname(name.data(), name.size()), 0);
      EXPECT_EQ(shortLocalHostName(), shortName);
      EXPECT_EQ(longLocalHostName(), longName);
    }
  });
}

/// A listening socket on the loopback, and its address.
UniqueFd listener(int backlog, sockaddr_in& address) {
  UniqueFd fd(socket(AF_INET, SOCK_STREAM, 0));
  address = {};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  socklen_t size = sizeof address;
  EXPECT_EQ(bind(fd.get(), reinterpret_cast<sockaddr*>(&address), size), 0);
  EXPECT_EQ(getsockname(fd.get(), reinterpret_cast<sockaddr*>(&address), &size), 0);
  EXPECT_EQ(listen(fd.get(), backlog), 0);
  return fd;
}

TEST_F(OsUtilTest, AnEndpointAnswersRefusesOrIsSilent) {
  sockaddr_in address;
  UniqueFd peer = listener(8, address);
  checkInChild([&] {
    for (int fd = 0; fd >= 0 && fd < 1100;) fd = dup(0);
    EXPECT_EQ(TestConnect(address), 0) << "by a descriptor of any number";
  });
  peer.close();
  EXPECT_EQ(TestConnect(address), 1);
  // A full queue makes the endpoint silent.
  const UniqueFd full = listener(0, address);
  std::vector<UniqueFd> waiting;
  for (int i = 0; i < 4; ++i) {
    waiting.emplace_back(socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK, 0));
    connect(waiting.back().get(), reinterpret_cast<sockaddr*>(&address), sizeof address);
  }
  EXPECT_EQ(probeEndpoint(address, 100), -1);
}

}  // namespace
