#include "model/LibTarnDocument.hpp"

#include "../util/LogLocation.hpp"
#include "model/LibTarnDocumentInternal.hpp"
#include "model/TarnDomDocument.hpp"
#include "model/exceptions/ModelException.hpp"
#include "model/validation/Validator.hpp"
#include "util/Logger.hpp"

namespace libtarn {
namespace model {

namespace {

// Results of a parse or a validation.
constexpr int DONE = 0;
constexpr int MALFORMED = 1;
constexpr int MODEL_RULE_BROKEN = 2;

}  // namespace

LibTarnDocument::LibTarnDocument() : LibTarnDocument(new TarnDomDocument()) {}

LibTarnDocument::LibTarnDocument(OutOfMemory outOfMemory)
    : LibTarnDocument(new TarnDomDocument(outOfMemory)) {}

LibTarnDocument::LibTarnDocument(TarnDomDocument* document)
    : domDocument_(document),
      root_(static_cast<LibTarnDocumentInternal*>(
          document->getFactory().allocateLibTarnDocumentInternalNode(document))),
      factory_(&document->getFactory()) {
  document->setRootElement(root_);
}

LibTarnDocument::~LibTarnDocument() = default;

int LibTarnDocument::parse(const char* text, bool validate) { return parseImpl(text, validate); }

int LibTarnDocument::parse(std::vector<char> text, bool validate) {
  return parseImpl(text, validate);
}

template <class Text>
int LibTarnDocument::parseImpl(Text& text, bool validate) {
  diagnostic_ = Diagnostic();
  try {
    // Elements of an earlier parse stay readable.
    domDocument_->keepText();
    const bool isKnownToFollow = root_->parse(text, validate);
    if (validate) isKnownToFollow ? checkRootRules() : checkRules();
  } catch (const rapidxml::parse_error& error) {
    util::Logger(util::Logger::Level::ERROR, TARN_LOG_LOCATION, "parseImpl")
        << "Parsing failed: " << error.what();
    return fail(MALFORMED, error.what(), domDocument_->getTextOffset(error));
  } catch (const exceptions::ModelException& error) {
    util::Logger(util::Logger::Level::ERROR, TARN_LOG_LOCATION, "parseImpl")
        << "Validation failed: " << error.what();
    return fail(MODEL_RULE_BROKEN, error.what(), 0);
  }
  util::Logger(util::Logger::Level::INFO, TARN_LOG_LOCATION, "parseImpl")
      << "LibTarnDocument parsing done. Document parsing, building indexers"
      << (validate ? ", validation successful" : "");
  return DONE;
}

bool LibTarnDocument::isKnownToBeValid(std::vector<char> text) {
  LibTarnDocument document(OutOfMemory::Throw);
  try {
    if (!document.root_->check(text)) return false;
    document.checkRootRules();
  } catch (const rapidxml::parse_error&) {
    return false;
  } catch (const exceptions::ModelException&) {
    return false;
  }
  return true;
}

int LibTarnDocument::validate() {
  diagnostic_ = Diagnostic();
  try {
    checkRules();
    root_->checkNames();
  } catch (const exceptions::ModelException& error) {
    util::Logger(util::Logger::Level::ERROR, TARN_LOG_LOCATION, "validate")
        << "Validation failed: " << error.what();
    return fail(MODEL_RULE_BROKEN, error.what(), 0);
  }
  util::Logger(util::Logger::Level::INFO, TARN_LOG_LOCATION, "validate") << "Validation successful";
  return DONE;
}

void LibTarnDocument::checkRootRules() const {
  validation::Validator validator;
  root_->updatePath(validator);
  root_->dispatchToSelf(validator);
}

// Walks twice only for a document that is broken.
void LibTarnDocument::checkRules() const {
  try {
    validation::Validator inAnyOrder;
    inAnyOrder.allowAnyOrder();
    root_->accept(inAnyOrder);
    return;
  } catch (const exceptions::ModelException&) {
    // Something is wrong; which violation is the first, the walk in the order of names says.
  }
  validation::Validator validator;
  root_->accept(validator);
}

int LibTarnDocument::fail(int code, const std::string& message, std::size_t offset) {
  diagnostic_ = {code, message, offset};
  return code;
}

TarnDomDocument* LibTarnDocument::getItsTarnDomDocument() const {
  return root_->getItsTarnDomDocument();
}

std::size_t LibTarnDocument::getMemorySize() const { return domDocument_->getMemorySize(); }

const char* LibTarnDocument::getVersion() const { return root_->getVersion(); }

const char* LibTarnDocument::getXmlns() const { return root_->getXmlns(); }

LibTarnCmData* LibTarnDocument::getLibTarnCmData() const { return root_->getLibTarnCmData(); }

void LibTarnDocument::addLibTarnCmData(LibTarnCmData& cmData) { root_->addLibTarnCmData(cmData); }

std::list<LibTarnManagedObject*> LibTarnDocument::getMOsMatchingMask(
    const LibTarnManagedObject& mask) const {
  return root_->getMOsMatchingMask(mask);
}

void LibTarnDocument::setChangesToMOs(const LibTarnManagedObject& mask,
                                      const LibTarnManagedObject& changes) {
  root_->setChangesToMOs(mask, changes);
}

}  // namespace model
}  // namespace libtarn
