#pragma once

// The printer: a node tree as indented text.
//
// Elements are indented by one space a level, nodes of every other kind by tabs. An element without
// value and children is a start tag and an end tag, never one self-closing tag. The walk follows
// the parent links: the depth of the tree costs no stack.

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>

#include "character_classes.hpp"
#include "libtarn/Assertion.hpp"
#include "libtarn/rapidxml/nodes.hpp"
#include "libtarn/rapidxml/rapidxml_print.hpp"
#include "scan.hpp"

namespace rapidxml {
namespace internal {

/// Buffers what the printer writes and passes it on in pieces, to `out(begin, end)`.
template <class Out>
class buffered_sink {
 public:
  explicit buffered_sink(Out out) : m_out(out), m_next(m_buffer) {}
  buffered_sink(const buffered_sink&) = delete;
  buffered_sink& operator=(const buffered_sink&) = delete;

  static constexpr std::size_t capacity = 4096;

  /// Returns room for `size` bytes, at most `capacity`. After writing there, the caller passes the
  /// end of what it wrote to wrote_to().
  char* room_for(std::size_t size) {
    if (size > room()) flush();
    return m_next;
  }
  void wrote_to(char* end) { m_next = end; }

  void put(char c) {
    *room_for(1) = c;
    ++m_next;
  }
  void put(const char* text, std::size_t size) {
    if (size > capacity) {
      flush();
      m_out(text, text + size);
    } else {
      std::memcpy(room_for(size), text, size);
      m_next += size;
    }
  }
  void fill(std::size_t count, char c) {
    for (; count > capacity; count -= capacity) {
      std::memset(room_for(capacity), c, capacity);
      m_next += capacity;
    }
    // Usually a few, for which a call takes longer.
    char* next = room_for(count);
    for (; count > 0; --count) *next++ = c;
    m_next = next;
  }
  /// Passes on the rest. Must be called at the end.
  void flush() {
    m_out(m_buffer, m_next);
    m_next = m_buffer;
  }

 private:
  std::size_t room() const { return static_cast<std::size_t>(m_buffer + capacity - m_next); }

  Out m_out;
  char* m_next;
  char m_buffer[capacity];
};

/// Returns the reference that stands for the character in printed text, or null for the character
/// itself.
constexpr const char* reference_for(char c) {
  switch (c) {
    case '&':
      return "&amp;";
    case '<':
      return "&lt;";
    case '>':
      return "&gt;";
    case '\'':
      return "&apos;";
    case '"':
      return "&quot;";
    default:
      return nullptr;
  }
}

/// Matches the bytes of a block that are printed as references.
template <class Block>
typename Block::mask special_in(const Block& block) {
  return block.equal('&') | block.equal('<') | block.equal('>') | block.equal('\'') |
         block.equal('"');
}

/// Returns the first character from `begin` on that is printed as a reference, or `end`.
inline const char* end_of_verbatim(const char* begin, const char* end) {
  while (end - begin >= static_cast<std::ptrdiff_t>(wide_block::size)) {
    const wide_block::mask special = special_in(wide_block(begin));
    if (wide_block::any(special)) return begin + wide_block::first(special);
    begin += wide_block::size;
  }
  while (begin != end && contains<verbatim>(*begin)) ++begin;
  return begin;
}

// Texts are copied in words that may overlap, so that no text of four bytes or more is copied byte
// by byte. A short text fits into one block, which is searched for references at once.

template <class Word>
Word load_word(const char* from) {
  Word word;
  std::memcpy(&word, from, sizeof(word));
  return word;
}

template <class Word>
void store_word(char* to, Word word) {
  std::memcpy(to, &word, sizeof(word));
}

/// Bytes that put_blanks() may write after its blanks.
constexpr std::size_t blanks_slack = 16;

/// Writes `count` blanks and returns their end. Usually they are few, for which a call or a loop
/// takes longer.
inline char* put_blanks(char* to, std::size_t count) {
  constexpr std::uint64_t BLANKS = 0x2020202020202020U;
  store_word(to, BLANKS);
  store_word(to + sizeof(BLANKS), BLANKS);
  if (count > blanks_slack) std::memset(to + blanks_slack, ' ', count - blanks_slack);
  return to + count;
}

/// Copies a name, which is never expanded, and returns the end of the copy.
inline char* copy_name(char* to, const char* from, std::size_t size) {
  if (size > 2 * sizeof(std::uint64_t)) {
    std::memcpy(to, from, size);
  } else if (size >= sizeof(std::uint64_t)) {
    const auto last = load_word<std::uint64_t>(from + size - sizeof(std::uint64_t));
    store_word(to, load_word<std::uint64_t>(from));
    store_word(to + size - sizeof(last), last);
  } else if (size >= sizeof(std::uint32_t)) {
    const auto last = load_word<std::uint32_t>(from + size - sizeof(std::uint32_t));
    store_word(to, load_word<std::uint32_t>(from));
    store_word(to + size - sizeof(last), last);
  } else {
    for (std::size_t i = 0; i < size; ++i) to[i] = from[i];
  }
  return to + size;
}

/// Like copy_verbatim(), for a text of one to two words.
template <class Word>
char* copy_verbatim_ends(char* to, const char* from, std::size_t size) {
  const auto first = load_word<Word>(from);
  const auto last = load_word<Word>(from + size - sizeof(Word));
  if (wide_block::any(special_in(wide_block(first, last)))) return nullptr;
  store_word(to, first);
  store_word(to + size - sizeof(Word), last);
  return to + size;
}

/// Copies a text without characters that are printed as references, and returns the end of the
/// copy. Returns null for any other text, of which it may have copied a part.
inline char* copy_verbatim(char* to, const char* from, std::size_t size) {
  std::size_t copied = 0;
  for (; size - copied >= wide_block::size; copied += wide_block::size) {
    const wide_block block(from + copied);
    if (wide_block::any(special_in(block))) return nullptr;
    block.store(to + copied);
  }
  if (size >= wide_block::size) {
    const wide_block last(from + size - wide_block::size);
    if (wide_block::any(special_in(last))) return nullptr;
    last.store(to + size - wide_block::size);
    return to + size;
  }
  if constexpr (wide_block::size >= 2 * sizeof(std::uint64_t)) {
    if (size >= sizeof(std::uint64_t)) return copy_verbatim_ends<std::uint64_t>(to, from, size);
    if (size >= sizeof(std::uint32_t)) return copy_verbatim_ends<std::uint32_t>(to, from, size);
  }
  for (std::size_t i = 0; i < size; ++i) {
    if (!contains<verbatim>(from[i])) return nullptr;
    to[i] = from[i];
  }
  return to + size;
}

template <class Sink>
class printer {
 public:
  using node = xml_node<char>;

  printer(Sink& sink, int flags) : m_sink(sink), m_indenting((flags & print_no_indenting) == 0) {}

  void print(const node* top, std::size_t indent) {
    const node* current = top;
    std::size_t depth = indent;
    for (;;) {
      if (open(current, depth)) {
        if (current->type() == node_element) ++depth;
        current = current->first_node();
        continue;
      }
      for (;;) {
        end_line();
        if (current == top) return;
        if (const node* const next = current->next_sibling()) {
          current = next;
          break;
        }
        current = current->parent();
        if (current->type() == node_element) close(current, --depth);
      }
    }
  }

  /// Prints the element without the line break after it.
  void print_element(const node* element, std::size_t indent) {
    if (!open(element, indent)) return;
    for (const node* child = element->first_node(); child; child = child->next_sibling()) {
      print(child, indent + 1);
    }
    close(element, indent);
  }

  void expanded(const char* begin, const char* end, char noexpand) {
    for (;;) {
      const char* const special = end_of_verbatim(begin, end);
      put(begin, special);
      if (special == end) return;
      const char* const reference = *special == noexpand ? nullptr : reference_for(*special);
      if (reference) {
        put(reference);
      } else {
        m_sink.put(*special);
      }
      begin = special + 1;
    }
  }

 private:
  // Prints everything before the children, or all of a node whose children are not printed. Returns
  // true when children follow.
  bool open(const node* current, std::size_t depth) {
    switch (current->type()) {
      case node_document:
        return current->first_node() != nullptr;
      case node_element:
        return open_element(current, depth);
      case node_data:
        tabs(depth);
        expanded_value(current);
        return false;
      case node_cdata:
        return enclosed(depth, "<![CDATA[", current, "]]>");
      case node_comment:
        return enclosed(depth, "<!--", current, "-->");
      case node_declaration:
        tabs(depth);
        put("<?xml");
        attributes(current);
        put("?>");
        return false;
      case node_doctype:
        return enclosed(depth, "<!DOCTYPE ", current, ">");
      case node_pi:
        tabs(depth);
        put("<?");
        name(current);
        m_sink.put(' ');
        value(current);
        put("?>");
        return false;
    }
    TARN_ASSERT(false, "0");
    return false;
  }

  bool open_element(const node* element, std::size_t depth) {
    prefetch_behind(element);
    const node* const child = element->first_node();
    const bool has_children = child && !is_only_data(child);
    const node* const value_owner = child ? child : element;
    if (!print_small(element, depth, has_children ? nullptr : value_owner)) {
      spaces(depth);
      m_sink.put('<');
      name(element);
      attributes(element);
      m_sink.put('>');
      if (!has_children) {
        expanded_value(value_owner);
        end_tag(element);
      }
    }
    if (has_children) end_line();
    return has_children;
  }

  // The next elements usually follow at higher addresses, in the pool as in the text.
  static void prefetch_behind(const node* element) {
    const char* const address = reinterpret_cast<const char*>(element);
    __builtin_prefetch(address + 768);
    __builtin_prefetch(address + 832);
    __builtin_prefetch(element->name() + 512);
  }

  // Prints a small element in one piece: its start tag and, when `value_owner` has its text, all of
  // it. Returns false, with nothing printed, for an element that is too large or needs references.
  bool print_small(const node* element, std::size_t depth, const node* value_owner) {
    const std::size_t name_size = element->name_size();
    // 64 bits: the sum of the sizes cannot wrap to a small one.
    std::uint64_t size = std::uint64_t{2} * name_size + depth + 5 + blanks_slack;
    if (value_owner) size += value_owner->value_size();
    const xml_attribute<char>* attribute = element->first_attribute();
    for (; attribute; attribute = attribute->next_attribute()) {
      size += std::uint64_t{attribute->name_size()} + attribute->value_size() + 4;
    }
    if (size > Sink::capacity) return false;

    char* out = m_sink.room_for(static_cast<std::size_t>(size));
    if (m_indenting) out = put_blanks(out, depth);
    *out++ = '<';
    out = copy_name(out, element->name(), name_size);
    for (attribute = element->first_attribute(); attribute;
         attribute = attribute->next_attribute()) {
      *out++ = ' ';
      out = copy_name(out, attribute->name(), attribute->name_size());
      *out++ = '=';
      *out++ = '"';
      out = copy_verbatim(out, attribute->value(), attribute->value_size());
      if (!out) return false;
      *out++ = '"';
    }
    *out++ = '>';
    if (value_owner) {
      out = copy_verbatim(out, value_owner->value(), value_owner->value_size());
      if (!out) return false;
      *out++ = '<';
      *out++ = '/';
      out = copy_name(out, element->name(), name_size);
      *out++ = '>';
    }
    m_sink.wrote_to(out);
    return true;
  }

  static bool is_only_data(const node* first) {
    return first->type() == node_data && !first->next_sibling();
  }

  void close(const node* element, std::size_t depth) {
    const std::uint64_t size = std::uint64_t{depth} + element->name_size() + 3 + blanks_slack;
    if (size > Sink::capacity) {
      spaces(depth);
      return end_tag(element);
    }
    char* out = m_sink.room_for(static_cast<std::size_t>(size));
    if (m_indenting) out = put_blanks(out, depth);
    *out++ = '<';
    *out++ = '/';
    out = copy_name(out, element->name(), element->name_size());
    *out++ = '>';
    m_sink.wrote_to(out);
  }

  void end_tag(const node* element) {
    put("</");
    name(element);
    m_sink.put('>');
  }

  bool enclosed(std::size_t depth, const char* before, const node* current, const char* after) {
    tabs(depth);
    put(before);
    value(current);
    put(after);
    return false;
  }

  void attributes(const node* owner) {
    const xml_attribute<char>* attribute = owner->first_attribute();
    for (; attribute; attribute = attribute->next_attribute()) {
      m_sink.put(' ');
      name(attribute);
      m_sink.put('=');
      quoted_value(attribute);
    }
  }

  // A value that holds a double quote is printed in single quotes.
  void quoted_value(const xml_attribute<char>* attribute) {
    const char* const begin = attribute->value();
    const char* const end = begin + attribute->value_size();
    const bool has_double_quote =
        std::char_traits<char>::find(begin, attribute->value_size(), '"') != nullptr;
    const char quote = has_double_quote ? '\'' : '"';
    const char other_quote = has_double_quote ? '"' : '\'';
    m_sink.put(quote);
    expanded(begin, end, other_quote);
    m_sink.put(quote);
  }

  void expanded_value(const node* current) {
    expanded(current->value(), current->value() + current->value_size(), '\0');
  }

  void name(const xml_base<char>* record) { m_sink.put(record->name(), record->name_size()); }
  void value(const xml_base<char>* record) { m_sink.put(record->value(), record->value_size()); }
  void put(const char* text) {
    while (*text != '\0') m_sink.put(*text++);
  }
  void put(const char* begin, const char* end) {
    m_sink.put(begin, static_cast<std::size_t>(end - begin));
  }

  void spaces(std::size_t depth) {
    if (m_indenting) m_sink.fill(depth, ' ');
  }
  void tabs(std::size_t depth) {
    if (m_indenting) m_sink.fill(depth, '\t');
  }
  void end_line() {
    if (m_indenting) m_sink.put('\n');
  }

  Sink& m_sink;
  const bool m_indenting;
};

}  // namespace internal

}  // namespace rapidxml
