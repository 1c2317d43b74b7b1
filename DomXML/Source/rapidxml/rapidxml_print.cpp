#include "libtarn/rapidxml/rapidxml_print.hpp"

#include "printer.hpp"

namespace rapidxml {

namespace internal {

namespace {

auto sink_to(text_receiver& out) {
  const auto receive = [&out](const char* begin, const char* end) { out.receive(begin, end); };
  return buffered_sink<decltype(receive)>(receive);
}

}  // namespace

void print_node_to(text_receiver& out, const xml_node<char>* node, int flags, int indent) {
  auto sink = sink_to(out);
  printer<decltype(sink)>(sink, flags).print(node, static_cast<std::size_t>(indent));
  sink.flush();
}

void print_element_to(text_receiver& out, const xml_node<char>* node, int flags, int indent) {
  TARN_ASSERT(node->type() == node_element, "node->type() == node_element");
  auto sink = sink_to(out);
  printer<decltype(sink)>(sink, flags).print_element(node, static_cast<std::size_t>(indent));
  sink.flush();
}

void expand_to(text_receiver& out, const char* begin, const char* end, char noexpand) {
  auto sink = sink_to(out);
  printer<decltype(sink)>(sink, 0).expanded(begin, end, noexpand);
  sink.flush();
}

}  // namespace internal

void print_node(std::string& out, const xml_node<char>* node, int flags, int indent) {
  const auto append = [&out](const char* begin, const char* end) { out.append(begin, end); };
  internal::buffered_sink<decltype(append)> sink(append);
  internal::printer<decltype(sink)>(sink, flags).print(node, static_cast<std::size_t>(indent));
  sink.flush();
}

}  // namespace rapidxml
