#include "rapidxml/rapidxml_print.hpp"

namespace rapidxml {

void print_node(std::string& out, const xml_node<char>* node, int flags, int indent) {
  internal::string_sink sink(out);
  internal::printer<internal::string_sink>(sink, flags)
      .print(node, static_cast<std::size_t>(indent));
}

}  // namespace rapidxml
