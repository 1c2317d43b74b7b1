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
/// Everything in the tree lives until the document is destroyed. The exception is the text of an
/// earlier parse: the next one frees it, and its elements must not be used any more. As an element
/// the document has no name, value or attributes, and a host can add only one child. Used by one
/// thread at a time.
class TARN_API DomDocument : public IDomDocument, public rapidxml::xml_document<char> {
 public:
  /// An empty document without declaration. With `useMmap` the pool's blocks come from anonymous
  /// memory maps, which go back to the system when the document is destroyed.
  explicit DomDocument(bool useMmap);
  /// An empty document without declaration, with blocks from memory maps; `outOfMemory` says what
  /// happens when there are none.
  explicit DomDocument(OutOfMemory outOfMemory);
  DomDocument(const DomDocument&) = delete;
  DomDocument& operator=(const DomDocument&) = delete;
  ~DomDocument() override;

  /// Returns a new document, which the caller owns, with the declaration version 1.0, encoding
  /// UTF-8.
  static DomDocument* createDomDocument(bool useMmap);

  /// Takes blocks from anonymous memory maps from now on. Nothing may have been allocated yet
  /// (asserted).
  void useMmapPoolAllocator();
  /// Like the other overload; `outOfMemory` says what happens when there are no maps.
  void useMmapPoolAllocator(OutOfMemory outOfMemory);
  /// Maps `size` bytes, and a word before them for their length. Returns null when there is no
  /// memory.
  static void* mmapAlloc(std::size_t size);
  /// Unmaps what mmapAlloc() returned.
  static void mmapFree(void* memory);

  int parse(const char* text, boost::shared_ptr<IStripper> stripper) override;
  int parse(std::unique_ptr<char[]> text) override;
  int rapidParse(char* text) override;

  /// Returns the declaration; null for a document made by the constructor, until a parse brings
  /// one.
  IDomElement* getDocumentDeclaration() const override;
  IDomElement* createDomElement(const char* name, const char* value) override;
  DomAttribute* createDomAttribute(const char* name, const char* value) override;
  std::string printDocument() override;

  void* allocateMemory(unsigned int size) override;
  void deallocateMemory(void* memory) override;
  /// Returns a detached element, allocated by allocateMemory(). While a document of the library's
  /// own class is parsed, the parser's elements come directly from the pool.
  DomElement* allocate_node(rapidxml::node_type type, const char* name, const char* value,
                            std::size_t nameSize, std::size_t valueSize) override;
  /// Returns a detached attribute, allocated as allocate_node() does.
  DomAttribute* allocate_attribute(const char* name, const char* value, std::size_t nameSize,
                                   std::size_t valueSize) override;

  /// Returns a new document, which the caller owns, with blocks from the heap and copies of
  /// declaration and root.
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
  /// Returns the last child of that name, or null. The document must have a child (asserted).
  IDomElement* getLastChild(const char* name) const override;
  void insertChild(IDomElement* child, IDomElement* where) override;
  /// Links `child` as the root. Does nothing when there is a root already.
  void addChild(IDomElement* child) override;
  /// Unlinks `child`. Returns false for all but the first child.
  bool removeChild(IDomElement* child) override;
  bool hasChildren() const override;
  bool hasAttributes() const override;
  IDomElement* getParent() const override;
  IDomDocument* getDocument() const override;

 protected:
  /// Returns a NUL-terminated copy of `text`, made by `stripper` unless it is null.
  static std::unique_ptr<char[]> copyOf(const char* text, IStripper* stripper);
  /// Frees the text of an earlier parse and parses `text` in place. Returns 0 or 1.
  int parseReplacingText(std::unique_ptr<char[]> text);
  /// Returns memory for one node or attribute; never null (asserted).
  void* allocateObject(std::size_t size) {
    return takesFromPool_ ? allocate_aligned(size) : DomFactory(this).allocateObject(size);
  }
  /// Sets whether the class of this document is known to have this allocateMemory(). Decided when a
  /// parse starts: it asks for nodes too often for one more virtual call each time.
  void setTakesFromPool(bool takesFromPool) { takesFromPool_ = takesFromPool; }
  /// Returns true while nodes come directly from the pool.
  bool takesFromPool() const { return takesFromPool_; }
  /// Notes that the texts of the declaration point into the parsed text.
  void setDeclarationInText() { declarationIsInText_ = true; }
  /// Copies the texts of the declaration into the pool when they point into the parsed text.
  void moveDeclarationIntoPool();

  /// The declaration that is printed, or null.
  DomElement* declaration_ = nullptr;
  /// The text of the last parse that took over or copied its text.
  DocumentText text_;

 private:
  void leaveText();
  int parseText();
  void moveDeclarationOut();

  bool declarationIsInText_ = false;
  bool takesFromPool_ = false;
};

}  // namespace libDomXml
