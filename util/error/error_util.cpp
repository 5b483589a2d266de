#include <fokrazo/error_util.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>

#include <fokrazo/ascii.h>
#include "util/hook/hooks.h"

namespace {

struct CodeText {
  int code;
  const char* text;
};

// All exception classes of the program family. A row's index is its id.
constexpr CodeText kClassIds[] = {
    {0, "Unknown"},
    {1, "LogicException"},
    {2, "IOException"},
    {3, "SystemException"},
    {4, "NotFoundException"},
    {5, "TryAgainException"},
    {6, "AlreadyException"},
    {7, "UserNotFoundException"},
    {8, "DomainNotFoundException"},
    {9, "BadDataException"},
    {10, "ConnectionBrokenException"},
    {11, "ZoneNotFoundException"},
    {12, "ZoneBadMapException"},
    {13, "TimeoutException"},
    {14, "BufferFullException"},
    {15, "AllocationFailedException"},
    {16, "DNSUnavailableException"},
    {17, "ExtSchemaException"},
    {18, "EndOfFileException"},
    {19, "BadTableException"},
    {20, "AttributeNotFoundException"},
    {21, "BadZoneDataMismatchException"},
    {22, "ConfFileException"},
    {23, "BaseException"},
    {24, "GSSCredException"},
    {25, "LDAPGSSException"},
    {26, "KCryptException"},
    {27, "NetBufException"},
    {28, "InteropException"},
    {29, "TreeCopyFailure"},
    {30, "DSException"},
    {31, "GPException"},
    {32, "SamException"},
    {33, "RegExpException"},
    {34, "NfsSetupException"},
    {35, "SambaSetupException"},
    {36, "QtrfsException"},
    {37, "NBTException"},
    {38, "NetIFException"},
    {39, "NTLMException"},
    {40, "SMBException"},
    {41, "RPCException"},
    {42, "NetAddrException"},
    {43, "BSDSocketsException"},
    {44, "SMBClientException"},
    {45, "InvalidRangeException"},
    {46, "KerberosException"},
    {47, "LDAPException"},
    {48, "LDAPReferralException"},
    {49, "LDAPNoSuchObjectException"},
    {50, "ADSMBException"},
    {51, "FipsNonCompliantException"},
    {52, "EndOfListException"},
    {53, "ECID_LAST"},
};
static_assert(sizeof kClassIds / sizeof kClassIds[0] == 54, "the family's list of classes has 54 rows");

constexpr CodeText kBaseCodes[] = {
    {1000, "Success"},
    {1001, "Invalid User"},
    {1002, "Bad Packet"},
    {1003, "Unknown Error"},
    {1004, "Bad Data"},
    {1005, "Not Joined"},
    {1006, "Value Not Set"},
    {1007, "No Server"},
    {1008, "Not Found"},
    {1009, "Permission Error"},
    {1010, "IO Error"},
    {1011, "Account Expired"},
    {1012, "Password Expired"},
    {1013, "Password Policy Not Matched"},
    {1014, "Password Change Rejected"},
    {1015, "Workstation Denied"},
    {1016, "In Another Domain"},
    {1017, "Client Disconnected"},
    {1018, "Process Authentication"},
    {1019, "Network Error"},
    {1020, "Already Joined"},
    {1021, "Name Matches DC"},
    {1022, "Invalid Container"},
    {1023, "Group Policy Not Found"},
    {1024, "Host Zone Access Permission"},
    {1025, "OutBound Trust"},
    {1026, "No Memory"},
    {1027, "Account disabled"},
    {1028, "Account locked out"},
    {1029, "Account logon hour restrictions"},
    {1030, "Invalid Password"},
    {1031, "Invalid Host name"},
    {1032, "Writable Domain Controller Not Found"},
    {1033, "User service ticket not cached"},
    {1034, "There is no directory service for MIT Realm"},
    {1035, "Operation was aborted"},
    {1036, "Name is blocked in configuration file"},
    {1037, "Not implemented in NULL Schema"},
    {1038,
     "Zone server AD domain and AD domain that you are going to join are not located in the same forest."},
};
static_assert(sizeof kBaseCodes / sizeof kBaseCodes[0] == 39, "base codes run from 1000 to 1038");

constexpr char kNamespace[] = "vesk::";

std::string withoutNamespace(const char* className) {
  return strstr(className, kNamespace) ? className + strlen(kNamespace) : className;
}

// The length of the class name without "Exception", for the log.
int shortLength(const char* className) {
  const char* end = strstr(className, "Exception");
  return static_cast<int>(end ? end - className : strlen(className));
}

}  // namespace

VESKException::VESKException(const char* what, const char* className, int rc)
    : m_what(what), m_className(withoutNamespace(className)), m_rc(rc) {}
VESKException::VESKException() = default;
VESKException::~VESKException() noexcept = default;

const char* VESKException::what() const noexcept {
  return m_what.c_str();
}
int VESKException::rc() const noexcept {
  return m_rc;
}
const char* VESKException::className() const noexcept {
  return m_className.c_str();
}

int VESKException::classID() const noexcept {
  for (const CodeText& row : kClassIds)
    if (vesk::equalIgnoringCase(row.text, m_className)) return row.code;
  return 0;
}

ZKTException::ZKTException(const char* file, int line, const char* what, const char* className, int rc)
    : VESKException(what, className, rc) {
  vesk::kHooks.logDebug("base.osutil", "base/osutil", __LINE__, "ZKTException",
                        "Module=%.*s : %s (reference %s:%d rc: %d)", shortLength(className), className, what,
                        file, line, rc);
}
ZKTException::~ZKTException() noexcept = default;
BaseException::~BaseException() noexcept = default;

const char* BaseExceptionToString(int code) {
  for (const CodeText& row : kBaseCodes)
    if (row.code == code) return row.text;
  return "Unknown";
}

void psn_assert(const char* text) {
  static_cast<void>(fprintf(stderr, "%s\n", text));
  abort();
}

namespace vesk {

Base_Exception::Base_Exception(const char* file, int line, const char* what, const char* className, int rc)
    : VESKException(what, className, rc) {
  if (strcmp(className, "EndOfFileException") == 0) return;
  kHooks.logDebug("util.except", "util/error_util", __LINE__, "Base_Exception",
                  "(%.*s) : %s (reference %s:%d rc: %d)", shortLength(className), className, what, file, line,
                  rc);
}

Base_Exception::~Base_Exception() noexcept = default;
AlreadyException::~AlreadyException() noexcept = default;
BadDataException::~BadDataException() noexcept = default;
BufferFullException::~BufferFullException() noexcept = default;
ConnectionBrokenException::~ConnectionBrokenException() noexcept = default;
EndOfFileException::~EndOfFileException() noexcept = default;
EndOfListException::~EndOfListException() noexcept = default;
IOException::~IOException() noexcept = default;
NotFoundException::~NotFoundException() noexcept = default;
SystemException::~SystemException() noexcept = default;
TimeoutException::~TimeoutException() noexcept = default;
TryAgainException::~TryAgainException() noexcept = default;

QueueInterrupted::QueueInterrupted() = default;
QueueInterrupted::~QueueInterrupted() noexcept = default;
const char* QueueInterrupted::what() const noexcept {
  return "QueueInterrupted exception";
}

}  // namespace vesk
