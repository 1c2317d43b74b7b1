#pragma once

#include <memory>
#include <string>
#include <vector>

#include "libtarn/DomDocument.hpp"
#include "libtarn/TarnApi.hpp"
#include "libtarn/model/TarnDomElement.hpp"
#include "libtarn/util/TarnFactory.hpp"

namespace libtarn {
namespace model {

class LibTarnDocumentDeclaration;
class LibTarnDocumentInternal;
class Load;

/// The document node of a configuration document. Owns text, pool, declaration, root and factory,
/// and allocates a node of the model for every tag that the parser reads.
///
/// Hosts use LibTarnDocument, which sets the root of this document. Used by one thread at a time.
class TARN_API TarnDomDocument : public libDomXml::DomDocument {
 public:
  /// A document with blocks from memory maps, and its own name validator and index factory.
  TarnDomDocument();
  /// Like the default constructor; `outOfMemory` says what happens when there are no maps.
  explicit TarnDomDocument(libDomXml::OutOfMemory outOfMemory);
  /// A document with blocks from the heap. Validator and index factory stay the caller's and must
  /// outlive the document; for null the document has its own, in its pool.
  TarnDomDocument(IDistinguishedNameValidator* validator,
                  indexation::ITarnIndexFactory* indexFactory);
  ~TarnDomDocument() override;

  /// Returns a new, detached declaration of version and encoding. The document keeps the one that
  /// it has.
  LibTarnDocumentDeclaration* createDocumentDeclaration();
  /// Returns the root; null until it has been set.
  LibTarnDocumentInternal* getRootElement() const { return root_; }
  /// Sets the root. Called once, by the LibTarnDocument that takes over this document.
  void setRootElement(LibTarnDocumentInternal* root) { root_ = root; }
  /// Returns the factory for new elements of this document.
  util::TarnFactory& getFactory() { return factory_; }

  /// Returns a node for the parser, of the class that belongs to the tag at its position. For a
  /// declaration it is the document's own, detached and without attributes.
  TarnDomElement* allocate_node(rapidxml::node_type type, const char* name, const char* value,
                                std::size_t nameSize, std::size_t valueSize) override;
  /// Returns an empty, detached node.
  TarnDomElement* allocateTarnManagedObjectNode();
  /// Returns an empty, detached node.
  TarnDomElement* allocateTarnCmDataNode();
  /// Returns an empty, detached node.
  TarnDomElement* allocateStructureNode();
  /// Returns a node for the tag at the parser's position. Throws rapidxml::parse_error for a tag
  /// that is not of the model.
  TarnDomElement* createTarnElement();

  int parse(const char* text, boost::shared_ptr<libDomXml::IStripper> stripper) override;
  int parse(std::unique_ptr<char[]> text) override;
  /// Parses a copy of `text`, which replaces the content of the document. Throws
  /// rapidxml::parse_error. Frees the text of an earlier parse; its elements must not be used any
  /// more.
  void parse(const char* text);
  /// Takes over `text`, which must end with a NUL, and parses it in place; `text` then holds the
  /// text of the earlier parse. Throws rapidxml::parse_error.
  void parse(std::vector<char>& text);
  /// Keeps the text of the last parse, and so its elements, until the document is destroyed.
  void keepText();
  int rapidParse(char* text) override;
  /// Parses `text` in place; it stays the caller's. Throws rapidxml::parse_error.
  void parseDoc(char* text);
  /// Returns the byte offset of an error of the last parse, from the start of its text.
  std::size_t getTextOffset(const rapidxml::parse_error& error) const;
  /// Returns the byte offset of the "<" of an element's start tag, from the start of the text that
  /// was parsed last. Returns util::NO_OFFSET for an element that is not from that text or that has
  /// been given another tag.
  std::size_t getTextOffset(const rapidxml::xml_node<char>& element) const;

  /// Returns the bytes that the document occupies: the blocks of its pool and the texts that it has
  /// taken over.
  std::size_t getMemorySize() const;

  /// Returns the printed declaration and root, whatever else the document node holds.
  std::string printDocument() override;

 private:
  friend class Load;

  TarnDomElement* makeTarnElement(const char* name, std::size_t size);
  template <class Element>
  Element* makeNode();
  void leaveTree();
  void takeText(std::vector<char>& text);
  void beginParse(char* text);
  /// Copies the texts of declaration and root into the pool when they point into the parsed text.
  void moveTextsIntoPool();
  TarnDomElement* reuseDeclaration();
  TarnDomElement* reuseRoot(const char* nameEnd);
  bool isTopLevelNode() const;

  util::TarnFactory factory_;
  const char* textStart_ = nullptr;  // of the last parse; its text may have been freed
  char* parsePosition_ = nullptr;
  Load* load_ = nullptr;  // while a text is parsed
  LibTarnDocumentInternal* root_ = nullptr;
  bool rootIsInText_ = false;  // its name, value and attributes
  std::vector<libDomXml::DocumentText> keptTexts_;
};

}  // namespace model
}  // namespace libtarn
