/// LDAP search filters in their text form (RFC 4515), evaluated without a schema.
#pragma once

#include <memory>
#include <string>
#include <string_view>

namespace standin {

class Entry;

/// A parsed filter. Values are compared without regard to the case of ASCII letters; ">=" and "<=" compare as
/// numbers where both sides are whole numbers; "~=" is "=". Three comforts of real directories: objectSid
/// also takes a SID's text form, objectCategory also takes the class's short name, and the bit rules
/// 1.2.840.113556.1.4.803 (all bits) and .804 (any bit) work on whole numbers. Any other matching rule
/// matches nothing. An attribute that an entry does not have matches nothing, so its negation matches.
/// Thread-safety: immutable once parsed.
class LdapFilter {
 public:
  /// How deep filters may be nested; deeper ones are refused, because reading and matching recurse.
  static constexpr int kMaxDepth = 100;

  /// One node of the tree.
  class Node;

  /// The empty text is the filter that every entry matches; the outermost parentheses may be missing.
  /// @throws Error the text is no filter; what() tells where reading stopped.
  explicit LdapFilter(std::string_view text);
  ~LdapFilter();
  LdapFilter(LdapFilter&&) noexcept;
  LdapFilter& operator=(LdapFilter&&) noexcept;

  bool matches(const Entry& entry) const;

 private:
  std::unique_ptr<const Node> m_root;
};

}  // namespace standin
