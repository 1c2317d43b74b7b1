#pragma once

#include <memory>
#include <string>

#include "libtarn/DocumentText.hpp"
#include "libtarn/DomElement.hpp"
#include "libtarn/IDomDocument.hpp"
#include "libtarn/OutOfMemory.hpp"
#include "libtarn/TarnApi.hpp"
#include "libtarn/rapidxml/rapidxml.hpp"

namespace libDomXml {

/// Root of a DOM tree; owns the pool, the text and the declaration of the document.
///
/// Everything in the tree lives until the document is destroyed; only the text of an earlier parse
/// goes when the next one starts, and with it the elements of that parse. The operations that the
/// document has as an element differ from an element's: it has no name, value or attributes and at
/// most one child that a host can add. One thread at a time.
class TARN_API DomDocument : public IDomDocument, public rapidxml::xml_document<char> {
 public:
  /// An empty document without declaration. `useMmap` takes the pool's blocks from anonymous memory
  /// maps, which go back to the system with the document.
  explicit DomDocument(bool useMmap);
  /// As above, from memory maps, with `outOfMemory` for when there are none.
  explicit DomDocument(OutOfMemory outOfMemory);
  DomDocument(const DomDocument&) = delete;
  DomDocument& operator=(const DomDocument&) = delete;
  ~DomDocument() override;

  /// A new document, which the caller owns, with the declaration version 1.0, encoding UTF-8.
  static DomDocument* createDomDocument(bool useMmap);

  /// Blocks from anonymous memory maps from now on; nothing may have been allocated (asserted).
  void useMmapPoolAllocator();
  void useMmapPoolAllocator(OutOfMemory outOfMemory);
  /// Maps `size` bytes and what it needs to know their length; null when there is no memory.
  static void* mmapAlloc(std::size_t size);
  static void mmapFree(void* memory);

  int parse(const char* text, boost::shared_ptr<IStripper> stripper) override;
  int parse(std::unique_ptr<char[]> text) override;
  int rapidParse(char* text) override;

  /// Null for a document made by the constructor, until a parse brings one.
  IDomElement* getDocumentDeclaration() const override;
  IDomElement* createDomElement(const char* name, const char* value) override;
  DomAttribute* createDomAttribute(const char* name, const char* value) override;
  std::string printDocument() override;

  void* allocateMemory(unsigned int size) override;
  void deallocateMemory(void* memory) override;
  /// A detached element or attribute, by way of allocateMemory(). While a document of the library's
  /// own class is parsed, whose allocateMemory() is known, the parser's come straight from the
  /// pool.
  DomElement* allocate_node(rapidxml::node_type type, const char* name, const char* value,
                            std::size_t nameSize, std::size_t valueSize) override;
  DomAttribute* allocate_attribute(const char* name, const char* value, std::size_t nameSize,
                                   std::size_t valueSize) override;

  /// A new document, which the caller owns, on the heap and with copies of declaration and root.
  IDomElement* clone() const override;
  IDomElement* clone(IMemoryPool* pool) const override;

  const char* getTagName() const override;
  void setTagName(const char* name) override;
  const char* getValue() const override;
  void setValue(const char* value) override;
  const char* getAttribute(const char* name) const override;
  const char* getAttribute(const char* name, const char* defaultValue) const override;
  DomAttributeIterator getAttributeIter(const char* name) const override;
  void setAttribute(const char* name, const char* value) override;
  void addAttribute(DomAttribute* attribute) override;
  bool removeAttribute(const char* name) override;
  DomAttributeIterator getFirstAttribute(const char* name) const override;
  DomAttributeIterator getLastAttribute(const char* name) const override;
  IDomElement* nextSibling(const char* name) const override;
  IDomElement* previousSibling(const char* name) const override;
  IDomElement* getFirstChild(const char* name) const override;
  /// The document must have a child (asserted).
  IDomElement* getLastChild(const char* name) const override;
  void insertChild(IDomElement* child, IDomElement* where) override;
  /// Does nothing when there is a root already.
  void addChild(IDomElement* child) override;
  /// Only the first child can be removed.
  bool removeChild(IDomElement* child) override;
  bool hasChildren() const override;
  bool hasAttributes() const override;
  IDomElement* getParent() const override;
  IDomDocument* getDocument() const override;

 protected:
  /// A zero-terminated copy of `text`, made by `stripper` when one is given.
  static std::unique_ptr<char[]> copyOf(const char* text, IStripper* stripper);
  /// Parses `text` in place once the text of an earlier parse has been freed. Returns 0 or 1.
  int parseInPlaceOfEarlier(std::unique_ptr<char[]> text);
  /// Memory for one node or attribute; never null (asserted).
  void* allocateObject(std::size_t size) {
    return takesFromPool_ ? allocate_aligned(size) : DomFactory(this).allocateObject(size);
  }
  /// Whether the class of this document is known to have this allocateMemory(): decided at the
  /// start of a parse, which asks for nodes too often for one more virtual call each time.
  void setTakesFromPool(bool takesFromPool) { takesFromPool_ = takesFromPool; }
  bool takesFromPool() const { return takesFromPool_; }
  /// Says that the texts of the declaration point into the parsed text.
  void setDeclarationInText() { declarationIsInText_ = true; }
  /// Moves the texts of the declaration into the pool when they point into the parsed text.
  void moveDeclarationIntoPool();

  /// The declaration that is printed, or null.
  DomElement* declaration_ = nullptr;
  /// The text of the last parse that handed its text over.
  DocumentText text_;

 private:
  void leaveText();
  int parseText();
  void moveDeclarationOut();

  bool declarationIsInText_ = false;
  bool takesFromPool_ = false;
};

}  // namespace libDomXml
