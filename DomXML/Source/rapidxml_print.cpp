#include "rapidxml/rapidxml_print.hpp"

namespace rapidxml {

void print_node(std::string& out, const xml_node<char>* node, int flags, int indent) {
  const auto append = [&out](const char* begin, const char* end) { out.append(begin, end); };
  internal::buffered_sink<decltype(append)> sink(append);
  internal::printer<decltype(sink)>(sink, flags).print(node, static_cast<std::size_t>(indent));
  sink.flush();
}

}  // namespace rapidxml
