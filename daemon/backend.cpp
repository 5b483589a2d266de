#include "daemon/backend.h"

namespace brondalt {

Status Status::notSupported() {
  return {vesk::VR_EXTENDED_ERROR, "This daemon does not support the operation"};
}

void Backend::find(const Caller&, const Selection&, const LookupKey&, Done<Object> done) {
  done(Status::notSupported());
}

void Backend::openListing(const Caller&, vesk::DSObjectType, Done<std::unique_ptr<Listing>> done) {
  done(Status::notSupported());
}

void Backend::search(const Caller&, const SearchQuery&, size_t, Done<Objects> done) {
  done(Status::notSupported());
}

void Backend::openSearch(const Caller&, const SearchQuery&, Done<std::unique_ptr<Search>> done) {
  done(Status::notSupported());
}

void Backend::fetch(const Caller&, const std::string&, const std::string&, const std::vector<std::string>&,
                    Done<Object> done) {
  done(Status::notSupported());
}

void Backend::authenticateProcess(const Caller&, DoneStatus done) {
  done(Status());
}

void Backend::validatePassword(const std::string&, const vesk::Shredder&, DoneStatus done) {
  done(Status::notSupported());
}

void Backend::validateKerberos(const std::string&, const vesk::Shredder&, Done<Object> done) {
  done(Status::notSupported());
}

void Backend::ntlmChallenge(const std::string&, Done<std::string> done) {
  done(Status::notSupported());
}

void Backend::validateNtlm(const std::string&, const vesk::Shredder&, Done<Object> done) {
  done(Status::notSupported());
}

void Backend::samLogon(const std::string&, const std::string&, const vesk::Shredder&,
                       Done<std::string> done) {
  done(Status::notSupported());
}

void Backend::checkMembership(const std::string&, const std::vector<std::string>&, NameForm,
                              DoneStatus done) {
  done(Status::notSupported());
}

void Backend::beginLogin(const std::string&, DoneStatus done) {
  done(Status::notSupported());
}

void Backend::endLogin(const std::string&, DoneStatus done) {
  done(Status::notSupported());
}

void Backend::renewCredentials(const std::string&, Done<int> done) {
  done(Status::notSupported());
}

void Backend::changePassword(const std::string&, const vesk::Shredder&, const vesk::Shredder&,
                             DoneStatus done) {
  done(Status::notSupported());
}

void Backend::samChangePassword(const std::string&, const vesk::Shredder&, const vesk::Shredder&,
                                DoneStatus done) {
  done(Status::notSupported());
}

void Backend::setPassword(const Caller&, const std::string&, const vesk::Shredder&, const Administrator&,
                          DoneStatus done) {
  done(Status::notSupported());
}

void Backend::setMachinePassword(const Caller&, const std::string&, const vesk::Shredder&,
                                 const Administrator&, DoneStatus done) {
  done(Status::notSupported());
}

void Backend::addUser(const Caller&, const NewUser&, const Administrator&, DoneStatus done) {
  done(Status::notSupported());
}

void Backend::flushCache(const Caller&, vesk::ADObject, unsigned, const std::string&, DoneStatus done) {
  done(Status::notSupported());
}

void Backend::dumpCache(const Caller&, const std::vector<std::string>&, DoneStatus done) {
  done(Status::notSupported());
}

void Backend::updateUserPolicy(const Caller&, const std::string&, DoneStatus done) {
  done(Status::notSupported());
}

void Backend::updateMachinePolicy(const Caller&, DoneStatus done) {
  done(Status::notSupported());
}

void Backend::networkChanged(const Caller&, DoneStatus done) {
  done(Status::notSupported());
}

void Backend::readState(const Caller&, int, Done<std::string> done) {
  done(Status::notSupported());
}

void Backend::servicePrincipal(const std::string&, Done<std::string> done) {
  done(Status::notSupported());
}

void Backend::findDomain(const std::string&, Done<DomainNames> done) {
  done(Status::notSupported());
}

void Backend::hasRoles(Done<int> done) {
  done(Status::notSupported());
}

void Backend::isSandboxed(const std::string&, Done<int> done) {
  done(Status::notSupported());
}

void Backend::allRoles(Done<Objects> done) {
  done(Status::notSupported());
}

void Backend::rolesOf(const std::string&, Done<Objects> done) {
  done(Status::notSupported());
}

void Backend::rolesOfLocal(const std::string&, const std::string&, const std::string&, Done<Objects> done) {
  done(Status::notSupported());
}

}  // namespace brondalt
