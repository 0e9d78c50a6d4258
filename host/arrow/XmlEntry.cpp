#include "host/arrow/XmlEntry.h"

#include <algorithm>
#include <utility>
#include <xercesc/framework/XMLPScanToken.hpp>
#include <xercesc/sax/InputSource.hpp>
#include <xercesc/sax/SAXParseException.hpp>
#include <xercesc/sax2/Attributes.hpp>
#include <xercesc/sax2/DefaultHandler.hpp>
#include <xercesc/sax2/SAX2XMLReader.hpp>
#include <xercesc/sax2/XMLReaderFactory.hpp>
#include <xercesc/util/BinInputStream.hpp>
#include <xercesc/util/XMLException.hpp>
#include <xercesc/util/XMLUni.hpp>

#include "common/xml/TagWatch.h"
#include "common/xml/XMLPlatform.h"
#include "host/arrow/ZipEntry.h"
#include "host/session/HostIOError.h"

namespace MCHost {

namespace {

constexpr int kMaxDepth = 256;

std::u16string_view WithoutPrefix(const XMLCh* name) {
  const std::u16string_view whole(name);
  const std::size_t colon = whole.find(u':');
  return colon == std::u16string_view::npos ? whole : whole.substr(colon + 1);
}

class EntryBytes final : public xercesc::BinInputStream {
 public:
  EntryBytes(const std::string& path, const std::string& name) : fEntry(path, name) {}

  XMLFilePos curPos() const override { return fPosition; }
  XMLSize_t readBytes(XMLByte* to, XMLSize_t most) override {
    const std::size_t n = fEntry.Read(to, most);
    fPosition += n;
    // Cut short, the document is not well formed.
    return fWatch.Passes({reinterpret_cast<const char*>(to), n}) ? n : 0;
  }
  const XMLCh* getContentType() const override { return nullptr; }

 private:
  ZipEntry fEntry;
  XMLFilePos fPosition = 0;
  MCCommonXML::TagWatch fWatch;
};

class EntrySource final : public xercesc::InputSource {
 public:
  EntrySource(std::string path, std::string name) : fPath(std::move(path)), fName(std::move(name)) {
    // In some encodings a tag does not look like one; these documents are in UTF-8.
    setEncoding(xercesc::XMLUni::fgUTF8EncodingString);
  }
  // The reader takes it over.
  xercesc::BinInputStream* makeStream() const override { return new EntryBytes(fPath, fName); }

 private:
  std::string fPath;
  std::string fName;
};

class Attributes final : public IXmlAttributes {
 public:
  explicit Attributes(const xercesc::Attributes& attributes) : fAttributes(attributes) {}
  std::string Get(const char16_t* name) const override {
    std::string value;
    const XMLCh* text = fAttributes.getValue(name);
    if (text != nullptr) AppendUtf8(value, text);
    return value;
  }
  std::string GetPrefixed(std::u16string_view name) const override {
    for (XMLSize_t i = 0; i < fAttributes.getLength(); ++i) {
      const std::u16string_view whole = fAttributes.getQName(i);
      const std::size_t colon = whole.find(u':');
      if (colon == std::u16string_view::npos || whole.substr(colon + 1) != name) continue;
      std::string value;
      AppendUtf8(value, fAttributes.getValue(i));
      return value;
    }
    return {};
  }

 private:
  const xercesc::Attributes& fAttributes;
};

}  // namespace

class XmlEntry::Parser final : public xercesc::DefaultHandler {
 public:
  Parser(const std::string& path, const std::string& name, IXmlListener& listener)
      : fPath(path), fName(name), fListener(listener), fSource(path, name) {
    fpReader.reset(xercesc::XMLReaderFactory::createXMLReader());
    // The scanner for well-formed documents knows no DTD and expands no entity.
    fpReader->setProperty(xercesc::XMLUni::fgXercesScannerName,
                          const_cast<XMLCh*>(xercesc::XMLUni::fgWFXMLScanner));
    fpReader->setFeature(xercesc::XMLUni::fgSAX2CoreValidation, false);
    fpReader->setFeature(xercesc::XMLUni::fgXercesLoadExternalDTD, false);
    fpReader->setContentHandler(this);
    fpReader->setErrorHandler(this);
  }

  bool Scan() {
    if (fbEnded) return false;
    try {
      fbEnded = !(fbStarted ? fpReader->parseNext(fToken) : fpReader->parseFirst(fSource, fToken));
    } catch (const xercesc::XMLException&) {
      Fail();
    }
    fbStarted = true;
    return !fbEnded;
  }

  void startElement(const XMLCh*, const XMLCh*, const XMLCh* qname,
                    const xercesc::Attributes& attributes) override {
    if (++fDepth > kMaxDepth) Fail();
    fListener.Start(WithoutPrefix(qname), Attributes(attributes));
  }
  void characters(const XMLCh* text, XMLSize_t length) override { fListener.Text({text, length}); }
  void endElement(const XMLCh*, const XMLCh*, const XMLCh* qname) override {
    --fDepth;
    fListener.End(WithoutPrefix(qname));
  }
  void error(const xercesc::SAXParseException&) override { Fail(); }
  void fatalError(const xercesc::SAXParseException&) override { Fail(); }

 private:
  [[noreturn]] void Fail() const {
    throw HostIOError(fPath, "\"" + fName + "\" in it", "the document is not well formed");
  }

  std::string fPath;
  std::string fName;
  IXmlListener& fListener;
  MCCommonXML::XMLPlatform fPlatform;
  EntrySource fSource;
  std::unique_ptr<xercesc::SAX2XMLReader> fpReader;
  xercesc::XMLPScanToken fToken;
  bool fbStarted = false;
  bool fbEnded = false;
  int fDepth = 0;
};

XmlEntry::XmlEntry(const std::string& path, const std::string& name, IXmlListener& listener)
    : fpParser(std::make_unique<Parser>(path, name, listener)) {}

XmlEntry::~XmlEntry() = default;

bool XmlEntry::Scan() { return fpParser->Scan(); }

void AppendUtf8(std::string& to, std::u16string_view text) {
  const auto append = [&to](char32_t bits) { to += static_cast<char>(bits); };
  for (std::size_t i = 0; i < text.size(); ++i) {
    char32_t c = text[i];
    const bool isPair = c >= 0xD800 && c < 0xDC00 && i + 1 < text.size();
    if (isPair) c = 0x10000 + ((c - 0xD800) << 10) + (text[++i] - 0xDC00);
    if (c < 0x80) {
      append(c);
    } else if (c < 0x800) {
      append(0xC0 | c >> 6);
      append(0x80 | (c & 0x3F));
    } else if (c < 0x10000) {
      append(0xE0 | c >> 12);
      append(0x80 | (c >> 6 & 0x3F));
      append(0x80 | (c & 0x3F));
    } else {
      append(0xF0 | c >> 18);
      append(0x80 | (c >> 12 & 0x3F));
      append(0x80 | (c >> 6 & 0x3F));
      append(0x80 | (c & 0x3F));
    }
  }
}

}  // namespace MCHost
