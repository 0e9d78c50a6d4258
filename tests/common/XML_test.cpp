#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <sstream>
#include <string>
#include <utility>
#include <xercesc/dom/DOM.hpp>
#include <xercesc/framework/MemBufInputSource.hpp>
#include <xercesc/parsers/XercesDOMParser.hpp>
#include <xercesc/sax/HandlerBase.hpp>
#include <xercesc/util/PlatformUtils.hpp>
#include <xercesc/util/TransService.hpp>

#include "common/xml/TagWatch.h"
#include "common/xml/WriteTree.h"
#include "common/xml/XMLDocType.h"
#include "common/xml/XMLElement.h"
#include "common/xml/XMLError.h"
#include "common/xml/XMLObj.h"
#include "common/xml/XMLObjParser.h"

namespace MCCommonXML {
namespace {

std::string UTF8(const XMLCh* text) {
  const xercesc::TranscodeToStr bytes(text, "UTF-8");
  return {reinterpret_cast<const char*>(bytes.str()), bytes.length()};
}

struct Read {
  std::string fAttribute;
  std::string fText;
};

// The root's attribute "a" and its text, as a parser of documents reads them.
Read ReadByDOM(const std::string& document) {
  xercesc::XMLPlatformUtils::Initialize();
  Read read;
  {
    xercesc::XercesDOMParser parser;
    xercesc::HandlerBase errors;  // throws what is not well formed
    parser.setErrorHandler(&errors);
    parser.parse(xercesc::MemBufInputSource(reinterpret_cast<const XMLByte*>(document.data()),
                                            document.size(), "document"));
    const xercesc::DOMElement* root = parser.getDocument()->getDocumentElement();
    read = {UTF8(root->getAttribute(u"a")), UTF8(root->getTextContent())};
  }
  xercesc::XMLPlatformUtils::Terminate();
  return read;
}

std::string Encode(char32_t c) {
  const auto tail = [c](int shift) { return static_cast<char>(0x80 | (c >> shift & 0x3F)); };
  if (c < 0x80) return {static_cast<char>(c)};
  if (c < 0x800) return {static_cast<char>(0xC0 | c >> 6), tail(0)};
  if (c < 0x10000) return {static_cast<char>(0xE0 | c >> 12), tail(6), tail(0)};
  return {static_cast<char>(0xF0 | c >> 18), tail(12), tail(6), tail(0)};
}

// The production Char of XML 1.0, besides the surrogates.
bool IsChar(char32_t c) {
  return c == 9 || c == 10 || c == 13 || (c >= 0x20 && c <= 0xD7FF) ||
         (c >= 0xE000 && c <= 0xFFFD) || (c >= 0x10000 && c <= 0x10FFFF);
}

bool IsTaken(const std::string& text) {
  try {
    XMLString::Create(text);
    return true;
  } catch (const XMLError&) {
    return false;
  }
}

TEST(XMLString, TakesEveryCharacterOfXMLAndNoOther) {
  for (char32_t c = 0; c < 0x10FFFF; c += c < 0x3000 || (c > 0xD700 && c < 0x10100) ? 1 : 0xFB) {
    if (c >= 0xD800 && c <= 0xDFFF) {
      EXPECT_FALSE(IsTaken(Encode(c))) << static_cast<unsigned>(c);
    } else {
      EXPECT_EQ(IsTaken("a" + Encode(c) + "b"), IsChar(c)) << static_cast<unsigned>(c);
    }
  }
}

TEST(XMLString, RefusesWhatIsNotUTF8AndNamesWhatItRefuses) {
  const char* const kBad[] = {"\x80",
                              "\xC0\x80",
                              "\xC1\xBF",
                              "\xC3",
                              "\xC3(",
                              "\xE0\x9F\xBF",
                              "\xE2\x82",
                              "\xED\xA0\x80",
                              "\xF0\x8F\xBF\xBF",
                              "\xF4\x90\x80\x80",
                              "\xF5\x80\x80\x80",
                              "\xFF"};
  for (const char* bad : kBad) EXPECT_FALSE(IsTaken(bad)) << testing::PrintToString(bad);
  try {
    XMLElement::Create("Value")->AddAttribute("label",
                                              "fast\x0C"
                                              "food");
    ADD_FAILURE();
  } catch (const XMLError& error) {
    EXPECT_STREQ(error.what(),
                 "The text \"fast?food\" holds the character U+000C, which an XML document cannot "
                 "hold (attribute label of the element Value)");
  }
  EXPECT_THROW(XMLString::Create(std::nan("")), XMLError);
  EXPECT_THROW(XMLString::Create(INFINITY), XMLError);
}

TEST(WriteTree, IsReadBackAsItWasByAnIndependentParser) {
  std::string all;
  for (char32_t c = 1; c <= 0x10FFFF; c += c < 0x800 ? 1 : 0x3FF) {
    if (IsChar(c)) all += Encode(c);
  }
  for (const std::string& text :
       {all, std::string("]]>"), std::string("<!--&amp;&#65;-->"), std::string("\r\n\t \n\r"),
        std::string("'\"><&"), std::string("  both ends  "), std::string("<![CDATA[x]]>")}) {
    for (const auto write : {WriteTree, WriteTreeUTF8}) {
      for (const bool indented : {false, true}) {
        const auto root = XMLElement::Create("Root");
        root->AddAttribute("a", text);
        root->SetText(XMLString::Create(text));
        std::ostringstream os;
        write(os, nullptr, *root, indented);
        const Read read = ReadByDOM(os.str());
        EXPECT_EQ(read.fAttribute, text);
        EXPECT_EQ(read.fText, text);
        if (write == &WriteTree) {
          EXPECT_TRUE(std::all_of(os.view().begin(), os.view().end(),
                                  [](char c) { return static_cast<unsigned char>(c) < 0x80; }));
        }
      }
    }
  }
}

TEST(XMLString, WritesDoublesThatReadBackToTheBit) {
  for (const double value : {0.0, -0.0, 0.1, 1.0 / 3, 1e23, 5e-324, -1.7976931348623157e308,
                             2.2250738585072014e-308, 9007199254740993.0}) {
    const auto root = XMLElement::Create("Root");
    root->AddAttribute("a", value);
    std::ostringstream os;
    WriteTree(os, nullptr, *root, true);
    const double read = std::strtod(ReadByDOM(os.str()).fAttribute.c_str(), nullptr);
    EXPECT_EQ(read, value);
    EXPECT_EQ(std::signbit(read), std::signbit(value));
  }
}

TEST(XMLString, WritesWholeNumbersOutAsLongAsTheyAreExact) {
  const std::pair<double, const char*> cases[] = {
      {100000, "100000"}, {-3e15, "-3000000000000000"}, {1e17, "1e+17"}, {1e-7, "1e-07"}};
  for (const auto& [value, text] : cases) {
    EXPECT_EQ(
        XMLString::Create(value).Escaped(XMLString::Place::kText, XMLString::Encoding::kASCII),
        text);
  }
}

constexpr const char* kHead =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<!DOCTYPE MCXMLRoot SYSTEM \"savexml.dtd\">\n";

TEST(XMLObj, IsReadFrontToBack) {
  const std::string text = "<a> & \"b\"\r\n\t\xE2\x82\xAC ";
  std::stringstream stream;
  const XMLObj outer("Outer 1.00", 0);
  const XMLObj inner("Inner", outer.InnerIndent());
  ExportFormat(stream, XMLDocType::Create("MCXMLRoot", "savexml.dtd", nullptr));
  StartRoot(stream, "who & when");
  outer.StartObj(stream);
  outer.WriteSubElement(stream, std::numeric_limits<std::int64_t>::min());
  inner.StartObj(stream);
  inner.WriteSubElement(stream, text);
  inner.WriteSubElement(stream, std::string());
  inner.EndObj(stream);
  outer.WriteSubElement(stream, 1.0 / 3);
  outer.WriteSubElement(stream, -INFINITY);
  outer.EndObj(stream);
  EndRoot(stream);
  EXPECT_TRUE(stream.str().starts_with(kHead));

  std::int64_t whole = 0;
  double third = 0;
  double infinite = 0;
  std::string read;
  std::string empty = "not";
  std::string name;
  EXPECT_TRUE(ParseStartObj(stream, "Outer 1.00") && ParseValue(stream, whole));
  EXPECT_TRUE(ParseNextName(stream, name) && name == "Inner" && ParseStartObj(stream, "Inner"));
  EXPECT_TRUE(ParseValue(stream, read) && ParseValue(stream, empty) && ParseEndObj(stream));
  EXPECT_TRUE(ParseValue(stream, third) && ParseAnyValue(stream, infinite));
  EXPECT_TRUE(ParseEndObj(stream) && ParseEndRoot(stream));
  EXPECT_EQ(whole, std::numeric_limits<std::int64_t>::min());
  EXPECT_EQ(third, 1.0 / 3);
  EXPECT_EQ(infinite, -INFINITY);
  EXPECT_EQ(read, text);
  EXPECT_EQ(empty, "");
}

// Whether a document is one object "A" with one text, which is given back.
bool ReadText(const std::string& document, std::string& text) {
  std::istringstream is(document);
  const bool isRead =
      ParseStartObj(is, "A") && ParseValue(is, text) && ParseEndObj(is) && ParseEndRoot(is);
  // After a failure nothing is given any more.
  std::string more;
  EXPECT_FALSE(ParseValue(is, more));
  return isRead;
}

std::string Around(const std::string& start, const std::string& text, const std::string& end = "") {
  return start + "<MCXMLRoot name=\"x\"><Object name=\"A\"><String>" + text +
         "</String></Object></MCXMLRoot>" + end;
}

// Whether all of it passes, given in one piece and byte by byte.
bool Passes(const std::string& document) {
  TagWatch whole, bytes;
  const bool passes = whole.Passes(document);
  bool passesByByte = true;
  for (const char& byte : document) passesByByte = bytes.Passes({&byte, 1});
  EXPECT_EQ(passesByByte, passes);
  return passes;
}

// In each a quote or a bracket of no meaning stands where it might be taken for one of a tag.
TEST(TagWatch, SeesATagTooLongBehindWhateverIsNone) {
  for (const char* before :
       {"", "<!-- <x ' -->", "<!--> <x ' -->", "<!---> <x ' -->", "<!DOCTYPE r>",
        "<!DOCTYPE r [ <x ' ]>", "<!DOCTYPE r [ <x > ] <y ' >", "<?p > <x ' ?>", "<?> <x ' ?>",
        "<a><![CDATA[ > <x ' ]]>", "<a b='>\"'>\"</a>", "<a>'\"> ]]> --> ?>"}) {
    SCOPED_TRACE(before);
    const std::string tag = std::string(before) + "<r a=\"'>\" b='\">'";
    const std::size_t rest = kMaxTag - (tag.size() - std::string(before).size()) - 1;
    EXPECT_TRUE(Passes(tag + std::string(rest, ' ') + ">" + std::string(9000, '\'')));
    EXPECT_FALSE(Passes(tag + std::string(rest + 1, ' ') + ">"));
  }
}

TEST(XMLObjParser, RefusesHostileDocumentsAndReadsNothingBesides) {
  const std::string xml = "<?xml version=\"1.0\"?>";
  std::string bomb = "<!ENTITY a0 \"xxxxxxxxxx\">";
  for (int i = 1; i < 30; ++i) {
    const std::string one = "&a" + std::to_string(i - 1) + ";";
    bomb += "<!ENTITY a" + std::to_string(i) + " \"" + one + one + one + "\">";
  }
  std::string deep;
  for (int i = 0; i < 100000; ++i) deep += "<Object name=\"A\">";
  std::string attributes = "<MCXMLRoot";
  for (int i = 0; i < 100000; ++i) attributes += " a" + std::to_string(i) + "=\">\"";
  const std::pair<const char*, std::string> kCases[] = {
      {"entity bomb", Around(xml + "<!DOCTYPE MCXMLRoot [" + bomb + "]>", "&a29;")},
      {"external entity",
       Around(xml + "<!DOCTYPE MCXMLRoot [<!ENTITY x SYSTEM \"file:///etc/passwd\">]>", "&x;")},
      {"undeclared entity", Around(xml, "&x;")},
      {"inclusion", Around(xml, "<include xmlns=\"http://www.w3.org/2001/XInclude\" href=\"f\"/>")},
      {"deep nesting", xml + "<MCXMLRoot>" + deep},
      {"many attributes", attributes + ">"},
      {"a tag of another encoding",
       "<?xml version=\"1.0\" encoding=\"UTF-7\"?>+ADw-MCXMLRoot" + attributes.substr(10) + ">"},
      {"two bytes a character", std::string("<\0?\0x\0m\0l\0", 10)},
      {"a tag too long", Around(xml, "t").insert(xml.size() + 17, kMaxTag, 'x')},
      {"control character by reference", Around(xml, "&#1;")},
      {"surrogate by reference", Around(xml, "&#xD800;")},
      {"not UTF-8", Around(xml, "\xC0\xBC")},
      {"unknown encoding", Around("<?xml version=\"1.0\" encoding=\"x-none\"?>", "t")},
      {"two roots", Around(xml, "t", "<MCXMLRoot/>")},
      {"text behind the root", Around(xml, "t", "more")},
      {"no root", xml},
      {"nothing", ""},
      {"another field", Around(xml, "t</String><String>u")},
      {"another root", xml + "<Object name=\"A\"><String>t</String></Object>"},
      {"comment without end", Around(xml + "<!-- ", "t")}};
  for (const auto& [name, document] : kCases) {
    std::string text;
    EXPECT_FALSE(ReadText(document, text)) << name;
  }
  for (std::size_t cut = 0; cut < Around(xml, "t").size(); ++cut) {
    std::string text;
    EXPECT_FALSE(ReadText(Around(xml, "t").substr(0, cut), text)) << cut;
  }
}

TEST(XMLObjParser, PassesOverWhatSaysNothing) {
  const std::string xml = "<?xml version=\"1.0\"?>";
  const std::pair<std::string, std::string> kCases[] = {
      {Around(xml + "<!-- it's <a \"comment -->", "t", "\n<!-- the end -->\n"), "t"},
      {Around(xml + "<!DOCTYPE MCXMLRoot SYSTEM \"http://127.0.0.1:9/x.dtd\" [<!ENTITY % p SYSTEM "
                    "\"file:///dev/zero\"> %p;]>",
              "&lt;&#x20AC;&amp;"),
       "<\xE2\x82\xAC&"},
      {Around(xml, "<![CDATA[<a>]]> b"), "<a> b"},
      {Around(xml + "<?p > <x ' ?>", "<![CDATA[<a ']]><!-- <b \" -->" + std::string(9000, '\'')),
       "<a '" + std::string(9000, '\'')},
      {Around("\xEF\xBB\xBF" + xml, "t"), "t"},
      {Around("<?xml version='1.0' encoding='utf-8'?>", "\xE2\x82\xAC"), "\xE2\x82\xAC"},
      {Around(xml, std::string(1000000, 'x')), std::string(1000000, 'x')}};
  for (const auto& [document, expected] : kCases) {
    std::string text;
    EXPECT_TRUE(ReadText(document, text)) << document.substr(0, 100);
    EXPECT_EQ(text, expected);
  }
}

TEST(XMLObjParser, TakesNumbersThatFillTheirElement) {
  const auto reads = [](const std::string& kind, const std::string& digits, auto value) {
    std::istringstream is("<MCXMLRoot><Object name=\"A\"><" + kind + ">" + digits + "</" + kind +
                          ">");
    return ParseStartObj(is, "A") && ParseValue(is, value);
  };
  for (const char* good : {"0", "-1", "9223372036854775807"}) {
    EXPECT_TRUE(reads("Long", good, std::int64_t{})) << good;
  }
  for (const char* bad : {"", " 1", "1 ", "+1", "1.0", "0x1", "9223372036854775808", "1<a/>"}) {
    EXPECT_FALSE(reads("Long", bad, std::int64_t{})) << bad;
  }
  for (const char* good : {"0", "-1.5e-3", "5e-324"}) EXPECT_TRUE(reads("Double", good, 0.0));
  for (const char* bad : {"", "nan", "inf", "1e999", "1,5", "1.5x"}) {
    EXPECT_FALSE(reads("Double", bad, 0.0)) << bad;
  }
}

}  // namespace
}  // namespace MCCommonXML
