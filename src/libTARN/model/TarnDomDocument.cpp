#include "libtarn/model/TarnDomDocument.hpp"

#include <boost/shared_ptr.hpp>
#include <cstdint>
#include <cstring>
#include <typeinfo>
#include <utility>

#include "TypedChildren.hpp"
#include "libtarn/model/LibTarnCmDataImp.hpp"
#include "libtarn/model/LibTarnDocumentDeclaration.hpp"
#include "libtarn/model/LibTarnDocumentInternal.hpp"
#include "libtarn/model/LibTarnExtensionImp.hpp"
#include "libtarn/model/LibTarnHeaderImp.hpp"
#include "libtarn/model/LibTarnManagedObjectImp.hpp"
#include "libtarn/model/ListImp.hpp"
#include "libtarn/model/LogImp.hpp"
#include "libtarn/model/ScalarImp.hpp"
#include "libtarn/model/Structure.hpp"
#include "libtarn/rapidxml/rapidxml_print.hpp"
#include "libtarn/util/TextPosition.hpp"
#include "load/Load.hpp"
#include "parseMessages.hpp"

namespace libtarn {
namespace model {

TarnDomDocument::TarnDomDocument() : TarnDomDocument(libDomXml::OutOfMemory::Assert) {}

TarnDomDocument::TarnDomDocument(libDomXml::OutOfMemory outOfMemory)
    : DomDocument(outOfMemory), factory_(*this) {
  declaration_ = createDocumentDeclaration();
}

// On the heap, unlike the constructor above: hosts that bring their own parts keep many small
// documents.
TarnDomDocument::TarnDomDocument(IDistinguishedNameValidator* validator,
                                 indexation::ITarnIndexFactory* indexFactory)
    : DomDocument(false), factory_(*this, validator, indexFactory) {
  declaration_ = createDocumentDeclaration();
}

TarnDomDocument::~TarnDomDocument() = default;

LibTarnDocumentDeclaration* TarnDomDocument::createDocumentDeclaration() {
  auto* const declaration =
      new (allocate_aligned(sizeof(LibTarnDocumentDeclaration))) LibTarnDocumentDeclaration(this);
  declaration->type(rapidxml::node_declaration);
  return declaration;
}

// Allocation for the parser

TarnDomElement* TarnDomDocument::allocate_node(rapidxml::node_type type, const char* /*name*/,
                                               const char* /*value*/, std::size_t /*nameSize*/,
                                               std::size_t /*valueSize*/) {
  return type == rapidxml::node_declaration ? reuseDeclaration() : createTarnElement();
}

TarnDomElement* TarnDomDocument::allocateTarnManagedObjectNode() {
  return factory_.allocateTarnManagedObjectNode();
}

TarnDomElement* TarnDomDocument::allocateTarnCmDataNode() {
  return factory_.allocateTarnCmDataNode();
}

TarnDomElement* TarnDomDocument::allocateStructureNode() {
  return factory_.allocateStructureNode();
}

bool TarnDomDocument::isTopLevelNode() const { return load_ && load_->isTopLevel(); }

// A document has one declaration: another one in the text resets it and moves it to the end.
TarnDomElement* TarnDomDocument::reuseDeclaration() {
  if (load_ && !isTopLevelNode()) {
    throw rapidxml::parse_error(UNKNOWN_OBJECT, parsePosition_);
  }
  if (load_) load_->noteNode(nullptr);
  if (declaration_->parent()) remove_node(declaration_);
  declaration_->remove_all_attributes();
  setDeclarationInText();
  return static_cast<TarnDomElement*>(declaration_);
}

// The same for the root; its children stay, and more are added.
TarnDomElement* TarnDomDocument::reuseRoot(const char* nameEnd) {
  if (!isTopLevelNode() || !root_) {
    throw rapidxml::parse_error(UNKNOWN_OBJECT, const_cast<char*>(nameEnd));
  }
  if (root_->parent()) remove_node(root_);
  root_->remove_all_attributes();
  rootIsInText_ = true;
  return root_;
}

// Returns a node as the factory would make it.
template <class Element>
Element* TarnDomDocument::makeNode() {
  static_assert(alignof(Element) <= alignment, "a pool aligns to the size of a pointer");
  return new (allocateObject(sizeof(Element))) Element(this, factory_);
}

// The first tag that starts with `name` decides: "manag" is a managed object. The tags differ in
// their first letters, except "log", which comes before "list". A scalar, whose tag has no shorter
// beginning, has been handled before.
TarnDomElement* TarnDomDocument::makeTarnElement(const char* name, std::size_t size) {
  const auto begins = [name, size](const char* tag) {
    std::size_t i = 1;
    while (i < size && name[i] == tag[i]) ++i;
    return i == size;
  };
  switch (*name) {
    case 'm':
      if (begins(LibTarnManagedObject::TAG_NAME)) return allocateTarnManagedObjectNode();
      break;
    case 't':
      if (begins(LibTarnDocumentInternal::TAG_NAME)) return reuseRoot(name + size);
      break;
    case 'c':
      if (begins(LibTarnCmData::TAG_NAME)) return allocateTarnCmDataNode();
      break;
    case 'h':
      if (begins(LibTarnHeader::TAG_NAME)) return makeNode<LibTarnHeaderImp>();
      break;
    case 'l':
      if (begins(Log::TAG_NAME)) return makeNode<LogImp>();
      if (begins(List::TAG_NAME)) return makeNode<ListImp>();
      break;
    case 'i':
      if (begins(Structure::TAG_NAME)) return allocateStructureNode();
      break;
    case 'e':
      if (begins(LibTarnExtension::TAG_NAME)) return makeNode<LibTarnExtensionImp>();
      break;
    default:
      break;
  }
  throw rapidxml::parse_error(UNKNOWN_OBJECT, const_cast<char*>(name + size));
}

// Three elements out of four are parameters.
TarnDomElement* TarnDomDocument::createTarnElement() {
  const auto isNameCharacter = [](char c) {
    return rapidxml::internal::contains<rapidxml::internal::node_name>(c);
  };
  char* const name = parsePosition_;
  if (!name || !isNameCharacter(*name)) {
    throw rapidxml::parse_error("expected element name", parsePosition_);
  }
  TarnDomElement* element = nullptr;
  std::size_t size = 1;
  if (*name == *Scalar::TAG_NAME && !isNameCharacter(name[1])) {
    element = makeNode<ScalarImp>();
  } else {
    while (isNameCharacter(name[size])) ++size;
    element = makeTarnElement(name, size);
  }
  if (load_) load_->noteNode(name + size);
  return element;
}

// Parsing

int TarnDomDocument::parse(const char* text, boost::shared_ptr<libDomXml::IStripper> stripper) {
  std::unique_ptr<char[]> copy = copyOf(text, stripper.get());
  leaveTree();
  return parseReplacingText(std::move(copy));
}

int TarnDomDocument::parse(std::unique_ptr<char[]> text) {
  leaveTree();
  return DomDocument::parse(std::move(text));
}

void TarnDomDocument::parse(const char* text) {
  TARN_ASSERT(text, "text");
  std::vector<char> copy(text, text + std::strlen(text) + 1);
  parse(copy);
}

void TarnDomDocument::parse(std::vector<char>& text) { Load(*this, Load::Mode::TREE).run(text); }

void TarnDomDocument::takeText(std::vector<char>& text) {
  textStart_ = text.data();
  if (text.empty() || text.back() != '\0') {
    throw rapidxml::parse_error("unexpected end of data", text.data() + text.size());
  }
  leaveTree();
  text_.swap(text);
}

void TarnDomDocument::keepText() {
  if (text_.empty()) return;
  keptTexts_.push_back(std::move(text_));
}

int TarnDomDocument::rapidParse(char* text) {
  try {
    parseDoc(text);
  } catch (const rapidxml::parse_error&) {
    return 1;
  }
  return 0;
}

void TarnDomDocument::parseDoc(char* text) { Load(*this, Load::Mode::TREE).run(text); }

void TarnDomDocument::beginParse(char* text) {
  leaveTree();
  setTakesFromPool(typeid(*this) == typeid(TarnDomDocument));
  textStart_ = text;
  parsePosition_ = text;
}

void TarnDomDocument::moveTextsIntoPool() {
  moveDeclarationIntoPool();
  if (!rootIsInText_) return;
  root_->moveTextsIntoPool();
  rootIsInText_ = false;
}

std::size_t TarnDomDocument::getTextOffset(const rapidxml::parse_error& error) const {
  return static_cast<std::size_t>(error.where<char>() - textStart_);
}

// The name points into the text, right after the "<" of the tag. A name from elsewhere may lie in
// another block of memory, so addresses are compared as numbers. After a parse, the parser's
// position is the end of the text; after a failed one it is after the names of all elements.
std::size_t TarnDomDocument::getTextOffset(const rapidxml::xml_node<char>& element) const {
  if (!parsePosition_) return util::NO_OFFSET;
  const auto start = reinterpret_cast<std::uintptr_t>(textStart_);
  const auto name = reinterpret_cast<std::uintptr_t>(element.name());
  const bool isInText = name > start && name <= reinterpret_cast<std::uintptr_t>(parsePosition_);
  return isInText ? name - start - 1 : util::NO_OFFSET;
}

// Declaration and root outlive the text of a parse; the elements below the root are freed with it.
// What a host added before the first parse stays. Without memory for the texts the elements stay,
// too.
void TarnDomDocument::leaveTree() {
  LibTarnDocumentInternal* const parsed = parsePosition_ ? root_ : nullptr;
  if (parsed) parsed->rapidxml::xml_base<char>::value(static_cast<const char*>(nullptr), 0);
  moveTextsIntoPool();
  if (parsed) parsed->remove_all_nodes();
  remove_all_nodes();
  parsePosition_ = nullptr;
}

std::size_t TarnDomDocument::getMemorySize() const {
  std::size_t size = pool_size() + text_.capacity();
  for (const libDomXml::DocumentText& text : keptTexts_) size += text.capacity();
  return size;
}

std::string TarnDomDocument::printDocument() {
  std::string out;
  // An estimate that spares most documents the copies of a text that grows.
  out.reserve(text_.size() + text_.size() / 16);
  rapidxml::print_node(out, declaration_, 0, 0);
  if (root_) rapidxml::print_node(out, root_, 0, 0);
  return out;
}

}  // namespace model
}  // namespace libtarn
