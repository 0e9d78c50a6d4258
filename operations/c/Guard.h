// The one way in and out of the C interface: every entry that has a session runs its body here.
//
// While the body runs the session is busy: a second call with it, from a callback or another
// thread, is misuse and changes nothing. Whatever the body throws becomes a status and the
// session's error text, also a broken invariant, which would end the process elsewhere.
#pragma once

#include <exception>
#include <stdexcept>
#include <string>
#include <type_traits>

#include "operations/c/predselect.h"

namespace PredSelectC {

// A caller that does not keep to the interface.
class Misuse : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// Makes broken invariants of calls under way exceptions. They go to the handler before in all other
// cases. Once a process; more often does nothing.
void CatchBrokenInvariants();

// One call with a session that is not busy with another.
class Call {
 public:
  explicit Call(predselect_session* session) noexcept;
  Call(const Call&) = delete;
  Call& operator=(const Call&) = delete;
  ~Call();

  // False for no session or a busy one.
  bool IsEntered() const { return fpSession != nullptr; }

  // The status of the exception that is being handled; its text becomes the session's.
  predselect_status Failed() noexcept;

 private:
  predselect_session* fpSession;
};

// `body` gives nothing, or a status.
template <class Body>
predselect_status Guarded(predselect_session* session, Body body) noexcept {
  Call call(session);
  if (!call.IsEntered()) return PREDSELECT_MISUSE;
  try {
    if constexpr (std::is_void_v<std::invoke_result_t<Body>>) {
      body();
      return PREDSELECT_OK;
    } else {
      return body();
    }
  } catch (...) {
    return call.Failed();
  }
}

}  // namespace PredSelectC
