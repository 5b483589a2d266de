/// The operations of a session that have out arguments. Each returns one line: what the call returns or
/// throws, and then its out arguments. An untouched one is 5, "key", "why", "first" or "second".
#pragma once

#include <string>

#include <fokrazo/session.h>
#include "tests/support/outcome_text.h"

namespace testsupport {

inline std::string renewed(vesk::LocalRpcSession& session, const std::string& user) {
  int count = 5;
  const std::string result = outcomeOf([&] { return session.renewCredentials(user, count); });
  return result + " " + text(count);
}

inline std::string mapped(vesk::LocalRpcSession& session, const std::string& name, unsigned options) {
  std::string first = "first", second = "second";
  const std::string result = outcomeOf([&] { return session.mapDomain(name, first, second, options); });
  return result + " " + first + " " + second;
}

inline std::string samChanged(vesk::LocalRpcSession& session, const std::string& user,
                              const std::string& newPassword, const std::string& oldPassword,
                              const std::string& text1, const std::string& text2) {
  int status = 5;
  std::string why = "why";
  const std::string result = outcomeOf([&] {
    return session.samChangeUserPassword2(user, newPassword, oldPassword, text1, text2, status, why);
  });
  return result + " " + text(status) + " " + why;
}

inline std::string loggedOn(vesk::LocalRpcSession& session, const std::string& user,
                            const std::string& domain, const std::string& token, unsigned option) {
  int status = 5;
  std::string key = "key", why = "why";
  const std::string result =
      outcomeOf([&] { return session.netLogonSamLogon(user, domain, token, option, key, status, why); });
  return result + " " + text(status) + " " + why + " " + key;
}

}  // namespace testsupport
