#include "differential/peers.hpp"

#include <expat.h>
#include <libxml/parser.h>
#include <libxml/tree.h>

#include <vector>

#include "libtarn/DomDocument.hpp"

namespace tarn_test {

namespace {

bool isBlank(const std::string& text) {
  return text.find_first_not_of(" \t\r\n") == std::string::npos;
}

// Builds the tree from the events of a parser, in document order.
class Builder {
 public:
  void start(std::string tag) {
    endRun();
    ReferenceElement element;
    element.tag = std::move(tag);
    open_.push_back(std::move(element));
  }
  void attribute(std::string name, std::string value) {
    open_.back().attributes.emplace_back(std::move(name), std::move(value));
  }
  void text(const std::string& piece) { run_ += piece; }
  void endRun() {
    if (!open_.empty() && open_.back().value.empty() && !isBlank(run_)) open_.back().value = run_;
    run_.clear();
  }
  void end() {
    endRun();
    ReferenceElement element = std::move(open_.back());
    open_.pop_back();
    (open_.empty() ? root_ : open_.back()).children.push_back(std::move(element));
  }
  ReferenceElement root() const { return root_.children.front(); }

 private:
  std::vector<ReferenceElement> open_;
  ReferenceElement root_;
  std::string run_;
};

std::string fromXml(const xmlChar* text) {
  return text ? reinterpret_cast<const char*>(text) : std::string();
}

// Names with their prefixes, and declarations of namespaces as the attributes that they are written
// as; before the others, since their place is not kept.
std::string nameOf(const xmlNs* space, const xmlChar* name) {
  return space && space->prefix ? fromXml(space->prefix) + ":" + fromXml(name) : fromXml(name);
}

void build(const xmlNode& node, Builder& builder) {
  builder.start(nameOf(node.ns, node.name));
  for (const xmlNs* space = node.nsDef; space; space = space->next) {
    builder.attribute(space->prefix ? "xmlns:" + fromXml(space->prefix) : "xmlns",
                      fromXml(space->href));
  }
  for (const xmlAttr* attribute = node.properties; attribute; attribute = attribute->next) {
    builder.attribute(nameOf(attribute->ns, attribute->name),
                      attribute->children ? fromXml(attribute->children->content) : "");
  }
  for (const xmlNode* child = node.children; child; child = child->next) {
    if (child->type == XML_ELEMENT_NODE) {
      build(*child, builder);
    } else if (child->type == XML_TEXT_NODE) {
      builder.text(fromXml(child->content));
    } else {
      builder.endRun();
    }
  }
  builder.end();
}

void onStart(void* data, const XML_Char* name, const XML_Char** attributes) {
  auto& builder = *static_cast<Builder*>(data);
  builder.start(name);
  for (; *attributes; attributes += 2) builder.attribute(attributes[0], attributes[1]);
}

void onEnd(void* data, const XML_Char* /*name*/) { static_cast<Builder*>(data)->end(); }

void onText(void* data, const XML_Char* text, int length) {
  static_cast<Builder*>(data)->text(std::string(text, static_cast<std::size_t>(length)));
}

void onComment(void* data, const XML_Char* /*text*/) { static_cast<Builder*>(data)->endRun(); }

void onInstruction(void* data, const XML_Char* /*target*/, const XML_Char* /*text*/) {
  static_cast<Builder*>(data)->endRun();
}

}  // namespace

std::optional<ReferenceElement> parsedByCore(const std::string& text) {
  std::string copy = text;
  libDomXml::DomDocument document(false);
  if (document.rapidParse(copy.data()) != 0) return std::nullopt;
  const rapidxml::xml_node<char>* node = document.first_node();
  while (node && node->type() != rapidxml::node_element) node = node->next_sibling();
  return node ? toReferenceTree(*node) : ReferenceElement();
}

std::optional<ReferenceElement> parsedByLibxml2(const std::string& text) {
  xmlDoc* const document =
      xmlReadMemory(text.data(), static_cast<int>(text.size()), nullptr, nullptr,
                    XML_PARSE_NONET | XML_PARSE_NOERROR | XML_PARSE_NOWARNING | XML_PARSE_HUGE);
  if (!document) return std::nullopt;
  Builder builder;
  build(*xmlDocGetRootElement(document), builder);
  xmlFreeDoc(document);
  return builder.root();
}

std::optional<ReferenceElement> parsedByExpat(const std::string& text) {
  XML_Parser const parser = XML_ParserCreate(nullptr);
  Builder builder;
  XML_SetUserData(parser, &builder);
  XML_SetElementHandler(parser, onStart, onEnd);
  XML_SetCharacterDataHandler(parser, onText);
  XML_SetCommentHandler(parser, onComment);
  XML_SetProcessingInstructionHandler(parser, onInstruction);
  const bool parsed =
      XML_Parse(parser, text.data(), static_cast<int>(text.size()), 1) == XML_STATUS_OK;
  XML_ParserFree(parser);
  if (!parsed) return std::nullopt;
  return builder.root();
}

}  // namespace tarn_test
