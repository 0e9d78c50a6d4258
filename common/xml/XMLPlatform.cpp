#include "common/xml/XMLPlatform.h"

#include <mutex>
#include <new>
#include <xercesc/util/PanicHandler.hpp>
#include <xercesc/util/PlatformUtils.hpp>
#include <xercesc/util/XMLUni.hpp>

namespace MCCommonXML {

namespace {

std::mutex gCounting;

// In place of one that ends the program.
class Panic : public xercesc::PanicHandler {
 public:
  void panic(const PanicReasons /*reason*/) override {
    fbMet = true;
    throw std::bad_alloc();
  }

  bool fbMet = false;
};

Panic gPanic;

}  // namespace

XMLPlatform::XMLPlatform() {
  const std::lock_guard lock(gCounting);
  if (gPanic.fbMet) throw std::bad_alloc();
  xercesc::XMLPlatformUtils::Initialize(xercesc::XMLUni::fgXercescDefaultLocale, nullptr, &gPanic);
}

XMLPlatform::~XMLPlatform() {
  const std::lock_guard lock(gCounting);
  xercesc::XMLPlatformUtils::Terminate();
}

}  // namespace MCCommonXML
