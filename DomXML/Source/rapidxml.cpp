#include "rapidxml/rapidxml.hpp"

namespace rapidxml {

template class xml_base<char>;
template class xml_attribute<char>;
template class xml_node<char>;
template class memory_pool<char>;
template class xml_document<char>;

}  // namespace rapidxml
