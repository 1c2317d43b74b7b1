#include "libtarn/model/LibTarnDocumentDeclaration.hpp"

#include "../text/attributeNames.hpp"
#include "../util/LogLocation.hpp"
#include "../util/forbiddenClone.hpp"
#include "libtarn/model/exceptions/ModelException.hpp"
#include "libtarn/model/validation/Validator.hpp"

namespace libtarn {
namespace model {

namespace {

constexpr const char* ENCODING_ATTRIBUTE = "encoding";
constexpr const char* CANNOT_BE_CLONED = "Document declaration cannot be cloned.";

}  // namespace

LibTarnDocumentDeclaration::LibTarnDocumentDeclaration(libDomXml::IMemoryPool* pool)
    : TarnDomElement(pool) {
  xml_base::name(TAG_NAME);
  setAttribute(VERSION_ATTRIBUTE, "1.0");
  setAttribute(ENCODING_ATTRIBUTE, "UTF-8");
}

const char* LibTarnDocumentDeclaration::getVersion() const {
  return getAttribute(VERSION_ATTRIBUTE);
}

const char* LibTarnDocumentDeclaration::getEncoding() const {
  return getAttribute(ENCODING_ATTRIBUTE);
}

libDomXml::IDomElement* LibTarnDocumentDeclaration::clone() const {
  throw exceptions::ModelException(CANNOT_BE_CLONED);
}

libDomXml::IDomElement* LibTarnDocumentDeclaration::clone(
    libDomXml::IDomDocument* /*document*/) const {
  throw exceptions::ModelException(CANNOT_BE_CLONED);
}

TarnDomElement* LibTarnDocumentDeclaration::clone(util::TarnFactory& /*factory*/) const {
  util::logForbiddenClone(TARN_LOG_LOCATION,
                          "LibTarnDocumentDeclaration::clone(util::TarnFactory& factory)");
  return nullptr;
}

void LibTarnDocumentDeclaration::dispatchToChildren(validation::Validator& /*validator*/) const {}

void LibTarnDocumentDeclaration::dispatchToSelf(validation::Validator& /*validator*/) const {}

void LibTarnDocumentDeclaration::updatePath(validation::Validator& validator) const {
  validator.appendToPath(TAG_NAME, nullptr);
}

}  // namespace model
}  // namespace libtarn
