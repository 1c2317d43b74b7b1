#pragma once

#include "libtarn/DomFactory.hpp"
#include "libtarn/TarnApi.hpp"
#include "libtarn/rapidxml/nodes.hpp"

namespace libDomXml {

/// An attribute of a DOM element: a record of the XML core that knows its pool.
///
/// Lives in its document's pool until the document goes, also after it has been removed.
class TARN_API DomAttribute : public rapidxml::xml_attribute<char> {
 public:
  /// A detached attribute without name and value, to be made in `pool`. The links of the record are
  /// set when it is linked.
  // NOLINTNEXTLINE(clang-analyzer-optin.cplusplus.UninitializedObject)
  explicit DomAttribute(IMemoryPool* pool) : domFactory_(pool) {}

  /// Pool objects are not freed one by one.
  static void operator delete(void* /*memory*/) {}
  static void* operator new(std::size_t /*size*/, void* place) { return place; }

  /// The name, or "" when unset.
  const char* getTagName() const { return name(); }
  /// The value, or "" when unset.
  const char* getValue() const { return value(); }

  /// Copies the text into the pool and takes the copy, unless it equals the current one up to a
  /// zero that this may hold. The text may be the attribute's own. Null counts as "".
  void setTagName(const char* name);
  void setValue(const char* value);

  /// A detached copy in the same pool, or in `pool`. Unset texts become "".
  DomAttribute* clone() const;
  DomAttribute* clone(IMemoryPool* pool) const;

  /// Makes texts and nodes in the pool of this attribute.
  const DomFactory* getDomFactory() const { return &domFactory_; }

 private:
  DomFactory domFactory_;
};

}  // namespace libDomXml
