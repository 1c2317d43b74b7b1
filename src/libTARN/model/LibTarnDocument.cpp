#include "libtarn/model/LibTarnDocument.hpp"

#include <algorithm>
#include <cstring>
#include <iterator>
#include <string_view>
#include <utility>

#include "../util/LogLocation.hpp"
#include "elementWalk.hpp"
#include "libtarn/model/LibTarnCmData.hpp"
#include "libtarn/model/LibTarnDocumentInternal.hpp"
#include "libtarn/model/LibTarnExtension.hpp"
#include "libtarn/model/LibTarnHeader.hpp"
#include "libtarn/model/LibTarnManagedObject.hpp"
#include "libtarn/model/List.hpp"
#include "libtarn/model/Log.hpp"
#include "libtarn/model/RefusedChange.hpp"
#include "libtarn/model/ResultCodes.hpp"
#include "libtarn/model/Scalar.hpp"
#include "libtarn/model/Structure.hpp"
#include "libtarn/model/TarnDomDocument.hpp"
#include "libtarn/model/exceptions/ModelException.hpp"
#include "libtarn/model/validation/Validator.hpp"
#include "libtarn/model/validation/Violation.hpp"
#include "libtarn/util/Logger.hpp"
#include "libtarn/util/TextPosition.hpp"
#include "load/Load.hpp"
#include "validation/keepsRules.hpp"

namespace libtarn {
namespace model {

namespace {

constexpr const char* NO_CM_DATA_MESSAGE = "Document doesn't have cmData node";
// The path that a Validator would report.
constexpr const char* BODY_PATH = "tarn > cmData > ";

// Of the elements below the root.
constexpr std::string_view TAGS[] = {LibTarnCmData::TAG_NAME,
                                     LibTarnHeader::TAG_NAME,
                                     Log::TAG_NAME,
                                     LibTarnManagedObject::TAG_NAME,
                                     LibTarnExtension::TAG_NAME,
                                     List::TAG_NAME,
                                     Structure::TAG_NAME,
                                     Scalar::TAG_NAME};

bool hasWholeTag(const rapidxml::xml_node<char>& element) {
  const std::string_view name(element.name(), element.name_size());
  return std::find(std::begin(TAGS), std::end(TAGS), name) != std::end(TAGS);
}

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

int LibTarnDocument::parse(const char* text, bool validate) {
  TARN_ASSERT(text, "text");
  return parseImpl(std::vector<char>(text, text + std::strlen(text) + 1), validate);
}

int LibTarnDocument::parse(std::vector<char> text, bool validate) {
  return parseImpl(std::move(text), validate);
}

int LibTarnDocument::parseImpl(std::vector<char> text, bool validate) {
  diagnostic_ = Diagnostic();
  try {
    // Elements of an earlier parse stay readable.
    domDocument_->keepText();
    const Load::Verdict below =
        Load(*domDocument_, validate ? Load::Mode::VALIDATE : Load::Mode::INDEX).run(text);
    if (validate) below == Load::Verdict::VALID ? validateRoot() : validateTree();
  } catch (const rapidxml::parse_error& error) {
    util::Logger(util::Logger::Level::ERROR, TARN_LOG_LOCATION, "parseImpl")
        << "Parsing failed: " << error.what();
    return fail(ParseResult::Malformed, error.what(), domDocument_->getTextOffset(error));
  } catch (const exceptions::ModelException& error) {
    util::Logger(util::Logger::Level::ERROR, TARN_LOG_LOCATION, "parseImpl")
        << "Validation failed: " << error.what();
    return fail(ParseResult::BrokenRule, error.what(), 0);
  }
  util::Logger(util::Logger::Level::INFO, TARN_LOG_LOCATION, "parseImpl")
      << "LibTarnDocument parsing done. Document parsing, building indexers"
      << (validate ? ", validation successful" : "");
  return ParseResult::Done;
}

Diagnostic LibTarnDocument::validateText(std::vector<char> (*read)(void* reader), void* reader) {
  if (isKnownToBeValid(read(reader))) return {};
  LibTarnDocument document(OutOfMemory::Throw);
  document.parse(read(reader), true);
  return document.getDiagnostic();
}

// Drops every object after validation, so it takes little more memory than the text.
bool LibTarnDocument::isKnownToBeValid(std::vector<char> text) {
  LibTarnDocument document(OutOfMemory::Throw);
  try {
    Load load(*document.domDocument_, Load::Mode::VALIDATE_ONLY);
    if (load.run(text) == Load::Verdict::NOT_KNOWN) return false;
    document.validateRoot();
  } catch (const rapidxml::parse_error&) {
    return false;
  } catch (const exceptions::ModelException&) {
    return false;
  }
  return true;
}

bool LibTarnDocument::visitObjects(std::vector<char>& text,
                                   void (*visit)(void* host, LibTarnManagedObject& object),
                                   void* host) {
  if (text.empty() || text.back() != '\0') return false;
  LibTarnDocument document(OutOfMemory::Throw);
  try {
    Load load(*document.domDocument_, Load::Visitor{visit, host});
    return load.run(text.data()) == Load::Verdict::VALID;
  } catch (const rapidxml::parse_error&) {
    return false;
  } catch (const exceptions::ModelException&) {
    return false;
  }
}

int LibTarnDocument::validate() {
  diagnostic_ = Diagnostic();
  try {
    validateTree();
    root_->checkNames();
  } catch (const exceptions::ModelException& error) {
    util::Logger(util::Logger::Level::ERROR, TARN_LOG_LOCATION, "validate")
        << "Validation failed: " << error.what();
    return fail(ParseResult::BrokenRule, error.what(), 0);
  }
  util::Logger(util::Logger::Level::INFO, TARN_LOG_LOCATION, "validate") << "Validation successful";
  return ParseResult::Done;
}

int LibTarnDocument::validate(std::vector<validation::Violation>* violations, std::size_t limit,
                              std::size_t byteLimit, std::size_t* count) {
  TARN_ASSERT(violations, "violations");
  violations->clear();
  if (count) *count = 0;
  const int result = validate();
  if (result == ParseResult::Done) return result;
  validation::Validator validator(violations, limit, byteLimit);
  root_->accept(validator);
  std::size_t found = validator.getViolationCount();
  // Unique names are not one of the rules of the walk.
  if (found == 0 && ++found <= limit) violations->push_back({diagnostic_.message, BODY_PATH});
  if (count) *count = found;
  return result;
}

bool LibTarnDocument::hasAbbreviatedTags() const {
  return !walkElements(*root_, [this](const rapidxml::xml_node<char>& element, std::size_t) {
    return &element == root_ || hasWholeTag(element);
  });
}

void LibTarnDocument::validateRoot() const {
  validation::Validator validator;
  root_->updatePath(validator);
  root_->dispatchToSelf(validator);
}

// Walks twice only when a document is not valid, or has objects of host classes.
void LibTarnDocument::validateTree() const {
  if (validation::keepsRules(*root_)) return;
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

std::size_t LibTarnDocument::getTextOffset(const IElement& element) const {
  const auto* const node = dynamic_cast<const libDomXml::DomElement*>(&element);
  return node ? domDocument_->getTextOffset(*node) : util::NO_OFFSET;
}

void LibTarnDocument::setChangesToMOs(const LibTarnManagedObject& mask,
                                      const LibTarnManagedObject& changes) {
  root_->setChangesToMOs(mask, changes);
}

Diagnostic LibTarnDocument::tryChangesToMOs(const LibTarnManagedObject& mask,
                                            const LibTarnManagedObject& changes,
                                            std::vector<RefusedChange>* refused) {
  std::vector<RefusedChange> ownRefused;
  if (!refused) refused = &ownRefused;
  refused->clear();
  if (!getLibTarnCmData()) return {ChangeResult::NoCmData, NO_CM_DATA_MESSAGE, 0};
  root_->tryChangesToMOs(mask, changes, *refused);
  return refused->empty() ? Diagnostic() : refused->front().reason;
}

}  // namespace model
}  // namespace libtarn
