#include "Load.hpp"

#include <cstring>
#include <typeinfo>

#include "../../text/attributeNames.hpp"
#include "../../text/textHash.hpp"
#include "../../util/LogLocation.hpp"
#include "../Internals.hpp"
#include "../TypedChildren.hpp"
#include "../validation/keepsRules.hpp"
#include "../validation/rules.hpp"
#include "libtarn/Assertion.hpp"
#include "libtarn/model/DistinguishedNameValidator.hpp"
#include "libtarn/model/LibTarnCmDataImp.hpp"
#include "libtarn/model/LibTarnDocumentInternal.hpp"
#include "libtarn/model/LibTarnExtensionImp.hpp"
#include "libtarn/model/LibTarnHeaderImp.hpp"
#include "libtarn/model/LibTarnManagedObjectImp.hpp"
#include "libtarn/model/ListImp.hpp"
#include "libtarn/model/LogImp.hpp"
#include "libtarn/model/ScalarImp.hpp"
#include "libtarn/model/StructureImp.hpp"
#include "libtarn/model/TarnDomDocument.hpp"
#include "libtarn/model/indexation/TarnIndexFactory.hpp"
#include "libtarn/model/indexation/TarnMapIndex.hpp"
#include "libtarn/model/indexation/TarnUniqueAndNonUniqueMultiIndex.hpp"
#include "libtarn/util/Logger.hpp"

namespace libtarn {
namespace model {

namespace rules = validation::rules;

namespace {

using Node = rapidxml::xml_node<char>;
using Attribute = rapidxml::xml_attribute<char>;

// The parser makes a node of the library's class for every tag of the model, so the tag is enough.
template <class Imp>
Imp* parsedAs(Node* node) {
  constexpr std::string_view TAG = Imp::TAG_NAME;
  if (node->name_size() != TAG.size() || std::memcmp(node->name(), TAG.data(), TAG.size()) != 0) {
    return nullptr;
  }
  return static_cast<Imp*>(static_cast<libDomXml::DomElement*>(node));
}

template <std::size_t Size>
bool hasName(const Attribute& attribute, const char (&name)[Size]) {
  return attribute.name_size() == Size - 1 && std::memcmp(attribute.name(), name, Size - 1) == 0;
}

// Returns a view without data when the attribute is absent.
std::string_view nameOf(const Node& element) {
  const Attribute* attribute = element.first_attribute();
  while (attribute && !hasName(*attribute, NAME_ATTRIBUTE)) attribute = attribute->next_attribute();
  return attribute ? std::string_view(attribute->value(), attribute->value_size())
                   : std::string_view();
}

// An absent name counts as the empty text.
std::string_view keyOf(std::string_view name) { return name.data() ? name : std::string_view(""); }

// Returns true if all nodes and indexes that a parse makes are the library's own.
bool makesLibraryClasses(TarnDomDocument& document) {
  return isExactly<TarnDomDocument>(document) &&
         isExactly<indexation::TarnIndexFactory>(*document.getFactory().getIndexFactory());
}

bool usesLibraryNames(TarnDomDocument& document) {
  return isExactly<DistinguishedNameValidator>(*document.getFactory().getDistNameValidator());
}

template <class Index, class Element>
bool fill(Index& index, ParsedNames<Element>& names) {
  if (names.size() == 0) return true;
  const NameOrder order = names.order();
  return order != NameOrder::UNKNOWN &&
         index.fill(names.entries(), names.size(), order == NameOrder::SORTED);
}

}  // namespace

/// The attributes that indexes and rules need, found in one pass; without data when absent.
struct Load::ObjectAttributes {
  explicit ObjectAttributes(const Node& object) {
    for (const Attribute* each = object.first_attribute(); each; each = each->next_attribute()) {
      if (hasName(*each, CLASS_ATTRIBUTE)) {
        take(*each, className);
      } else if (hasName(*each, DIST_NAME_ATTRIBUTE)) {
        take(*each, distName);
      } else if (hasName(*each, OPERATION_ATTRIBUTE)) {
        hasOperation = true;
      }
    }
  }

  std::string_view className;
  std::string_view distName;
  bool hasOperation = false;

 private:
  // Of several attributes of one name the first one counts.
  static void take(const Attribute& attribute, std::string_view& text) {
    if (!text.data()) text = std::string_view(attribute.value(), attribute.value_size());
  }
};

Load::Load(TarnDomDocument& document, Mode mode)
    : document_(document),
      mode_(mode),
      indexes_(mode != Mode::TREE && makesLibraryClasses(document)),
      isValid_(indexes_ && mode != Mode::INDEX && usesLibraryNames(document)) {}

Load::Load(TarnDomDocument& document, Visitor visitor) : Load(document, Mode::VISIT) {
  visitor_ = visitor;
}

Load::~Load() { document_.load_ = nullptr; }

std::size_t Load::placeOfParser(const TarnDomDocument& document) {
  return static_cast<std::size_t>(document.parsePosition_ - document.textStart_);
}

Load::Verdict Load::run(std::vector<char>& text) {
  document_.takeText(text);
  return run(document_.text_.data());
}

Load::Verdict Load::run(char* text) {
  TARN_ASSERT(text, "text");
  try {
    parse(text);
    if (mode_ == Mode::VISIT && !indexes_) return Verdict::NOT_KNOWN;
    if (mode_ != Mode::TREE) finish();
    return isValid_ || mode_ == Mode::VISIT ? Verdict::VALID : Verdict::NOT_KNOWN;
  } catch (const Stopped&) {
    return Verdict::NOT_KNOWN;
  } catch (...) {
    cleanUp();
    throw;
  }
}

void Load::parse(char* text) {
  document_.beginParse(text);
  nameEnd_ = text;
  document_.load_ = this;
  document_.parse_reporting(document_.parsePosition_, *this);
  document_.load_ = nullptr;
  isParsed_ = true;
}

// Objects and headers elsewhere are in no index and have no rules.
void Load::element_complete(Node* element) {
  if (!indexes_) return;
  const char first = *element->name();
  if (first != *LibTarnManagedObject::TAG_NAME && first != *LibTarnHeader::TAG_NAME) return;
  Body* const body = bodyOf(element->parent());
  if (!body) return;
  if (auto* const object = parsedAs<LibTarnManagedObjectImp>(element)) {
    complete(*object, *body);
  } else if (const auto* const header = parsedAs<LibTarnHeaderImp>(element)) {
    ++body->headers;
    require(validation::keepsRules(*header));
  }
}

// Bodies are not nested, so the children of one body come one after the other.
Load::Body* Load::bodyOf(Node* parent) {
  if (!bodies_.empty() && parent == bodies_.back().cmData) return &bodies_.back();
  auto* const cmData = parsedAs<LibTarnCmDataImp>(parent);
  if (!cmData || parent->parent() != document_.root_) return nullptr;
  // An element is linked below its parent when it is complete.
  const bool isFirst = !firstTypedChild<LibTarnCmDataImp>(*document_.root_);
  bodies_.push_back({cmData, objects_.size(), objects_.size(), 0, true, isFirst && visitor_.call});
  return &bodies_.back();
}

// Notes the object before its indexes are filled, so that cleanUp() empties them wherever that
// ends.
void Load::complete(LibTarnManagedObjectImp& object, Body& body) {
  if (!body.isIndexed) return;
  const ObjectAttributes attributes(object);
  const std::string_view key = keyOf(attributes.distName);
  objects_.push_back({key.data(), &object, indexation::textHash(key.data(), key.size())});
  ++body.end;
  body.isIndexed = !hasNul_ && index(object, attributes);
  require(body.isIndexed);
  if (mode_ == Mode::VISIT) {
    if (!body.isIndexed) throw Stopped();
    if (body.isVisited) visitor_.call(visitor_.host, object);
  } else if (isValid_) {
    validate(object, attributes);
  }
  if (drops()) drop(object, body);
}

// Indexing. False: a name is duplicate, or not known to be unique.

bool Load::index(LibTarnManagedObjectImp& object, const ObjectAttributes& attributes) {
  if (attributes.hasOperation) {
    auto& operation = Internals::operation(object);
    if (!operation.isKnown()) return false;
    operation.initialize();
  }
  scalars_.start(attributes.className);
  lists_.start(attributes.className);
  for (Node* node = object.first_node(); node; node = node->next_sibling()) {
    if (auto* const scalar = parsedAs<ScalarImp>(node)) {
      const std::string_view name = nameOf(*scalar);
      require(rules::parameterHasName(name.data()));
      scalars_.add(keyOf(name), scalar);
    } else if (auto* const list = parsedAs<ListImp>(node)) {
      const std::string_view name = nameOf(*list);
      require(rules::listHasName(name.data()));
      lists_.add(keyOf(name), list);
      if (!index(*list, name)) return false;
    } else if (isValid_) {
      const auto* const extension = parsedAs<LibTarnExtensionImp>(node);
      require(!extension || validation::keepsRules(*extension));
    }
  }
  return fill(Internals::scalarIndex(object), scalars_) &&
         fill(Internals::listIndex(object), lists_);
}

bool Load::index(ListImp& list, std::string_view name) {
  bool hasItems = false;
  bool hasValues = false;
  for (Node* node = list.first_node(); node; node = node->next_sibling()) {
    if (auto* const item = parsedAs<StructureImp>(node)) {
      if (!index(*item, name)) return false;
      hasItems = true;
    } else if (parsedAs<ScalarImp>(node)) {
      hasValues = true;
    }
  }
  require(rules::listHoldsOneKind(hasValues, hasItems));
  return true;
}

bool Load::index(StructureImp& item, std::string_view listName) {
  components_.start(listName);
  for (Node* node = item.first_node(); node; node = node->next_sibling()) {
    auto* const component = parsedAs<ScalarImp>(node);
    if (!component) continue;
    const std::string_view name = nameOf(*component);
    require(rules::parameterHasName(name.data()));
    components_.add(keyOf(name), component);
  }
  return fill(Internals::componentIndex(item), components_);
}

// Rules; those of parameters and lists are asked where these are indexed.

void Load::validate(const LibTarnManagedObjectImp& object, const ObjectAttributes& attributes) {
  const char* const distName = attributes.distName.data();
  require(rules::objectHasClass(attributes.className.data()) && rules::objectHasName(distName) &&
          rules::objectHasValidName(*object.getDistNameValidator(), distName));
}

// The object was allocated before everything in it. Its name stays in the text.
void Load::drop(LibTarnManagedObjectImp& object, Body& body) {
  if (mode_ == Mode::VALIDATE_ONLY && !isValid_) throw Stopped();
  body.cmData->remove_node(&object);
  document_.forget_from(&object);
}

// The end of the parse

void Load::finish() {
  const bool logs = !drops();
  using util::Logger;
  if (logs) Logger(Logger::Level::DEBUG, TARN_LOG_LOCATION, "parse") << "Parsing done";
  // A document that a host has not given to a LibTarnDocument has no root.
  auto* cmData = document_.root_ ? firstTypedChild<LibTarnCmDataImp>(*document_.root_) : nullptr;
  for (; cmData; cmData = nextTypedSibling(*cmData)) {
    // Bodies are in the order in which they are below the root. A body without headers and objects
    // is not noted, nor is one that the host has made.
    const bool isNoted = finished_ < bodies_.size() && bodies_[finished_].cmData == cmData;
    Body unnoted{cmData, 0, 0, 0, true, false};
    finish(isNoted ? bodies_[finished_] : unnoted);
    if (isNoted) ++finished_;
  }
  if (!logs) return;
  Logger(Logger::Level::DEBUG, TARN_LOG_LOCATION, "rebuildIndexersAndInitializeEnums")
      << "Rebuilding indexers and initializing enums done.";
}

void Load::finish(Body& body) {
  body.cmData->initializeType();
  const bool isPlan = body.cmData->getType() == LibTarnCmData::Type::PLAN;
  require(rules::bodyHasOneHeader(body.headers) &&
          rules::planHasObjects(isPlan, body.begin != body.end));
  if (adopt(body)) return;
  require(false);
  if (drops()) throw Stopped();
  clearIndexes(body);
  body.cmData->rebuildIndexers();
}

// Makes the filled object index the body's. Returns false when the body must be indexed in document
// order.
bool Load::adopt(Body& body) {
  if (!indexes_ || !body.isIndexed || hasNul_) return false;
  if (body.begin == body.end) return !body.cmData->getFirstChild(LibTarnManagedObject::TAG_NAME);
  return Internals::objectIndex(*body.cmData).fill(&objects_[body.begin], body.end - body.begin);
}

// Ends of a load without a loaded document

void Load::cleanUp() {
  document_.load_ = nullptr;
  if (drops()) return;
  for (; finished_ < bodies_.size(); ++finished_) clearIndexes(bodies_[finished_]);
  // Declaration and root stay, and the parser may not have terminated their texts yet.
  if (!isParsed_) document_.moveTextsIntoPool();
}

void Load::clearIndexes(Body& body) {
  for (std::size_t i = body.begin; i < body.end; ++i) {
    auto& object = static_cast<LibTarnManagedObjectImp&>(*objects_[i].object);
    Internals::operation(object).setKept({});
    Internals::scalarIndex(object).clear();
    Internals::listIndex(object).clear();
    for (Node* node = object.first_node(); node; node = node->next_sibling()) {
      if (auto* const list = parsedAs<ListImp>(node)) clearIndexes(*list);
    }
  }
  body.end = body.begin;
}

void Load::clearIndexes(ListImp& list) {
  for (Node* node = list.first_node(); node; node = node->next_sibling()) {
    if (auto* const item = parsedAs<StructureImp>(node)) Internals::componentIndex(*item).clear();
  }
}

}  // namespace model
}  // namespace libtarn
