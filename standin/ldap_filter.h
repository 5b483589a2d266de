/// LDAP search filters (RFC 4515), evaluated without a schema.
#pragma once

#include <memory>
#include <string>
#include <string_view>

namespace standin {

class Entry;

/// A parsed filter. Comparisons ignore the case of ASCII letters; ">=" and "<=" compare as numbers if both
/// sides are whole numbers; "~=" means "=". objectSid also accepts a SID in text form, objectCategory the
/// short name of a class. The bit rules 1.2.840.113556.1.4.803 (all bits) and .804 (any bit) apply to whole
/// numbers; any other matching rule matches nothing. A test of a missing attribute fails, so its negation
/// matches. Thread-safety: immutable once parsed.
class LdapFilter {
 public:
  /// The deepest nesting accepted, because parsing and matching recurse.
  static constexpr int kMaxDepth = 100;

  /// One node of the tree.
  class Node;

  /// The empty text matches every entry. The outermost parentheses are optional.
  /// @throws Error the text is not a filter; what() says where parsing stopped
  explicit LdapFilter(std::string_view text);
  ~LdapFilter();
  LdapFilter(LdapFilter&&) noexcept;
  LdapFilter& operator=(LdapFilter&&) noexcept;

  bool matches(const Entry& entry) const;

 private:
  std::unique_ptr<const Node> m_root;
};

}  // namespace standin
