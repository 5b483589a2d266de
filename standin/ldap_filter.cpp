#include "standin/ldap_filter.h"

#include <charconv>
#include <utility>
#include <vector>

#include <fokrazo/ascii.h>
#include <fokrazo/sid.h>
#include <fokrazo/strutil.h>
#include "standin/entry.h"
#include "standin/error.h"

namespace standin {

/// The base of all nodes.
class LdapFilter::Node {
 public:
  virtual ~Node() = default;
  virtual bool matches(const Entry& entry) const = 0;
};

namespace {

constexpr char kAllBitsRule[] = "1.2.840.113556.1.4.803";
constexpr char kAnyBitRule[] = "1.2.840.113556.1.4.804";

using Node = LdapFilter::Node;
using NodePtr = std::unique_ptr<const Node>;
using NodeList = std::vector<NodePtr>;

/// A whole number of 64 bits; false for any other text.
bool toNumber(std::string_view text, long long& number) {
  auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  return error == std::errc() && end == text.data() + text.size();
}

/// The short name in a category's DN: the text between its first "=" and the comma.
std::string_view shortCategory(std::string_view dn) {
  size_t equals = dn.find('=');
  if (equals == std::string_view::npos) return dn;
  return dn.substr(equals + 1, dn.find(',') - equals - 1);
}

class AndNode : public Node {
 public:
  explicit AndNode(NodeList children) : m_children(std::move(children)) {}
  bool matches(const Entry& entry) const override {
    for (const NodePtr& child : m_children)
      if (!child->matches(entry)) return false;
    return true;
  }

 private:
  NodeList m_children;
};

class OrNode : public Node {
 public:
  explicit OrNode(NodeList children) : m_children(std::move(children)) {}
  bool matches(const Entry& entry) const override {
    for (const NodePtr& child : m_children)
      if (child->matches(entry)) return true;
    return false;
  }

 private:
  NodeList m_children;
};

class NotNode : public Node {
 public:
  explicit NotNode(NodePtr child) : m_child(std::move(child)) {}
  bool matches(const Entry& entry) const override { return !m_child->matches(entry); }

 private:
  NodePtr m_child;
};

/// Tests one attribute; the entry matches if one of its values does.
class ValueNode : public Node {
 public:
  explicit ValueNode(std::string attribute) : m_attribute(std::move(attribute)) {}
  bool matches(const Entry& entry) const override {
    // Every entry has this attribute, even if the record does not list it.
    if (vesk::equalIgnoringCase(m_attribute, "distinguishedName") && !entry.find(m_attribute))
      return test(entry.dn());
    const Attribute* attribute = entry.find(m_attribute);
    if (!attribute) return false;
    for (const std::string& value : attribute->values)
      if (test(value)) return true;
    return false;
  }

 protected:
  virtual bool test(const std::string& value) const = 0;

 private:
  std::string m_attribute;
};

class PresentNode : public ValueNode {
 public:
  using ValueNode::ValueNode;

 private:
  bool test(const std::string&) const override { return true; }
};

class EqualNode : public ValueNode {
 public:
  EqualNode(const std::string& attribute, std::string asserted)
      : ValueNode(attribute), m_asserted(std::move(asserted)) {
    if (vesk::equalIgnoringCase(attribute, "objectSid") && m_asserted.compare(0, 4, "S-1-") == 0)
      m_asserted = vesk::SID(m_asserted).bytes();
    m_isShortCategory =
        vesk::equalIgnoringCase(attribute, "objectCategory") && m_asserted.find('=') == std::string::npos;
  }

 private:
  bool test(const std::string& value) const override {
    return vesk::equalIgnoringCase(m_isShortCategory ? shortCategory(value) : std::string_view(value),
                                   m_asserted);
  }

  std::string m_asserted;
  bool m_isShortCategory;
};

/// ">=" or "<=".
class OrderNode : public ValueNode {
 public:
  OrderNode(std::string attribute, const std::string& asserted, bool wantGreater)
      : ValueNode(std::move(attribute)),
        m_asserted(vesk::lower(asserted)),
        m_isNumber(toNumber(m_asserted, m_number)),
        m_wantGreater(wantGreater) {}

 private:
  bool test(const std::string& value) const override {
    int order = 0;
    long long number = 0;
    if (m_isNumber && toNumber(value, number)) {
      order = (number > m_number) - (number < m_number);
    } else {
      order = vesk::lower(value).compare(m_asserted);
    }
    return m_wantGreater ? order >= 0 : order <= 0;
  }

  std::string m_asserted;
  long long m_number = 0;
  bool m_isNumber;
  bool m_wantGreater;
};

/// "initial*any*any*final"; any of the pieces may be empty.
class SubstringNode : public ValueNode {
 public:
  SubstringNode(std::string attribute, std::vector<std::string> pieces)
      : ValueNode(std::move(attribute)), m_pieces(std::move(pieces)) {
    for (std::string& piece : m_pieces) piece = vesk::lower(piece);
  }

 private:
  bool test(const std::string& value) const override {
    std::string text = vesk::lower(value);
    const std::string& initial = m_pieces.front();
    const std::string& final = m_pieces.back();
    if (text.size() < initial.size() + final.size() || text.compare(0, initial.size(), initial) != 0 ||
        text.compare(text.size() - final.size(), final.size(), final) != 0)
      return false;
    text.resize(text.size() - final.size());
    size_t position = initial.size();
    for (size_t i = 1; i + 1 < m_pieces.size(); ++i) {
      size_t found = text.find(m_pieces[i], position);
      if (found == std::string::npos) return false;
      position = found + m_pieces[i].size();
    }
    return true;
  }

  std::vector<std::string> m_pieces;
};

/// One of the two bit rules.
class BitNode : public ValueNode {
 public:
  BitNode(std::string attribute, long long mask, bool wantAll)
      : ValueNode(std::move(attribute)), m_mask(mask), m_wantAll(wantAll) {}

 private:
  bool test(const std::string& value) const override {
    long long number = 0;
    if (!toNumber(value, number)) return false;
    return m_wantAll ? (number & m_mask) == m_mask : (number & m_mask) != 0;
  }

  long long m_mask;
  bool m_wantAll;
};

NodePtr nothing() {
  return std::make_unique<OrNode>(NodeList());
}

/// A recursive-descent parser.
class Parser {
 public:
  explicit Parser(std::string_view text) : m_text(text) {}

  NodePtr parse() {
    skipBlanks();
    if (atEnd()) return std::make_unique<AndNode>(NodeList());
    NodePtr root = peek() == '(' ? parenthesized(1) : item();
    skipBlanks();
    if (!atEnd()) fail("unexpected text after the filter");
    return root;
  }

 private:
  NodePtr parenthesized(int depth) {
    if (depth > LdapFilter::kMaxDepth) fail("nested too deeply");
    expect('(');
    skipBlanks();
    NodePtr node;
    switch (peek()) {
      case '&':
        ++m_position;
        node = std::make_unique<AndNode>(list(depth));
        break;
      case '|':
        ++m_position;
        node = std::make_unique<OrNode>(list(depth));
        break;
      case '!':
        ++m_position;
        skipBlanks();
        node = std::make_unique<NotNode>(parenthesized(depth + 1));
        break;
      default:
        node = item();
    }
    skipBlanks();
    expect(')');
    return node;
  }

  NodeList list(int depth) {
    NodeList nodes;
    for (skipBlanks(); peek() == '('; skipBlanks()) nodes.push_back(parenthesized(depth + 1));
    return nodes;
  }

  NodePtr item() {
    size_t start = m_position;
    while (!atEnd() && isNameCharacter(peek())) ++m_position;
    std::string attribute(m_text.substr(start, m_position - start));
    if (peek() == ':') return extensible(std::move(attribute));
    if (attribute.empty()) fail("an attribute name is missing");
    char sign = peek();
    if (sign == '>' || sign == '<' || sign == '~') ++m_position;
    expect('=');
    std::vector<std::string> pieces = value();
    if (sign != '=') {
      if (pieces.size() != 1) fail("an asterisk in a comparison");
      if (sign == '~') return std::make_unique<EqualNode>(std::move(attribute), std::move(pieces.front()));
      return std::make_unique<OrderNode>(std::move(attribute), std::move(pieces.front()), sign == '>');
    }
    if (pieces.size() == 1)
      return std::make_unique<EqualNode>(std::move(attribute), std::move(pieces.front()));
    if (pieces.size() == 2 && pieces[0].empty() && pieces[1].empty())
      return std::make_unique<PresentNode>(std::move(attribute));
    return std::make_unique<SubstringNode>(std::move(attribute), std::move(pieces));
  }

  /// From the first colon on: [":dn"] [":" rule] ":=" value. The DN's parts are not searched.
  NodePtr extensible(std::string attribute) {
    std::string rule;
    while (peek() == ':' && m_position + 1 < m_text.size() && m_text[m_position + 1] != '=') {
      size_t start = ++m_position;
      while (!atEnd() && isNameCharacter(peek())) ++m_position;
      std::string part(m_text.substr(start, m_position - start));
      if (part.empty()) fail("a matching rule is missing");
      if (!vesk::equalIgnoringCase(part, "dn")) rule = part;
    }
    expect(':');
    expect('=');
    if (attribute.empty() && rule.empty()) fail("an attribute or a matching rule is missing");
    std::vector<std::string> pieces = value();
    if (pieces.size() != 1) fail("an asterisk in an extensible match");
    if (attribute.empty()) return nothing();
    if (rule.empty()) return std::make_unique<EqualNode>(std::move(attribute), std::move(pieces.front()));
    long long mask = 0;
    bool wantAll = rule == kAllBitsRule;
    if ((!wantAll && rule != kAnyBitRule) || !toNumber(pieces.front(), mask)) return nothing();
    return std::make_unique<BitNode>(std::move(attribute), mask, wantAll);
  }

  /// The unescaped pieces of a value between its asterisks; one piece without asterisks.
  std::vector<std::string> value() {
    std::vector<std::string> pieces(1);
    for (; !atEnd() && peek() != ')'; ++m_position) {
      char c = peek();
      if (c == '(') fail("a parenthesis in a value");
      if (c == '*') {
        pieces.emplace_back();
      } else if (c == '\\') {
        pieces.back() += escaped();
      } else {
        pieces.back() += c;
      }
    }
    return pieces;
  }

  /// Reads an escape: two digits or, from older clients, a special character. Leaves the position at the last
  /// character of the escape.
  char escaped() {
    if (m_text.size() - m_position > 1 &&
        std::string_view("*()\\").find(m_text[m_position + 1]) != std::string_view::npos)
      return m_text[++m_position];
    unsigned char byte = 0;
    const char* digits = m_text.data() + m_position + 1;
    if (m_text.size() - m_position < 3 || std::from_chars(digits, digits + 2, byte, 16).ptr != digits + 2)
      fail("a backslash without two hexadecimal digits");
    m_position += 2;
    return static_cast<char>(byte);
  }

  static bool isNameCharacter(char c) {
    return vesk::isAsciiAlnum(c) || c == '-' || c == '.' || c == ';' || c == '_';
  }

  bool atEnd() const { return m_position == m_text.size(); }
  char peek() const { return atEnd() ? '\0' : m_text[m_position]; }
  void skipBlanks() {
    while (!atEnd() && vesk::isAsciiSpace(peek())) ++m_position;
  }
  void expect(char c) {
    if (peek() != c || atEnd()) fail(std::string("a \"") + c + "\" is missing");
    ++m_position;
  }
  [[noreturn]] void fail(const std::string& why) const {
    throw Error("Bad filter at position " + std::to_string(m_position) + ": " + why);
  }

  std::string_view m_text;
  size_t m_position = 0;
};

}  // namespace

LdapFilter::LdapFilter(std::string_view text) : m_root(Parser(text).parse()) {}
LdapFilter::~LdapFilter() = default;
LdapFilter::LdapFilter(LdapFilter&&) noexcept = default;
LdapFilter& LdapFilter::operator=(LdapFilter&&) noexcept = default;

bool LdapFilter::matches(const Entry& entry) const {
  return m_root->matches(entry);
}

}  // namespace standin
