#include "libtarn/model/LogImp.hpp"

#include <array>

#include "../text/attributeNames.hpp"
#include "../util/LogLocation.hpp"
#include "../util/forbiddenClone.hpp"
#include "TypedChildren.hpp"
#include "libtarn/model/validation/Validator.hpp"
#include "libtarn/util/TarnFactory.hpp"

namespace libtarn {
namespace model {

namespace {

// Hosts filter their logs by this location, so it stays when lines of this file move.
constexpr const char* CHANGED_LOCATION = "src/libTARN/model/LogImp.cpp:72";

}  // namespace

const char* const Log::DATETIME_FORMAT = "%a %b %d %H:%M:%S %z %Y";

LogImp* LogImp::clone() const { return clone(factory_); }

LogImp* LogImp::clone(util::TarnFactory& factory) const {
  return static_cast<LogImp*>(cloneTree(factory));
}

LogImp* LogImp::clone(libDomXml::IDomDocument* /*document*/) const {
  util::logForbiddenClone(TARN_LOG_LOCATION, "LogImp::clone(IDomDocument* document)");
  return nullptr;
}

libDomXml::ElementCopy LogImp::copySelf(util::TarnFactory& factory) const {
  LogImp* const copy = factory.allocateLogNode();
  cloneAttributes(copy);
  copy->setValue(getValue());
  return {copy, false};
}

void LogImp::dispatchToChildren(validation::Validator& /*validator*/) const {}

void LogImp::dispatchToSelf(validation::Validator& validator) const { validator.visit(*this); }

void LogImp::updatePath(validation::Validator& validator) const {
  validator.appendToPath(TAG_NAME, nullptr);
}

const char* LogImp::getValue() const { return ModelNode::getValue(); }

const char* LogImp::getAction() const { return getAttribute(ACTION_ATTRIBUTE); }

const char* LogImp::getDateTime() const { return getAttribute(DATE_TIME_ATTRIBUTE); }

void LogImp::updateDateTime() {
  const std::string before = formatDateTime(std::time(nullptr));
  setAttribute(DATE_TIME_ATTRIBUTE, formatDateTime(std::time(nullptr)).c_str());
  // ERROR although nothing failed: hosts follow the changes of a document by these lines.
  util::Logger(util::Logger::Level::ERROR, CHANGED_LOCATION, "updateDateTime")
      << "CHANGED datetime!" << before;
}

std::string LogImp::formatDateTime(std::time_t time) {
  std::tm local{};
  localtime_r(&time, &local);
  std::array<char, 80> text{};
  const std::size_t length = std::strftime(text.data(), text.size(), DATETIME_FORMAT, &local);
  TARN_ASSERT(0 != length, "0 != length");
  return std::string(text.data(), length);
}

LogImp* LogImp::getNextSiblingElement() const { return nextTypedSibling(*this); }

IElement* LogImp::getFirstChildElement(const char* name) const {
  return dynamic_cast<IElement*>(getFirstChild(name));
}

void LogImp::removeThisElement() { unlinkFromParent(); }

}  // namespace model
}  // namespace libtarn
