#include "base/osutil.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <sched.h>
#include <sys/socket.h>
#include <sys/utsname.h>
#include <utmp.h>

#include <functional>
#include <vector>

#include "base/endpoint_probe.h"
#include "tests/support/world_test.h"
#include "util/include/error_util.h"
#include "util/include/setting.h"
#include "util/include/unique_fd.h"

using namespace testsupport;
using namespace vesk;

namespace {

using Names = std::list<std::string>;

class OsUtilTest : public WorldTest {
 protected:
  void SetUp() override {
    WorldTest::SetUp();
    if (IsSkipped()) return;
    clearSettingsMap();
    clearReleaseFiles();
    setenv("PATH", m_dir.c_str(), 1);
  }

  static void clearReleaseFiles() {
    std::vector<std::filesystem::path> found;
    for (const auto& entry : std::filesystem::directory_iterator("/etc")) {
      const std::string name = entry.path().filename();
      if (name.find("release") != std::string::npos || name.find("version") != std::string::npos)
        found.push_back(entry.path());
    }
    for (const auto& path : found) std::filesystem::remove_all(path);
  }

  /// An lsb_release that prints that text; none for the empty text.
  void installCommand(const std::string& output, const std::string& end = "") {
    unlink(in("lsb_release").c_str());
    if (output.empty()) return;
    put(in("lsb_release"), "#!/bin/sh\nprintf '%s' '" + output + "'\necho 'noise' >&2\n" + end);
    ASSERT_EQ(chmod(in("lsb_release").c_str(), 0755), 0);
  }

  static void save(const char* name, const std::string& value) {
    saveSetting(name, value, SETTING_PUBLIC, false, true);
    clearSettingsMap();
  }
};

struct Release {
  const char* what;
  const char* command;
  std::vector<std::pair<const char*, const char*>> files;  // in /etc
  const char* os;
  const char* version;
};

// No os: what the kernel says.
const Release kReleases[] = {
    {"RHEL 9",
     "",
     {{"redhat-release", "Red Hat Enterprise Linux release 9.3 (Plow)\n"}},
     "Red Hat Enterprise Linux",
     "9.3 (Plow)"},
    {"CentOS 7",
     "",
     {{"centos-release", "CentOS Linux release 7.9.2009 (Core)\n"}},
     "CentOS Linux",
     "7.9.2009 (Core)"},
    {"Fedora 39",
     "",
     {{"fedora-release", "Fedora release 39 (Thirty Nine)\n"}},
     "Fedora",
     "39 (Thirty Nine)"},
    {"Oracle 8", "", {{"oracle-release", "Oracle Linux Server release 8.9\n"}}, "Oracle Linux Server", "8.9"},
    {"Amazon 2", "", {{"system-release", "Amazon Linux release 2 (Karoo)\n"}}, "Amazon Linux", "2 (Karoo)"},
    {"Mandrake",
     "",
     {{"mandrake-release", "Mandrake Linux release 10.1 (Official) for i586\n"}},
     "Mandrake Linux",
     "10.1 (Official) for i586"},
    {"SLES 11",
     "",
     {{"SuSE-release", "SUSE Linux Enterprise Server 11 (x86_64)\nVERSION = 11\nPATCHLEVEL = 4\n"}},
     "SuSE Linux",
     "11"},
    {"an early one",
     "",
     {{"SuSE-release", "openSUSE release 9 (i586)\nVERSION = 1\n"}},
     "openSUSE",
     "9 (i586)"},
    {"UnitedLinux",
     "",
     {{"UnitedLinux-release", "UnitedLinux 1.0 (i586)\nVERSION=1.0"}},
     "SuSE Linux",
     "1.0"},
    {"no VERSION", "", {{"SuSE-release", "SUSE Linux\nRELEASE = 1\n"}}, "SuSE Linux", nullptr},
    {"VERSION alone", "", {{"SuSE-release", "SUSE Linux\nVERSION\nVERSION = 2\n"}}, "SuSE Linux", nullptr},
    {"Gentoo",
     "",
     {{"gentoo-release", "Gentoo Base System version 1.12.9\n"}},
     "Gentoo Base System",
     "1.12.9"},
    {"a newer Gentoo",
     "",
     {{"gentoo-release", "Gentoo Base System release 2.14\n"}},
     "Gentoo Base System",
     "2.14"},
    {"Slackware", "", {{"slackware-version", "Slackware 15.0\n"}}, "Slackware", "15.0"},
    {"Debian 12", "", {{"debian_version", "12.4\n"}}, "Debian", "12.4"},
    {"Solaris", "", {{"release", "                   Oracle Solaris 11.4 X86\n"}}, "Solaris", "11.4"},
    {"Ubuntu",
     "Distributor ID:\tUbuntu\nDescription:\tUbuntu 22.04.3 LTS\nRelease:\t22.04\nCodename:\tjammy\n",
     {{"debian_version", "bookworm/sid\n"}},
     "Ubuntu",
     "22.04 (jammy)"},
    {"a broken command",
     "No LSB modules are available.\nRelease:\t9\n",
     {{"debian_version", "9.1\n"}},
     "Debian",
     "9.1"},
    {"binary output", "\x01\x80\xff\n\n", {{"debian_version", "9.2\n"}}, "Debian", "9.2"},
    {"Ubuntu without its command",
     "",
     {{"lsb-release", "DISTRIB_RELEASE=22.04 release 1\n"}},
     nullptr,
     nullptr},
    {"Alpine", "", {{"alpine-release", "3.19.0\n"}}, nullptr, nullptr},
    {"Arch", "", {{"arch-release", ""}, {"os-release", "NAME=\"Arch Linux\"\n"}}, nullptr, nullptr},
    {"no text", "", {{"x-release", "\x01\xff\x02"}}, nullptr, nullptr},
};

TEST_F(OsUtilTest, KnowsTheDistributions) {
  utsname kernel;
  ASSERT_EQ(uname(&kernel), 0);
  for (const Release& row : kReleases) {
    SCOPED_TRACE(row.what);
    clearReleaseFiles();
    installCommand(row.command);
    for (const auto& file : row.files) put(std::string("/etc/") + file.first, file.second);
    std::string os = "old";
    std::string version = "old";
    OSVersion(os, version);
    EXPECT_EQ(os, row.os ? row.os : kernel.sysname);
    EXPECT_EQ(version, row.version ? row.version : kernel.release);
  }
}

TEST_F(OsUtilTest, AReleaseFileIsNeitherALinkNorADirectory) {
  put(in("target"), "Linked release 1\n");
  ASSERT_EQ(symlink(in("target").c_str(), "/etc/linked-release"), 0);
  ASSERT_EQ(mkdir("/etc/dir-release", 0755), 0);
  ASSERT_EQ(mkfifo("/etc/pipe-release", 0600), 0);
  std::string os = "untouched";
  std::string version = "untouched";
  EXPECT_FALSE(linuxDistro(os, version));
  EXPECT_EQ(os + version, "untoucheduntouched");
  EXPECT_NE(logged().find("linuxDistroBySearch: OS and version not found"), std::string::npos);
}

TEST_F(OsUtilTest, LinesThatAreTooShortThrow) {
  const std::pair<const char*, const char*> files[] = {
      {"x-release", "Some release"}, {"gentoo-release", "Gentoo"}, {"slackware-version", "Slack"}};
  std::string os;
  std::string version;
  for (const auto& file : files) {
    clearReleaseFiles();
    put(std::string("/etc/") + file.first, file.second);
    EXPECT_THROW(OSVersion(os, version), std::out_of_range) << file.first;
  }
  clearReleaseFiles();
  installCommand("Distributor ID:\tX\nRelease:");
  EXPECT_THROW(OSVersion(os, version), std::out_of_range);
}

/// Writes login records. A name may fill its field.
void writeRecords(const std::string& path,
                  const std::vector<std::tuple<short, std::string, std::string>>& rows) {
  std::ofstream file(path, std::ios::binary);
  for (const auto& [type, user, line] : rows) {
    utmpx record = {};
    record.ut_type = type;
    memcpy(record.ut_user, user.data(), std::min(user.size(), sizeof record.ut_user));
    memcpy(record.ut_line, line.data(), line.size());
    record.ut_tv.tv_sec = 1000;
    file.write(reinterpret_cast<const char*>(&record), sizeof record);
  }
}

const std::vector<std::tuple<short, std::string, std::string>> kRecords = {
    {BOOT_TIME, "reboot", "~"},         {USER_PROCESS, "bob", "pts/0"},
    {USER_PROCESS, "alice", "console"}, {LOGIN_PROCESS, "LOGIN", "tty1"},
    {USER_PROCESS, "", "pts/9"},        {USER_PROCESS, std::string(40, 'n'), "pts/1"},
    {DEAD_PROCESS, "", "pts/2"},        {USER_PROCESS, "alice", "pts/3"},
};

TEST_F(OsUtilTest, CountsWhoIsLoggedIn) {
  writeRecords("/var/run/utmp", kRecords);
  installCommand("Distributor ID:\tMac OS X\nRelease:\t10.4.11\n");
  const std::string longName(32, 'n');
  checkInChild([&] {
    const long descriptors = openDescriptors();
    EXPECT_EQ(currentUsers(false), (Names{"bob", "alice", longName, "alice"}));
    EXPECT_EQ(currentUsers(true), (Names{"alice", "bob", longName}));
    EXPECT_EQ(currentUsers(2), Names{"alice"});
    EXPECT_NE(logged().find("Skipping non-console user(bob) on Mac OS X 10.4.11"), std::string::npos);
    installCommand("Distributor ID:\tMac OS X\nRelease:\t10.5\n");
    EXPECT_EQ(currentUsers(2).size(), 4u);
    EXPECT_EQ(CurrentLogons("alice"), 2);
    EXPECT_EQ(CurrentLogons("ALICE"), 0);
    EXPECT_EQ(openDescriptors(), descriptors);
  });
}

TEST_F(OsUtilTest, TheOlderInterfaceShowsEveryNameAsAUsers) {
  unlink("/var/run/utmp");
  writeRecords(in("utmp"), kRecords);
  checkInChild([this] {
    utmpname(in("utmp").c_str());
    const std::string longName(31, 'n');
    EXPECT_EQ(currentUsers(false), (Names{"reboot", "bob", "alice", "LOGIN", longName, "alice"}));
    internal_setutxent();
    const utmpx* record = internal_getutxent();
    ASSERT_NE(record, nullptr);
    EXPECT_EQ(record->ut_type, USER_PROCESS);
    EXPECT_STREQ(record->ut_line, "~");
    EXPECT_EQ(record->ut_tv.tv_sec, 1000);
    internal_endutxent();
    utmpname(in("missing").c_str());
    EXPECT_EQ(currentUsers(false), Names());
  });
}

TEST_F(OsUtilTest, TheJoinNamesTheHost) {
  for (const auto& name : {shortJoinedHostName, longJoinedHostName, PreW2KHostName, SamHostName})
    EXPECT_THROW(name(), IOException) << "not joined";
  save(SETTING_HOST_NAME, "Srv.Example.COM");
  EXPECT_EQ(longJoinedHostName(), "srv.example.com");
  EXPECT_EQ(shortJoinedHostName(), "srv");
  if (canBeOrdinaryUser()) {
    checkInChild([] { EXPECT_EQ(PreW2KHostName(), "srv"); }, kOrdinaryUser);
  }
  EXPECT_FALSE(SettingExists(SETTING_PREW2K_HOST_NAME)) << "only root stores it";
  EXPECT_EQ(SamHostName(), "srv$");
  EXPECT_EQ(get("/var/velmora/kset.prew2k.host"), "srv");
  EXPECT_EQ(modeOf("/var/velmora/kset.prew2k.host"), S_IFREG | 0644u);
  save(SETTING_PREW2K_HOST_NAME, "SRVOLD");
  EXPECT_EQ(PreW2KHostName(), "SRVOLD");
  EXPECT_EQ(SamHostName(), "srvold$");

  for (const char* name : {"Dotless", ""}) {
    forgetLog();
    clearSettingsMap();
    put("/var/velmora/kset.host", name);
    EXPECT_EQ(shortJoinedHostName(), name[0] ? "dotless" : "");
    EXPECT_NE(logged().find("No dots found in the joinname " + std::string(name) + "."), std::string::npos);
  }
}

TEST_F(OsUtilTest, TheSystemNamesTheHost) {
  put("/etc/nsswitch.conf", "hosts: files\n");
  put("/etc/hosts", "127.0.0.5 Canonical.Example Box.Example.Com\n");
  const auto named = [](const std::string& host, const std::function<void()>& check) {
    checkInChild([&] {
      ASSERT_EQ(unshare(CLONE_NEWUTS), 0);
      ASSERT_EQ(sethostname(host.data(), host.size()), 0);
      check();
    });
  };
  if (inChild([] { ASSERT_EQ(unshare(CLONE_NEWUTS), 0); }) != 0)
    GTEST_SKIP() << "the host's name cannot be set here";
  named("Box.Example.Com", [] {
    EXPECT_EQ(shortLocalHostName(), "box");
    EXPECT_EQ(longLocalHostName(), "canonical.example");
  });
  named("Unknown", [] { EXPECT_EQ(longLocalHostName(), "unknown"); });
  named(std::string(64, 'H'), [] { EXPECT_EQ(longLocalHostName(), std::string(64, 'h')); });
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

TEST_F(OsUtilTest, TestsAnEndpoint) {
  sockaddr_in address;
  UniqueFd peer = listener(8, address);
  EXPECT_EQ(TestConnect(address), 0);
  checkInChild([&] {
    std::vector<int> many;
    for (int fd = 0; fd < 1100; ++fd) many.push_back(dup(0));
    EXPECT_EQ(TestConnect(address), many.back() > 1024 ? 0 : 1) << "a descriptor of any number";
  });
  peer.close();
  EXPECT_EQ(TestConnect(address), 1);
  sockaddr_in broadcast = address;
  broadcast.sin_addr.s_addr = INADDR_NONE;
  EXPECT_EQ(TestConnect(broadcast), 1);

  // A queue that is full makes the endpoint silent.
  const UniqueFd full = listener(0, address);
  std::vector<UniqueFd> waiting;
  for (int i = 0; i < 4; ++i) {
    waiting.emplace_back(socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK, 0));
    connect(waiting.back().get(), reinterpret_cast<sockaddr*>(&address), sizeof address);
  }
  EXPECT_EQ(probeEndpoint(address, 100), -1);
}

}  // namespace
