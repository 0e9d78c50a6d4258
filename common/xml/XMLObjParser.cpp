#include "common/xml/XMLObjParser.h"

#include <charconv>
#include <cmath>
#include <deque>
#include <istream>
#include <memory>
#include <string_view>
#include <xercesc/framework/XMLPScanToken.hpp>
#include <xercesc/sax/InputSource.hpp>
#include <xercesc/sax/Locator.hpp>
#include <xercesc/sax/SAXParseException.hpp>
#include <xercesc/sax2/Attributes.hpp>
#include <xercesc/sax2/DefaultHandler.hpp>
#include <xercesc/sax2/SAX2XMLReader.hpp>
#include <xercesc/sax2/XMLReaderFactory.hpp>
#include <xercesc/util/BinInputStream.hpp>
#include <xercesc/util/TransService.hpp>
#include <xercesc/util/XMLUni.hpp>

#include "common/xml/TagWatch.h"
#include "common/xml/XMLPlatform.h"

namespace MCCommonXML {

namespace {

std::string ToUTF8(const XMLCh* text) {
  const xercesc::TranscodeToStr utf8(text, "UTF-8");
  return {reinterpret_cast<const char*>(utf8.str()), utf8.length()};
}

// Whether a document that names an encoding names the one in which it is read.
bool IsDeclaredUTF8(std::string_view start) {
  if (!start.starts_with("<?xml")) return true;
  std::string declaration(start.substr(0, start.find('>')));
  for (char& c : declaration) c = c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
  const std::size_t at = declaration.find("encoding");
  return at == std::string::npos || declaration.find("utf-8", at) != std::string::npos ||
         declaration.find("us-ascii", at) != std::string::npos;
}

class StreamBytes : public xercesc::BinInputStream {
 public:
  explicit StreamBytes(std::istream& is) : fIs(is) {}

  XMLFilePos curPos() const override { return fPosition; }
  XMLSize_t readBytes(XMLByte* to, XMLSize_t most) override {
    // Past the stream's own state: reading ahead to the end is no failure of who reads objects.
    const auto n = static_cast<XMLSize_t>(
        fIs.rdbuf()->sgetn(reinterpret_cast<char*>(to), static_cast<std::streamsize>(most)));
    const std::string_view bytes(reinterpret_cast<const char*>(to), n);
    if (fPosition == 0 && !IsDeclaredUTF8(bytes)) return 0;
    fPosition += n;
    return fWatch.Passes(bytes) ? n : 0;  // cut short, the document is not well formed
  }
  const XMLCh* getContentType() const override { return nullptr; }

 private:
  std::istream& fIs;
  XMLFilePos fPosition = 0;
  TagWatch fWatch;
};

class StreamSource : public xercesc::InputSource {
 public:
  explicit StreamSource(std::istream& is) : fIs(is) {
    // No document decides how its bytes are read: in some encodings a tag does not look like one.
    setEncoding(xercesc::XMLUni::fgUTF8EncodingString);
  }
  // The reader takes it over.
  xercesc::BinInputStream* makeStream() const override { return new StreamBytes(fIs); }

 private:
  std::istream& fIs;
};

// A start or an end; an end carries the text of a field.
struct Event {
  bool fbStart;
  std::string fElement;
  std::string fText;  // of a start: the name attribute
};

class DocumentError {};

class EventQueue : public xercesc::DefaultHandler {
 public:
  void setDocumentLocator(const xercesc::Locator* locator) override { fpLocator = locator; }
  void startElement(const XMLCh*, const XMLCh*, const XMLCh* qname,
                    const xercesc::Attributes& attributes) override {
    NoteLine(*fpLocator);
    if (++fDepth > kMaxDepth) throw DocumentError();
    const XMLCh kName[] = {'n', 'a', 'm', 'e', 0};
    const XMLCh* name = attributes.getValue(kName);
    fEvents.push_back({true, ToUTF8(qname), name == nullptr ? "" : ToUTF8(name)});
    fText.clear();
  }
  void characters(const XMLCh* text, XMLSize_t length) override { fText.append(text, length); }
  void endElement(const XMLCh*, const XMLCh*, const XMLCh* qname) override {
    NoteLine(*fpLocator);
    --fDepth;
    fEvents.push_back({false, ToUTF8(qname), ToUTF8(fText.c_str())});
    fText.clear();
  }
  // Warnings are not worth a failed restore; the rest is.
  void error(const xercesc::SAXParseException& problem) override { fatalError(problem); }
  void fatalError(const xercesc::SAXParseException& problem) override {
    NoteLine(problem);
    throw DocumentError();
  }

  std::deque<Event> fEvents;
  std::int64_t fLine = 0;

 private:
  template <class Place>
  void NoteLine(const Place& place) {
    fLine = static_cast<std::int64_t>(place.getLineNumber());
  }

  const xercesc::Locator* fpLocator = nullptr;
  int fDepth = 0;
  std::u16string fText;
};

class Parser {
 public:
  explicit Parser(std::istream& is) : fSource(is) {
    fpReader.reset(xercesc::XMLReaderFactory::createXMLReader());
    // The scanner for well-formed documents knows no DTD and expands no entity.
    fpReader->setProperty(xercesc::XMLUni::fgXercesScannerName,
                          const_cast<XMLCh*>(xercesc::XMLUni::fgWFXMLScanner));
    fpReader->setFeature(xercesc::XMLUni::fgSAX2CoreValidation, false);
    fpReader->setFeature(xercesc::XMLUni::fgXercesLoadExternalDTD, false);
    fpReader->setContentHandler(&fQueue);
    fpReader->setErrorHandler(&fQueue);
  }

  // The parser of a stream, made at first use; it ends with the stream.
  static Parser& Of(std::istream& is) {
    static const int slot = std::ios_base::xalloc();
    void*& place = is.pword(slot);
    if (place == nullptr) {
      place = new Parser(is);
      is.register_callback(&Parser::OnStreamEvent, slot);
    }
    return *static_cast<Parser*>(place);
  }

  bool Start(const std::string& element, std::string* name) {
    const Event* event = Peek();
    if (event == nullptr || !event->fbStart || event->fElement != element) return Fail();
    if (name != nullptr) *name = event->fText;
    return true;
  }
  bool End(const std::string& element, std::string* text) {
    const Event* event = Peek();
    if (event == nullptr || event->fbStart || event->fElement != element) return Fail();
    if (text != nullptr) *text = event->fText;
    fQueue.fEvents.pop_front();
    return true;
  }
  bool OpenRoot() {
    if (fbRootOpen) return !fbFailed;
    fbRootOpen = true;
    return Start("MCXMLRoot", nullptr) && Take();
  }
  bool Take() {
    fQueue.fEvents.pop_front();
    return true;
  }
  bool Field(const char* kind, std::string& text) {
    return OpenRoot() && Start(kind, nullptr) && Take() && End(kind, &text);
  }
  std::int64_t Line() const { return fQueue.fLine; }
  bool AtEnd() { return Peek() == nullptr && !fbFailed; }
  bool Fail() {
    fbFailed = true;
    return false;
  }

 private:
  static void OnStreamEvent(std::ios_base::event event, std::ios_base& stream, int slot) {
    if (event == std::ios_base::imbue_event) return;
    void*& place = stream.pword(slot);
    // After copyfmt the pointer is the other stream's.
    if (event == std::ios_base::erase_event) delete static_cast<Parser*>(place);
    place = nullptr;
  }

  // The next event; null at the end of the document or after a failure.
  const Event* Peek() {
    while (!fbFailed && !fbEnded && fQueue.fEvents.empty()) Scan();
    return fbFailed || fQueue.fEvents.empty() ? nullptr : &fQueue.fEvents.front();
  }
  void Scan() {
    try {
      const bool more =
          fbStarted ? fpReader->parseNext(fToken) : fpReader->parseFirst(fSource, fToken);
      fbStarted = true;
      fbEnded = !more;
    } catch (...) {  // of Xerces' many types none is for the caller
      fbFailed = true;
    }
  }

  XMLPlatform fPlatform;
  StreamSource fSource;
  EventQueue fQueue;
  std::unique_ptr<xercesc::SAX2XMLReader> fpReader;
  xercesc::XMLPScanToken fToken;
  bool fbStarted = false;
  bool fbEnded = false;
  bool fbFailed = false;
  bool fbRootOpen = false;
};

template <class Number>
bool ParseNumber(std::istream& is, const char* kind, Number& value) {
  std::string text;
  Parser& parser = Parser::Of(is);
  if (!parser.Field(kind, text)) return false;
  const char* end = text.data() + text.size();
  const auto result = std::from_chars(text.data(), end, value);
  return (result.ec == std::errc() && result.ptr == end) || parser.Fail();
}

}  // namespace

bool ParseStartObj(std::istream& is, const std::string& name) {
  std::string found;
  Parser& parser = Parser::Of(is);
  if (!ParseNextName(is, found)) return false;
  return found == name ? parser.Take() : parser.Fail();
}

bool ParseNextName(std::istream& is, std::string& name) {
  Parser& parser = Parser::Of(is);
  return parser.OpenRoot() && parser.Start("Object", &name);
}

bool ParseValue(std::istream& is, std::int64_t& value) { return ParseNumber(is, "Long", value); }

bool ParseValue(std::istream& is, double& value) {
  return ParseAnyValue(is, value) && (std::isfinite(value) || Parser::Of(is).Fail());
}

bool ParseAnyValue(std::istream& is, double& value) { return ParseNumber(is, "Double", value); }

bool ParseValue(std::istream& is, std::string& value) {
  return Parser::Of(is).Field("String", value);
}

bool ParseEndObj(std::istream& is) { return Parser::Of(is).End("Object", nullptr); }

bool ParseEndRoot(std::istream& is) {
  Parser& parser = Parser::Of(is);
  return parser.OpenRoot() && parser.End("MCXMLRoot", nullptr) && parser.AtEnd();
}

std::int64_t ParsedLine(std::istream& is) { return Parser::Of(is).Line(); }

}  // namespace MCCommonXML
