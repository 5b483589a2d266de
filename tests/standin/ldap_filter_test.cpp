#include "standin/ldap_filter.h"

#include "standin/entry.h"
#include "standin/error.h"
#include "tests/support/rows.h"

namespace standin {
namespace {

using std::string_literals::operator""s;

Entry person() {
  Entry entry("CN=Joe (the first)*,OU=People,DC=example,DC=com");
  for (const auto& [name, value] : testsupport::rowsOf<2>("standin/rows.txt", "person"))
    entry.add(name, value);
  return entry;
}

std::string verdict(const std::string& filter, const Entry& entry) {
  try {
    return LdapFilter(filter).matches(entry) ? "matches" : "differs";
  } catch (const Error&) {
    return "refused";
  }
}

TEST(LdapFilter, AgreesWithTheList) {
  std::ifstream list(TEST_SOURCE_DIR "/tests/standin/filters.txt");
  const Entry entry = person();
  int filters = 0;
  for (std::string line; std::getline(list, line);) {
    if (line[0] == '#') continue;
    ++filters;
    const size_t end = line.find(' ');
    EXPECT_EQ(verdict(line.substr(end + 1), entry), line.substr(0, end)) << line;
  }
  EXPECT_GT(filters, 60);
  EXPECT_EQ(verdict("(cn=x"s + '\0' + ")"s + "(", entry), "refused");
}

TEST(LdapFilter, IsRefusedIfNestedTooDeep) {
  auto nested = [](int depth) {
    std::string text;
    for (int i = 1; i < depth; ++i) text += i % 2 ? "(!" : "(&";
    text += "(cn=*)";
    return text.append(static_cast<size_t>(depth - 1), ')');
  };
  EXPECT_NE(verdict(nested(LdapFilter::kMaxDepth), person()), "refused");
  EXPECT_EQ(verdict(nested(LdapFilter::kMaxDepth + 1), person()), "refused");
  EXPECT_EQ(verdict(std::string(1 << 20, '('), person()), "refused");
}

// The buffer is exactly as long as the filter, so that a sanitizer detects reads past the end.
TEST(LdapFilter, IsRefusedIfTruncated) {
  const std::string whole = "(&(|(cn=a*b\\2a)(x>=1))(!(uac:1.2.840.113556.1.4.803:=2)))";
  for (size_t length = 1; length < whole.size(); ++length) {
    std::unique_ptr<char[]> exact(new char[length]);
    whole.copy(exact.get(), length);
    EXPECT_THROW((LdapFilter{std::string_view(exact.get(), length)}), Error) << length;
  }
}

}  // namespace
}  // namespace standin
