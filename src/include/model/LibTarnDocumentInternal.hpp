// A node class; hosts include it only to derive from it or to cast to it.
#pragma once

#include <list>
#include <vector>

#include "libtarn/TarnApi.hpp"
#include "libtarn/model/IElement.hpp"
#include "libtarn/model/LibTarnDocument.hpp"
#include "libtarn/model/TarnDomElement.hpp"

namespace libtarn {
namespace model {

class LibTarnCmData;
class LibTarnManagedObject;
class TarnDomDocument;
struct RefusedChange;

/// The root element, `tarn`. A document has one, made with the document and used again by every
/// parse.
class TARN_API LibTarnDocumentInternal : public TarnDomElement, public IElement {
 public:
  /// The tag.
  static constexpr const char* TAG_NAME = LibTarnDocument::TAG_NAME;

  /// The empty root of `document`.
  explicit LibTarnDocumentInternal(TarnDomDocument* document);

  using TarnDomElement::clone;
  /// Always throws ModelException.
  libDomXml::IDomElement* clone(libDomXml::IMemoryPool* pool) const override;
  /// Not to be called: logs an ERROR line and returns null.
  TarnDomElement* clone(util::TarnFactory& factory) const override;
  void dispatchToChildren(validation::Validator& validator) const override;
  void dispatchToSelf(validation::Validator& validator) const override;
  void updatePath(validation::Validator& validator) const override;

  IElement* getNextSiblingElement() const override;
  IElement* getFirstChildElement(const char* name) const override;
  /// Does nothing: the root stays.
  void removeThisElement() override;

  /// Parses a copy of `text`, like LibTarnDocument::parse(), but throws rapidxml::parse_error and
  /// ModelException.
  void parse(const char* text);
  /// Takes over `text` and parses it in place, like LibTarnDocument::parse(), but throws
  /// rapidxml::parse_error and ModelException.
  void parse(std::vector<char>& text);
  /// Reads the types and operations, and fills all indexes. Throws ModelException.
  void rebuildIndexersAndInitializeEnums();
  /// Throws DuplicateElementException when two managed objects have the same name.
  void checkNames();

  /// Returns the owning document.
  TarnDomDocument* getItsTarnDomDocument() const { return document_; }
  /// See LibTarnDocument::getVersion().
  const char* getVersion() const;
  /// See LibTarnDocument::getXmlns().
  const char* getXmlns() const;
  /// See LibTarnDocument::getLibTarnCmData().
  LibTarnCmData* getLibTarnCmData() const;
  /// See LibTarnDocument::addLibTarnCmData().
  void addLibTarnCmData(LibTarnCmData& cmData);
  /// See LibTarnDocument::getMOsMatchingMask().
  std::list<LibTarnManagedObject*> getMOsMatchingMask(const LibTarnManagedObject& mask) const;
  /// See LibTarnDocument::setChangesToMOs().
  void setChangesToMOs(const LibTarnManagedObject& mask, const LibTarnManagedObject& changes);
  void tryChangesToMOs(const LibTarnManagedObject& mask, const LibTarnManagedObject& changes,
                       std::vector<RefusedChange>& refused);

 private:
  template <class Rebuild>
  void forEachCmData(Rebuild rebuild);
  template <class Change>
  void changeMatching(const LibTarnManagedObject& mask, Change change);

  TarnDomDocument* document_;
};

}  // namespace model
}  // namespace libtarn
