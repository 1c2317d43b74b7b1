#include "libtarn/DomDocument.hpp"

#include <sys/mman.h>

#include <boost/shared_ptr.hpp>
#include <cstring>
#include <limits>
#include <new>
#include <typeinfo>

#include "MappedRegion.hpp"
#include "libtarn/rapidxml/rapidxml_print.hpp"

namespace libDomXml {

namespace {

void* allocateOrThrow(std::size_t size, void* newest) {
  void* const block = MappedRegion::allocate(size, newest);
  if (!block) throw std::bad_alloc();
  return block;
}

}  // namespace

DomDocument::DomDocument(bool useMmap) {
  if (useMmap) useMmapPoolAllocator();
}

DomDocument::DomDocument(OutOfMemory outOfMemory) { useMmapPoolAllocator(outOfMemory); }

DomDocument::~DomDocument() = default;

DomDocument* DomDocument::createDomDocument(bool useMmap) {
  auto document = std::make_unique<DomDocument>(useMmap);
  document->declaration_ =
      DomFactory(document.get()).allocateNode(rapidxml::node_declaration, nullptr, nullptr, 0, 0);
  document->declaration_->setAttribute("version", "1.0");
  document->declaration_->setAttribute("encoding", "UTF-8");
  return document.release();
}

void DomDocument::useMmapPoolAllocator() { useMmapPoolAllocator(OutOfMemory::Assert); }

// The pool asserts that it gets a block.
void DomDocument::useMmapPoolAllocator(OutOfMemory outOfMemory) {
  const bool throws = outOfMemory == OutOfMemory::Throw;
  set_growing_allocator(throws ? &allocateOrThrow : &MappedRegion::allocate,
                        &MappedRegion::release);
}

// Block from a memory map:
//
//   mapped                                                       mapped + length
//   | length in bytes | what the pool gets                        |
void* DomDocument::mmapAlloc(std::size_t size) {
  if (size > std::numeric_limits<std::size_t>::max() - sizeof(std::size_t)) return nullptr;
  const std::size_t length = size + sizeof(std::size_t);
  void* const mapped =
      mmap(nullptr, length, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, 0, 0);
  if (mapped == MAP_FAILED) return nullptr;
  auto* const word = static_cast<std::size_t*>(mapped);
  *word = length;
  return word + 1;
}

void DomDocument::mmapFree(void* memory) {
  std::size_t* const word = static_cast<std::size_t*>(memory) - 1;
  munmap(word, *word);
}

int DomDocument::parse(std::unique_ptr<char[]> text) {
  leaveText();
  text_.swap(text);
  return parseText();
}

int DomDocument::parse(const char* text, boost::shared_ptr<IStripper> stripper) {
  return parseReplacingText(copyOf(text, stripper.get()));
}

std::unique_ptr<char[]> DomDocument::copyOf(const char* text, IStripper* stripper) {
  TARN_ASSERT(text, "text");
  std::size_t length = std::strlen(text);
  std::unique_ptr<char[]> copy(new char[length + 1]);
  if (stripper) {
    length = stripper->copy(copy.get(), text, length);
  } else {
    std::memcpy(copy.get(), text, length);
  }
  copy[length] = '\0';
  return copy;
}

int DomDocument::parseReplacingText(std::unique_ptr<char[]> text) {
  leaveText();
  text_.swap(text);
  text.reset();
  return parseText();
}

int DomDocument::parseText() {
  const int result = rapidParse(text_.data());
  if (result != 0) return result;
  moveDeclarationOut();
  return 0;
}

int DomDocument::rapidParse(char* text) {
  setTakesFromPool(typeid(*this) == typeid(DomDocument));
  try {
    xml_document::parse<33>(text);
  } catch (const rapidxml::parse_error&) {
    return 1;
  }
  return 0;
}

// The document cannot rely on a host's rapidParse() to detach the earlier tree.
void DomDocument::leaveText() {
  moveDeclarationIntoPool();
  remove_all_nodes();
  remove_all_attributes();
}

// Only once for each text that brings a declaration: otherwise each parse would take that memory
// again.
void DomDocument::moveDeclarationIntoPool() {
  if (!declarationIsInText_) return;
  declaration_->moveTextsIntoPool();
  declarationIsInText_ = false;
}

// With several declarations the last one wins.
void DomDocument::moveDeclarationOut() {
  rapidxml::xml_node<char>* child = first_node();
  while (child) {
    rapidxml::xml_node<char>* const next = child->next_sibling();
    if (child->type() == rapidxml::node_declaration) {
      remove_node(child);
      declaration_ = static_cast<DomElement*>(child);
      setDeclarationInText();
    }
    child = next;
  }
}

IDomElement* DomDocument::getDocumentDeclaration() const { return declaration_; }

IDomElement* DomDocument::createDomElement(const char* name, const char* value) {
  return DomFactory(this).allocateNode(rapidxml::node_element, name, value, 0, 0);
}

DomAttribute* DomDocument::createDomAttribute(const char* name, const char* value) {
  return DomFactory(this).allocateAttribute(name, value, 0, 0);
}

std::string DomDocument::printDocument() {
  std::string out;
  if (declaration_) rapidxml::print_node(out, declaration_, 0, 0);
  rapidxml::print_node(out, this, 0, 0);
  return out;
}

void* DomDocument::allocateMemory(unsigned int size) { return allocate_aligned(size); }

void DomDocument::deallocateMemory(void* /*memory*/) {}

// The parser passes no texts. It calls these so often that they build the object without the
// factory.

DomElement* DomDocument::allocate_node(rapidxml::node_type type, const char* name,
                                       const char* value, std::size_t nameSize,
                                       std::size_t valueSize) {
  if (name || value) return DomFactory(this).allocateNode(type, name, value, nameSize, valueSize);
  auto* const element = new (allocateObject(sizeof(DomElement))) DomElement(this);
  element->type(type);
  return element;
}

DomAttribute* DomDocument::allocate_attribute(const char* name, const char* value,
                                              std::size_t nameSize, std::size_t valueSize) {
  if (name || value) return DomFactory(this).allocateAttribute(name, value, nameSize, valueSize);
  return new (allocateObject(sizeof(DomAttribute))) DomAttribute(this);
}

IDomElement* DomDocument::clone() const {
  std::unique_ptr<DomDocument> copy(createDomDocument(false));
  IMemoryPool* const pool = copy.get();
  if (declaration_) copy->declaration_ = static_cast<DomElement*>(declaration_->clone(pool));
  for (auto* child = first_node(); child; child = child->next_sibling()) {
    copy->addChild(static_cast<DomElement*>(child)->clone(pool));
  }
  return copy.release();
}

IDomElement* DomDocument::clone(IMemoryPool* /*pool*/) const { return clone(); }

// A document has no name, value or attributes.

const char* DomDocument::getTagName() const { return nullptr; }
void DomDocument::setTagName(const char* /*name*/) {}
const char* DomDocument::getValue() const { return nullptr; }
void DomDocument::setValue(const char* /*value*/) {}
const char* DomDocument::getAttribute(const char* /*name*/) const { return nullptr; }
const char* DomDocument::getAttribute(const char* /*name*/, const char* defaultValue) const {
  return defaultValue;
}
DomAttributeIterator DomDocument::getAttributeIter(const char* /*name*/) const {
  return DomAttributeIterator(nullptr);
}
void DomDocument::setAttribute(const char* /*name*/, const char* /*value*/) {}
void DomDocument::addAttribute(DomAttribute* /*attribute*/) {}
bool DomDocument::removeAttribute(const char* /*name*/) { return false; }
DomAttributeIterator DomDocument::getFirstAttribute(const char* name) const {
  return getAttributeIter(name);
}
DomAttributeIterator DomDocument::getLastAttribute(const char* name) const {
  return getAttributeIter(name);
}
IDomElement* DomDocument::nextSibling(const char* /*name*/) const { return nullptr; }
IDomElement* DomDocument::previousSibling(const char* /*name*/) const { return nullptr; }
bool DomDocument::hasAttributes() const { return false; }
IDomElement* DomDocument::getParent() const { return nullptr; }
IDomDocument* DomDocument::getDocument() const { return const_cast<DomDocument*>(this); }

IDomElement* DomDocument::getFirstChild(const char* name) const {
  return static_cast<DomElement*>(first_node(name));
}

IDomElement* DomDocument::getLastChild(const char* name) const {
  return static_cast<DomElement*>(last_node(name));
}

void DomDocument::insertChild(IDomElement* child, IDomElement* /*where*/) { addChild(child); }

void DomDocument::addChild(IDomElement* child) {
  if (first_node()) return;
  append_node(dynamic_cast<DomElement*>(child));
}

bool DomDocument::removeChild(IDomElement* child) {
  rapidxml::xml_node<char>* const element = dynamic_cast<DomElement*>(child);
  if (element != first_node() || (child && !element)) return false;
  remove_node(element);
  return true;
}

bool DomDocument::hasChildren() const { return first_node() != nullptr; }

}  // namespace libDomXml
