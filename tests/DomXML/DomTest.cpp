#include <gtest/gtest.h>

#include <boost/shared_ptr.hpp>
#include <cstdint>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "libtarn/DomDocument.hpp"
#include "libtarn/rapidxml/rapidxml_print.hpp"
#include "support/HeapCount.hpp"
#include "support/SmallStack.hpp"
#include "support/treeDump.hpp"

namespace {

using namespace libDomXml;

static_assert(sizeof(DomAttribute) == sizeof(rapidxml::xml_attribute<char>) + sizeof(void*) &&
                  sizeof(DomElement) == sizeof(rapidxml::xml_node<char>) + 2 * sizeof(void*),
              "beside the record, the factory and, for an element, its interface");
static_assert(sizeof(void*) != 4 || (sizeof(DomAttribute) == 32 && sizeof(DomElement) == 56),
              "sizes of the 32-bit target");

std::unique_ptr<char[]> textOf(const std::string& text) {
  std::unique_ptr<char[]> copy(new char[text.size() + 1]);
  std::copy(text.c_str(), text.c_str() + text.size() + 1, copy.get());
  return copy;
}

// Every test runs over heap blocks and over memory maps.
class DomTest : public ::testing::TestWithParam<bool> {
 protected:
  int parse(const std::string& text) { return document_->parse(textOf(text)); }
  DomElement* root() { return static_cast<DomElement*>(document_->getFirstChild(nullptr)); }
  DomElement* make(const char* name, const char* value = nullptr) {
    return static_cast<DomElement*>(document_->createDomElement(name, value));
  }
  // Bytes that the pool handed out since the last call, with the word that the call itself takes.
  std::size_t growth() {
    char* const now = static_cast<char*>(document_->allocateMemory(1));
    const std::size_t result = static_cast<std::size_t>(now - last_);
    last_ = now;
    return result;
  }

  std::unique_ptr<DomDocument> document_{DomDocument::createDomDocument(GetParam())};
  char* last_ = nullptr;
};

INSTANTIATE_TEST_SUITE_P(HeapAndMmap, DomTest, ::testing::Bool(),
                         [](const auto& each) { return each.param ? "Mmap" : "Heap"; });

TEST_P(DomTest, FreshDocumentPrintsDeclarationAndAnEmptyLine) {
  EXPECT_EQ(document_->printDocument(), "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n\n");
}

TEST_P(DomTest, ParsedDeclarationLeavesTheChildren) {
  EXPECT_EQ(parse("<?xml version='1.1'?><a/><?xml version='1.2'?>"), 0);
  EXPECT_EQ(tarn_test::dump(*document_), "{a}");
  EXPECT_STREQ(document_->getDocumentDeclaration()->getAttribute("version"), "1.2");
  EXPECT_EQ(document_->printDocument(), "<?xml version=\"1.2\"?>\n<a></a>\n\n");
}

TEST_P(DomTest, MalformedTextGivesOneFromBothParses) {
  EXPECT_EQ(parse("<a"), 1);
  EXPECT_EQ(document_->parse("<a>", boost::shared_ptr<IStripper>()), 1);
  EXPECT_EQ(document_->parse("<a/>", boost::shared_ptr<IStripper>()), 0);
}

TEST_P(DomTest, DeclarationOutlivesTheTextItCameFrom) {
  EXPECT_EQ(parse("<?xml version='1.1' x='&lt;'?><a/>"), 0);
  EXPECT_EQ(document_->parse("<b/>", boost::shared_ptr<IStripper>()), 0);
  EXPECT_EQ(parse("<c"), 1);
  EXPECT_EQ(parse("<c/>"), 0);
  EXPECT_EQ(document_->printDocument(), "<?xml version=\"1.1\" x=\"&lt;\"?>\n<c></c>\n\n");
}

TEST_P(DomTest, DeclarationIsCopiedOnceHoweverManyParsesFollow) {
  constexpr std::size_t LONG = std::size_t{1} << 20U;
  EXPECT_EQ(parse("<?xml a='" + std::string(LONG, 'x') + "'?><a/>"), 0);
  const std::size_t before = document_->pool_size();
  for (int i = 0; i < 10; ++i) EXPECT_EQ(parse("<a"), 1);
  for (int i = 0; i < 10; ++i) {
    EXPECT_EQ(document_->parse("<b/>", boost::shared_ptr<IStripper>()), 0);
  }
  EXPECT_LT(document_->pool_size() - before, 2 * LONG);
  EXPECT_EQ(std::strlen(document_->getDocumentDeclaration()->getAttribute("a")), LONG);
}

TEST_P(DomTest, StripperCopiesTheText) {
  struct WithoutBlanks : IStripper {
    std::size_t copy(char* destination, const char* text, std::size_t length) override {
      return static_cast<std::size_t>(std::remove_copy(text, text + length, destination, '\n') -
                                      destination);
    }
  };
  const boost::shared_ptr<IStripper> stripper(new WithoutBlanks);
  EXPECT_EQ(document_->parse("<a>\nx\ny\n</a>", stripper), 0);
  EXPECT_STREQ(root()->getValue(), "xy");
}

TEST_P(DomTest, DocumentTakesOneRootAndIgnoresFurtherOnes) {
  DomElement* const a = make("a");
  document_->insertChild(a, make("where"));
  document_->addChild(make("b"));
  document_->insertChild(make("c"), nullptr);
  EXPECT_EQ(tarn_test::dump(*document_), "{a}");
  EXPECT_FALSE(document_->removeChild(make("d")));
  EXPECT_TRUE(document_->removeChild(a));
  EXPECT_EQ(a->getParent(), nullptr);
  EXPECT_FALSE(document_->removeChild(a));
  EXPECT_FALSE(document_->removeChild(document_.get()));
  EXPECT_DEATH(document_->removeChild(nullptr), "where && where->parent\\(\\) == this");
}

TEST_P(DomTest, DocumentHasChildrenWhileItHasARoot) {
  EXPECT_FALSE(document_->hasChildren());
  DomElement* const root = make("a");
  document_->addChild(root);
  EXPECT_TRUE(document_->hasChildren());
  EXPECT_TRUE(document_->removeChild(root));
  EXPECT_FALSE(document_->hasChildren());
}

TEST_P(DomTest, DocumentRemovesOnlyTheFirstOfItsChildren) {
  ASSERT_EQ(parse("<a/><b/>"), 0);
  DomElement* const first = root();
  IDomElement* const second = first->nextSibling("b");
  EXPECT_FALSE(document_->removeChild(second));
  EXPECT_EQ(tarn_test::dump(*document_), "{a b}");
  EXPECT_TRUE(document_->removeChild(first));
  EXPECT_TRUE(document_->removeChild(second));
  EXPECT_EQ(tarn_test::dump(*document_), "");
}

TEST_P(DomTest, DocumentFindsItsChildrenByName) {
  ASSERT_EQ(parse("<a/><b n='1'/><c/><b n='2'/><a/>"), 0);
  EXPECT_STREQ(document_->getFirstChild("b")->getAttribute("n"), "1");
  EXPECT_STREQ(document_->getLastChild("b")->getAttribute("n"), "2");
  EXPECT_EQ(document_->getFirstChild("x"), nullptr);
  EXPECT_EQ(document_->getLastChild("x"), nullptr);
}

TEST_P(DomTest, DocumentTakesARootOfAnyPool) {
  const std::unique_ptr<DomDocument> other(DomDocument::createDomDocument(GetParam()));
  document_->addChild(other->createDomElement("x", nullptr));
  EXPECT_EQ(tarn_test::dump(*document_), "{x}");
  document_.reset();
}

TEST_P(DomTest, DocumentTakesNoLinkedRootAndNoNull) {
  DomElement* const child = make("a");
  make("b")->addChild(child);
  EXPECT_DEATH(document_->addChild(child), "child && !child->parent");
  EXPECT_DEATH(document_->addChild(nullptr), "child && !child->parent");
}

TEST_P(DomTest, DocumentIsNoElementWithNameValueOrAttributes) {
  EXPECT_EQ(parse("<a><b/></a>"), 0);
  document_->setTagName("x");
  document_->setValue("x");
  document_->setAttribute("x", "y");
  document_->addAttribute(document_->createDomAttribute("x", "y"));
  EXPECT_EQ(document_->getTagName(), nullptr);
  EXPECT_EQ(document_->getValue(), nullptr);
  EXPECT_EQ(document_->getAttribute("x"), nullptr);
  EXPECT_STREQ(document_->getAttribute("x", "z"), "z");
  EXPECT_EQ(document_->getFirstAttribute("x").get(), nullptr);
  EXPECT_EQ(document_->getLastAttribute(nullptr).get(), nullptr);
  EXPECT_FALSE(document_->removeAttribute("x"));
  EXPECT_FALSE(document_->hasAttributes());
  EXPECT_TRUE(document_->hasChildren());
  EXPECT_EQ(document_->nextSibling(nullptr), nullptr);
  EXPECT_EQ(document_->previousSibling(nullptr), nullptr);
  EXPECT_EQ(document_->getParent(), nullptr);
  EXPECT_EQ(document_->getDocument(), document_.get());
  EXPECT_EQ(document_->getLastChild("a"), root());
}

TEST_P(DomTest, LastChildOfAnEmptyDocumentIsAnAssertion) {
  EXPECT_EQ(document_->getFirstChild(nullptr), nullptr);
  EXPECT_DEATH(document_->getLastChild(nullptr), "assertion failed: m_first_node");
}

TEST_P(DomTest, AllocatorMayNotComeAfterTheFirstAllocation) {
  EXPECT_DEATH(document_->useMmapPoolAllocator(), "m_begin == m_static_memory");
}

TEST_P(DomTest, CloneOfADocumentHasItsDeclarationAsAnElement) {
  EXPECT_EQ(parse("<?xml version='1.0'?><a x='1'>v<b/></a><c/>"), 0);
  const std::unique_ptr<DomDocument> copy(static_cast<DomDocument*>(document_->clone()));
  document_.reset();
  EXPECT_EQ(tarn_test::dump(*copy), "{a(x=1)\"v\"{b}}");
  EXPECT_EQ(copy->printDocument(), "< version=\"1.0\"></>\n<a x=\"1\">\n <b></b>\n</a>\n\n");
}

TEST_P(DomTest, DocumentWithoutDeclarationPrintsItsTree) {
  DomDocument bare(GetParam());
  EXPECT_EQ(bare.parse("<a/>", boost::shared_ptr<IStripper>()), 0);
  EXPECT_EQ(bare.printDocument(), "<a></a>\n\n");
}

// Elements

TEST_P(DomTest, AttributesAreSetFoundAndRemoved) {
  DomElement* const e = make("e");
  EXPECT_FALSE(e->hasAttributes());
  e->setAttribute("a", "1");
  e->setAttribute("b", "2");
  e->setAttribute("a", "3");
  EXPECT_EQ(tarn_test::dump(*e), "e(a=3 b=2)");
  EXPECT_STREQ(e->getAttribute("a"), "3");
  EXPECT_STREQ(e->getAttribute(nullptr), "3");
  EXPECT_EQ(e->getAttribute("c"), nullptr);
  EXPECT_STREQ(e->getAttribute("c", "d"), "d");
  EXPECT_STREQ(e->getLastAttribute(nullptr)->getTagName(), "b");
  EXPECT_EQ(e->getLastAttribute("c").get(), nullptr);
  EXPECT_TRUE(e->removeAttribute(nullptr));
  EXPECT_FALSE(e->removeAttribute("a"));
  EXPECT_TRUE(e->removeAttribute("b"));
  EXPECT_FALSE(e->hasAttributes());
}

TEST_P(DomTest, AddedAttributeOfAKnownNameStaysDetached) {
  DomElement* const e = make("e");
  e->setAttribute("a", "1");
  DomAttribute* const other = document_->createDomAttribute("a", "2");
  e->addAttribute(other);
  EXPECT_STREQ(e->getAttribute("a"), "1");
  EXPECT_EQ(other->parent(), nullptr);
}

TEST_P(DomTest, AddedAttributeMustBeDetached) {
  DomElement* const owner = make("e");
  owner->setAttribute("a", "1");
  DomAttribute* const linked = owner->getFirstAttribute("a").get();
  DomElement* const other = make("f");
  EXPECT_DEATH(other->addAttribute(linked), "attribute && !attribute->parent\\(\\)");
  EXPECT_DEATH(other->addAttribute(nullptr), "attribute && !attribute->parent\\(\\)");
  // Starts with a name that exists: then nothing is linked.
  other->setAttribute("a", "2");
  other->addAttribute(linked);
  EXPECT_EQ(tarn_test::dump(*owner), "e(a=1)");
  EXPECT_EQ(tarn_test::dump(*other), "f(a=2)");
}

TEST_P(DomTest, SetAttributeWithoutANameSetsTheFirst) {
  DomElement* const e = make("e");
  e->setAttribute(nullptr, "1");
  EXPECT_EQ(tarn_test::dump(*e), "e(=1)");
  EXPECT_STREQ(e->getAttribute(""), "1");
  e->setAttribute("b", "2");
  e->setAttribute(nullptr, "3");
  EXPECT_EQ(tarn_test::dump(*e), "e(=3 b=2)");
}

TEST_P(DomTest, LastAttributeOfANameIsSearchedFromTheEnd) {
  ASSERT_EQ(parse("<e a='1' b='2' a='3' b='4' c='5'/>"), 0);
  EXPECT_STREQ(root()->getLastAttribute("a")->getValue(), "3");
  EXPECT_STREQ(root()->getLastAttribute("b")->getValue(), "4");
  EXPECT_STREQ(root()->getFirstAttribute("b")->getValue(), "2");
  EXPECT_STREQ(root()->getLastAttribute(nullptr)->getValue(), "5");
}

TEST_P(DomTest, EqualAttributeValueDoesNotGrowThePool) {
  DomElement* const e = make("e", "v");
  e->setAttribute("a", "1");
  growth();
  const std::size_t nothing = growth();
  e->setAttribute("a", "1");
  e->getFirstAttribute("a")->setValue("1");
  e->getFirstAttribute("a")->setTagName("a");
  EXPECT_EQ(growth(), nothing);
  e->setAttribute("a", "1234567");
  EXPECT_EQ(growth(), nothing + 8);
  e->setValue("v");
  EXPECT_GT(growth(), nothing);
  e->setTagName("e");
  EXPECT_GT(growth(), nothing);
}

TEST_P(DomTest, AttributeTextsAreComparedUpToANulThatTheyHold) {
  ASSERT_EQ(parse("<e a='x&#0;y' b='&#0;'/>"), 0);
  const char* const before = root()->getAttribute("a");
  growth();
  const std::size_t nothing = growth();
  root()->setAttribute("a", "x");
  root()->getFirstAttribute("b")->setValue("");
  root()->getFirstAttribute("b")->setValue(nullptr);
  EXPECT_EQ(growth(), nothing);
  EXPECT_EQ(root()->getAttribute("a"), before);
  root()->setAttribute("a", "xy");
  EXPECT_STREQ(root()->getAttribute("a"), "xy");
  EXPECT_EQ(root()->getFirstAttribute("a")->value_size(), 2U);

  DomAttribute* const unset = document_->createDomAttribute(nullptr, nullptr);
  growth();
  unset->setValue("");
  unset->setTagName("");
  EXPECT_EQ(growth(), nothing);
  const char withZero[] = {'n', '\0', 'm'};
  DomAttribute* const named =
      DomFactory(document_.get()).allocateAttribute(withZero, withZero, sizeof(withZero), 2);
  growth();
  named->setTagName("n");
  named->setValue("n");
  EXPECT_EQ(growth(), nothing);
}

TEST_P(DomTest, NullNameOfAnAttributeIsAnEmptyOne) {
  DomElement* const e = make("e", "v");
  e->setAttribute("a", "1");
  libDomXml::DomAttribute& attribute = *e->getFirstAttribute("a");
  attribute.setTagName(nullptr);
  EXPECT_STREQ(attribute.getTagName(), "");
  attribute.setValue(nullptr);
  EXPECT_STREQ(attribute.getValue(), "");
  EXPECT_STREQ(e->getAttribute(""), "");
}

TEST_P(DomTest, TextsMayBeTheElementsOwn) {
  DomElement* const e = make("e", "value");
  e->setAttribute("a", "text");
  e->setAttribute("a", e->getAttribute("a") + 1);
  e->setValue(e->getValue() + 1);
  e->setTagName(e->getValue());
  EXPECT_EQ(tarn_test::dump(*e), "alue(a=ext)\"alue\"");
}

TEST_P(DomTest, AttributeIteratorWalksBothWays) {
  DomElement* const e = make("e");
  for (const char* name : {"a", "b", "c"}) e->setAttribute(name, name);
  DomAttributeIterator it = e->getAttributeIter("b");
  EXPECT_STREQ((*it).getTagName(), "b");
  EXPECT_STREQ((it++)->getTagName(), "b");
  EXPECT_STREQ(it->getValue(), "c");
  EXPECT_STREQ((it--)->getTagName(), "c");
  EXPECT_TRUE(--it == e->getFirstAttribute(nullptr));
  EXPECT_TRUE(++(++(++it)) == DomAttributeIterator(nullptr));
  EXPECT_DEATH(++it, "assertion failed: attribute");
  EXPECT_DEATH(--it, "assertion failed: attribute");
  EXPECT_DEATH(static_cast<void>(*it), "assertion failed: attribute");
  EXPECT_DEATH(static_cast<void>(it->getValue()), "assertion failed: attribute");
  DomAttributeIterator detached(document_->createDomAttribute("x", "y"));
  EXPECT_TRUE(++detached != DomAttributeIterator(document_->createDomAttribute("x", "y")));
  EXPECT_EQ(detached.get(), nullptr);
}

TEST_P(DomTest, ClonedAttributeIsDetached) {
  DomElement* const e = make("e");
  e->setAttribute("a", "1");
  DomAttribute* const copy = e->getFirstAttribute("a")->clone();
  EXPECT_EQ(copy->parent(), nullptr);
  make("f")->addAttribute(copy);
  EXPECT_STREQ(copy->getValue(), "1");
  const DomAttribute unset(document_.get());
  EXPECT_STREQ(unset.clone()->getValue(), "");
}

TEST_P(DomTest, ChildrenAreFoundLinkedAndRemoved) {
  DomElement* const e = make("e");
  EXPECT_EQ(e->getLastChild(nullptr), nullptr);
  DomElement* const a = make("a");
  DomElement* const b = make("b");
  e->addChild(b);
  e->insertChild(a, b);
  e->insertChild(make("b"), nullptr);
  EXPECT_EQ(tarn_test::dump(*e), "e{a b b}");
  EXPECT_EQ(e->getFirstChild("b"), b);
  EXPECT_EQ(e->getLastChild("a"), a);
  EXPECT_EQ(a->nextSibling("b"), b);
  EXPECT_EQ(b->previousSibling(nullptr), a);
  EXPECT_TRUE(e->removeChild(b));
  EXPECT_EQ(tarn_test::dump(*e), "e{a b}");
  EXPECT_FALSE(e->removeChild(b));
  EXPECT_FALSE(e->removeChild(nullptr));
  EXPECT_FALSE(e->removeChild(document_.get()));
  EXPECT_TRUE(e->removeChild(e->getLastChild(nullptr)));
  EXPECT_TRUE(e->removeChild(a));
  EXPECT_FALSE(e->hasChildren());
  EXPECT_EQ(e->getLastChild(nullptr), nullptr);
  EXPECT_DEATH(a->nextSibling(nullptr), "assertion failed: this->m_parent");
}

TEST_P(DomTest, SiblingsAndChildrenOfANameAreFoundPastOthers) {
  ASSERT_EQ(parse("<e><x n='1'/><a n='2'/><b n='3'/><a n='4'/><b n='5'/><y n='6'/></e>"), 0);
  const auto number = [](const IDomElement* element) {
    return element ? std::string(element->getAttribute("n")) : "none";
  };
  EXPECT_EQ(number(root()->getFirstChild("b")), "3");
  EXPECT_EQ(number(root()->getLastChild("a")), "4");
  EXPECT_EQ(number(root()->getFirstChild(nullptr)), "1");
  EXPECT_EQ(number(root()->getLastChild(nullptr)), "6");
  EXPECT_EQ(number(root()->getFirstChild("c")), "none");
  EXPECT_EQ(number(root()->getLastChild("c")), "none");

  const IDomElement* const first = root()->getFirstChild("a");
  EXPECT_EQ(number(first->nextSibling("a")), "4");
  EXPECT_EQ(number(first->nextSibling("y")), "6");
  EXPECT_EQ(number(first->nextSibling(nullptr)), "3");
  EXPECT_EQ(number(first->nextSibling("x")), "none");
  const IDomElement* const last = root()->getLastChild("b");
  EXPECT_EQ(number(last->previousSibling("b")), "3");
  EXPECT_EQ(number(last->previousSibling("x")), "1");
  EXPECT_EQ(number(last->previousSibling(nullptr)), "4");
  EXPECT_EQ(number(last->previousSibling("y")), "none");
}

TEST_P(DomTest, RemovalOfTheOnlyChildClearsBothLinks) {
  DomElement* const e = make("e");
  DomElement* const child = make("c");
  e->addChild(child);
  EXPECT_TRUE(e->removeChild(child));
  // The record has them after its texts and its kind.
  const rapidxml::xml_node<char>* const record = e;
  const void* links[2];
  std::memcpy(
      links,
      reinterpret_cast<const char*>(record) + sizeof(rapidxml::xml_base<char>) + sizeof(void*),
      sizeof(links));
  EXPECT_EQ(links[0], nullptr);
  EXPECT_EQ(links[1], nullptr);
}

TEST_P(DomTest, ParentAndDocumentFollowTheLinks) {
  EXPECT_EQ(parse("<a><b/></a>"), 0);
  IDomElement* const b = root()->getFirstChild("b");
  EXPECT_EQ(root()->getParent(), document_.get());
  EXPECT_EQ(b->getParent(), root());
  EXPECT_EQ(b->getDocument(), document_.get());
  DomElement* const detached = make("c");
  detached->addChild(make("d"));
  EXPECT_EQ(detached->getParent(), nullptr);
  EXPECT_EQ(detached->getDocument(), nullptr);
  EXPECT_EQ(detached->getFirstChild("d")->getDocument(), nullptr);
}

TEST_P(DomTest, CloneInThePoolKeepsTheKindAndInAnotherMakesAnElement) {
  EXPECT_EQ(parse("<a x='1'>v<b y='2'/><c>w</c></a>"), 0);
  EXPECT_EQ(tarn_test::dump(*static_cast<DomElement*>(root()->clone())), tarn_test::dump(*root()));
  const std::unique_ptr<DomDocument> other(DomDocument::createDomDocument(false));
  auto* const copy = static_cast<DomElement*>(root()->clone(other.get()));
  EXPECT_EQ(copy->getDomFactory()->getMemoryPool(), other.get());
  EXPECT_EQ(tarn_test::dump(*copy), "a(x=1)\"v\"{b(y=2) c\"w\"}");
  const IDomElement* const declaration = document_->getDocumentDeclaration();
  EXPECT_EQ(static_cast<DomElement*>(declaration->clone())->type(), rapidxml::node_declaration);
  EXPECT_EQ(static_cast<DomElement*>(declaration->clone(other.get()))->type(),
            rapidxml::node_element);
}

// Copies have each name once, with its first value. From the 33rd attribute on, a copy looks names
// up in another structure.
TEST_P(DomTest, CopyHasTheFirstAttributeOfEachName) {
  const std::unique_ptr<DomDocument> other(DomDocument::createDomDocument(GetParam()));
  for (const int count : {1, 31, 32, 33, 34, 100}) {
    SCOPED_TRACE(count);
    std::string attributes;
    std::string expected;
    for (int i = 0; i < count; ++i) {
      const std::string name = "a" + std::to_string(i);
      attributes += ' ' + name + "='first'";
      // The same name soon, and after many others.
      attributes += " a0='again' " + name + "='again'";
      expected += (i == 0 ? "" : " ") + name + "=first";
    }
    attributes += " a" + std::to_string(count - 1) + "='last' a0='last'";
    ASSERT_EQ(parse("<e" + attributes + "/>"), 0);
    EXPECT_EQ(tarn_test::dump(*static_cast<DomElement*>(root()->clone())), "e(" + expected + ')');
    EXPECT_EQ(tarn_test::dump(*static_cast<DomElement*>(root()->clone(other.get()))),
              "e(" + expected + ')');
  }
}

TEST_P(DomTest, CopyHasAllOfManyAttributesInTheirOrder) {
  for (const int count : {31, 32, 33, 34, 100}) {
    SCOPED_TRACE(count);
    DomElement* const e = make("e");
    for (int i = 0; i < count; ++i) {
      e->setAttribute(("a" + std::to_string(i)).c_str(), std::to_string(i).c_str());
    }
    EXPECT_EQ(tarn_test::dump(*static_cast<DomElement*>(e->clone())), tarn_test::dump(*e));
  }
}

// A host class that overrides the copy.
struct OwnCopy : DomElement {
  using DomElement::DomElement;
  IDomElement* clone() const override {
    return DomFactory(domFactory_.getMemoryPool())
        .allocateNode(rapidxml::node_element, "own", getTagName(), 0, 0);
  }
};

TEST_P(DomTest, CopyAsksElementsOfOtherClassesForTheirs) {
  DomElement* const e = make("e");
  DomElement* const middle = make("middle");
  e->addChild(middle);
  for (const char* name : {"first", "last"}) {
    auto* const own =
        new (DomFactory(document_.get()).allocateObject(sizeof(OwnCopy))) OwnCopy(document_.get());
    own->setTagName(name);
    own->addChild(make("below"));
    middle->addChild(own);
    middle->addChild(make("plain", name));
  }
  EXPECT_EQ(tarn_test::dump(*static_cast<DomElement*>(e->clone())),
            "e{middle{own\"first\" plain\"first\" own\"last\" plain\"last\"}}");
}

TEST_P(DomTest, ObjectsOfDifferentPoolsAreNotLinked) {
  const std::unique_ptr<DomDocument> other(DomDocument::createDomDocument(false));
  DomElement* const e = make("e");
  const char* const element =
      "domFactory_.getMemoryPool\\(\\) == newDomElement->getDomFactory\\(\\)->getMemoryPool\\(\\)";
  EXPECT_DEATH(e->addChild(other->createDomElement("x", nullptr)), element);
  EXPECT_DEATH(e->insertChild(other->createDomElement("x", nullptr), nullptr), element);
  EXPECT_DEATH(e->addAttribute(other->createDomAttribute("x", nullptr)),
               "domFactory_.getMemoryPool\\(\\) == newDomAttribute->getDomFactory");
  EXPECT_DEATH(e->addChild(document_.get()), "child && !child->parent");
  EXPECT_DEATH(e->addChild(nullptr), "child && !child->parent");
  EXPECT_DEATH(e->insertChild(make("x"), document_.get()),
               "!where \\|\\| where->parent\\(\\) == this");
}

TEST_P(DomTest, ElementIsNoChildOfItselfOrOfWhatIsBelowIt) {
  DomElement* const top = make("top");
  DomElement* const middle = make("middle");
  DomElement* const bottom = make("bottom");
  top->addChild(middle);
  middle->addChild(bottom);
  const char* const ring = "assertion failed: child is no ancestor";
  EXPECT_DEATH(bottom->addChild(bottom), "child && !child->parent");
  EXPECT_DEATH(top->addChild(top), ring);
  EXPECT_DEATH(middle->addChild(top), ring);
  EXPECT_DEATH(bottom->addChild(top), ring);
  EXPECT_DEATH(middle->insertChild(top, bottom), ring);
  EXPECT_DEATH(middle->insertChild(top, nullptr), ring);
  DomElement* const alone = make("alone");
  EXPECT_DEATH(alone->addChild(alone), ring);
  DomElement* const other = make("other");
  other->addChild(top);
  EXPECT_EQ(tarn_test::dump(*other), "other{top{middle{bottom}}}");
}

TEST_P(DomTest, FactoryCopiesTextsByTheirSizes) {
  DomFactory factory(document_.get());
  EXPECT_EQ(std::string(factory.allocateString("abc", 2), 2), "ab");
  EXPECT_STREQ(factory.allocateString("", 0), "");
  EXPECT_DEATH(factory.allocateString(nullptr, 0), "assertion failed: source \\|\\| size");
  const char name[] = "name";
  const DomElement* const element = factory.allocateNode(rapidxml::node_pi, name, "value", 2, 0);
  EXPECT_EQ(element->type(), rapidxml::node_pi);
  EXPECT_EQ(element->name_size(), 2U);
  EXPECT_NE(element->name(), name);
  EXPECT_STREQ(element->getValue(), "value");
  if (sizeof(std::size_t) > 4) {
    EXPECT_THROW(factory.allocateString(nullptr, std::size_t{1} << 20U << 20U), std::bad_alloc);
  }
  IMemoryPool nothing;
  EXPECT_DEATH(DomFactory(&nothing).allocateAttribute("a", "b", 0, 0), "assertion failed: memory");
}

// Host memory with a fill byte, which shows writes after the end of a text.
struct FilledMemory : IMemoryPool {
  void* allocateMemory(unsigned int size) override {
    sizes.push_back(size);
    memory.emplace_back(new char[size + 1]);
    std::memset(memory.back().get(), '?', size + 1);
    return memory.back().get();
  }
  std::vector<unsigned int> sizes;
  std::vector<std::unique_ptr<char[]>> memory;
};

TEST(DomFactoryTest, StringOfASizeTakesNoMoreAndGetsNoTerminator) {
  FilledMemory memory;
  DomFactory factory(&memory);
  EXPECT_EQ(std::string(factory.allocateString("abcdef", 2), 3), "ab?");
  EXPECT_EQ(std::string(factory.allocateString(nullptr, 2), 3), "???");
  EXPECT_STREQ(factory.allocateString("abc", 0), "abc");
  EXPECT_EQ(memory.sizes, (std::vector<unsigned int>{2, 2, 4}));
}

TEST_P(DomTest, NodesAndAttributesTakeGivenOrMeasuredTexts) {
  const auto* const element =
      document_->allocate_node(rapidxml::node_element, "name", "value", 0, 3);
  EXPECT_EQ(tarn_test::dump(*element), "name\"val\"");
  const auto* const measured = document_->allocate_node(rapidxml::node_pi, nullptr, "value", 0, 0);
  EXPECT_EQ(measured->type(), rapidxml::node_pi);
  EXPECT_EQ(measured->value_size(), 5U);
  const auto* const attribute = document_->allocate_attribute("name", "value", 2, 4);
  EXPECT_EQ(std::string(attribute->name(), attribute->name_size()), "na");
  EXPECT_EQ(std::string(attribute->value(), attribute->value_size()), "valu");
  EXPECT_EQ(document_->allocate_attribute(nullptr, "value", 0, 0)->value_size(), 5U);
}

// A text that came with a size has no terminating NUL: after eight characters there is no gap
// before the next allocation of the pool.
TEST_P(DomTest, TextsWithSizesAreCopiedAndComparedByThem) {
  DomFactory factory(document_.get());
  DomElement* const element =
      factory.allocateNode(rapidxml::node_element, "elementsX", "contentsX", 8, 8);
  DomAttribute* const attribute = factory.allocateAttribute("propertyX", "quantityX", 8, 8);
  element->addAttribute(attribute);
  element->addAttribute(factory.allocateAttribute("propertyY", "other", 8, 0));
  element->addAttribute(factory.allocateAttribute("property", "other", 0, 0));
  EXPECT_EQ(tarn_test::dump(*element), "elements(property=quantity)\"contents\"");
  const std::unique_ptr<DomDocument> other(DomDocument::createDomDocument(GetParam()));
  for (const auto* copy : {static_cast<DomElement*>(element->clone()),
                           static_cast<DomElement*>(element->clone(other.get()))}) {
    EXPECT_STREQ(copy->getTagName(), "elements");
    EXPECT_STREQ(copy->getValue(), "contents");
    EXPECT_STREQ(copy->getAttribute("property"), "quantity");
    EXPECT_EQ(tarn_test::dump(*copy), "elements(property=quantity)\"contents\"");
  }
  const char* const before = attribute->getValue();
  attribute->setValue("quantity");
  attribute->setTagName("property");
  EXPECT_EQ(attribute->getValue(), before);
  attribute->setValue("quantityX");
  EXPECT_STREQ(element->getAttribute("property"), "quantityX");
}

// A host class that overrides rapidParse() and may refuse a text.
struct Refusing : DomDocument {
  Refusing() : DomDocument(false) {}
  int rapidParse(char* text) override { return refuses ? 1 : DomDocument::rapidParse(text); }
  bool refuses = false;
};

TEST(DomDocumentTest, RefusedTextLeavesNothingOverTheTextBefore) {
  const boost::shared_ptr<IStripper> none;
  for (const bool isCopied : {false, true}) {
    SCOPED_TRACE(isCopied);
    Refusing document;
    EXPECT_EQ(document.parse("<?xml a='b'?><a x='y'>text</a>", none), 0);
    const DomElement& earlier = *static_cast<DomElement*>(document.getFirstChild("a"));
    document.refuses = true;
    EXPECT_EQ(isCopied ? document.parse("<b/>", none) : document.parse(textOf("<b/>")), 1);
    EXPECT_EQ(earlier.parent(), nullptr);
    EXPECT_EQ(document.printDocument(), "<?xml a=\"b\"?>\n\n");
  }
}

// A host's own memory.
struct CountingMemory : DomDocument {
  CountingMemory() : DomDocument(false) {}
  void* allocateMemory(unsigned int size) override {
    sizes.push_back(size);
    return DomDocument::allocateMemory(size);
  }
  std::vector<std::size_t> sizes;
};

TEST(DomDocumentTest, OwnMemoryOfAHostIsAskedForEveryNodeAndAttributeOfAText) {
  CountingMemory document;
  EXPECT_EQ(document.parse(textOf("<a x='1'><b y='2'/></a>")), 0);
  const std::vector<std::size_t> expected = {sizeof(DomElement), sizeof(DomAttribute),
                                             sizeof(DomElement), sizeof(DomAttribute)};
  EXPECT_EQ(document.sizes, expected);
  document.sizes.clear();
  EXPECT_NE(document.allocate_node(rapidxml::node_element, nullptr, nullptr, 0, 0), nullptr);
  EXPECT_NE(document.allocate_attribute(nullptr, nullptr, 0, 0), nullptr);
  EXPECT_EQ(document.sizes, (std::vector<std::size_t>{sizeof(DomElement), sizeof(DomAttribute)}));
}

// The number of a virtual function in the table of its class.
template <class Function>
std::size_t slotOf(Function function) {
  std::uintptr_t word = 0;
  std::memcpy(&word, &function, sizeof(word));
  return word / sizeof(void*);
}

TEST(DomDocumentTest, VirtualFunctionsHaveTheirOrder) {
  struct Derived : DomDocument {
    Derived() : DomDocument(false) {}
    virtual void next() {}
  };
  const std::size_t slots[] = {
      slotOf(&DomDocument::hasAttributes),
      slotOf(&DomDocument::getParent),
      slotOf(&DomDocument::getDocument),
      slotOf<int (DomDocument::*)(const char*, boost::shared_ptr<IStripper>)>(&DomDocument::parse),
      slotOf<int (DomDocument::*)(std::unique_ptr<char[]>)>(&DomDocument::parse),
      slotOf(&DomDocument::getDocumentDeclaration),
      slotOf(&DomDocument::createDomElement),
      slotOf(&DomDocument::createDomAttribute),
      slotOf(&DomDocument::printDocument),
      slotOf(&DomDocument::rapidParse),
      slotOf(&DomDocument::allocateMemory),
      slotOf(&DomDocument::deallocateMemory),
      slotOf(&DomDocument::allocate_node),
      slotOf(&DomDocument::allocate_attribute),
      slotOf(&Derived::next)};
  // The functions of an element come after the two of the destructor.
  std::size_t expected = 24;
  for (const std::size_t slot : slots) EXPECT_EQ(slot, expected++);
}

// Counts the blocks of the heap as a parse begins.
struct CountingBlocks : DomDocument {
  CountingBlocks() : DomDocument(true) {}
  int rapidParse(char* text) override {
    blocks = tarn_test::heapBlocks();
    return DomDocument::rapidParse(text);
  }
  std::size_t blocks = 0;
};

// Only one text exists at a time when the next one is passed for copying.
TEST(DomDocumentTest, TextOfAnEarlierParseIsFreedBeforeTheNextParse) {
  CountingBlocks document;
  const boost::shared_ptr<IStripper> none;
  EXPECT_EQ(document.parse("<a/>", none), 0);
  const std::size_t first = document.blocks;
  EXPECT_EQ(document.parse("<b/>", none), 0);
  EXPECT_EQ(document.blocks, first);
  // The text may be in the buffer that is freed.
  EXPECT_EQ(document.parse("<a>text</a>", none), 0);
  EXPECT_EQ(document.parse(document.getFirstChild("a")->getValue(), none), 1);
}

TEST(DomDocumentTest, TextThatWasHandedOverIsFreedWhenTheNextCallEnds) {
  CountingBlocks document;
  EXPECT_EQ(document.parse(textOf("<a/>")), 0);
  const std::size_t during = document.blocks;
  const std::size_t after = tarn_test::heapBlocks();
  for (const char* text : {"<b/>", "<c"}) {
    document.parse(textOf(text));
    EXPECT_EQ(document.blocks, during + 1) << text;
    EXPECT_EQ(tarn_test::heapBlocks(), after) << text;
  }
}

TEST(DomDocumentTest, OnlyADocumentThatIsAskedToTakesItsBlocksFromMaps) {
  constexpr unsigned int MORE_THAN_A_BLOCK = 300000;
  const auto blocksFor = [](DomDocument& document) {
    const std::size_t before = tarn_test::heapAllocations();
    document.allocateMemory(MORE_THAN_A_BLOCK);
    return tarn_test::heapAllocations() - before;
  };
  for (const bool useMmap : {false, true}) {
    SCOPED_TRACE(useMmap);
    const std::size_t fromTheHeap = useMmap ? 0 : 1;
    DomDocument constructed(useMmap);
    EXPECT_EQ(blocksFor(constructed), fromTheHeap);
    const std::unique_ptr<DomDocument> created(DomDocument::createDomDocument(useMmap));
    EXPECT_EQ(blocksFor(*created), fromTheHeap);
    const std::unique_ptr<DomDocument> copy(static_cast<DomDocument*>(created->clone()));
    EXPECT_EQ(blocksFor(*copy), 1U);
    const std::unique_ptr<DomDocument> other(
        static_cast<DomDocument*>(created->clone(created.get())));
    EXPECT_EQ(blocksFor(*other), 1U);
  }
}

TEST_P(DomTest, AMillionNestedElementsAreCopiedOnASmallStack) {
  constexpr std::size_t depth = 1000000;
  std::string text;
  for (std::size_t i = 0; i < depth; ++i) text += "<a>";
  for (std::size_t i = 0; i < depth; ++i) text += "</a>";
  tarn_test::runOnSmallStack([&] {
    ASSERT_EQ(parse(text), 0);
    const std::unique_ptr<DomDocument> other(DomDocument::createDomDocument(GetParam()));
    for (const auto* copy : {static_cast<DomElement*>(root()->clone()),
                             static_cast<DomElement*>(root()->clone(other.get()))}) {
      std::string printed;
      rapidxml::print_node(printed, copy, rapidxml::print_no_indenting, 0);
      EXPECT_TRUE(printed == text);
    }
  });
}

TEST(DomDocumentTest, MapsKnowTheirLength) {
  void* const memory = DomDocument::mmapAlloc(5000);
  ASSERT_NE(memory, nullptr);
  EXPECT_EQ(static_cast<std::size_t*>(memory)[-1], 5000 + sizeof(std::size_t));
  static_cast<char*>(memory)[4999] = 'x';
  DomDocument::mmapFree(memory);
  EXPECT_EQ(DomDocument::mmapAlloc(static_cast<std::size_t>(-1)), nullptr);
  // Larger than any address space, and not a multiple of a page.
  EXPECT_EQ(DomDocument::mmapAlloc(static_cast<std::size_t>(-1) - 5000), nullptr);
}

}  // namespace
