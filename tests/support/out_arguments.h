/// The operations of a session that have out arguments. Each tells what the call returns or throws, and its
/// out arguments behind that; those that are left alone are 5 and "key", "why", "first" or "second".
#pragma once

#include <string>

#include <fokrazo/session.h>
#include "tests/support/told.h"

namespace testsupport {

inline std::string renewed(vesk::LocalRpcSession& session, const std::string& user) {
  int count = 5;
  const std::string result = told([&] { return session.renewCredentials(user, count); });
  return result + " " + text(count);
}

inline std::string mapped(vesk::LocalRpcSession& session, const std::string& name, unsigned options) {
  std::string first = "first", second = "second";
  const std::string result = told([&] { return session.mapDomain(name, first, second, options); });
  return result + " " + first + " " + second;
}

inline std::string samChanged(vesk::LocalRpcSession& session, const std::string& user, const std::string& s2,
                              const std::string& s3, const std::string& s4, const std::string& s5) {
  int status = 5;
  std::string why = "why";
  const std::string result =
      told([&] { return session.samChangeUserPassword2(user, s2, s3, s4, s5, status, why); });
  return result + " " + text(status) + " " + why;
}

/// The key is one of random bytes, and not told.
inline std::string loggedOn(vesk::LocalRpcSession& session, const std::string& user, const std::string& s2,
                            const std::string& s3, unsigned n, std::string& key) {
  int status = 5;
  std::string why = "why";
  const std::string result =
      told([&] { return session.netLogonSamLogon(user, s2, s3, n, key, status, why); });
  return result + " " + text(status) + " " + why;
}

}  // namespace testsupport
