#pragma once

// The XML core: plain node records, the memory pool that holds them, and the parser.
//
// A parsed document is a tree of records whose names and values point into the text, which the
// parser changes in place: a zero goes behind every name and value, references are expanded where
// they stand (the result is never longer than the reference). Nothing is copied and nothing is
// freed one by one; the pool goes as a whole.
//
// The parser asks for every node and attribute through IXMLFactory, so that a document derived from
// xml_document can hand out larger objects that embed a record.
//
// Cost: one pass over the text, a pointer bump for each node. No function recurses: elements that
// are open while the parser runs form a chain through their parent links, and an element is linked
// into its parent's children when its end tag has been read.

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <exception>
#include <limits>
#include <new>
#include <type_traits>

#include "Assertion.hpp"
#include "IMemoryPool.hpp"
#include "rapidxml/character_classes.hpp"

namespace rapidxml {

template <class Ch>
class xml_node;
template <class Ch>
class xml_attribute;
template <class Ch>
class xml_document;

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

/// Parse option: text becomes the value of its element and no data nodes are made.
constexpr int parse_no_data_nodes = 1;
/// Parse option: the XML declaration becomes a node.
constexpr int parse_declaration_node = 32;

/// Malformed text: what is wrong, and where in the parsed text.
class parse_error : public std::exception {
 public:
  /// `what` is kept, not copied: it must live as long as the exception and its copies.
  parse_error(const char* what, void* where) : m_what(what), m_where(where) {}

  const char* what() const noexcept override { return m_what; }

  /// Position of the fault within the text given to the parser. Valid as long as that text.
  template <class Ch = char>
  Ch* where() const {
    return static_cast<Ch*>(m_where);
  }

 private:
  const char* m_what;
  void* m_where;
};

/// What the parser asks for nodes, attributes and strings.
template <class Ch>
class IXMLFactory {
 public:
  virtual ~IXMLFactory() = default;

  /// A detached node. The parser passes null and 0 for all but `type`; the node may come back with
  /// its name already set to the parser's position, which spares a second scan of that name.
  virtual xml_node<Ch>* allocate_node(node_type type, const Ch* name, const Ch* value,
                                      std::size_t name_size, std::size_t value_size) = 0;

  /// A detached attribute. The parser passes null and 0 for everything.
  virtual xml_attribute<Ch>* allocate_attribute(const Ch* name, const Ch* value,
                                                std::size_t name_size, std::size_t value_size) = 0;

  /// Room for `size` characters, filled from `source` when given; size 0 takes the whole
  /// zero-terminated source with its terminator.
  virtual Ch* allocate_string(const Ch* source, std::size_t size) = 0;
};

namespace internal {

/// Length of a zero-terminated text in characters.
template <class Ch>
std::size_t measure(const Ch* text) {
  return std::char_traits<Ch>::length(text);
}

/// True when the name of `size` characters equals `other`. Without case sensitivity the letters A
/// to Z equal a to z.
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
class xml_base {
 public:
  xml_base() = default;

  /// The name, or a shared empty text when there is none. Zero-terminated after a complete parse.
  Ch* name() const { return m_name ? m_name : nullstr(); }
  /// Length of the name in characters.
  std::size_t name_size() const { return m_name ? m_name_size : 0; }
  /// The value, or a shared empty text when there is none.
  Ch* value() const { return m_value ? m_value : nullstr(); }
  /// Length of the value in characters.
  std::size_t value_size() const { return m_value ? m_value_size : 0; }

  /// Stores pointer and length; the text must live as long as the record.
  void name(const Ch* text, std::size_t size) {
    m_name = const_cast<Ch*>(text);
    m_name_size = to_size(size);
  }
  void name(const Ch* text) { name(text, internal::measure(text)); }
  void value(const Ch* text, std::size_t size) {
    m_value = const_cast<Ch*>(text);
    m_value_size = to_size(size);
  }
  void value(const Ch* text) { value(text, internal::measure(text)); }

  /// The owning node; null when detached, and for a document.
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
  template <class>
  friend class xml_document;

 private:
  static std::uint32_t to_size(std::size_t size) {
    TARN_ASSERT(size <= std::numeric_limits<std::uint32_t>::max(), "size fits 32 bits");
    return static_cast<std::uint32_t>(size);
  }
};

/// An attribute of a node.
template <class Ch>
class xml_attribute : public xml_base<Ch> {
 public:
  // The links are set when the attribute is linked, and read only then.
  xml_attribute() {}  // NOLINT(modernize-use-equals-default): would clear the links

  /// The next attribute of the same node, or null; by name when one is given.
  xml_attribute* next_attribute(const Ch* name = nullptr, std::size_t name_size = 0,
                                bool case_sensitive = true) const {
    if (!this->m_parent) return nullptr;
    return find(m_next_attribute, &xml_attribute::m_next_attribute, name, name_size,
                case_sensitive);
  }

  /// The previous attribute of the same node, or null; by name when one is given.
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
/// In every look-up a null name means any, and a name size of 0 means that the name is
/// zero-terminated.
template <class Ch>
class xml_node : public xml_base<Ch> {
 public:
  // The other links are set when they become valid, and read only then.
  explicit xml_node(node_type type)
      : m_type(type), m_first_node(nullptr), m_first_attribute(nullptr) {}

  node_type type() const { return m_type; }
  void type(node_type type) { m_type = type; }

  /// First child, or the first of that name; null when there is none.
  xml_node* first_node(const Ch* name = nullptr, std::size_t name_size = 0,
                       bool case_sensitive = true) const {
    return find(m_first_node, &xml_node::m_next_sibling, name, name_size, case_sensitive);
  }

  /// Last child, or the last of that name. The node must have children (asserted).
  xml_node* last_node(const Ch* name = nullptr, std::size_t name_size = 0,
                      bool case_sensitive = true) const {
    TARN_ASSERT(m_first_node, "m_first_node");
    return find(m_last_node, &xml_node::m_prev_sibling, name, name_size, case_sensitive);
  }

  /// Next sibling, or the next of that name. The node must be linked (asserted).
  xml_node* next_sibling(const Ch* name = nullptr, std::size_t name_size = 0,
                         bool case_sensitive = true) const {
    TARN_ASSERT(this->m_parent, "this->m_parent");
    return find(m_next_sibling, &xml_node::m_next_sibling, name, name_size, case_sensitive);
  }

  /// Previous sibling, or the previous of that name. The node must be linked (asserted).
  xml_node* previous_sibling(const Ch* name = nullptr, std::size_t name_size = 0,
                             bool case_sensitive = true) const {
    TARN_ASSERT(this->m_parent, "this->m_parent");
    return find(m_prev_sibling, &xml_node::m_prev_sibling, name, name_size, case_sensitive);
  }

  /// First attribute, or the first of that name; null when there is none.
  xml_attribute<Ch>* first_attribute(const Ch* name = nullptr, std::size_t name_size = 0,
                                     bool case_sensitive = true) const {
    return xml_attribute<Ch>::find(m_first_attribute, &xml_attribute<Ch>::m_next_attribute, name,
                                   name_size, case_sensitive);
  }

  /// Last attribute, or the last of that name; null when there is none.
  xml_attribute<Ch>* last_attribute(const Ch* name = nullptr, std::size_t name_size = 0,
                                    bool case_sensitive = true) const {
    if (!m_first_attribute) return nullptr;
    return xml_attribute<Ch>::find(m_last_attribute, &xml_attribute<Ch>::m_prev_attribute, name,
                                   name_size, case_sensitive);
  }

  /// Links `child`, which must be detached and no document (asserted), as last child.
  void append_node(xml_node* child) {
    assert_linkable(child);
    child->m_prev_sibling = m_first_node ? m_last_node : nullptr;
    child->m_next_sibling = nullptr;
    (m_first_node ? m_last_node->m_next_sibling : m_first_node) = child;
    m_last_node = child;
    child->m_parent = this;
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

  /// Unlinks the child `where`. Its own sibling links are stale from then on.
  void remove_node(xml_node* where) {
    TARN_ASSERT(where && where->parent() == this, "where && where->parent() == this");
    TARN_ASSERT(first_node(), "first_node()");
    unlink(where);
  }

  /// Detaches every child.
  void remove_all_nodes() {
    for (xml_node* node = m_first_node; node; node = node->m_next_sibling) node->m_parent = nullptr;
    m_first_node = nullptr;
  }

  /// Links `attribute`, which must be detached (asserted), as last attribute.
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

  /// Detaches every attribute.
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

  template <class>
  friend class xml_document;
};

/// Bump allocator of one document. Everything taken from it goes when the pool is destroyed, and no
/// destructor of what was built in it runs.
///
/// Block of the pool, newest first:
///
///   raw                align(raw)      + header                           raw + size
///   | slack            | previous block | records, strings ...             |
///
/// A request that the current block cannot hold opens a new block; the rest of the old one is
/// abandoned. The first block is part of the pool object. Not copyable. One thread at a time.
template <class Ch>
class memory_pool : public libDomXml::IMemoryPool, public IXMLFactory<Ch> {
 public:
  using alloc_func = void*(std::size_t);
  using free_func = void(void*);

  /// Alignment of every result in bytes.
  static constexpr std::size_t alignment = sizeof(void*);
  /// Size of the block inside the pool object in bytes.
  static constexpr std::size_t static_pool_size = 1024;
  /// Least usable size of a further block in bytes (230 KiB).
  static constexpr std::size_t dynamic_pool_size = 235520;
  /// Bytes of a further block beside its usable size: the link to the previous block, and what
  /// aligning the link and the first record may cost.
  static constexpr std::size_t block_overhead = sizeof(char*) + 2 * alignment - 2;

  memory_pool() : m_begin(m_static_memory), m_ptr(align(m_static_memory)), m_end(static_end()) {}
  memory_pool(const memory_pool&) = delete;
  memory_pool& operator=(const memory_pool&) = delete;

  ~memory_pool() override {
    while (m_begin != m_static_memory) {
      char* const previous = *reinterpret_cast<char**>(align(m_begin));
      m_free_func ? m_free_func(m_begin) : delete[] m_begin;
      m_begin = previous;
    }
  }

  xml_node<Ch>* allocate_node(node_type type, const Ch* name, const Ch* value,
                              std::size_t name_size, std::size_t value_size) override {
    auto* const node = new (allocate_aligned(sizeof(xml_node<Ch>))) xml_node<Ch>(type);
    set_texts(*node, name, value, name_size, value_size);
    return node;
  }

  xml_attribute<Ch>* allocate_attribute(const Ch* name, const Ch* value, std::size_t name_size,
                                        std::size_t value_size) override {
    auto* const attribute = new (allocate_aligned(sizeof(xml_attribute<Ch>))) xml_attribute<Ch>();
    set_texts(*attribute, name, value, name_size, value_size);
    return attribute;
  }

  Ch* allocate_string(const Ch* source, std::size_t size) override {
    TARN_ASSERT(source || size, "source || size");
    if (size == 0) size = internal::measure(source) + 1;
    auto* const result = static_cast<Ch*>(allocate_aligned(size * sizeof(Ch)));
    if (source) std::memcpy(result, source, size * sizeof(Ch));
    return result;
  }

  /// Installs where blocks come from and go to, before anything has been allocated (asserted).
  /// `allocate` must not return null (asserted when it does).
  void set_allocator(alloc_func* allocate, free_func* release) {
    TARN_ASSERT(m_begin == m_static_memory && m_ptr == align(m_begin),
                "m_begin == m_static_memory && m_ptr == align(m_begin)");
    m_alloc_func = allocate;
    m_free_func = release;
  }

  /// Bytes of the blocks taken so far, with those not used yet.
  std::size_t pool_size() const { return m_block_bytes; }

 protected:
  /// `size` bytes, aligned. Throws std::bad_alloc, the pool unchanged, when there is no memory.
  void* allocate_aligned(std::size_t size) {
    char* const result = align(m_ptr);
    if (result > m_end || size > static_cast<std::size_t>(m_end - result)) {
      return allocate_in_new_block(size);
    }
    m_ptr = result + size;
    return result;
  }

 private:
  static_assert(std::is_same_v<Ch, char>, "records are made for char");
  static_assert(alignof(xml_node<Ch>) <= alignment && alignof(xml_attribute<Ch>) <= alignment,
                "the pool aligns to the size of a pointer");

  static char* align(char* position) {
    const auto address = reinterpret_cast<std::uintptr_t>(position);
    return position + ((alignment - address % alignment) % alignment);
  }

  char* static_end() { return m_static_memory + static_pool_size; }

  void* allocate_in_new_block(std::size_t size) {
    const std::size_t usable = size > dynamic_pool_size ? size : dynamic_pool_size;
    if (usable > std::numeric_limits<std::size_t>::max() - block_overhead) throw std::bad_alloc();
    const std::size_t raw_size = usable + block_overhead;
    char* const raw = allocate_raw(raw_size);
    char* const header = align(raw);
    *reinterpret_cast<char**>(header) = m_begin;
    m_begin = raw;
    m_end = raw + raw_size;
    m_block_bytes += raw_size;
    char* const result = align(header + sizeof(char*));
    m_ptr = result + size;
    return result;
  }

  char* allocate_raw(std::size_t size) {
    if (!m_alloc_func) return new char[size];
    void* const memory = m_alloc_func(size);
    TARN_ASSERT(memory, "memory");
    return static_cast<char*>(memory);
  }

  static void set_texts(xml_base<Ch>& record, const Ch* name, const Ch* value,
                        std::size_t name_size, std::size_t value_size) {
    if (name) record.name(name, name_size ? name_size : internal::measure(name));
    if (value) record.value(value, value_size ? value_size : internal::measure(value));
  }

  char* m_begin;  // raw start of the current block
  char* m_ptr;    // first free byte of it
  char* m_end;    // one past its last byte
  char m_static_memory[static_pool_size];
  std::size_t m_block_bytes = 0;
  alloc_func* m_alloc_func = nullptr;
  free_func* m_free_func = nullptr;
};

/// Root of a tree and the pool that holds it.
///
/// The text given to parse() must stay alive and unchanged as long as the tree is used.
template <class Ch>
class xml_document : public xml_node<Ch>, public memory_pool<Ch> {
 public:
  xml_document() : xml_node<Ch>(node_document) {}

  /// Parses the zero-terminated `text` in place; `text` moves along. Detaches what the document
  /// held before. Throws parse_error for malformed text: nodes that were complete stay linked,
  /// elements still open are detached.
  template <int Flags>
  void parse(Ch*& text) {
    parse_top_level<Flags>(text, [] {});
  }

 protected:
  /// As parse(); `before_node` is called before each top-level node.
  template <int Flags, class BeforeNode>
  void parse_top_level(Ch*& text, BeforeNode before_node) {
    static_assert(Flags == (parse_no_data_nodes | parse_declaration_node),
                  "the parser has one configuration");
    TARN_ASSERT(text, "text");
    this->remove_all_nodes();
    this->remove_all_attributes();
    skip_byte_order_mark(text);
    for (;;) {
      text = skip<internal::whitespace>(text);
      if (*text == Ch('\0')) return;
      if (*text != Ch('<')) throw parse_error("expected <", text);
      ++text;
      before_node();
      if (xml_node<Ch>* const parsed = parse_node(text)) this->append_node(parsed);
    }
  }

 private:
  using node = xml_node<Ch>;

  // The elements whose end tag is still to come, innermost first, chained by their parent links.
  // None of them is in a list of children yet. On the way out of a failed parse they are detached.
  class open_elements {
   public:
    open_elements() = default;
    open_elements(const open_elements&) = delete;
    open_elements& operator=(const open_elements&) = delete;
    ~open_elements() {
      while (m_innermost) pop();
    }

    node* innermost() const { return m_innermost; }

    void push(node* element) {
      assert_linkable(element);
      element->m_parent = m_innermost;
      m_innermost = element;
    }

    node* pop() {
      node* const element = m_innermost;
      m_innermost = element->m_parent;
      element->m_parent = nullptr;
      return element;
    }

   private:
    static void assert_linkable(const node* element) { node::assert_linkable(element); }

    node* m_innermost = nullptr;
  };

  // Parses one node and all below it, from behind its "<". Returns null for what leaves no node.
  node* parse_node(Ch*& text) {
    open_elements open;
    for (;;) {
      bool has_content = false;
      node* parsed = parse_markup(text, has_content);
      if (has_content) {
        open.push(parsed);
      } else if (!open.innermost()) {
        return parsed;
      } else if (parsed) {
        open.innermost()->append_node(parsed);
      }
      while (!parse_content(text, open.innermost())) {
        parsed = open.pop();
        if (!open.innermost()) return parsed;
        open.innermost()->append_node(parsed);
      }
    }
  }

  // One piece of markup from behind its "<"; an element up to the end of its start tag.
  node* parse_markup(Ch*& text, bool& has_content) {
    if (*text == Ch('!')) {
      text = skip_exclamation(text + 1);
      return nullptr;
    }
    if (*text == Ch('?')) return parse_question(text);
    return parse_start_tag(text, has_content);
  }

  // Comment, CDATA section, DOCTYPE or another "<!": no node.
  static Ch* skip_exclamation(Ch* cursor) {
    if (starts_with(cursor, "--")) return skip_past(cursor + 2, "-->");
    if (starts_with(cursor, "[CDATA[")) return skip_past(cursor + 7, "]]>");
    if (starts_with(cursor, "DOCTYPE") && is<internal::whitespace>(cursor[7])) {
      return skip_doctype(cursor + 8);
    }
    return skip_past(cursor, ">");
  }

  // A ">" inside an internal subset does not end the DOCTYPE; a "]" outside brackets is a stray.
  static Ch* skip_doctype(Ch* cursor) {
    for (std::size_t depth = 0; *cursor != Ch('\0'); ++cursor) {
      if (*cursor == Ch('[')) ++depth;
      if (*cursor == Ch(']') && depth > 0) --depth;
      if (*cursor == Ch('>') && depth == 0) return cursor + 1;
    }
    throw parse_error("unexpected end of data", cursor);
  }

  // Declaration, or a processing instruction, which leaves no node.
  node* parse_question(Ch*& text) {
    Ch* cursor = text + 1;
    if (!is_declaration(cursor)) {
      text = skip_past(cursor, "?>");
      return nullptr;
    }
    text = cursor + 4;
    node* const declaration = this->allocate_node(node_declaration, nullptr, nullptr, 0, 0);
    cursor = skip<internal::whitespace>(text);
    cursor = parse_attributes(cursor, text, declaration);
    if (cursor[0] != Ch('?') || cursor[1] != Ch('>')) throw parse_error("expected ?>", cursor);
    text = cursor + 2;
    return declaration;
  }

  static bool is_declaration(const Ch* cursor) {
    return (cursor[0] == Ch('x') || cursor[0] == Ch('X')) &&
           (cursor[1] == Ch('m') || cursor[1] == Ch('M')) &&
           (cursor[2] == Ch('l') || cursor[2] == Ch('L')) && is<internal::whitespace>(cursor[3]);
  }

  node* parse_start_tag(Ch*& text, bool& has_content) {
    node* const element = this->allocate_node(node_element, nullptr, nullptr, 0, 0);
    Ch* const name = text;
    // The allocation hook may have counted the name already.
    Ch* const name_end =
        element->m_name == name ? name + element->m_name_size : skip<internal::node_name>(name);
    if (name_end == name) throw parse_error("expected element name", name);
    element->name(name, token_size(name, name_end));
    Ch* cursor = skip<internal::whitespace>(name_end);
    cursor = parse_attributes(cursor, text, element);
    has_content = *cursor == Ch('>');
    if (!has_content && *cursor == Ch('/')) ++cursor;
    if (*cursor != Ch('>')) throw parse_error("expected >", cursor);
    *name_end = Ch('\0');
    text = cursor + 1;
    return element;
  }

  // Reads the attributes of `owner` from `cursor` and returns the position behind them. `text` is
  // the caller's cursor, which the allocation hooks may look at.
  Ch* parse_attributes(Ch* cursor, Ch*& text, node* owner) {
    while (is<internal::attribute_name>(*cursor)) {
      Ch* const name = cursor;
      Ch* const name_end = skip<internal::attribute_name>(name + 1);
      text = name_end;
      xml_attribute<Ch>* const attribute = this->allocate_attribute(nullptr, nullptr, 0, 0);
      attribute->name(name, token_size(name, name_end));
      owner->append_attribute(attribute);
      cursor = skip<internal::whitespace>(name_end);
      if (*cursor != Ch('=')) throw parse_error("expected =", cursor);
      *cursor = Ch('\0');
      *name_end = Ch('\0');
      cursor = parse_attribute_value(skip<internal::whitespace>(cursor + 1), attribute);
      cursor = skip<internal::whitespace>(cursor);
    }
    return cursor;
  }

  static Ch* parse_attribute_value(Ch* cursor, xml_attribute<Ch>* attribute) {
    const Ch quote = *cursor;
    if (quote != Ch('\'') && quote != Ch('"')) throw parse_error("expected ' or \"", cursor);
    Ch* const value = ++cursor;
    Ch* const value_end = quote == Ch('\'') ? expand<internal::single_quoted>(cursor)
                                            : expand<internal::double_quoted>(cursor);
    attribute->value(value, token_size(value, value_end));
    if (*cursor != quote) throw parse_error("expected ' or \"", cursor);
    *value_end = Ch('\0');
    return cursor + 1;
  }

  // Reads the content of `element` up to the next "<" that opens markup, and stops behind it: true.
  // Or up to the end tag, and stops behind that: false.
  static bool parse_content(Ch*& text, node* element) {
    Ch* const start = text;
    Ch* cursor = skip<internal::whitespace>(start);
    if (*cursor != Ch('<')) cursor = parse_text(start, cursor, element);
    ++cursor;
    if (*cursor != Ch('/')) {
      text = cursor;
      return true;
    }
    cursor = skip<internal::node_name>(cursor + 1);
    cursor = skip<internal::whitespace>(cursor);
    if (*cursor != Ch('>')) throw parse_error("expected >", cursor);
    text = cursor + 1;
    return false;
  }

  // Reads the text from `cursor` to the next "<" and returns the position of that "<", over which a
  // zero may have been written. Blanks from `start` to `cursor` belong to the text. The first text
  // of an element is its value, later ones are dropped.
  static Ch* parse_text(Ch* start, Ch* cursor, node* element) {
    if (*cursor == Ch('\0')) throw parse_error("unexpected end of data", cursor);
    Ch* const end = expand<internal::text>(cursor);
    if (element->value_size() == 0) element->value(start, token_size(start, end));
    const bool ended = *cursor == Ch('\0');
    *end = Ch('\0');
    if (ended) throw parse_error("unexpected end of data", cursor);
    return cursor;
  }

  // Moves `cursor` to the end of a run of characters of `Class`, expanding references in place, and
  // returns the end of the expanded run.
  template <class Class>
  static Ch* expand(Ch*& cursor) {
    Ch* read = skip<internal::without_references<Class>>(cursor);
    Ch* write = read;
    while (is<Class>(*read)) {
      if (*read == Ch('&')) {
        write = expand_reference(read, write);
      } else {
        *write++ = *read++;
      }
    }
    cursor = read;
    return write;
  }

  // `read` is at a "&". Writes what it stands for and moves `read` behind the reference; an "&"
  // that opens no reference stands for itself.
  static Ch* expand_reference(Ch*& read, Ch* write) {
    if (read[1] == Ch('#')) return expand_numeric_reference(read, write);
    for (const internal::named_reference& reference : internal::named_references) {
      if (!starts_with(read + 1, reference.name)) continue;
      read += 1 + reference.size;
      *write = reference.character;
      return write + 1;
    }
    *write = *read++;
    return write + 1;
  }

  static Ch* expand_numeric_reference(Ch*& read, Ch* write) {
    const bool hexadecimal = read[2] == Ch('x');
    Ch* const digits = read + (hexadecimal ? 3 : 2);
    const std::uint32_t base = hexadecimal ? 16 : 10;
    std::uint32_t code = 0;
    Ch* end = digits;
    for (; internal::digit_value(*end) < base; ++end) {
      // Once too large it stays too large, so that no number of digits overflows.
      if (code <= internal::max_code_point) code = code * base + internal::digit_value(*end);
    }
    if (end == digits) {
      *write = *read++;
      return write + 1;
    }
    if (code > internal::max_code_point) {
      throw parse_error("invalid numeric character entity", end);
    }
    if (*end != Ch(';')) throw parse_error("expected ;", end);
    read = end + 1;
    return internal::write_utf8(code, write);
  }

  template <class Class>
  static bool is(Ch character) {
    return internal::contains<Class>(character);
  }

  template <class Class>
  static Ch* skip(Ch* cursor) {
    while (is<Class>(*cursor)) ++cursor;
    return cursor;
  }

  static bool starts_with(const Ch* cursor, const Ch* prefix) {
    for (; *prefix != Ch('\0'); ++cursor, ++prefix) {
      if (*cursor != *prefix) return false;
    }
    return true;
  }

  // Position behind the next `end`.
  static Ch* skip_past(Ch* cursor, const Ch* end) {
    for (; *cursor != Ch('\0'); ++cursor) {
      if (starts_with(cursor, end)) return cursor + internal::measure(end);
    }
    throw parse_error("unexpected end of data", cursor);
  }

  static void skip_byte_order_mark(Ch*& text) {
    if (starts_with(text, "\xEF\xBB\xBF")) text += 3;
  }

  // Length of a name or value; a record cannot hold more than 32 bits of it.
  static std::size_t token_size(Ch* begin, const Ch* end) {
    const auto size = static_cast<std::size_t>(end - begin);
    if (size > std::numeric_limits<std::uint32_t>::max()) {
      throw parse_error("name or value too long", begin);
    }
    return size;
  }
};

extern template class xml_base<char>;
extern template class xml_attribute<char>;
extern template class xml_node<char>;
extern template class memory_pool<char>;
extern template class xml_document<char>;

}  // namespace rapidxml
