// The fokrazo tool as a person uses it: command lines in, lines and exit status out.

#include <gtest/gtest.h>

#include <fstream>
#include <string>

#include "tests/support/standin_process.h"
#include "tests/support/command_line.h"

namespace {

using namespace testsupport;

struct Row {
  const char* words;
  int status;
  const char* holds;  // a part of what is printed
  const char* input = "";
};

template <size_t kCount>
void expectRows(const Row (&rows)[kCount], const std::string& before = "") {
  for (const Row& row : rows) {
    const Ran ran = run("fokrazo " + before + row.words, row.input);
    EXPECT_EQ(ran.status, row.status) << row.words << "\n" << ran.out;
    EXPECT_NE(ran.out.find(row.holds), std::string::npos) << row.words << "\n" << ran.out;
  }
}

TEST(Tool, NeedsNoDaemonForValues) {
  // cn: Joe; objectClass: top, person.
  const char blob[] =
      "\\1\\0\\0\\0\\0\\0\\0\\0\\0\\0\\0\\0\\0\\0\\0\\0\\0\\0\\0\\0\\0\\0\\0\\0\\0\\0\\0\\0\\0\\0\\0\\0"
      "\\2\\0\\0\\0\\54\\0\\0\\0\\73\\0\\0\\0\\25\\1\\0\\200\\1\\0\\0\\0\\3\\0\\0\\0Joe"
      "\\140\\1\\0\\200\\2\\0\\0\\0\\172\\1\\0\\200\\147\\1\\0\\200";
  const Row rows[] = {
      {"--help", 0, "Exit status: 0 found"},
      {"user --help", 0, "usage: fokrazo [OPTION …] user"},
      {"", 2, "missing a command"},
      {"nosuch", 2, "unknown command nosuch"},
      {"--nosuch ping", 2, "unknown option --nosuch"},
      {"--socket", 2, "option --socket needs a value"},
      {"--timeout= ping", 2, "option --timeout needs a number of seconds, not ''"},
      {"--timeout=5 --socket=/nonexistent/daemon ping", 3,
       "no daemon at /nonexistent/daemon: ipc socket connect"},
      {"--socket $(printf %0108d 0) ping", 2, "option --socket takes a path of at most 107 bytes, not '0"},
      {"user", 2, "missing a name, id, SID or GUID"},
      {"user ''", 2, "the name is empty"},
      {"user a b", 2, "unexpected 'b'"},
      {"user --by uid a", 2, "option --by takes name, id, sid or guid, not 'uid'"},
      {"user --by id a", 2, "'a' is no numeric id"},
      {"sid AQUAAAAAAAUVAAAAY1VtFeDh0ixWMyJl9QEAAA==", 0,
       "text: S-1-5-21-359486819-752017888-1696740182-501\n"},
      {"sid S-1-5-21-1-2-3-1104", 0, "domain: S-1-5-21-1-2-3\nrid: 1104\n"},
      {"sid s-1-5-32-544", 0, "text: S-1-5-32-544\n"},
      {"sid S-2-1", 2, "is no SID: Unknown SID revision"},
      {"sid S-1-5-xyz", 2, "'S-1-5-xyz' is no SID: it would be read as S-1-5-0"},
      {"sid '<SID=>'", 2, "'<SID=>' is no SID"},
      {"guid 00112233-4455-6677-8899-aabbccddeeff", 0, "stored: 33221100554477668899aabbccddeeff\n"},
      {"--json guid 33221100554477668899aabbccddeeff", 0,
       "{\"text\":\"00112233-4455-6677-8899-aabbccddeeff\","},
      {"guid 00", 2, "'00' is no GUID"},
      {"dn canonical 'CN=a\\,b,OU=x,DC=Ex,DC=Com'", 0, "ex.com/x/a,b\n"},
      {"dn escape ' a '", 0, "\\ a\\ \n"},
      {"dn unescape 'a\\'", 2, "'a\\' is no text for dn unescape: Invalid escape sequence"},
      {"dn cn x", 2, "'x' is no text for dn cn\n"},
      {"dn guid '<a;'", 2, "'<a;' is no text for dn guid\n"},
      {"dn nosuch a", 2, "unknown operation nosuch"},
      {"dict cn 378", 0, "277 cn\n378 top\n"},
      {"dict nosuch", 1, ""},
      {"dict --sum 36361 62", 0, "62 _ManagedBy\n"},
      {"dict --release 5.1.3", 1, "release 5.1.3: CheckSum not found"},
      {"dict --sum 1", 1, "checksum 1: Old Map not found"},
      {"dict --releases", 0, "Total: 35\n"},
      {"blob /nonexistent", 2, "/nonexistent: No such file"},
      {"blob </dev/null", 4, "standard input: Bad length value"},
      {"blob -", 0, "  cn(s):Joe\n  objectClass(s):top,person\n", blob},
      {"blob --attribute objectClass", 0, "objectClass: top\nobjectClass: person\n", blob},
      {"blob --attribute nosuch", 1, "", blob},
      {"conf --file \"$(printf '/\\033\\302\\233a')\" get log", 4, "fokrazo: /??a: No such file"},
      {"conf --file / set log x", 4, "/: is a directory"},
      {"conf --file /dev/null get log", 4, "/dev/null: is no plain file"},
      {"conf nosuch", 2, "not 'nosuch'"},
      {"conf get --time x log", 2, "option --time takes one of"},
  };
  expectRows(rows);
}

TEST(Tool, ChangesAConfigurationFileAndNothingElseInIt) {
  ScratchDirectory scratch;
  const std::string path = scratch.path("conf");
  std::ofstream(path) << "# hand-written\nlog:   WARN\n\nlist: a \"b c\"\nwait = 2m\ncontrol: \302\233\n";
  const std::string before = "conf --file " + path + " ";
  const Row rows[] = {
      {"get LOG", 0, "WARN\n"},
      {"get control", 0, "c29b\n"},
      {"get nosuch", 1, ""},
      {"get --list list", 0, "a\nb c\n"},
      {"get --time s wait", 0, "120\n"},
      {"list w", 0, "wait: 2m\n"},
      {"set log DEBUG", 0, ""},
      {"get log", 0, "DEBUG\n"},
      {"set --list list x 'y z'", 0, ""},
      {"get --list list", 0, "x\ny z\n"},
      {"unset wait", 0, ""},
      {"unset wait", 1, ""},
      {"set new 'a $b \"c\"'", 0, ""},
      {"get new", 0, "a $b \"c\"\n"},
      {"set new", 2, "missing a value for new"},
      {"set new a b", 2, "needs --list"},
      {"set --list '' a b", 2, "'' is no key"},
      {"set 'a\nb' x", 2, "is no key: it is empty or has a newline"},
      {"set --text new 'x\\'", 2, "'x\\' is no text of one line"},
      {"set --list list 'x y' z", 0, ""},
      {"get --list list", 0, "x y\nz\n"},
  };
  expectRows(rows, before);
  std::ofstream(path + ".lock") << "";
  expectRows({{"unset log", 4, " was not saved: "}}, before);
  std::ifstream file(path);
  std::string text((std::istreambuf_iterator<char>(file)), {});
  EXPECT_EQ(text.compare(0, 15, "# hand-written\n"), 0) << text;
  EXPECT_NE(text.find("\n# wait = 2m\n"), std::string::npos) << text;
}

// Against the stand-in with the sample directory.
TEST(Tool, AsksTheDaemon) {
  const StandinProcess daemon;
  const char passwd[] = "lquispe:x:10060:20004:Liên Quispe:/home/lquispe:/bin/false\n";
  const Row rows[] = {
      {"ping", 0, "alive\n"},
      {"user lquispe", 0, passwd},
      {"user 10060", 0, passwd},
      {"user S-1-5-21-359486819-752017888-1696740182-1163", 0, passwd},
      {"user 4656bde0-4355-49d3-abfe-9d1415e0a6ae", 0, passwd},
      {"user --by name 10060", 1, "fokrazo: 10060: User not found"},
      {"user S-1-5-21-359486819-752017888-1696740182-1163x", 2, "1163x' is no SID: "},
      {"user --unix-only rmacdonald", 1, "rmacdonald: User not found"},
      {"--json user rmacdonald", 0, "\"unix\":false,\"dn\":\"CN=Renée MacDonald,OU=Night shift,"},
      {"group Büro", 0, "Büro:x:20002:dgruber,mgruber,ygruber,rquispe\n"},
      {"group 20002", 0, "Büro:x:20002:"},
      {"group nosuch", 1, "nosuch: Group not found"},
      {"object Büro", 0, "sAMAccountName: Büro\n"},
      {"shadow lquispe", 0, "lquispe:x:"},
      {"list users", 0, passwd},
      {"list groups", 0, "Büro:x:20002:dgruber"},
      {"list shadow", 0, "lquispe:x:"},
      {"list nosuch", 2, "list takes users, groups or shadow, not 'nosuch'"},
      {"search '(sAMAccountName=lq*)' cn", 0, "cn: Liên Quispe\n"},
      {"search '(cn=nosuch)'", 1, ""},
      {"search --limit 2147483648 '(cn=a)'", 2, "option --limit needs a whole number, not '2147483648'"},
      {"search '(cn='", 4, "fokrazo: "},
      {"search --scope two '(cn=a)'", 2, "option --scope takes base, one or sub, not 'two'"},
      {"--json search --page 7 '(objectClass=computer)' cn", 0, "\"cn\":[\"linux01\"]"},
      {"fetch CN=Guest,CN=Users,DC=example,DC=com cn", 0, "cn: Guest\n"},
      {"member lquispe 'Domain Users'", 0, "Success"},
      {"member lquispe Büro", 1, "User is not a member of any of the groups"},
      {"renew lquispe", 0, "renewed: "},
      {"spn DC1", 0, "HOST/DC1@EXAMPLE.COM\n"},
      {"domain example.com", 0, "example.com\n"},
      {"domain --map EXAMPLE", 0, "example.com EXAMPLE\n"},
      {"health", 0, "Success"},
      {"info", 0, "entries: 7"},
      {"roles mabara", 0, "cn: Web operators\n"},
      {"roles lquispe", 1, ""},
      {"flush objects dns", 0, "Success\n"},
      {"flush nosuch", 2, "unknown cache nosuch"},
      {"policy", 0, "Computer Policy Refresh has completed.\n"},
      {"network-changed", 0, "Success\n"},
      {"auth --password-fd 0 lquispe", 0, "Success\n", "Paper-boat-42\\n"},
      {"auth --password-fd 0 lquispe", 1, "Invalid password", "wrong\\n"},
      {"auth --password-fd 0 lquispe", 4, "no password given"},
      {"auth --password-fd 77 lquispe", 2, "descriptor 77 is not open"},
      {"passwd --password-fd 0 tbjork", 0, "Success\n", "Stone-bridge-9\\nNew-stone-bridge-10\\n"},
      {"auth --password-fd 0 tbjork", 0, "Success\n", "New-stone-bridge-10\\n"},
      {"user -", 1, passwd, "lquispe\\nnosuch\\n10060\\n"},
  };
  expectRows(rows, "--socket " + daemon.socket() + " ");
}

}  // namespace
