#include "tests/modelfiles/Documents.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <iostream>
#include <sstream>
#include <xercesc/framework/LocalFileInputSource.hpp>
#include <xercesc/framework/MemBufInputSource.hpp>
#include <xercesc/parsers/XercesDOMParser.hpp>
#include <xercesc/sax/EntityResolver.hpp>
#include <xercesc/sax/HandlerBase.hpp>
#include <xercesc/util/PlatformUtils.hpp>
#include <xercesc/util/XMLString.hpp>

namespace {

std::string Native(const XMLCh* text) {
  char* copy = xercesc::XMLString::transcode(text);
  const std::string native = copy;
  xercesc::XMLString::release(&copy);
  return native;
}

class Judge : public xercesc::HandlerBase {
 public:
  void error(const xercesc::SAXParseException& problem) override { Note(problem); }
  void fatalError(const xercesc::SAXParseException& problem) override { Note(problem); }
  void resetErrors() override {}
  xercesc::InputSource* resolveEntity(const XMLCh*, const XMLCh* systemId) override {
    const std::string dtd = std::filesystem::path(Native(systemId)).filename();
    XMLCh* path =
        xercesc::XMLString::transcode((PREDSELECT_SOURCE_DIR "/modelfiles/dtd/" + dtd).c_str());
    auto* source = new xercesc::LocalFileInputSource(path);  // the parser takes it over
    xercesc::XMLString::release(&path);
    return source;
  }
  std::string fSaid;

 private:
  void Note(const xercesc::SAXParseException& problem) {
    fSaid += std::to_string(problem.getLineNumber()) + ": " + Native(problem.getMessage()) + '\n';
  }
};

}  // namespace

std::string Complaints(const std::string& document) {
  xercesc::XMLPlatformUtils::Initialize();
  Judge judge;
  {
    xercesc::XercesDOMParser parser;
    parser.setValidationScheme(xercesc::XercesDOMParser::Val_Always);
    parser.setErrorHandler(&judge);
    parser.setEntityResolver(&judge);
    const xercesc::MemBufInputSource source(reinterpret_cast<const XMLByte*>(document.data()),
                                            document.size(), "document");
    parser.parse(source);
  }
  xercesc::XMLPlatformUtils::Terminate();
  return judge.fSaid;
}

ScratchFile::ScratchFile() {
  static int count = 0;
  fPath =
      testing::TempDir() + "predselect_" + std::to_string(getpid()) + '_' + std::to_string(++count);
}

ScratchFile::~ScratchFile() { std::remove(fPath.c_str()); }

void ScratchFile::Write(const std::string& content) const {
  std::ofstream(fPath, std::ios::binary | std::ios::trunc) << content;
}

std::string ScratchFile::Read() const {
  std::ostringstream content;
  content << std::ifstream(fPath, std::ios::binary).rdbuf();
  return content.str();
}

QuietErrors::QuietErrors() : fpBefore(std::cerr.rdbuf(fText.rdbuf())) {}

QuietErrors::~QuietErrors() { std::cerr.rdbuf(fpBefore); }
