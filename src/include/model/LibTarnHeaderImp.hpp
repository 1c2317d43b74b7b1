// A node class; hosts include it only to derive from it or to cast to it.
#pragma once

#include "libtarn/TarnApi.hpp"
#include "libtarn/model/LibTarnHeader.hpp"
#include "libtarn/model/ModelNode.hpp"

namespace libDomXml {
class IDomDocument;
}

namespace libtarn {
namespace model {

class UndoLog;

/// Node class of LibTarnHeader.
class TARN_API LibTarnHeaderImp : public ModelNode, public LibTarnHeader {
 public:
  LibTarnHeaderImp(libDomXml::IMemoryPool* pool, util::TarnFactory& factory)
      : ModelNode(pool, factory, TAG_NAME) {}

  using ModelNode::clone;
  LibTarnHeaderImp* clone() const override;
  LibTarnHeaderImp* clone(util::TarnFactory& factory) const override;
  /// Not to be called: logs an ERROR line and returns null.
  LibTarnHeaderImp* clone(libDomXml::IDomDocument* document) const;
  void dispatchToChildren(validation::Validator& validator) const override;
  void dispatchToSelf(validation::Validator& validator) const override;
  void updatePath(validation::Validator& validator) const override;

  Log* getLogs() const override;
  void addLog(Log& log) override;
  LibTarnHeaderImp* getNextSiblingElement() const override;
  IElement* getFirstChildElement(const char* name) const override;
  void removeThisElement() override;

  /// Appends copies of the entries of `header`; of more than MAX_LOG_COUNT only the newest. Returns
  /// false when `header` has none.
  bool appendCopiesOfLogs(const LibTarnHeader& header, UndoLog& log);
  /// Unlinks the oldest entries beyond MAX_LOG_COUNT. Needs no memory.
  void truncate();

 protected:
  libDomXml::ElementCopy copySelf(util::TarnFactory& factory) const override;
};

}  // namespace model
}  // namespace libtarn
