#include <fokrazo/account_state.h>

#include <gtest/gtest.h>

#include "tests/support/objects.h"
#include "tests/support/rows.h"

using namespace vesk;

namespace {

// A letter for each fact, "-" for no and "?" for unknown; the results; then the times.
std::string textOf(const AccountState& state) {
  using Fact = AccountState::Fact;
  std::ostringstream out;
  const auto fact = [&](Fact value, char letter) {
    out << (value == Fact::Yes ? letter : value == Fact::No ? '-' : '?');
  };
  const auto time = [&](const auto& value) { value ? out << ' ' << *value : out << " -"; };
  fact(state.disabled(), 'D');
  fact(state.locked(), 'L');
  fact(state.expired(), 'E');
  fact(state.outsideLogonHours(), 'H');
  fact(state.mustChangePassword(), 'M');
  fact(state.passwordExpired(), 'P');
  out << ' ' << state.accountResult() << ' ' << state.result();
  time(state.accountExpiry());
  time(state.passwordLastSet());
  time(state.passwordExpiry());
  time(state.passwordDaysLeft());
  return out.str();
}

TEST(AccountStates, SayWhatTheAttributesSay) {
  for (const auto& [now, attributes, expected] :
       testsupport::rowsOf<3>("lrpc/model/rows.txt", "account states")) {
    const ADObject object = testsupport::objectOf("CN=Jo,DC=example,DC=com", attributes);
    EXPECT_EQ(textOf(AccountState(object, std::stoll(now))), expected) << now << ' ' << attributes;
    EXPECT_EQ(textOf(AccountState(User(object.clone()), std::stoll(now))), expected) << attributes;
  }
}

}  // namespace
