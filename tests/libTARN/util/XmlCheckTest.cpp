#include <gtest/gtest.h>

#include <algorithm>
#include <new>
#include <ostream>
#include <random>
#include <string>
#include <vector>

#include "libtarn/util/XmlCheck.hpp"
#include "support/HeapCount.hpp"
#include "support/SmallStack.hpp"

namespace {

using namespace std::string_literals;
using libtarn::util::checkXml;
using libtarn::util::checkXmlTags;
using libtarn::util::NO_OFFSET;
using libtarn::util::XmlFault;
using libtarn::util::XmlFaults;
using Kind = XmlFault::Kind;

struct Expected {
  Kind kind;
  std::size_t offset;
  std::string message;
  std::size_t relatedOffset = NO_OFFSET;
  std::string relatedMessage = {};
};

std::string describe(int kind, std::size_t offset, const std::string& message,
                     std::size_t relatedOffset, const std::string& relatedMessage) {
  std::string text =
      "kind " + std::to_string(kind) + " at " + std::to_string(offset) + ": " + message;
  if (relatedOffset == NO_OFFSET) return text;
  return text + "; at " + std::to_string(relatedOffset) + ": " + relatedMessage;
}

std::string describe(const XmlFault& fault) {
  return describe(static_cast<int>(fault.kind), fault.offset, fault.message, fault.relatedOffset,
                  fault.relatedMessage);
}

std::string describe(const Expected& fault) {
  return describe(static_cast<int>(fault.kind), fault.offset, fault.message, fault.relatedOffset,
                  fault.relatedMessage);
}

template <class Fault>
std::vector<std::string> describeAll(const std::vector<Fault>& faults) {
  std::vector<std::string> lines;
  lines.reserve(faults.size());
  for (const Fault& fault : faults) lines.push_back(describe(fault));
  return lines;
}

struct Row {
  const char* name;
  std::string text;
  std::vector<Expected> faults;
};

void PrintTo(const Row& row, std::ostream* out) { *out << row.name; }

class XmlCheckTest : public testing::TestWithParam<Row> {};

TEST_P(XmlCheckTest, FindsTheFaultsOfARow) {
  const Row& row = GetParam();
  const XmlFaults found = checkXml(row.text);
  EXPECT_EQ(describeAll(found.list), describeAll(row.faults)) << row.text;
  EXPECT_EQ(found.count, row.faults.size());
  EXPECT_EQ(checkXml(row.text, 0).count, row.faults.size());
  EXPECT_TRUE(checkXml(row.text, 0).list.empty());
}

const char* const FIRST_ROOT = "the first one is here";
const char* const TAG_BEGINS = "the tag begins here";
const char* const FIRST_ATTRIBUTE = "the first one is here";
const char* const NO_CLOSING_QUOTE = "the value of an attribute has no closing quote";
const char* const NO_QUOTES = "the value of an attribute has no quotes";
const char* const NO_EQUALS = "\"=\" is missing after an attribute's name";
const char* const OUTSIDE = "text outside the root element";
const char* const NO_REFERENCE = "\"&\" begins no reference; write &amp;";
const char* const NO_TAG = "\"<\" begins no tag; write &lt;";
const char* const NO_CHARACTER = "not UTF-8: no character begins with this byte";
const char* const CUT_OFF = "not UTF-8: a character of several bytes is cut off";
const char* const OVERLONG = "not UTF-8: a character is written with more bytes than it needs";
const char* const BEYOND = "not UTF-8: a character beyond U+10FFFF";
const char* const MALFORMED_DECLARATION = "the XML declaration is malformed";

std::string forbidden(const std::string& name) {
  return "the character " + name + " is not allowed in XML";
}

const std::vector<Row>& rows() {
  static const std::vector<Row> all = {
      // What is no fault.
      {"EmptyElement", "<a/>", {}},
      {"EverythingAtOnce",
       "\xEF\xBB\xBF<?xml version='1.0' encoding=\"utf-8\" standalone='no' ?>\r\n<!-- - -->"
       "<!DOCTYPE a SYSTEM 'x>' [<!ENTITY b \"]>\"><!-- ]' --><?c ]'?>]>\n<a b = '\"' c=\">\">&amp;"
       "&#x9;&#1114111;]]<![CDATA[<&]]>\x7F\xC2\x80\xF4\x8F\xBF\xBF</a\t><?d?><!---->",
       {}},
      {"NamesOfTheFifthEdition", "<\xC3\x80:\xC2\xB7 _-.1='' \xF0\x90\x80\x80=''/>", {}},
      {"EntityWithADocumentType", "<!DOCTYPE a><a>&b;</a>", {}},
      {"VersionOnePointTen", "<?xml version='1.10'?><a/>", {}},
      {"AsciiThatIsAscii", "<?xml version='1.0' encoding='US-ascii'?><a/>", {}},

      // End tags.
      {"WrongEndTag",
       "<a><p name=\"x\">1</q></p></a>",
       {{Kind::EndTagMismatched, 16, "</p> expected for <p name=\"x\">, found </q>", 3,
         "<p name=\"x\"> is opened here"}}},
      {"WrongEndTagInsteadOfTheRightOne",
       "<a><p>1</q></a>",
       {{Kind::EndTagMismatched, 7, "</p> expected for <p>, found </q>", 3, "<p> is opened here"}}},
      {"EndTagOfAnOuterElement",
       "<a><b c='>'><d>1</a>",
       {{Kind::EndTagMissing, 16, "</d> expected for <d>, found </a>", 12, "<d> is opened here"},
        {Kind::EndTagMissing, 16, "</b> expected for <b c='>'>, found </a>", 3,
         "<b c='>'> is opened here"}}},
      {"NamesOfOpenElementsAreKeptInStep",
       "<a><b></c><d></d></d></b></a>",
       {{Kind::EndTagMismatched, 6, "</b> expected for <b>, found </c>", 3, "<b> is opened here"},
        {Kind::EndTagMismatched, 17, "</b> expected for <b>, found </d>", 3,
         "<b> is opened here"}}},
      {"OneOfTwoElementsOfANameIsClosed",
       "<a><b><b></c></b></b></a>",
       {{Kind::EndTagMismatched, 9, "</b> expected for <b>, found </c>", 6, "<b> is opened here"}}},
      {"NoEndTags",
       "<a>\n<b>",
       {{Kind::EndTagMissing, 7, "</b> expected for <b>, found the end of the text", 4,
         "<b> is opened here"},
        {Kind::EndTagMissing, 7, "</a> expected for <a>, found the end of the text", 0,
         "<a> is opened here"}}},
      {"EndTagWithoutStart",
       "<a/></a>",
       {{Kind::EndTagWithoutStart, 4, "</a> while no element is open"}}},
      {"EndTagWithoutName",
       "<a></></a>",
       {{Kind::EndTagMismatched, 3, "</a> expected for <a>, found </>", 0, "<a> is opened here"}}},
      {"EndTagWithAttribute",
       "<a></a b='1'>",
       {{Kind::MalformedTag, 7, "\">\" is missing; an end tag has no attributes"}}},
      {"EndTagCutOff", "<a></a", {{Kind::UnclosedTag, 6, "\">\" is missing", 3, TAG_BEGINS}}},
      {"EndTagWithoutItsEnd",
       "<a><b></b </a>",
       {{Kind::UnclosedTag, 10, "\">\" is missing", 6, TAG_BEGINS}}},
      {"StartTagCutOff",
       "<a><b c='1'",
       {{Kind::UnclosedTag, 11, "\">\" is missing", 3, TAG_BEGINS},
        {Kind::EndTagMissing, 11, "</a> expected for <a>, found the end of the text", 0,
         "<a> is opened here"}}},
      {"StartTagWithoutItsEnd",
       "<a><b </b></a>",
       {{Kind::UnclosedTag, 6, "\">\" is missing", 3, TAG_BEGINS}}},

      // Characters.
      {"ControlCharacters",
       "<a b='\x01'>\x1F\t\n\r </a>",
       {{Kind::ForbiddenCharacter, 6, forbidden("U+0001")},
        {Kind::ForbiddenCharacter, 9, forbidden("U+001F")}}},
      {"ControlCharactersOutsideOfElements",
       "\x02<a><!--\x03--><![CDATA[\x04]]><?b \x05?></a\x06>",
       {{Kind::ForbiddenCharacter, 0, forbidden("U+0002")},
        {Kind::ForbiddenCharacter, 8, forbidden("U+0003")},
        {Kind::ForbiddenCharacter, 21, forbidden("U+0004")},
        {Kind::ForbiddenCharacter, 29, forbidden("U+0005")},
        {Kind::EndTagMismatched, 32, "</a> expected for <a>, found </a?>", 1, "<a> is opened here"},
        {Kind::ForbiddenCharacter, 35, forbidden("U+0006")}}},
      {"NoncharactersAndSurrogates",
       "<a>\xEF\xBF\xBE\xEF\xBF\xBF\xED\xA0\x80\xED\xBF\xBF</a>",
       {{Kind::ForbiddenCharacter, 3, forbidden("U+FFFE")},
        {Kind::ForbiddenCharacter, 6, forbidden("U+FFFF")},
        {Kind::ForbiddenCharacter, 9, forbidden("U+D800")},
        {Kind::ForbiddenCharacter, 12, forbidden("U+DFFF")}}},
      {"NulBytes",
       "<a>\0</a>\0"s,
       {{Kind::NulByte, 3, "a NUL byte"}, {Kind::NulByte, 8, "a NUL byte"}}},
      {"Utf8Overlong",
       "<a>\xC0\x80\xC1\xBF\xE0\x9F\xBF\xF0\x8F\xBF\xBF</a>",
       {{Kind::InvalidUtf8, 3, OVERLONG},
        {Kind::InvalidUtf8, 5, OVERLONG},
        {Kind::InvalidUtf8, 7, OVERLONG},
        {Kind::InvalidUtf8, 10, OVERLONG}}},
      {"Utf8CutOff",
       "<a b='\xC3'>\xE2\x82</a>\xF0\x9F\x98",
       {{Kind::InvalidUtf8, 6, CUT_OFF},
        {Kind::InvalidUtf8, 9, CUT_OFF},
        {Kind::InvalidUtf8, 15, CUT_OFF}}},
      {"Utf8BeyondUnicode",
       "<a>\xF4\x90\x80\x80\xF7\xBF\xBF\xBF</a>",
       {{Kind::InvalidUtf8, 3, BEYOND}, {Kind::InvalidUtf8, 7, BEYOND}}},
      {"Utf8WithoutStart",
       "<a>\x80\xBF\xF8\xFF</a>",
       {{Kind::InvalidUtf8, 3, NO_CHARACTER},
        {Kind::InvalidUtf8, 4, NO_CHARACTER},
        {Kind::InvalidUtf8, 5, NO_CHARACTER},
        {Kind::InvalidUtf8, 6, NO_CHARACTER}}},

      // Names and attributes.
      {"NameThatBeginsWrongly", "<1/>", {{Kind::InvalidName, 1, "\"1\" cannot begin a name"}}},
      {"NameWithAWrongCharacter",
       "<a+*></a+*>",
       {{Kind::InvalidName, 2, "\"+\" cannot be in a name"},
        {Kind::InvalidName, 8, "\"+\" cannot be in a name"}}},
      {"NameOfAnAttribute", "<a -b='1'/>", {{Kind::InvalidName, 3, "\"-\" cannot begin a name"}}},
      {"NameWithAControlCharacter",
       "<a\x01/>",
       {{Kind::ForbiddenCharacter, 2, forbidden("U+0001")}}},
      {"NameWithALetterOfSeveralBytes",
       "<a\xC3\x97/>",
       {{Kind::InvalidName, 2, "\"\xC3\x97\" cannot be in a name"}}},
      {"NoBlankBetweenAttributes",
       "<a b='1'c='2'/>",
       {{Kind::MissingBlank, 8, "a blank is missing before an attribute"}}},
      {"NoEquals", "<a b c='1'/>", {{Kind::MissingEquals, 4, NO_EQUALS}}},
      {"NoEqualsBeforeAValue", "<a b '1'/>", {{Kind::MissingEquals, 4, NO_EQUALS}}},
      {"NoQuotes", "<a b=1 c='2'/>", {{Kind::MissingQuote, 5, NO_QUOTES}}},
      {"NoQuotesBeforeAnEnd", "<a b=1/>", {{Kind::MissingQuote, 5, NO_QUOTES}}},
      {"NoValue", "<a b=/>", {{Kind::MissingQuote, 5, NO_QUOTES}}},
      {"NoClosingQuote",
       R"(<a b="1><c d="2" e="3"/></a>)",
       {{Kind::MissingQuote, 5, NO_CLOSING_QUOTE}}},
      {"NoQuoteFurtherOn", "<a><b c='1/></a>", {{Kind::MissingQuote, 8, NO_CLOSING_QUOTE}}},
      {"NoQuoteUpToTheEnd",
       "<a b='",
       {{Kind::MissingQuote, 5, NO_CLOSING_QUOTE},
        {Kind::UnclosedTag, 6, "\">\" is missing", 0, TAG_BEGINS}}},
      {"AttributeTwice",
       "<a bc='1' d='2' bc='3' bc='4'/>",
       {{Kind::DuplicateAttribute, 16, "the attribute bc comes twice", 3, FIRST_ATTRIBUTE},
        {Kind::DuplicateAttribute, 23, "the attribute bc comes twice", 3, FIRST_ATTRIBUTE}}},
      {"AttributesOfSeveralElements", "<a b='1'><c b='1'/></a>", {}},
      {"LessThanInAValue",
       "<a b='<' c=\"<&lt;<\"/>",
       {{Kind::LessThanInValue, 6, "\"<\" in the value of an attribute; write &lt;"},
        {Kind::LessThanInValue, 12, "\"<\" in the value of an attribute; write &lt;"},
        {Kind::LessThanInValue, 17, "\"<\" in the value of an attribute; write &lt;"}}},
      {"AttributeWithoutName",
       "<a ='1'/>",
       {{Kind::MalformedTag, 3, "the name of an attribute is missing"}}},
      {"ValueWithoutAttribute",
       "<a \"1\"/>",
       {{Kind::MalformedTag, 3, "the name of an attribute is missing"}}},
      {"SlashBeforeABlank",
       "<a><b/ ></a>",
       {{Kind::MalformedTag, 5, R"("/" is not followed by ">")"}}},
      {"SlashBeforeAnAttribute",
       "<a / b='1'/>",
       {{Kind::MalformedTag, 3, R"("/" is not followed by ">")"}}},

      // Texts and references.
      {"AmpersandAlone",
       "<a b='&'>x & y &; &1; &a b; &\xC3\x97;</a>",
       {{Kind::MalformedReference, 6, NO_REFERENCE},
        {Kind::MalformedReference, 11, NO_REFERENCE},
        {Kind::MalformedReference, 15, NO_REFERENCE},
        {Kind::MalformedReference, 18, NO_REFERENCE},
        {Kind::MalformedReference, 22, NO_REFERENCE},
        {Kind::MalformedReference, 28, NO_REFERENCE}}},
      {"NumericReferencesThatAreNone",
       "<a b='&#65'>&#; &#x; &#X41; &#6a; &#65</a>",
       {{Kind::MalformedReference, 6, NO_REFERENCE},
        {Kind::MalformedReference, 12, NO_REFERENCE},
        {Kind::MalformedReference, 16, NO_REFERENCE},
        {Kind::MalformedReference, 21, NO_REFERENCE},
        {Kind::MalformedReference, 28, NO_REFERENCE},
        {Kind::MalformedReference, 34, NO_REFERENCE}}},
      {"UnknownEntity",
       "<a b='&c;'>&AMP;</a>",
       {{Kind::UnknownEntity, 6, "the entity &c; is not declared"},
        {Kind::UnknownEntity, 11, "the entity &AMP; is not declared"}}},
      {"ReferenceToAForbiddenCharacter",
       "<a b='&#0;'>&#x1F;&#xd800;&#65535;</a>",
       {{Kind::ForbiddenReference, 6, "&#0; refers to U+0000, which is not allowed in XML"},
        {Kind::ForbiddenReference, 12, "&#x1F; refers to U+001F, which is not allowed in XML"},
        {Kind::ForbiddenReference, 18, "&#xd800; refers to U+D800, which is not allowed in XML"},
        {Kind::ForbiddenReference, 26, "&#65535; refers to U+FFFF, which is not allowed in XML"}}},
      {"ReferenceToNoCharacter",
       "<a>&#x110000;&#4294967361;</a>",
       {{Kind::ForbiddenReference, 3, "&#x110000; refers to no character"},
        {Kind::ForbiddenReference, 13, "&#4294967361; refers to no character"}}},
      {"LessThanInAText",
       "<a>1 < 2 <= 3 <4 <&lt;</a>",
       {{Kind::LessThanInText, 5, NO_TAG},
        {Kind::LessThanInText, 9, NO_TAG},
        {Kind::LessThanInText, 14, NO_TAG},
        {Kind::LessThanInText, 17, NO_TAG}}},
      {"EndOfCdataInAText",
       "<a>]]]>]] ></a>",
       {{Kind::CdataEndInText, 4, "\"]]>\" in a text; write ]]&gt;"}}},

      // Other markup.
      {"DashesInComments",
       "<a><!-- -- ---- - --><!----- --><!-- x---></a>",
       {{Kind::DashesInComment, 8, "\"--\" in a comment"},
        {Kind::DashesInComment, 11, "\"--\" in a comment"},
        {Kind::DashesInComment, 25, "\"--\" in a comment"},
        {Kind::DashesInComment, 38, "\"--\" in a comment"}}},
      {"CommentWithoutEnd",
       "<a><!-- x ->&<b></c></a>",
       {{Kind::UnclosedComment, 3, "the comment has no end"},
        {Kind::MalformedReference, 12, NO_REFERENCE},
        {Kind::EndTagMismatched, 16, "</b> expected for <b>, found </c>", 13,
         "<b> is opened here"}}},
      {"CommentsWithoutEnd",
       "<a><!--><!---</a>",
       {{Kind::UnclosedComment, 3, "the comment has no end"},
        {Kind::UnclosedComment, 8, "the comment has no end"}}},
      {"CdataWithoutEnd",
       "<a><![CDATA[x]]</a>",
       {{Kind::UnclosedCdata, 3, "the CDATA section has no end"}}},
      {"InstructionWithoutEnd",
       "<a><?b></a>",
       {{Kind::UnclosedInstruction, 3, "the processing instruction has no end"}}},
      {"InstructionsOfABadName",
       "<a><? b?><?\?><?1?><?b?c?></a>",
       {{Kind::InvalidName, 5, "the processing instruction has no name"},
        {Kind::InvalidName, 11, "the processing instruction has no name"},
        {Kind::InvalidName, 15, "\"1\" cannot begin a name"},
        {Kind::InvalidName, 21, "\"?\" cannot be in a name"}}},
      {"InstructionOfAReservedName",
       "<a><?XML b?><?xMl?><?xmlb?></a>",
       {{Kind::ReservedTarget, 3, "\"XML\" is a reserved name"},
        {Kind::ReservedTarget, 12, "\"xMl\" is a reserved name"}}},
      {"UnknownMarkup",
       "<a><!b c><!-></a>",
       {{Kind::UnknownMarkup, 3, "\"<!\" begins no comment, CDATA section or DOCTYPE"},
        {Kind::UnknownMarkup, 9, "\"<!\" begins no comment, CDATA section or DOCTYPE"}}},

      // The declaration.
      {"DeclarationAfterABlank",
       " <?xml version='1.0'?><a/>",
       {{Kind::MisplacedDeclaration, 1, "the XML declaration is not at the start of the text"}}},
      {"DeclarationWithoutVersion",
       "<?xml?><a/>",
       {{Kind::MalformedDeclaration, 5, "the XML declaration has no version"}}},
      {"DeclarationOfAnotherVersion",
       "<?xml version='2.0'?><a/>",
       {{Kind::MalformedDeclaration, 15, "the version of the XML declaration is not 1.0"}}},
      {"DeclarationOfHalfAVersion",
       "<?xml version='1.'?><a/>",
       {{Kind::MalformedDeclaration, 15, "the version of the XML declaration is not 1.0"}}},
      {"DeclarationInAnotherOrder",
       "<?xml encoding='UTF-8' version='1.0'?><a/>",
       {{Kind::MalformedDeclaration, 5, "the XML declaration has no version"}}},
      {"DeclarationWithoutBlank",
       "<?xml version='1.0'encoding='UTF-8'?><a/>",
       {{Kind::MalformedDeclaration, 19, MALFORMED_DECLARATION}}},
      {"DeclarationWithMore",
       "<?xml version='1.0' b='1'?><a/>",
       {{Kind::MalformedDeclaration, 20, MALFORMED_DECLARATION}}},
      {"DeclarationWithAnotherEnd",
       "<?xml version='1.0'><a/>",
       {{Kind::MalformedDeclaration, 19, MALFORMED_DECLARATION}}},
      {"DeclarationCutOff",
       "<?xml version='1.0",
       {{Kind::MalformedDeclaration, 5, "the XML declaration has no version"},
        {Kind::NoRoot, 18, "there is no root element"}}},
      {"StandaloneOfAnotherValue",
       "<?xml version='1.0' standalone='YES'?><a/>",
       {{Kind::MalformedDeclaration, 32, R"("standalone" is neither "yes" nor "no")"}}},
      {"NoNameOfAnEncoding",
       "<?xml version='1.0' encoding='8-UTF'?><a/>",
       {{Kind::MalformedDeclaration, 30, "the encoding of the XML declaration is malformed"}}},

      // Encodings.
      {"OtherEncoding",
       "<?xml version='1.0' encoding='ISO-8859-1'?><a>\xE9</a>",
       {{Kind::Encoding, 30, "the declared encoding is ISO-8859-1; convert the text to UTF-8"},
        {Kind::InvalidUtf8, 46, CUT_OFF}}},
      {"AsciiThatIsNone",
       "<?xml version='1.0' encoding='US-ASCII'?><a>\xC3\xA9\xC3\xA9</a>",
       {{Kind::Encoding, 44, "the text is not in US-ASCII", 30, "US-ASCII is declared here"}}},
      {"Utf16WithMark",
       "\xFF\xFE<\0a\0/\0>\0"s,
       {{Kind::Encoding, 0, "the text is UTF-16; convert it to UTF-8"}}},
      {"Utf16WithMarkBigEndian",
       "\xFE\xFF\0<\0a\0/\0>"s,
       {{Kind::Encoding, 0, "the text is UTF-16; convert it to UTF-8"}}},
      {"Utf16WithoutMark",
       "<\0a\0/\0>\0"s,
       {{Kind::Encoding, 0, "the text is UTF-16; convert it to UTF-8"}}},
      {"Utf16WithoutMarkBigEndian",
       "\0<\0a\0/\0>"s,
       {{Kind::Encoding, 0, "the text is UTF-16; convert it to UTF-8"}}},
      {"Utf32WithMark",
       "\xFF\xFE\0\0<\0\0\0"s,
       {{Kind::Encoding, 0, "the text is UTF-32; convert it to UTF-8"}}},
      {"Utf32WithMarkBigEndian",
       "\0\0\xFE\xFF\0\0\0<"s,
       {{Kind::Encoding, 0, "the text is UTF-32; convert it to UTF-8"}}},
      {"Utf32WithoutMark",
       "<\0\0\0a\0\0\0"s,
       {{Kind::Encoding, 0, "the text is UTF-32; convert it to UTF-8"}}},
      {"Utf32WithoutMarkBigEndian",
       "\0\0\0<\0\0\0a"s,
       {{Kind::Encoding, 0, "the text is UTF-32; convert it to UTF-8"}}},

      // The root.
      {"NoText", "", {{Kind::NoRoot, 0, "there is no root element"}}},
      {"NoRoot", "<!-- -->\n", {{Kind::NoRoot, 9, "there is no root element"}}},
      {"SeveralRoots",
       "<a/><b>x</b>\n<c/>",
       {{Kind::SecondRoot, 4, "a second root element", 0, FIRST_ROOT},
        {Kind::SecondRoot, 13, "a second root element", 0, FIRST_ROOT}}},
      {"TextOutsideRoot",
       "x <a/> \n y&amp;z",
       {{Kind::TextOutsideRoot, 0, OUTSIDE}, {Kind::TextOutsideRoot, 9, OUTSIDE}}},
      {"ByteOrderMarkWithin", "\n\xEF\xBB\xBF<a/>", {{Kind::TextOutsideRoot, 1, OUTSIDE}}},
      {"CdataOutsideRoot",
       "<![CDATA[x]]><a/>",
       {{Kind::TextOutsideRoot, 0, "a CDATA section outside the root element"}}},

      // Document types.
      {"SecondDoctype",
       "<!DOCTYPE a><!DOCTYPE a><a/>",
       {{Kind::MisplacedDoctype, 12, "a second DOCTYPE"}}},
      {"DoctypeBehindTheRoot",
       "<a/><!DOCTYPE a>",
       {{Kind::MisplacedDoctype, 4, "a DOCTYPE after the start of the root element"}}},
      {"DoctypeWithoutBlank",
       "<!DOCTYPE[]><a/>",
       {{Kind::MalformedDoctype, 9, "the DOCTYPE is malformed"}}},
      {"DoctypeWithBracketsOutOfOrder",
       "<!DOCTYPE a [<!ENTITY [ b 'c'>\x01]><a/>",
       {{Kind::MalformedDoctype, 22, "the DOCTYPE is malformed"},
        {Kind::ForbiddenCharacter, 30, forbidden("U+0001")}}},
      {"DoctypeWithoutEnd",
       "<!DOCTYPE a [><a/>",
       {{Kind::UnclosedDoctype, 0, "the DOCTYPE has no end"}}},
  };
  return all;
}

INSTANTIATE_TEST_SUITE_P(Rows, XmlCheckTest, testing::ValuesIn(rows()),
                         [](const auto& each) { return std::string(each.param.name); });

TEST(XmlCheckRulesTest, EveryKindHasARow) {
  std::vector<bool> isSeen(static_cast<std::size_t>(Kind::UnclosedDoctype) + 1);
  for (const Row& row : rows()) {
    for (const Expected& fault : row.faults) isSeen[static_cast<std::size_t>(fault.kind)] = true;
  }
  for (std::size_t kind = 0; kind < isSeen.size(); ++kind) EXPECT_TRUE(isSeen[kind]) << kind;
}

bool isOfEndTags(const XmlFault& fault) {
  return fault.kind == Kind::EndTagMismatched || fault.kind == Kind::EndTagMissing ||
         fault.kind == Kind::EndTagWithoutStart;
}

TEST(XmlCheckTagsTest, FindsTheFaultsOfEndTagsAndNoOthers) {
  std::size_t count = 0;
  for (const Row& row : rows()) {
    std::vector<XmlFault> expected = checkXml(row.text).list;
    expected.erase(std::remove_if(expected.begin(), expected.end(),
                                  [](const XmlFault& fault) { return !isOfEndTags(fault); }),
                   expected.end());
    const XmlFaults found = checkXmlTags(row.text);
    EXPECT_EQ(describeAll(found.list), describeAll(expected)) << row.name;
    EXPECT_EQ(found.count, expected.size()) << row.name;
    count += found.count;
  }
  EXPECT_GT(count, 10U);
}

TEST(XmlCheckRulesTest, FirstFaultsUpToTheLimitAreListedAndAllAreCounted) {
  const std::string text = "<a b='<'>& &x; \x01</c>";
  const std::vector<std::string> all = describeAll(checkXml(text).list);
  ASSERT_EQ(all.size(), 5U);
  for (std::size_t limit = 0; limit <= all.size() + 1; ++limit) {
    const XmlFaults found = checkXml(text, limit);
    const auto end = all.begin() + static_cast<std::ptrdiff_t>(std::min(limit, all.size()));
    EXPECT_EQ(describeAll(found.list), std::vector<std::string>(all.begin(), end));
    EXPECT_EQ(found.count, all.size());
  }
  const XmlFaults tags = checkXmlTags(text + "</d>", 1);
  EXPECT_EQ(describeAll(tags.list), std::vector<std::string>{all[4]});
  EXPECT_EQ(tags.count, 2U);
}

TEST(XmlCheckRulesTest, EveryPrefixOfADocumentHasAFault) {
  const std::string text =
      "\xEF\xBB\xBF<?xml version='1.0' encoding='UTF-8'?>\n<!DOCTYPE a [<!-- - -->]>\n<!-- - -->"
      "<?b c?><a d='&lt;1'>\n <e>2 &#x20AC;</e><f  g = \"3\" /><![CDATA[4]]>\xF0\x9F\x98\x80</a>";
  ASSERT_EQ(checkXml(text).count, 0U);
  const std::size_t root = text.find("<a");
  for (std::size_t size = 0; size < text.size(); ++size) {
    const XmlFaults found = checkXml(text.substr(0, size));
    ASSERT_FALSE(found.list.empty()) << size;
    EXPECT_LE(found.list.back().offset, size);
    EXPECT_EQ(found.list.back().kind == Kind::NoRoot, size <= root + 1) << size;
  }
}

TEST(XmlCheckRulesTest, MessagesQuoteLittleOfTheText) {
  const std::string longName(100000, 'x');
  const std::string texts[] = {
      "<" + longName + "></b>",
      "<a b='" + longName + "'></" + longName + ">",
      "</" + longName + ">",
      "<a " + longName + "='1' " + longName + "='1'>&" + longName + ";&#" +
          std::string(100000, '0') + ";</a>",
      "<?xml version='1.0' encoding='" + longName + "'?><a/>",
  };
  for (const std::string& text : texts) {
    const XmlFaults found = checkXml(text);
    ASSERT_FALSE(found.list.empty());
    for (const XmlFault& fault : found.list) {
      EXPECT_LE(fault.message.size(), 250U);
      EXPECT_LE(fault.relatedMessage.size(), 250U);
    }
  }
}

TEST(XmlCheckRulesTest, MessagesAreUtf8OnOneLineWhateverTheyQuote) {
  const std::string euro = "\xE2\x82\xAC";
  for (std::size_t start = 0; start < 4; ++start) {
    std::string tag = "<a b='\n\t\x01\xFF" + std::string(start, 'x');
    while (tag.size() < 100) tag += euro;
    const XmlFaults found = checkXml(tag + "'>");
    ASSERT_FALSE(found.list.empty());
    const XmlFault& fault = found.list.back();
    EXPECT_EQ(fault.message.find("</a> expected for <a b='  ??"), 0U) << fault.message;
    EXPECT_NE(fault.message.find(euro + "..., found"), std::string::npos) << fault.message;
    // As the text of an element it is without fault.
    std::string words = fault.message + fault.relatedMessage;
    words.erase(std::remove(words.begin(), words.end(), '<'), words.end());
    EXPECT_EQ(checkXml("<a>" + words + "</a>").count, 0U) << words;
  }
}

TEST(XmlCheckRulesTest, AnElementIsReportedOnce) {
  const XmlFaults found = checkXml("<a><b></c></d></a>");
  ASSERT_EQ(found.list.size(), 2U);
  EXPECT_EQ(found.list[0].kind, Kind::EndTagMismatched);
  EXPECT_EQ(found.list[1].kind, Kind::EndTagMismatched);
  EXPECT_EQ(found.list[1].offset, 10U);
}

// Sizes that would show what takes n * n, on a stack that shows what recurses.

std::string repeated(std::size_t count, const std::string& piece) {
  std::string text;
  text.reserve(count * piece.size());
  for (std::size_t i = 0; i < count; ++i) text += piece;
  return text;
}

constexpr std::size_t MANY = 1000000;

void expectCount(const std::string& text, std::size_t count) {
  XmlFaults found;
  tarn_test::runOnSmallStack([&] { found = checkXml(text, 10); });
  EXPECT_EQ(found.count, count);
  EXPECT_EQ(found.list.size(), std::min<std::size_t>(count, 10));
}

TEST(XmlCheckSizeTest, AMillionNestedElements) {
  expectCount(repeated(MANY, "<a>") + repeated(MANY, "</a>"), 0);
  expectCount(repeated(MANY, "<a>"), MANY);
  expectCount("<r>" + repeated(MANY, "<a>") + "</r>", MANY);
  expectCount(repeated(MANY, "<a>") + repeated(MANY, "</b>") + repeated(MANY, "</a>"), MANY);
}

TEST(XmlCheckSizeTest, ManyNamesOfOpenElements) {
  std::string starts;
  std::string ends;
  std::string others;
  for (std::size_t i = 0; i < 100000; ++i) {
    const std::string name = "name-" + std::to_string(i);
    starts.append("<").append(name).append(">");
    others.append("</other-").append(name).append(">");
  }
  for (std::size_t i = 100000; i > 0; --i) ends += "</name-" + std::to_string(i - 1) + ">";
  expectCount(starts + ends, 0);
  expectCount(starts + others + ends, 100000);
  expectCount(starts + "</name-0>", 99999);
}

std::string elementWith(const std::string& attributes) { return "<a" + attributes + "/>"; }

TEST(XmlCheckSizeTest, ManyAttributesOfOneElement) {
  std::string attributes;
  for (std::size_t i = 0; i < 100000; ++i) attributes += " a" + std::to_string(i * 7919) + "='1'";
  expectCount(elementWith(attributes), 0);
  expectCount(elementWith(attributes + attributes), 100000);
  expectCount(elementWith(repeated(100000, " b='<'")), 199999);
  for (const std::size_t few : {15U, 16U, 17U}) {
    std::string some;
    for (std::size_t i = 0; i < few; ++i) some += " a" + std::to_string(i) + "='1'";
    expectCount(elementWith(some), 0);
    expectCount(elementWith(some + some), few);
    expectCount("<r>" + repeated(2, elementWith(some)) + "</r>", 0);
  }
}

TEST(XmlCheckSizeTest, ManyBeginningsWithoutEnd) {
  expectCount("<a>" + repeated(MANY, "<!--") + "</a>", MANY);
  expectCount("<a>" + repeated(MANY, "<![CDATA[") + "</a>", MANY);
  expectCount("<a>" + repeated(MANY, "<?b ") + "</a>", MANY);
  expectCount("<a>" + repeated(MANY, "&") + "</a>", MANY);
  expectCount("<a>" + repeated(MANY, "<") + "</a>", MANY);
  expectCount("<a>" + repeated(MANY, "<1") + "</a>", MANY);
  expectCount(repeated(MANY, "<!DOCTYPE ") + "<a/>", 2 * MANY - 1);
  expectCount("<a>" + repeated(MANY, "&b") + ";</a>", MANY);
  expectCount("<a>" + repeated(MANY, "]]]") + "</a>", 0);
  expectCount("<a><!--" + std::string(MANY, '-') + "--></a>", 1);
}

TEST(XmlCheckSizeTest, ManyQuotesThatAreMissing) {
  // Each start tag has a value without a closing quote, an attribute without blank or worse.
  const std::size_t count = 100000;
  for (const char* const piece : {"<b c=\"1>", "<b c='1 d=\"2>", "<b c='1\"d=2>", "<b \"'"}) {
    XmlFaults found;
    const std::string text = "<a>" + repeated(count, piece) + "</a>";
    tarn_test::runOnSmallStack([&] { found = checkXml(text, 10); });
    EXPECT_GE(found.count, count / 2) << piece;
    EXPECT_LE(found.count, 8 * count) << piece;
  }
}

TEST(XmlCheckMemoryTest, EveryAllocationMayFail) {
  std::string text = "<a><b c='1' c='2'></d><e>&x;";
  for (int i = 0; i < 40; ++i) text += "<f a" + std::to_string(i) + "='1'";
  std::size_t number = 1;
  for (bool happened = true; happened; ++number) {
    const std::size_t before = tarn_test::heapBlocks();
    const tarn_test::HeapFault fault(number);
    try {
      EXPECT_GT(checkXml(text).count, 40U);
    } catch (const std::bad_alloc&) {
      EXPECT_TRUE(fault.happened());
    }
    happened = fault.happened();
    EXPECT_EQ(tarn_test::heapBlocks(), before);
  }
  EXPECT_GT(number, 10U);
}

TEST(XmlCheckRandomTest, FaultsAreInOrderAndWithinTheText) {
  const std::string bytes = "<<<>>//ab=\"'&;#x!-[]? \n\x01\xC3\xA9?xml"s + '\0';
  for (unsigned seed = 0; seed < 3000; ++seed) {
    std::mt19937 random(seed);
    std::string text;
    while (text.size() < 1 + seed % 120) text += bytes[random() % bytes.size()];
    const XmlFaults found = checkXml(text);
    EXPECT_EQ(found.list.size(), found.count) << "seed " << seed;
    std::size_t last = 0;
    for (const XmlFault& fault : found.list) {
      EXPECT_LE(last, fault.offset) << "seed " << seed << ": " << text;
      EXPECT_LE(fault.offset, text.size());
      EXPECT_FALSE(fault.message.empty());
      EXPECT_EQ(fault.relatedMessage.empty(), fault.relatedOffset == NO_OFFSET);
      EXPECT_TRUE(fault.relatedOffset == NO_OFFSET || fault.relatedOffset < fault.offset);
      last = fault.offset;
    }
  }
}

}  // namespace
