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

/// A DOM document: the root of a tree and the owner of everything in it. Used by one thread at a
/// time.
class TARN_API IDomDocument : public IDomElement {
 public:
  /// Parses a copy of `text`, made by `stripper` unless it is null. Returns 0, or 1 for malformed
  /// text; the elements that were complete by then stay linked. Callers include
  /// <boost/shared_ptr.hpp>.
  virtual int parse(const char* text, boost::shared_ptr<IStripper> stripper) = 0;
  /// Takes over the NUL-terminated text and parses it in place. Returns as the other overload does.
  virtual int parse(std::unique_ptr<char[]> text) = 0;
  /// Returns the declaration, or null.
  virtual IDomElement* getDocumentDeclaration() const = 0;
  /// Returns a new, detached element of this document with copies of name and value.
  virtual IDomElement* createDomElement(const char* name, const char* value) = 0;
  /// Returns a new, detached attribute of this document with copies of name and value.
  virtual DomAttribute* createDomAttribute(const char* name, const char* value) = 0;
  /// Returns the declaration and the tree as text.
  virtual std::string printDocument() = 0;
  /// Parses `text` in place. The text stays the caller's and must outlive the tree. Returns 0 or 1.
  virtual int rapidParse(char* text) = 0;
};

}  // namespace libDomXml
