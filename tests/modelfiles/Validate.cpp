#include "tests/modelfiles/Validate.h"

#include <xercesc/framework/MemBufInputSource.hpp>
#include <xercesc/parsers/XercesDOMParser.hpp>
#include <xercesc/sax/HandlerBase.hpp>
#include <xercesc/util/PlatformUtils.hpp>
#include <xercesc/util/TransService.hpp>

// Distributions' builds of Xerces give up, on purpose, the memory of an external DTD's declaration:
// that is how they mend its use after its end.
extern "C" const char* __lsan_default_suppressions() { return "leak:XMLScanner::scanProlog\n"; }

namespace {

class Collector : public xercesc::HandlerBase {
 public:
  void error(const xercesc::SAXParseException& exception) override {
    const xercesc::TranscodeToStr text(exception.getMessage(), "UTF-8");
    fFound += "line " + std::to_string(exception.getLineNumber()) + ": ";
    fFound += reinterpret_cast<const char*>(text.str());
    fFound += '\n';
  }
  void fatalError(const xercesc::SAXParseException& exception) override { error(exception); }
  void warning(const xercesc::SAXParseException& exception) override { error(exception); }

  std::string fFound;
};

}  // namespace

std::string ValidationErrors(const std::string& document) {
  xercesc::XMLPlatformUtils::Initialize();
  Collector collector;
  {
    xercesc::XercesDOMParser parser;
    parser.setValidationScheme(xercesc::XercesDOMParser::Val_Always);
    parser.setErrorHandler(&collector);
    const xercesc::MemBufInputSource source(reinterpret_cast<const XMLByte*>(document.data()),
                                            document.size(),
                                            PREDSELECT_SOURCE_DIR "/modelfiles/dtd/document.xml");
    parser.parse(source);
  }
  xercesc::XMLPlatformUtils::Terminate();
  return collector.fFound;
}
