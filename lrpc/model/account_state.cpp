#include <fokrazo/account_state.h>

#include <algorithm>
#include <charconv>
#include <climits>
#include <cstdint>
#include <string>

#include <fokrazo/attrnames.h>

namespace vesk {

namespace {

using Fact = AccountState::Fact;

// Bits of userAccountControl and of its computed companion, which has those that depend on the time
// ([MS-ADTS] 2.2.16, userAccountControl Bits).
enum ControlBit : int64_t {
  kAccountDisable = 0x2,
  kLockout = 0x10,
  kInterdomainTrustAccount = 0x800,
  kWorkstationTrustAccount = 0x1000,
  kServerTrustAccount = 0x2000,
  kDontExpirePassword = 0x10000,
  kSmartcardRequired = 0x40000,
  kPasswordExpired = 0x800000,
};
constexpr char kComputedControl[] = "msDS-User-Account-Control-Computed";
// The accounts whose passwords do not expire ([MS-ADTS], msDS-UserPasswordExpiryTimeComputed).
constexpr int64_t kPasswordStays = kInterdomainTrustAccount | kWorkstationTrustAccount | kServerTrustAccount |
                                   kDontExpirePassword | kSmartcardRequired;

// Times count 100 ns since 1601-01-01 UTC ([MS-DTYP] FILETIME); durations are negative.
constexpr int64_t kTicksPerSecond = 10'000'000;
constexpr int64_t kSecondsFrom1601 = 11'644'473'600;
constexpr int64_t kSecondsPerHour = 3600;
constexpr int64_t kSecondsPerDay = 24 * kSecondsPerHour;
// As an expiry this means "never", and so do 0 and less ([MS-ADA1] accountExpires).
constexpr int64_t kNever = INT64_MAX;
// As a longest age this means "forever", and so do 0 and more ([MS-ADTS], Effective-MaximumPasswordAge).
constexpr int64_t kForever = INT64_MIN;

// One bit for each hour of the week, from Sunday 00:00 UTC on, the lowest bit of a byte first ([MS-SAMR]
// SAMPR_LOGON_HOURS).
constexpr int64_t kHoursPerWeek = 7 * 24;
constexpr size_t kLogonHoursSize = kHoursPerWeek / 8;
constexpr int64_t kEpochHour = 4 * 24;  // the epoch began on a Thursday

// The first value of an attribute, null if there is none.
const std::string* valueOf(ADObject& object, const std::string& name) {
  return object.attributeExists(name, true) ? object.firstValue(name) : nullptr;
}

// The first value of an attribute as a whole number.
struct Number {
  Number(ADObject& object, const std::string& name) {
    const std::string* text = valueOf(object, name);
    isThere = text != nullptr;
    if (!text) return;
    const char* end = text->data() + text->size();
    const auto [rest, error] = std::from_chars(text->data(), end, value);
    isValid = error == std::errc() && rest == end;
  }

  bool isMalformed() const { return isThere && !isValid; }
  // Whether any of the bits is set.
  Fact has(int64_t bits) const {
    if (isMalformed()) return Fact::Unknown;
    return isValid && (value & bits) != 0 ? Fact::Yes : Fact::No;
  }

  bool isThere = false;
  bool isValid = false;
  int64_t value = 0;
};

Fact factOf(bool isTrue) {
  return isTrue ? Fact::Yes : Fact::No;
}

time_t toTime(int64_t ticks) {
  return ticks / kTicksPerSecond - kSecondsFrom1601;
}

bool isNever(int64_t expiry) {
  return expiry <= 0 || expiry == kNever;
}

Fact lockedOf(ADObject& account) {
  const Number computed(account, kComputedControl);
  if (computed.isThere) return computed.has(kLockout);
  const Number since(account, AD_LOCKOUT_TIME);
  return since.isMalformed() ? Fact::Unknown : factOf(since.value > 0);
}

Fact outsideHoursOf(ADObject& account, time_t now) {
  const std::string* allowed = valueOf(account, AD_LOGON_HOURS);
  if (!allowed) return Fact::No;
  if (allowed->size() != kLogonHoursSize) return Fact::Unknown;
  const int64_t sinceEpoch = now / kSecondsPerHour - (now % kSecondsPerHour < 0 ? 1 : 0);
  const int64_t hour = (sinceEpoch % kHoursPerWeek + kHoursPerWeek + kEpochHour) % kHoursPerWeek;
  const auto byte = static_cast<unsigned char>((*allowed)[static_cast<size_t>(hour / 8)]);
  return factOf((byte >> (hour % 8) & 1) == 0);
}

// When a password of that time expires.
struct Expiry {
  bool isKnown = false;
  std::optional<time_t> time;  // empty: never
};

Expiry expiryAt(int64_t ticks) {
  if (isNever(ticks)) return {true, {}};
  return {true, toTime(ticks)};
}

// From the password's time and the longest age in the domain, a negative duration.
Expiry expiryByAge(ADObject& account, const Number& lastSet) {
  const Number longest(account, AD_PWCHG_MAX);
  if (!lastSet.isValid || !longest.isValid) return {};
  int64_t end;
  const bool isForever = longest.value >= 0 || longest.value == kForever;
  if (isForever || __builtin_sub_overflow(lastSet.value, longest.value, &end)) return {true, {}};
  return expiryAt(end);
}

// From the shadow attributes, in days since the epoch.
Expiry expiryByShadow(ADObject& account) {
  const Number lastSet(account, VESK_SHADOW_LASTCHANGE);
  const Number longest(account, VESK_SHADOW_MAX);
  if (!lastSet.isValid || !longest.isValid || lastSet.value <= 0) return {};
  int64_t days;
  int64_t end;
  if (longest.value < 0 || __builtin_add_overflow(lastSet.value, longest.value, &days) ||
      __builtin_mul_overflow(days, kSecondsPerDay, &end))
    return {true, {}};
  return {true, end};
}

// The directory's own computation is first: it knows the password policies of groups. There 0 means that the
// password must be changed.
Expiry passwordExpiryOf(ADObject& account, const Number& lastSet) {
  const Number computed(account, AD_PASSWORD_EXPIRY);
  if (computed.isValid && computed.value > 0) return expiryAt(computed.value);
  const Expiry byAge = expiryByAge(account, lastSet);
  return byAge.isKnown ? byAge : expiryByShadow(account);
}

// Whether the directory wants a new password, however old this one is ([MS-ADTS],
// msDS-UserPasswordExpiryTimeComputed).
Fact mustChangeOf(ADObject& account, const Number& lastSet) {
  if (lastSet.isThere) return lastSet.isValid ? factOf(lastSet.value == 0) : Fact::Unknown;
  const Number computed(account, AD_PASSWORD_EXPIRY);
  const Number changed(account, VESK_SHADOW_LASTCHANGE);
  return factOf((computed.isValid && computed.value == 0) || (changed.isValid && changed.value == 0));
}

}  // namespace

AccountState::AccountState(ADObject account, time_t now) : m_now(now) {
  readAccount(account);
  readPassword(account);
}

AccountState::AccountState(const User& user, time_t now) : AccountState(user.getObject(), now) {}

void AccountState::readAccount(ADObject& account) {
  m_disabled = Number(account, AD_USER_ACCNT_CONTROL).has(kAccountDisable);
  m_locked = lockedOf(account);
  m_outsideLogonHours = outsideHoursOf(account, m_now);
  const Number expires(account, AD_USER_EXPIRE);
  if (expires.isMalformed()) m_expired = Fact::Unknown;
  if (!expires.isValid || isNever(expires.value)) return;
  m_accountExpiry = toTime(expires.value);
  m_expired = factOf(*m_accountExpiry <= m_now);
}

void AccountState::readPassword(ADObject& account) {
  const Number lastSet(account, AD_PWCHG_LAST);
  if (lastSet.isValid && lastSet.value > 0) m_passwordLastSet = toTime(lastSet.value);
  const Fact stays = Number(account, AD_USER_ACCNT_CONTROL).has(kPasswordStays);
  if (stays == Fact::Unknown) m_mustChangePassword = m_passwordExpired = Fact::Unknown;
  if (stays != Fact::No) return;
  m_mustChangePassword = mustChangeOf(account, lastSet);
  if (m_mustChangePassword == Fact::Yes) return;
  const Expiry expiry = passwordExpiryOf(account, lastSet);
  m_passwordExpiry = expiry.time;
  m_passwordExpired = expiry.isKnown ? factOf(expiry.time && *expiry.time <= m_now) : Fact::Unknown;
  if (Number(account, kComputedControl).has(kPasswordExpired) == Fact::Yes) m_passwordExpired = Fact::Yes;
}

std::optional<int> AccountState::passwordDaysLeft() const {
  if (m_passwordExpired != Fact::No || !m_passwordExpiry) return {};
  const uint64_t left = static_cast<uint64_t>(*m_passwordExpiry) - static_cast<uint64_t>(m_now);
  return static_cast<int>(std::min<uint64_t>(left / kSecondsPerDay, INT_MAX));
}

ValidationResult AccountState::accountResult() const {
  const struct {
    Fact fact;
    ValidationResult result;
  } refusals[] = {
      {m_disabled, VR_ACCOUNT_DISABLED},
      {m_locked, VR_ACCOUNT_LOCKED},
      {m_expired, VR_ACCOUNT_EXPIRED},
      {m_outsideLogonHours, VR_LOGON_HOURS},
  };
  ValidationResult result = VR_SUCCESS;
  for (const auto& refusal : refusals) {
    if (refusal.fact == Fact::Yes) return refusal.result;
    if (refusal.fact == Fact::Unknown) result = VR_BAD_DATA;
  }
  return result;
}

ValidationResult AccountState::result() const {
  const ValidationResult account = accountResult();
  const bool isPasswordOver = m_mustChangePassword == Fact::Yes || m_passwordExpired == Fact::Yes;
  return account == VR_SUCCESS && isPasswordOver ? VR_PASSWORD_EXPIRED : account;
}

}  // namespace vesk
