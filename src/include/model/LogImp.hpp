// A node class; hosts include it only to derive from it or to cast to it.
#pragma once

#include <ctime>
#include <string>

#include "libtarn/TarnApi.hpp"
#include "libtarn/model/Log.hpp"
#include "libtarn/model/ModelNode.hpp"

namespace libDomXml {
class IDomDocument;
}

namespace libtarn {
namespace model {

/// Node class of Log.
class TARN_API LogImp : public ModelNode, public Log {
 public:
  LogImp(libDomXml::IMemoryPool* pool, util::TarnFactory& factory)
      : ModelNode(pool, factory, TAG_NAME) {}

  using ModelNode::clone;
  LogImp* clone() const override;
  const char* getValue() const override;
  LogImp* clone(util::TarnFactory& factory) const override;
  /// Not to be called: logs an ERROR line and returns null.
  LogImp* clone(libDomXml::IDomDocument* document) const;
  void dispatchToChildren(validation::Validator& validator) const override;
  void dispatchToSelf(validation::Validator& validator) const override;
  void updatePath(validation::Validator& validator) const override;

  const char* getAction() const override;
  const char* getDateTime() const override;
  /// Sets "dateTime" to the current time. Emits a log line at level ERROR, which hosts use as a
  /// trace of changes.
  void updateDateTime() override;
  LogImp* getNextSiblingElement() const override;
  IElement* getFirstChildElement(const char* name) const override;
  void removeThisElement() override;

  /// Returns `time` as local time in the form of DATETIME_FORMAT.
  static std::string formatDateTime(std::time_t time);

 protected:
  libDomXml::ElementCopy copySelf(util::TarnFactory& factory) const override;
};

}  // namespace model
}  // namespace libtarn
