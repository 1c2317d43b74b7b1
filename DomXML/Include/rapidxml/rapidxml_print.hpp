#pragma once

// The printer: a node tree as indented text.

#include <string>

#include "libtarn/TarnApi.hpp"
#include "libtarn/rapidxml/nodes.hpp"

namespace rapidxml {

/// Print flag: no indentation and no line breaks.
constexpr int print_no_indenting = 1;

namespace internal {

/// Receives the printed text piece by piece. What it throws ends the print.
class TARN_API text_receiver {
 public:
  /// Takes the next piece, from `begin` up to `end`. The characters are valid during the call.
  virtual void receive(const char* begin, const char* end) = 0;

 protected:
  ~text_receiver() = default;
};

/// print_node() to a text_receiver.
TARN_API void print_node_to(text_receiver& out, const xml_node<char>* node, int flags, int indent);
/// print_element_node() to a text_receiver.
TARN_API void print_element_to(text_receiver& out, const xml_node<char>* node, int flags,
                               int indent);
/// copy_and_expand_chars() to a text_receiver.
TARN_API void expand_to(text_receiver& out, const char* begin, const char* end, char noexpand);

/// Copies what it receives to an output iterator.
template <class OutIt>
class iterator_receiver final : public text_receiver {
 public:
  explicit iterator_receiver(OutIt out) : m_out(out) {}

  void receive(const char* begin, const char* end) override {
    while (begin != end) *m_out++ = *begin++;
  }
  /// Returns the advanced iterator.
  OutIt position() const { return m_out; }

 private:
  OutIt m_out;
};

}  // namespace internal

/// Prints `node` and everything below it, with a line feed after each node unless `flags` has
/// print_no_indenting. `indent` is the depth of the node, from 0. Returns the advanced iterator.
template <class OutIt>
OutIt print_node(OutIt out, const xml_node<char>* node, int flags, int indent) {
  internal::iterator_receiver<OutIt> receiver(out);
  internal::print_node_to(receiver, node, flags, indent);
  return receiver.position();
}

/// Like the other overload; appends to `out`.
TARN_API void print_node(std::string& out, const xml_node<char>* node, int flags, int indent);

/// Prints an element (asserted) and everything below it, without a line feed after its end tag.
/// Returns the advanced iterator.
template <class OutIt>
OutIt print_element_node(OutIt out, const xml_node<char>* node, int flags, int indent) {
  internal::iterator_receiver<OutIt> receiver(out);
  internal::print_element_to(receiver, node, flags, indent);
  return receiver.position();
}

/// Copies the characters and writes the five special ones as references, except `noexpand` (NUL: no
/// exception). Returns the advanced iterator.
template <class OutIt>
OutIt copy_and_expand_chars(const char* begin, const char* end, char noexpand, OutIt out) {
  internal::iterator_receiver<OutIt> receiver(out);
  internal::expand_to(receiver, begin, end, noexpand);
  return receiver.position();
}

}  // namespace rapidxml
