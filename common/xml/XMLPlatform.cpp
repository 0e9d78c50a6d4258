#include "common/xml/XMLPlatform.h"

#include <mutex>
#include <new>
#include <xercesc/util/PanicHandler.hpp>
#include <xercesc/util/PlatformUtils.hpp>
#include <xercesc/util/XMLUni.hpp>

namespace MCCommonXML {

namespace {

std::mutex gCounting;
bool gbFailed = false;

// In place of one that ends the program.
class Panic : public xercesc::PanicHandler {
 public:
  void panic(const PanicReasons /*reason*/) override { throw std::bad_alloc(); }
};

Panic gPanic;

}  // namespace

XMLPlatform::XMLPlatform() {
  const std::lock_guard lock(gCounting);
  if (gbFailed) throw std::bad_alloc();
  try {
    xercesc::XMLPlatformUtils::Initialize(xercesc::XMLUni::fgXercescDefaultLocale, nullptr,
                                          &gPanic);
  } catch (...) {  // of Xerces' types none is for the caller
    gbFailed = true;
    throw std::bad_alloc();
  }
}

XMLPlatform::~XMLPlatform() {
  const std::lock_guard lock(gCounting);
  xercesc::XMLPlatformUtils::Terminate();
}

}  // namespace MCCommonXML
