// libldap: attributes of an entry that a server has sent, and the parts of a DN.

#include <sys/socket.h>
#include <unistd.h>

#include <ldap.h>
#include <openldap.h>

#include <map>

#include "bench/support/measure.h"
#include "bench/support/plain_socket.h"
#include "bench/support/sample_user.h"

namespace bench {
namespace {

/// The message with which a server answers a search.
std::string searchEntry(const Entry& entry, int id) {
  BerElement* message = ber_alloc_t(LBER_USE_DER);
  ber_printf(message, "{it{s{", id, static_cast<ber_tag_t>(LDAP_RES_SEARCH_ENTRY),
             entry.at("distinguishedName")[0].c_str());
  for (const auto& [name, values] : entry) {
    ber_printf(message, "{s[", name.c_str());
    for (const std::string& value : values) ber_printf(message, "o", value.data(), value.size());
    ber_printf(message, "]}");
  }
  ber_printf(message, "}}}");
  berval bytes;
  if (ber_flatten2(message, &bytes, 0) != 0) die("flatten");
  std::string result(bytes.bv_val, bytes.bv_len);
  ber_free(message, 1);
  return result;
}

/// A received entry, as a program has it after a search.
LDAPMessage* receive(LDAP*& ldap, const Entry& entry) {
  int ends[2];
  if (socketpair(AF_UNIX, SOCK_STREAM, 0, ends) != 0) die("socketpair");
  if (ldap_init_fd(ends[0], LDAP_PROTO_IPC, "ldapi:///", &ldap) != LDAP_SUCCESS) die("ldap_init_fd");
  const int version = LDAP_VERSION3;
  ldap_set_option(ldap, LDAP_OPT_PROTOCOL_VERSION, &version);
  int id = 0;
  if (ldap_search_ext(ldap, "", LDAP_SCOPE_BASE, nullptr, nullptr, 0, nullptr, nullptr, nullptr, 0, &id) != 0)
    die("search");
  const std::string bytes = searchEntry(entry, id);
  if (write(ends[1], bytes.data(), bytes.size()) != static_cast<ssize_t>(bytes.size())) die("write");
  LDAPMessage* message = nullptr;
  timeval limit{5, 0};
  if (ldap_result(ldap, id, LDAP_MSG_ONE, &limit, &message) != LDAP_RES_SEARCH_ENTRY) die("result");
  return message;
}

void readThree(LDAP* ldap, LDAPMessage* message, const Triple& names) {
  for (const std::string& name : names) {
    berval** values = ldap_get_values_len(ldap, message, name.c_str());
    if (!values) die("no such attribute");
    keep(values[0]->bv_val);
    ldap_value_free_len(values);
  }
}

size_t readAll(LDAP* ldap, LDAPMessage* message) {
  Entry result;
  BerElement* rest = nullptr;
  berval dn, name;
  BerVarray values = nullptr;
  ldap_get_dn_ber(ldap, message, &rest, &dn);
  while (ldap_get_attribute_ber(ldap, message, rest, &name, &values) == LDAP_SUCCESS && name.bv_val) {
    auto& copies = result[std::string(name.bv_val, name.bv_len)];
    for (BerVarray value = values; value && value->bv_val; ++value)
      copies.emplace_back(value->bv_val, value->bv_len);
    ber_memfree(values);
  }
  ber_free(rest, 0);
  return result.size();
}

void splitDn() {
  LDAPDN parts = nullptr;
  if (ldap_str2dn("CN=Alice Q. Example,OU=Staff,OU=Accounts,DC=corp,DC=example,DC=com", &parts,
                  LDAP_DN_FORMAT_LDAPV3) != LDAP_SUCCESS)
    die("DN");
  keep(parts);
  ldap_dnfree(parts);
}

}  // namespace
}  // namespace bench

int main() {
  using namespace bench;
  LDAP* ldap = nullptr;
  LDAPMessage* message = receive(ldap, sampleUser());
  const Triple& names = sampleTriples()[0];
  print("libldap.find3", nanosecondsOf([&] { readThree(ldap, message, names); }), "ns");
  if (readAll(ldap, message) != sampleUser().size()) die("attributes");
  print("libldap.all", nanosecondsOf([&] { keep(readAll(ldap, message)); }), "ns");
  print("libldap.dn", nanosecondsOf(splitDn), "ns");
}
