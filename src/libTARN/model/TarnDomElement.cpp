#include "libtarn/model/TarnDomElement.hpp"

#include <typeinfo>

#include "copyTree.hpp"
#include "libtarn/model/TarnDomDocument.hpp"
#include "libtarn/model/validation/Validator.hpp"
#include "libtarn/util/TarnFactory.hpp"
#include "virtualFunctions.hpp"

namespace libtarn {
namespace model {

namespace {

using Node = rapidxml::xml_node<char>;

// Elements that a host made through the DOM layer are not of the model.
bool isOfModel(const libDomXml::DomElement& element) {
  return typeid(element) != typeid(libDomXml::DomElement);
}

TarnDomElement* skipToModelElement(Node* node, const char* name) {
  while (node) {
    auto* const element = dynamic_cast<TarnDomElement*>(static_cast<libDomXml::DomElement*>(node));
    if (element) return element;
    node = node->next_sibling(name);
  }
  return nullptr;
}

// Returns the factory that builds in `pool`. A pool that is not a document gets a factory of its
// own, which lives as long as what it builds.
util::TarnFactory& factoryOf(libDomXml::IMemoryPool* pool) {
  if (auto* const document = dynamic_cast<TarnDomDocument*>(pool)) return document->getFactory();
  TARN_ASSERT(pool, "pool");
  void* const memory = libDomXml::DomFactory(pool).allocateObject(sizeof(util::TarnFactory));
  return *new (memory) util::TarnFactory(*pool);
}

libDomXml::IDomElement* copyInto(const libDomXml::DomElement& element, util::TarnFactory& factory) {
  if (!isOfModel(element)) return element.clone(&factory.getMemoryPool());
  return static_cast<const TarnDomElement&>(element).clone(factory);
}

}  // namespace

TarnDomElement* TarnDomElement::nextSibling(const char* name) const {
  return skipToModelElement(next_sibling(name), name);
}

TarnDomElement* TarnDomElement::getFirstChild(const char* name) const {
  return skipToModelElement(first_node(name), name);
}

void TarnDomElement::accept(validation::Validator& validator) const {
  updatePath(validator);
  dispatchToSelf(validator);
  dispatchToChildren(validator);
  validator.popPath();
}

void TarnDomElement::cloneAttributes(TarnDomElement* target) const { copyAttributesTo(*target); }

void TarnDomElement::cloneChildren(TarnDomElement* target) const {
  if (!first_node()) return;
  libDomXml::IMemoryPool* const pool = target->getDomFactory()->getMemoryPool();
  util::TarnFactory* const factory =
      pool == domFactory_.getMemoryPool() ? nullptr : &factoryOf(pool);
  // Ends at the child that is last now: the target may be this element.
  const Node* const last = last_node();
  for (const Node* node = first_node();; node = node->next_sibling()) {
    const auto& child = static_cast<const libDomXml::DomElement&>(*node);
    target->addChild(factory ? copyInto(child, *factory) : child.clone());
    if (node == last) return;
  }
}

libDomXml::ElementCopy TarnDomElement::copySelf(util::TarnFactory& factory) const {
  return {clone(factory), false};
}

void TarnDomElement::finishCopy() {}

// A host class with its own clone() is asked for its copy.
TarnDomElement* TarnDomElement::cloneTree(util::TarnFactory& factory) const {
  using libDomXml::ElementCopy;
  const auto copyOne = [this, &factory](const libDomXml::DomElement& element) {
    if (!isOfModel(element)) {
      auto* const copy = element.clone(&factory.getMemoryPool());
      return ElementCopy{static_cast<libDomXml::DomElement*>(copy), false};
    }
    const auto& source = static_cast<const TarnDomElement&>(element);
    const ElementCopy copy = source.copySelf(factory);
    const libDomXml::DomElement& made = *copy.element;
    if (&source == this || typeid(made) == typeid(source) ||
        runSameCode(source, made, libDomXml::VirtualFunction::CLONE_BY_FACTORY)) {
      return copy;
    }
    return ElementCopy{source.clone(factory), false};
  };
  const auto finish = [](libDomXml::DomElement& copy) {
    static_cast<TarnDomElement&>(copy).finishCopy();
  };
  return static_cast<TarnDomElement*>(libDomXml::copyTree(*this, copyOne, finish));
}

void TarnDomElement::unlinkFromParent() {
  if (libDomXml::IDomElement* const owner = getParent()) owner->removeChild(this);
}

}  // namespace model
}  // namespace libtarn
