#include "TolerantDocument.hpp"

#include <cstring>

#include "../load/Load.hpp"
#include "../parseMessages.hpp"
#include "libtarn/model/LibTarnDocumentDeclaration.hpp"
#include "libtarn/model/LibTarnDocumentInternal.hpp"
#include "libtarn/model/validation/Validator.hpp"
#include "libtarn/util/TextPosition.hpp"

namespace libtarn {
namespace model {
namespace validation {

UnknownElement::UnknownElement(libDomXml::IMemoryPool* pool, rapidxml::node_type type,
                               std::size_t offset)
    : TarnDomElement(pool), offset_(offset) {
  xml_node::type(type);
  if (type == rapidxml::node_declaration) xml_base::name(LibTarnDocumentDeclaration::TAG_NAME);
}

TarnDomElement* UnknownElement::clone(util::TarnFactory& /*factory*/) const { return nullptr; }

void UnknownElement::dispatchToChildren(Validator& /*validator*/) const {}

void UnknownElement::dispatchToSelf(Validator& /*validator*/) const {}

void UnknownElement::updatePath(Validator& validator) const {
  validator.appendToPath(getTagName(), nullptr);
}

TolerantDocument::TolerantDocument()
    : TarnDomDocument(libDomXml::OutOfMemory::Throw), rootOffset_(util::NO_OFFSET) {
  setRootElement(static_cast<LibTarnDocumentInternal*>(
      getFactory().allocateLibTarnDocumentInternalNode(this)));
}

void TolerantDocument::read(std::vector<char>& text) {
  try {
    parse(text);
  } catch (const rapidxml::parse_error& error) {
    parseError_ = error.what();
    parseErrorOffset_ = getTextOffset(error);
    linkOpenElements();
  }
  allocated_ = {};
}

bool TolerantDocument::hasRoot() const { return getRootElement()->parent() == this; }

// A parse that fails moves the root's name out of the text.
std::size_t TolerantDocument::offsetOf(const TarnDomElement& element) const {
  if (&element == getRootElement()) return rootOffset_;
  if (const auto* const unknown = dynamic_cast<const UnknownElement*>(&element)) {
    return unknown->getOffset();
  }
  return getTextOffset(element);
}

TarnDomElement* TolerantDocument::allocate_node(rapidxml::node_type type, const char* name,
                                                const char* value, std::size_t nameSize,
                                                std::size_t valueSize) {
  TarnDomElement* element = nullptr;
  try {
    element = TarnDomDocument::allocate_node(type, name, value, nameSize, valueSize);
  } catch (const rapidxml::parse_error& error) {
    if (std::strcmp(error.what(), UNKNOWN_OBJECT) != 0) throw;
    element = makeUnknownElement(type);
  }
  if (element == getRootElement()) rootOffset_ = Load::placeOfParser(*this) - 1;
  allocated_.push_back(element);
  return element;
}

// The parser is after the "<", or after the first blank of a declaration.
UnknownElement* TolerantDocument::makeUnknownElement(rapidxml::node_type type) {
  const std::size_t read =
      type == rapidxml::node_declaration ? std::strlen("<?xml ") : std::strlen("<");
  hasUnknownElement_ = true;
  return new (allocateObject(sizeof(UnknownElement)))
      UnknownElement(this, type, Load::placeOfParser(*this) - read);
}

// What the parser has linked is complete. The others come in the order of their start tags, and so
// each lies in the one before. The root comes twice in a row when it is used again.
void TolerantDocument::linkOpenElements() {
  for (TarnDomElement* const each : allocated_) {
    const bool isRepeated = !open_.empty() && open_.back() == each;
    if (!each->parent() && !isRepeated) open_.push_back(each);
  }
  if (!open_.empty() && open_.back() == allocated_.back()) leaveInnermost();
  Node* parent = this;
  for (TarnDomElement* const each : open_) {
    parent->append_node(each);
    parent = each;
  }
}

// The parser may have ended within the start tag, and may not have ended the name.
void TolerantDocument::leaveInnermost() {
  TarnDomElement& innermost = *open_.back();
  if (!dynamic_cast<const UnknownElement*>(&innermost)) return open_.pop_back();
  const bool isInText = innermost.type() == rapidxml::node_element && innermost.name_size() > 0;
  if (isInText) innermost.xml_node::name()[innermost.name_size()] = '\0';
}

}  // namespace validation
}  // namespace model
}  // namespace libtarn
