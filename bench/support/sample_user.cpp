#include "bench/support/sample_user.h"

#include <fokrazo/adobject.h>
#include <fokrazo/adserializer.h>
#include <fokrazo/attrnames.h>

namespace bench {
namespace {

const Entry& completeUser() {
  static const Entry user = {
      {"accountExpires", {"9223372036854775807"}},
      {"altSecurityIdentities", {"Kerberos:alice@OTHER.EXAMPLE.COM"}},
      {"badPasswordTime", {"0"}},
      {"badPwdCount", {"0"}},
      {"cn", {"Alice Q. Example"}},
      {"department", {"Infrastructure"}},
      {"description", {"Engineer, Building 4, third floor"}},
      {"displayName", {"Alice Q. Example"}},
      {"distinguishedName", {"CN=Alice Q. Example,OU=Staff,OU=Accounts,DC=corp,DC=example,DC=com"}},
      {"gecos", {"Alice Q. Example,Bldg 4,+1 555 0100 1234"}},
      {"gidNumber", {"20017"}},
      {"givenName", {"Alice"}},
      {"homeDirectory", {"\\\\files.corp.example.com\\home\\alice"}},
      {"homeDrive", {"H:"}},
      {"lastLogon", {"133514871234567890"}},
      {"lockoutTime", {"0"}},
      {"loginShell", {"/bin/bash"}},
      {"logonCount", {"4711"}},
      {"mail", {"alice.example@corp.example.com"}},
      {"managedObjects", {"CN=server-room-4,OU=Unix Groups,OU=Accounts,DC=corp,DC=example,DC=com"}},
      {"memberOf", {}},  // made below
      {"mobile", {"+1 555 0100 9876"}},
      {"msDS-SupportedEncryptionTypes", {"24"}},
      {"name", {"Alice Q. Example"}},
      {"objectCategory", {"CN=Person,CN=Schema,CN=Configuration,DC=corp,DC=example,DC=com"}},
      {"objectClass", {"top", "person", "organizationalPerson", "user"}},
      {"objectGUID", {"6f1d2c3b-4a59-4e68-8f70-112233445566"}},
      {"objectSid", {"S-1-5-21-1004336348-1177238915-682003330-51234"}},
      {"primaryGroupID", {"513"}},
      {"pwdLastSet", {"132514871234567890"}},
      {"sAMAccountName", {"alice.example"}},
      {"sAMAccountType", {"805306368"}},
      {"servicePrincipalName", {"HTTP/alice.corp.example.com", "HTTP/alice"}},
      {"sn", {"Example"}},
      {"telephoneNumber", {"+1 555 0100 1234"}},
      {"title", {"Senior Engineer"}},
      {"uSNChanged", {"7654321"}},
      {"uSNCreated", {"1234567"}},
      {"uid", {"alice"}},
      {"uidNumber", {"51234"}},
      {"unixHomeDirectory", {"/home/alice"}},
      {"userAccountControl", {"66048"}},
      {"userPrincipalName", {"alice.example@corp.example.com"}},
      {"whenChanged", {"20260102030405.0Z"}},
      {"whenCreated", {"20190203040506.0Z"}},
  };
  return user;
}

constexpr const char* kOptional[] = {
    "title",          "department", "mobile", "altSecurityIdentities", "servicePrincipalName",
    "managedObjects", "homeDrive"};

}  // namespace

Entry sampleUser(int variant) {
  Entry user = completeUser();
  for (int i = 0; i < 18 - variant % 5; ++i)
    user["memberOf"].push_back("CN=grp-team-" + std::to_string(100 + i) +
                               ",OU=Unix Groups,OU=Accounts,DC=corp,DC=example,DC=com");
  if (variant == 0) return user;
  const std::string name = "user" + std::string(variant % 9, 'x') + std::to_string(variant);
  user["sAMAccountName"] = {name};
  user["uid"] = {name};
  user["unixHomeDirectory"] = {"/home/" + name};
  user["uidNumber"] = {std::to_string(10000 + variant * 37)};
  unsigned bits = variant * 2654435761u >> 20;
  for (const char* optional : kOptional) {
    if (bits & 1) user.erase(optional);
    bits >>= 1;
  }
  return user;
}

Entry daemonUser() {
  Entry user = sampleUser();
  user[AD_DN].swap(user["distinguishedName"]);
  user.erase("distinguishedName");
  return user;
}

vesk::ADObject objectOf(const Entry& entry) {
  vesk::ADObject object{std::string()};
  object.erase(AD_DN);
  for (const auto& [name, values] : entry)
    for (const std::string& value : values) object[name] += value;
  return object;
}

std::string blobOf(const Entry& entry) {
  vesk::ADObject object = objectOf(entry);
  const auto blob = vesk::ADSerializer::serialize(object);
  return std::string(blob->data(), blob->size());
}

std::vector<std::string> sampleBlobs(int count) {
  std::vector<std::string> blobs;
  for (int i = 0; i < count; ++i) blobs.push_back(blobOf(sampleUser(3 * i + 1)));
  return blobs;
}

const std::vector<Triple>& sampleTriples() {
  static const std::vector<Triple> triples = {
      {"sAMAccountName", "unixHomeDirectory", "uidNumber"},
      {"cn", "gidNumber", "loginShell"},
      {"objectSid", "userPrincipalName", "mail"},
      {"gecos", "uid", "primaryGroupID"},
      {"userAccountControl", "pwdLastSet", "accountExpires"},
      {"displayName", "distinguishedName", "name"},
      {"objectClass", "objectGUID", "sn"},
      {"whenChanged", "uSNChanged", "homeDirectory"},
  };
  return triples;
}

}  // namespace bench
