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

/// The document node of a configuration document: owns text, pool, declaration, root and the
/// factory, and gives the parser a node of the model for every tag.
///
/// LibTarnDocument is what a host uses; it gives this document its root. One thread at a time.
class TARN_API TarnDomDocument : public libDomXml::DomDocument {
 public:
  /// Pool blocks from memory maps, own name validator and index factory.
  TarnDomDocument();
  /// As above, with `outOfMemory` for when there are no maps.
  explicit TarnDomDocument(libDomXml::OutOfMemory outOfMemory);
  /// Pool blocks from the heap. Validator and index factory stay the caller's and must outlive the
  /// document; for null the document has its own, in its pool.
  TarnDomDocument(IDistinguishedNameValidator* validator,
                  indexation::ITarnIndexFactory* indexFactory);
  ~TarnDomDocument() override;

  /// A new declaration of version and encoding, detached. The document keeps the one that it has.
  LibTarnDocumentDeclaration* createDocumentDeclaration();
  /// The root, null until it has been set.
  LibTarnDocumentInternal* getRootElement() const { return root_; }
  /// Called once, by the LibTarnDocument that takes this document over.
  void setRootElement(LibTarnDocumentInternal* root) { root_ = root; }
  /// The factory for new elements of this document.
  util::TarnFactory& getFactory() { return factory_; }

  /// The node that the parser asks for, of the class that the coming tag has. For a declaration the
  /// one that the document has, without attributes and detached.
  TarnDomElement* allocate_node(rapidxml::node_type type, const char* name, const char* value,
                                std::size_t nameSize, std::size_t valueSize) override;
  /// Empty, detached nodes.
  TarnDomElement* allocateTarnManagedObjectNode();
  TarnDomElement* allocateTarnCmDataNode();
  TarnDomElement* allocateStructureNode();
  /// The node for the tag at the parser's position. Throws rapidxml::parse_error for a name that is
  /// none of the model's.
  TarnDomElement* createTarnElement();

  int parse(const char* text, boost::shared_ptr<libDomXml::IStripper> stripper) override;
  int parse(std::unique_ptr<char[]> text) override;
  /// Parses a copy of `text`, in place of what the document held. Throws rapidxml::parse_error.
  /// The text of an earlier parse goes, and with it the elements of that parse.
  void parse(const char* text);
  /// Takes over `text`, which must end with a zero byte, and parses it in place; the text of an
  /// earlier parse comes back in its stead. Throws rapidxml::parse_error.
  void parse(std::vector<char>& text);
  /// Keeps the text of the parse done, and so its elements, until the document is destroyed.
  void keepText();
  int rapidParse(char* text) override;
  /// Parses `text` in place; it stays the caller's. Throws rapidxml::parse_error.
  void parseDoc(char* text);
  /// The place that the parse_error of the last parse gave, in bytes from the start of its text.
  std::size_t getTextOffset(const rapidxml::parse_error& error) const;
  /// The place of the "<" of an element's start tag in the text that was parsed last, in bytes from
  /// its start. util::NO_OFFSET for an element that is not from that text, or got another tag
  /// since.
  std::size_t getTextOffset(const rapidxml::xml_node<char>& element) const;

  /// Bytes that the document takes: the blocks of its pool and the texts that it has taken over.
  std::size_t getMemorySize() const;

  /// The declaration and the root, whatever else the document node holds.
  std::string printDocument() override;

 private:
  friend class Load;

  TarnDomElement* makeTarnElement(const char* name, std::size_t size);
  template <class Element>
  Element* makeNode();
  void leaveTree();
  void takeText(std::vector<char>& text);
  void beginParse(char* text);
  /// Of declaration and root, when they point into the parsed text.
  void moveTextsIntoPool();
  TarnDomElement* reuseDeclaration();
  TarnDomElement* reuseRoot(const char* nameEnd);
  bool isTopLevelNode() const;

  util::TarnFactory factory_;
  const char* textStart_ = nullptr;  // of the last parse; its text may be gone
  char* parsePosition_ = nullptr;
  Load* load_ = nullptr;  // while a text is parsed
  LibTarnDocumentInternal* root_ = nullptr;
  bool rootIsInText_ = false;  // its name, value and attributes
  std::vector<libDomXml::DocumentText> keptTexts_;
};

}  // namespace model
}  // namespace libtarn
