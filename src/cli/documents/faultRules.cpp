#include "documents/faultRules.hpp"

#include <algorithm>
#include <string_view>

namespace tarn {

using libtarn::util::XmlFault;
using ModelKind = libtarn::model::validation::Finding::Kind;
using XmlKind = XmlFault::Kind;

// Programs keep the ids, for instance in lists of findings that are accepted. docs/guide.md lists
// them.

Rule ruleOf(ModelKind kind) {
  switch (kind) {
    case ModelKind::MalformedXml:
      return {"malformed-xml", "The text ends a load: it is not XML as tarn reads it"};
    case ModelKind::UnknownElement:
      return {"unknown-element", "An element has a tag that the format does not have"};
    case ModelKind::RootNamespace:
      return {"root-namespace", "The root has the xmlns tarn21.xsd"};
    case ModelKind::RootVersion:
      return {"root-version", "The root has a version"};
    case ModelKind::BodyType:
      return {"body-type", "A cmData has the type actual, plan or defaults"};
    case ModelKind::LogTime:
      return {"log-time", "A log has a dateTime"};
    case ModelKind::LogAction:
      return {"log-action", "A log has an action"};
    case ModelKind::ObjectClass:
      return {"object-class", "A managedObject has a class"};
    case ModelKind::ObjectName:
      return {"object-name", "A managedObject has a distName"};
    case ModelKind::InvalidObjectName:
      return {"invalid-object-name", "A distName is a distinguished name"};
    case ModelKind::ObjectOperation:
      return {"object-operation", "An operation is create, delete, update or auto"};
    case ModelKind::ParameterName:
      return {"parameter-name", "A p outside of a list has a name"};
    case ModelKind::ListName:
      return {"list-name", "A list has a name"};
    case ModelKind::RootBody:
      return {"root-body", "The root has one cmData"};
    case ModelKind::BodyHeader:
      return {"body-header", "A cmData has one header"};
    case ModelKind::PlanWithoutObject:
      return {"plan-without-object", "A cmData of type plan has a managedObject"};
    case ModelKind::MixedList:
      return {"mixed-list", "A list does not hold both p and item"};
    case ModelKind::DuplicateObject:
      return {"duplicate-object", "No two managedObject of a cmData have one distName"};
    case ModelKind::DuplicateParameter:
      return {"duplicate-parameter", "No two p of a managedObject have one name"};
    case ModelKind::DuplicateList:
      return {"duplicate-list", "No two list of a managedObject have one name"};
    case ModelKind::DuplicateComponent:
      return {"duplicate-component", "No two p of an item have one name"};
  }
  return {};
}

Rule ruleOf(XmlKind kind) {
  switch (kind) {
    case XmlKind::Encoding:
    case XmlKind::NulByte:
      return {"encoding", "The file is a text in UTF-8, or in US-ASCII"};
    case XmlKind::NoRoot:
      return {"no-root", "A text has a root element"};
    case XmlKind::SecondRoot:
      return {"second-root", "A text has one root element"};
    case XmlKind::TextOutsideRoot:
      return {"text-outside-root", "No text stands outside of the root element"};
    case XmlKind::ForbiddenCharacter:
      return {"forbidden-character", "XML does not allow this character"};
    case XmlKind::InvalidUtf8:
      return {"invalid-utf-8", "The bytes are valid UTF-8"};
    case XmlKind::EndTagMismatched:
      return {"end-tag-mismatched", "An end tag belongs to an element that is open"};
    case XmlKind::EndTagMissing:
      return {"end-tag-missing", "An element has an end tag"};
    case XmlKind::EndTagWithoutStart:
      return {"end-tag-without-start", "An end tag has a start tag"};
    case XmlKind::UnclosedTag:
      return {"unclosed-tag", "A tag ends with >"};
    case XmlKind::MalformedTag:
      return {"malformed-tag", "A tag holds a name and attributes"};
    case XmlKind::InvalidName:
      return {"invalid-name", "A name has only characters that XML allows in names"};
    case XmlKind::MissingBlank:
      return {"missing-blank", "A blank stands between attributes"};
    case XmlKind::MissingEquals:
      return {"missing-equals", "An attribute has = and a value"};
    case XmlKind::MissingQuote:
      return {"missing-quote", "The value of an attribute is in quotes"};
    case XmlKind::DuplicateAttribute:
      return {"duplicate-attribute", "No two attributes of an element have one name"};
    case XmlKind::LessThanInValue:
      return {"less-than-in-value", "< in the value of an attribute is written &lt;"};
    case XmlKind::LessThanInText:
      return {"less-than-in-text", "< in a text is written &lt;"};
    case XmlKind::CdataEndInText:
      return {"cdata-end-in-text", "]]> in a text is written ]]&gt;"};
    case XmlKind::MalformedReference:
      return {"malformed-reference", "& that begins no reference is written &amp;"};
    case XmlKind::UnknownEntity:
      return {"unknown-entity", "An entity that is used is declared"};
    case XmlKind::ForbiddenReference:
      return {"forbidden-reference", "A reference is to a character that XML allows"};
    case XmlKind::UnknownMarkup:
      return {"unknown-markup", "What begins with <! is markup that XML knows"};
    case XmlKind::DashesInComment:
      return {"dashes-in-comment", "A comment does not hold --"};
    case XmlKind::UnclosedComment:
      return {"unclosed-comment", "A comment has an end"};
    case XmlKind::UnclosedCdata:
      return {"unclosed-cdata", "A CDATA section has an end"};
    case XmlKind::UnclosedInstruction:
      return {"unclosed-instruction", "A processing instruction has an end"};
    case XmlKind::ReservedTarget:
      return {"reserved-target", "No processing instruction is named xml"};
    case XmlKind::MalformedDeclaration:
      return {"malformed-declaration", "The declaration has version, encoding, standalone"};
    case XmlKind::MisplacedDeclaration:
      return {"misplaced-declaration", "The declaration is at the start of the text"};
    case XmlKind::MalformedDoctype:
      return {"malformed-doctype", "A document type declaration has a name"};
    case XmlKind::MisplacedDoctype:
      return {"misplaced-doctype", "A document type declaration is before the root"};
    case XmlKind::UnclosedDoctype:
      return {"unclosed-doctype", "A document type declaration has an end"};
  }
  return {};
}

namespace {

template <class Kind>
void appendRules(Kind last, std::vector<Rule>& rules) {
  for (unsigned i = 0; i <= static_cast<unsigned>(last); ++i) {
    const Rule rule = ruleOf(static_cast<Kind>(i));
    const bool isThere = std::any_of(rules.begin(), rules.end(), [&rule](const Rule& each) {
      return std::string_view(each.id) == rule.id;
    });
    if (!isThere) rules.push_back(rule);
  }
}

}  // namespace

std::vector<Rule> allRules() {
  std::vector<Rule> rules;
  appendRules(ModelKind::DuplicateComponent, rules);
  appendRules(XmlKind::UnclosedDoctype, rules);
  return rules;
}

}  // namespace tarn
