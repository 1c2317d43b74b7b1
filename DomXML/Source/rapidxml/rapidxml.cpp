#include "libtarn/rapidxml/rapidxml.hpp"

#include "parser.hpp"

namespace rapidxml {

const char* parse_error::what() const noexcept { return m_what; }

template <class Ch>
void xml_document<Ch>::parse_in_place(Ch*& text) {
  parse_events none;
  parse_reporting(text, none);
}

template class xml_base<char>;
template class xml_attribute<char>;
template class xml_node<char>;
template class memory_pool<char>;
template class xml_document<char>;

}  // namespace rapidxml
