#pragma once

#include "libtarn/DomFactory.hpp"
#include "libtarn/TarnApi.hpp"
#include "libtarn/rapidxml/nodes.hpp"

namespace libDomXml {

/// An attribute of a DOM element: a record of the XML core that knows its pool.
///
/// Lives in its document's pool until the document is destroyed, also after it has been removed.
class TARN_API DomAttribute : public rapidxml::xml_attribute<char> {
 public:
  /// A detached attribute without name and value, for placement in `pool`. The links of the record
  /// are set when the attribute is linked.
  // NOLINTNEXTLINE(clang-analyzer-optin.cplusplus.UninitializedObject)
  explicit DomAttribute(IMemoryPool* pool) : domFactory_(pool) {}

  /// Does nothing: the pool frees its objects together.
  static void operator delete(void* /*memory*/) {}
  /// Placement new: constructs the attribute at `address`.
  static void* operator new(std::size_t /*size*/, void* address) { return address; }

  /// The name, or "" when unset.
  const char* getTagName() const { return name(); }
  /// The value, or "" when unset.
  const char* getValue() const { return value(); }

  /// Copies `name` into the pool and makes the copy the attribute's name. Copies nothing when the
  /// text equals the current one, which counts up to a NUL that it may hold. `name` may be the
  /// attribute's own text. Null counts as "".
  void setTagName(const char* name);
  /// Like setTagName(), for the value.
  void setValue(const char* value);

  /// Returns a detached copy in the same pool. Unset texts become "".
  DomAttribute* clone() const;
  /// Returns a detached copy in `pool`. Unset texts become "".
  DomAttribute* clone(IMemoryPool* pool) const;

  /// Returns a factory for texts and nodes in the pool of this attribute.
  const DomFactory* getDomFactory() const { return &domFactory_; }

 private:
  DomFactory domFactory_;
};

}  // namespace libDomXml
