#pragma once

// The tree of a text that a load refuses.
//
// The parser asks the document for every node. Where a TarnDomDocument refuses a tag that the model
// does not know, this one gives the parser an untyped node, and the parse goes on. Where the parser
// ends at malformed XML, it leaves the elements that are open there detached, without their
// complete children being reachable from the root: this document links them again.

#include <cstddef>
#include <vector>

#include "libtarn/model/TarnDomDocument.hpp"

namespace libtarn {
namespace model {
namespace validation {

/// An element that the model does not know, at any depth. No rule is about it or what is below.
class UnknownElement : public TarnDomElement {
 public:
  UnknownElement(libDomXml::IMemoryPool* pool, rapidxml::node_type type, std::size_t offset);

  /// Byte offset of its "<".
  std::size_t getOffset() const { return offset_; }

  /// Not to be used: returns null.
  TarnDomElement* clone(util::TarnFactory& factory) const override;
  void dispatchToChildren(Validator& validator) const override;
  void dispatchToSelf(Validator& validator) const override;
  void updatePath(Validator& validator) const override;

 private:
  std::size_t offset_;
};

/// A document for one text, of which as much as possible is read. Its indexes stay empty.
class TolerantDocument : public TarnDomDocument {
 public:
  using Node = rapidxml::xml_node<char>;

  TolerantDocument();

  /// Takes over `text` and parses it. Called once.
  void read(std::vector<char>& text);

  /// The parser's message when the text is malformed, or null.
  const char* getParseError() const { return parseError_; }
  /// Byte offset at which the parser ended, when the text is malformed.
  std::size_t getParseErrorOffset() const { return parseErrorOffset_; }
  /// The elements that were open then, outermost first, each the last child of the one before. The
  /// one whose start tag came last is left out, since the tag may not be complete, but for an
  /// UnknownElement.
  const std::vector<TarnDomElement*>& getOpenElements() const { return open_; }

  /// Whether the text has a root, outside of every other element.
  bool hasRoot() const;
  /// Whether there is an UnknownElement.
  bool hasUnknownElement() const { return hasUnknownElement_; }
  /// Byte offset of the "<" of an element of this document, or util::NO_OFFSET.
  std::size_t offsetOf(const TarnDomElement& element) const;

  TarnDomElement* allocate_node(rapidxml::node_type type, const char* name, const char* value,
                                std::size_t nameSize, std::size_t valueSize) override;

 private:
  UnknownElement* makeUnknownElement(rapidxml::node_type type);
  void linkOpenElements();
  void leaveInnermost();

  const char* parseError_ = nullptr;
  std::size_t parseErrorOffset_ = 0;
  bool hasUnknownElement_ = false;
  std::size_t rootOffset_;
  std::vector<TarnDomElement*> allocated_;  // by the parser; empty after the parse
  std::vector<TarnDomElement*> open_;
};

}  // namespace validation
}  // namespace model
}  // namespace libtarn
