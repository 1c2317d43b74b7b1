#pragma once

#include <memory>
#include <string>

#include "libtarn/IDomElement.hpp"
#include "libtarn/IStripper.hpp"
#include "libtarn/TarnApi.hpp"

namespace boost {
template <class T>
class shared_ptr;
}

namespace libDomXml {

/// A DOM document: the root of a tree and the owner of everything in it. One thread at a time.
class TARN_API IDomDocument : public IDomElement {
 public:
  /// Parses a copy of `text`, made by `stripper` when one is given. Returns 0, or 1 for malformed
  /// text; the elements that were complete by then stay linked. Who calls it includes
  /// <boost/shared_ptr.hpp>.
  virtual int parse(const char* text, boost::shared_ptr<IStripper> stripper) = 0;
  /// Takes over the zero-terminated text and parses it in place; results as above.
  virtual int parse(std::unique_ptr<char[]> text) = 0;
  /// The declaration, or null.
  virtual IDomElement* getDocumentDeclaration() const = 0;
  /// New, detached objects of this document with copies of name and value.
  virtual IDomElement* createDomElement(const char* name, const char* value) = 0;
  virtual DomAttribute* createDomAttribute(const char* name, const char* value) = 0;
  /// The declaration and the tree as text.
  virtual std::string printDocument() = 0;
  /// Parses `text` in place, which stays the caller's and must outlive the tree. Returns 0 or 1.
  virtual int rapidParse(char* text) = 0;
};

}  // namespace libDomXml
