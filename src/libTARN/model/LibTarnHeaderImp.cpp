#include "libtarn/model/LibTarnHeaderImp.hpp"

#include <deque>

#include "../text/attributeNames.hpp"
#include "../util/LogLocation.hpp"
#include "../util/forbiddenClone.hpp"
#include "TypedChildren.hpp"
#include "UndoLog.hpp"
#include "libtarn/model/LogImp.hpp"
#include "libtarn/model/validation/Validator.hpp"
#include "libtarn/util/TarnFactory.hpp"

namespace libtarn {
namespace model {

const unsigned int LibTarnHeader::MAX_LOG_COUNT = 50;

LibTarnHeaderImp* LibTarnHeaderImp::clone() const { return clone(factory_); }

LibTarnHeaderImp* LibTarnHeaderImp::clone(util::TarnFactory& factory) const {
  return static_cast<LibTarnHeaderImp*>(cloneTree(factory));
}

LibTarnHeaderImp* LibTarnHeaderImp::clone(libDomXml::IDomDocument* /*document*/) const {
  util::logForbiddenClone(TARN_LOG_LOCATION, "LibTarnHeaderImp::clone(IDomDocument* document)");
  return nullptr;
}

libDomXml::ElementCopy LibTarnHeaderImp::copySelf(util::TarnFactory& factory) const {
  LibTarnHeaderImp* const copy = factory.allocateHeaderNode();
  cloneAttributes(copy);
  return {copy, true};
}

void LibTarnHeaderImp::dispatchToChildren(validation::Validator& validator) const {
  for (auto* log = firstTypedChild<LogImp>(*this); log; log = nextTypedSibling(*log)) {
    log->accept(validator);
  }
}

void LibTarnHeaderImp::dispatchToSelf(validation::Validator& validator) const {
  validator.visit(*this);
}

void LibTarnHeaderImp::updatePath(validation::Validator& validator) const {
  validator.appendToPath(TAG_NAME, nullptr);
}

Log* LibTarnHeaderImp::getLogs() const { return firstTypedChild<LogImp>(*this); }

void LibTarnHeaderImp::addLog(Log& log) {
  addChild(&implementation<LogImp>(log));
  truncate();
}

bool LibTarnHeaderImp::appendCopiesOfLogs(const LibTarnHeader& header, UndoLog& log) {
  std::deque<const LogImp*> newest;
  for (const Log* each = header.getLogs(); each; each = each->getNextSiblingElement()) {
    newest.push_back(&implementation<LogImp>(*each));
    if (newest.size() > MAX_LOG_COUNT) newest.pop_front();
  }
  for (const LogImp* each : newest) log.append(*this, *each->clone(factory_));
  return !newest.empty();
}

void LibTarnHeaderImp::truncate() {
  std::size_t count = 0;
  for (const Log* log = getLogs(); log; log = log->getNextSiblingElement()) ++count;
  Log* first = getLogs();
  for (; count > MAX_LOG_COUNT; --count) {
    TARN_ASSERT(first, "!first.atEnd()");
    Log* const oldest = first;
    first = first->getNextSiblingElement();
    oldest->removeThisElement();
  }
}

LibTarnHeaderImp* LibTarnHeaderImp::getNextSiblingElement() const {
  return nextTypedSibling(*this);
}

IElement* LibTarnHeaderImp::getFirstChildElement(const char* name) const {
  return dynamic_cast<IElement*>(getFirstChild(name));
}

void LibTarnHeaderImp::removeThisElement() { unlinkFromParent(); }

}  // namespace model
}  // namespace libtarn
