#pragma once

// The records of a tree: nodes and attributes.

#include <cstddef>
#include <cstdint>
#include <string>

#include "libtarn/Assertion.hpp"
#include "libtarn/TarnApi.hpp"

namespace rapidxml {

template <class Ch>
class xml_node;
template <class Ch>
class xml_attribute;

namespace internal {
template <class Ch, class Events>
class parser;
}

/// Kind of a node.
enum node_type : std::int32_t {
  node_document = 0,     ///< Root of a tree, never a child.
  node_element = 1,      ///< Element; the parser stores its text as the value.
  node_data = 2,         ///< Text; the parser makes none.
  node_cdata = 3,        ///< CDATA section; the parser makes none.
  node_comment = 4,      ///< Comment; the parser makes none.
  node_declaration = 5,  ///< XML declaration, its pseudo-attributes as attributes.
  node_doctype = 6,      ///< DOCTYPE; the parser makes none.
  node_pi = 7            ///< Processing instruction; the parser makes none.
};
namespace internal {

/// Returns the length of a NUL-terminated text in characters.
template <class Ch>
std::size_t measure(const Ch* text) {
  return std::char_traits<Ch>::length(text);
}

/// Returns true if the name of `size` characters equals `other`. Without case sensitivity the
/// letters A to Z equal a to z.
template <class Ch>
bool same_name(const Ch* name, std::size_t size, const Ch* other, std::size_t other_size,
               bool case_sensitive) {
  if (size != other_size) return false;
  if (size == 0) return true;
  if (case_sensitive) {
    // Most names that differ do so at the start.
    return *name == *other && std::char_traits<Ch>::compare(name, other, size) == 0;
  }
  const auto lower = [](Ch c) { return c >= Ch('A') && c <= Ch('Z') ? Ch(c + ('a' - 'A')) : c; };
  for (std::size_t i = 0; i < size; ++i) {
    if (lower(name[i]) != lower(other[i])) return false;
  }
  return true;
}

}  // namespace internal

/// What nodes and attributes share: a name, a value and the owning node. The texts belong to the
/// parsed text or to the pool, never to the record.
template <class Ch>
class TARN_API xml_base {
 public:
  /// A record without texts, detached.
  xml_base() = default;

  /// Returns the name, or a shared empty text when there is none. NUL-terminated after a complete
  /// parse.
  Ch* name() const { return m_name ? m_name : nullstr(); }
  /// Returns the length of the name in characters.
  std::size_t name_size() const { return m_name ? m_name_size : 0; }
  /// Returns the value, or a shared empty text when there is none.
  Ch* value() const { return m_value ? m_value : nullstr(); }
  /// Returns the length of the value in characters.
  std::size_t value_size() const { return m_value ? m_value_size : 0; }

  /// Stores pointer and length of the name. The text must live as long as the record.
  void name(const Ch* text, std::size_t size) {
    m_name = const_cast<Ch*>(text);
    m_name_size = to_size(size);
  }
  /// Stores pointer and length of the NUL-terminated name, which must live as long as the record.
  void name(const Ch* text) { name(text, internal::measure(text)); }
  /// Stores pointer and length of the value. The text must live as long as the record.
  void value(const Ch* text, std::size_t size) {
    m_value = const_cast<Ch*>(text);
    m_value_size = to_size(size);
  }
  /// Stores pointer and length of the NUL-terminated value, which must live as long as the record.
  void value(const Ch* text) { value(text, internal::measure(text)); }

  /// Returns the owning node; null when detached, and for a document.
  xml_node<Ch>* parent() const { return m_parent; }

 protected:
  bool has_name(const Ch* name, std::size_t size, bool case_sensitive) const {
    return internal::same_name<Ch>(this->name(), name_size(), name, size, case_sensitive);
  }

  static Ch* nullstr() {
    static Ch zero = Ch('\0');
    return &zero;
  }

  Ch* m_name = nullptr;
  Ch* m_value = nullptr;
  std::uint32_t m_name_size = 0;
  std::uint32_t m_value_size = 0;
  xml_node<Ch>* m_parent = nullptr;

  template <class>
  friend class xml_node;
  template <class, class>
  friend class internal::parser;

 private:
  static std::uint32_t to_size(std::size_t size) {
    TARN_ASSERT(size <= UINT32_MAX, "size fits 32 bits");
    return static_cast<std::uint32_t>(size);
  }
};

/// An attribute of a node.
template <class Ch>
class TARN_API xml_attribute : public xml_base<Ch> {
 public:
  // The links are set when the attribute is linked, and read only while it is.
  xml_attribute() {}  // NOLINT(modernize-use-equals-default): would clear the links

  /// Returns the next attribute of the same node, or null; by name when one is given.
  xml_attribute* next_attribute(const Ch* name = nullptr, std::size_t name_size = 0,
                                bool case_sensitive = true) const {
    if (!this->m_parent) return nullptr;
    return find(m_next_attribute, &xml_attribute::m_next_attribute, name, name_size,
                case_sensitive);
  }

  /// Returns the previous attribute of the same node, or null; by name when one is given.
  xml_attribute* previous_attribute(const Ch* name = nullptr, std::size_t name_size = 0,
                                    bool case_sensitive = true) const {
    if (!this->m_parent) return nullptr;
    return find(m_prev_attribute, &xml_attribute::m_prev_attribute, name, name_size,
                case_sensitive);
  }

 private:
  static xml_attribute* find(xml_attribute* from, xml_attribute* xml_attribute::*link,
                             const Ch* name, std::size_t name_size, bool case_sensitive) {
    if (!name) return from;
    if (name_size == 0) name_size = internal::measure(name);
    while (from && !from->has_name(name, name_size, case_sensitive)) from = from->*link;
    return from;
  }

  xml_attribute* m_prev_attribute;  // valid while linked
  xml_attribute* m_next_attribute;  // valid while linked

  template <class>
  friend class xml_node;
};

/// A node of the tree. Children and attributes form doubly linked lists. No operation allocates;
/// removal unlinks and frees nothing.
///
/// In every look-up a null name means any name, and a name size of 0 means that the name is
/// NUL-terminated.
template <class Ch>
class TARN_API xml_node : public xml_base<Ch> {
 public:
  // The other links are set when they become valid, and read only then.
  explicit xml_node(node_type type)
      : m_type(type), m_first_node(nullptr), m_first_attribute(nullptr) {}

  /// Returns the kind of the node.
  node_type type() const { return m_type; }
  /// Sets the kind of the node.
  void type(node_type type) { m_type = type; }

  /// Returns the first child, or the first of that name; null when there is none.
  xml_node* first_node(const Ch* name = nullptr, std::size_t name_size = 0,
                       bool case_sensitive = true) const {
    return find(m_first_node, &xml_node::m_next_sibling, name, name_size, case_sensitive);
  }

  /// Returns the last child, or the last of that name. The node must have children (asserted).
  xml_node* last_node(const Ch* name = nullptr, std::size_t name_size = 0,
                      bool case_sensitive = true) const {
    TARN_ASSERT(m_first_node, "m_first_node");
    return find(m_last_node, &xml_node::m_prev_sibling, name, name_size, case_sensitive);
  }

  /// Returns the next sibling, or the next of that name. The node must be linked (asserted).
  xml_node* next_sibling(const Ch* name = nullptr, std::size_t name_size = 0,
                         bool case_sensitive = true) const {
    TARN_ASSERT(this->m_parent, "this->m_parent");
    return find(m_next_sibling, &xml_node::m_next_sibling, name, name_size, case_sensitive);
  }

  /// Returns the previous sibling, or the previous of that name. The node must be linked
  /// (asserted).
  xml_node* previous_sibling(const Ch* name = nullptr, std::size_t name_size = 0,
                             bool case_sensitive = true) const {
    TARN_ASSERT(this->m_parent, "this->m_parent");
    return find(m_prev_sibling, &xml_node::m_prev_sibling, name, name_size, case_sensitive);
  }

  /// Returns the first attribute, or the first of that name; null when there is none.
  xml_attribute<Ch>* first_attribute(const Ch* name = nullptr, std::size_t name_size = 0,
                                     bool case_sensitive = true) const {
    return xml_attribute<Ch>::find(m_first_attribute, &xml_attribute<Ch>::m_next_attribute, name,
                                   name_size, case_sensitive);
  }

  /// Returns the last attribute, or the last of that name; null when there is none.
  xml_attribute<Ch>* last_attribute(const Ch* name = nullptr, std::size_t name_size = 0,
                                    bool case_sensitive = true) const {
    if (!m_first_attribute) return nullptr;
    return xml_attribute<Ch>::find(m_last_attribute, &xml_attribute<Ch>::m_prev_attribute, name,
                                   name_size, case_sensitive);
  }

  /// Links `child`, which must be detached and not a document (asserted), as the last child.
  void append_node(xml_node* child) {
    assert_linkable(child);
    link_last(child);
  }

  /// Links `child` immediately before the child `where`; a null `where` appends.
  void insert_node(xml_node* where, xml_node* child) {
    TARN_ASSERT(!where || where->parent() == this, "!where || where->parent() == this");
    if (!where) return append_node(child);
    assert_linkable(child);
    child->m_prev_sibling = where->m_prev_sibling;
    child->m_next_sibling = where;
    (where == m_first_node ? m_first_node : where->m_prev_sibling->m_next_sibling) = child;
    where->m_prev_sibling = child;
    child->m_parent = this;
  }

  /// Unlinks the child `where` (asserted). Its own sibling links become invalid.
  void remove_node(xml_node* where) {
    TARN_ASSERT(where && where->parent() == this, "where && where->parent() == this");
    TARN_ASSERT(first_node(), "first_node()");
    unlink(where);
  }

  /// Unlinks every child.
  void remove_all_nodes() {
    for (xml_node* node = m_first_node; node; node = node->m_next_sibling) node->m_parent = nullptr;
    m_first_node = nullptr;
  }

  /// Links `attribute`, which must be detached (asserted), as the last attribute.
  void append_attribute(xml_attribute<Ch>* attribute) {
    TARN_ASSERT(attribute && !attribute->parent(), "attribute && !attribute->parent()");
    attribute->m_prev_attribute = m_first_attribute ? m_last_attribute : nullptr;
    attribute->m_next_attribute = nullptr;
    (m_first_attribute ? m_last_attribute->m_next_attribute : m_first_attribute) = attribute;
    m_last_attribute = attribute;
    attribute->m_parent = this;
  }

  /// Unlinks an attribute of this node (asserted).
  void remove_attribute(xml_attribute<Ch>* where) {
    TARN_ASSERT(first_attribute() && where && where->parent() == this,
                "first_attribute() && where->parent() == this");
    xml_attribute<Ch>* const before = where->m_prev_attribute;
    xml_attribute<Ch>* const after = where->m_next_attribute;
    (before ? before->m_next_attribute : m_first_attribute) = after;
    (after ? after->m_prev_attribute : m_last_attribute) = before;
    where->m_parent = nullptr;
  }

  /// Unlinks every attribute.
  void remove_all_attributes() {
    xml_attribute<Ch>* attribute = m_first_attribute;
    for (; attribute; attribute = attribute->m_next_attribute) attribute->m_parent = nullptr;
    m_first_attribute = nullptr;
  }

 protected:
  /// Unlinks `where`, known to be a child of this node.
  void unlink(xml_node* where) {
    xml_node* const before = where->m_prev_sibling;
    xml_node* const after = where->m_next_sibling;
    (before ? before->m_next_sibling : m_first_node) = after;
    (after ? after->m_prev_sibling : m_last_node) = before;
    where->m_parent = nullptr;
  }

 private:
  // Like append_node(), for a child known to be linkable.
  void link_last(xml_node* child) {
    child->m_prev_sibling = m_first_node ? m_last_node : nullptr;
    child->m_next_sibling = nullptr;
    (m_first_node ? m_last_node->m_next_sibling : m_first_node) = child;
    m_last_node = child;
    child->m_parent = this;
  }

  static void assert_linkable(const xml_node* child) {
    TARN_ASSERT(child && !child->parent() && child->type() != node_document,
                "child && !child->parent() && child->type() != node_document");
  }

  static xml_node* find(xml_node* from, xml_node* xml_node::*link, const Ch* name,
                        std::size_t name_size, bool case_sensitive) {
    if (!name) return from;
    if (name_size == 0) name_size = internal::measure(name);
    while (from && !from->has_name(name, name_size, case_sensitive)) from = from->*link;
    return from;
  }

  node_type m_type;
  xml_node* m_first_node;
  xml_node* m_last_node;  // valid while there are children
  xml_attribute<Ch>* m_first_attribute;
  xml_attribute<Ch>* m_last_attribute;  // valid while there are attributes
  xml_node* m_prev_sibling;             // valid while linked
  xml_node* m_next_sibling;             // valid while linked

  template <class, class>
  friend class internal::parser;
};

extern template class xml_base<char>;
extern template class xml_attribute<char>;
extern template class xml_node<char>;

}  // namespace rapidxml
