#include "operations/c/Guard.h"

#include <mutex>
#include <new>

#include "common/MCAssert.h"
#include "host/session/HostIOError.h"
#include "operations/RequestError.h"
#include "operations/c/Handles.h"

namespace PredSelectC {

namespace {

thread_local int gCallsUnderWay = 0;  // on this thread, those inside a callback included

MCCommon::AssertionHandler gpHandlerBefore = nullptr;

void OnBrokenInvariant(const char* text, const char* source) {
  if (gCallsUnderWay == 0) return gpHandlerBefore(text, source);
  throw std::logic_error("internal error in " + std::string(source) + ": the condition \"" + text +
                         "\" does not hold");
}

}  // namespace

void CatchBrokenInvariants() {
  static std::once_flag installed;
  std::call_once(installed,
                 [] { gpHandlerBefore = MCCommon::SetAssertionHandler(OnBrokenInvariant); });
}

Call::Call(predselect_session* session) noexcept : fpSession(session) {
  if (session != nullptr && session->fBusy.test_and_set()) fpSession = nullptr;
  if (fpSession == nullptr) return;
  ++gCallsUnderWay;
  session->fbCancelled = false;
  session->fNotes.clear();
  session->fError.clear();
  session->fpError = session->fError.c_str();
}

Call::~Call() {
  if (fpSession == nullptr) return;
  --gCallsUnderWay;
  fpSession->fBusy.clear();
}

predselect_status Call::Failed() noexcept {
  const auto keep = [this](predselect_status status, const std::exception& failure) {
    try {
      fpSession->fError = failure.what();
      fpSession->fpError = fpSession->fError.c_str();
    } catch (...) {
      fpSession->fpError = "there is not enough memory to say what went wrong";
    }
    return status;
  };
  try {
    throw;
  } catch (const Misuse& failure) {
    return keep(PREDSELECT_MISUSE, failure);
  } catch (const PredSelect::RequestError& failure) {
    return keep(PREDSELECT_BAD_REQUEST, failure);
  } catch (const MCHost::HostIOError& failure) {
    return keep(PREDSELECT_DATA_ERROR, failure);
  } catch (const std::bad_alloc&) {
    fpSession->fpError = "there is not enough memory";
    return PREDSELECT_NO_MEMORY;
  } catch (const std::exception& failure) {
    return keep(PREDSELECT_BROKEN_INVARIANT, failure);
  } catch (...) {
    fpSession->fpError = "something unknown was thrown";
    return PREDSELECT_BROKEN_INVARIANT;
  }
}

}  // namespace PredSelectC
