#pragma once

#include "TarnApi.hpp"
#include "model/LibTarnHeader.hpp"
#include "model/TarnDomElement.hpp"

namespace libDomXml {
class IDomDocument;
}

namespace libtarn {
namespace model {

/// Node class of LibTarnHeader.
class TARN_API LibTarnHeaderImp : public TarnDomElement, public LibTarnHeader {
 public:
  LibTarnHeaderImp(libDomXml::IMemoryPool* pool, util::TarnFactory& factory)
      : TarnDomElement(pool), factory_(factory) {
    xml_base::name(TAG_NAME);
  }

  using TarnDomElement::clone;
  LibTarnHeaderImp* clone() const override;
  LibTarnHeaderImp* clone(util::TarnFactory& factory) const override;
  /// Not to be used: logs an ERROR line and returns null.
  LibTarnHeaderImp* clone(libDomXml::IDomDocument* document) const;
  void dispatchToChildren(validation::Validator& validator) const override;
  /// Whether the rules of the format are followed here and below.
  bool followsRules() const;
  void dispatchToSelf(validation::Validator& validator) const override;
  void updatePath(validation::Validator& validator) const override;

  Log* getLogs() const override;
  void addLog(Log& log) override;
  LibTarnHeaderImp* getNextSiblingElement() const override;
  IElement* getFirstChildElement(const char* name) const override;
  void removeThisElement() override;

  /// What addLog() of a copy of each entry of `header` comes to. Walks the entries of both once.
  void addCopiesOfLogs(const LibTarnHeader& header);
  /// Removes the oldest entries beyond MAX_LOG_COUNT.
  void truncate();

 protected:
  libDomXml::ElementCopy copySelf(util::TarnFactory& factory) const override;

 private:
  util::TarnFactory& factory_;
};

}  // namespace model
}  // namespace libtarn
