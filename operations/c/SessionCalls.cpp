#include <cstdint>
#include <memory>

#include "operations/AvailableThreads.h"
#include "operations/StateKey.h"
#include "operations/Version.h"
#include "operations/c/Arguments.h"
#include "operations/c/Guard.h"
#include "operations/c/Handles.h"

using namespace PredSelectC;

uint32_t predselect_abi_version(void) { return PREDSELECT_ABI_VERSION; }

const char* predselect_version(void) { return PredSelect::Version(); }

predselect_status predselect_session_open(predselect_session** session) {
  if (session == nullptr) return PREDSELECT_MISUSE;
  *session = nullptr;
  try {
    CatchBrokenInvariants();
    auto opened = std::make_unique<predselect_session>();
    // What has asked to stop is not asked again: it may have been a key that was pressed.
    opened->fSurroundings.fIsCancelled = [made = opened.get()] {
      if (!made->fbCancelled && made->fAskToStop && made->fAskToStop()) made->fbCancelled = true;
      return made->fbCancelled.load();
    };
    *session = opened.release();
    return PREDSELECT_OK;
  } catch (...) {
    return PREDSELECT_NO_MEMORY;
  }
}

void predselect_session_close(predselect_session* session) { delete session; }

const char* predselect_session_error(const predselect_session* session) {
  return session != nullptr ? session->fpError : "";
}

const char* predselect_session_notes(const predselect_session* session) {
  return session != nullptr ? session->fNotes.c_str() : "";
}

predselect_status predselect_session_set_application(predselect_session* session, const char* name,
                                                     const char* version) {
  return Guarded(session, [&] {
    MCHost::AppParams& application = session->fSurroundings.fApplication;
    application = {TextArgument(name, "name"), TextArgument(version, "version"),
                   application.fCopyright};
  });
}

predselect_status predselect_session_set_temp_folder(predselect_session* session,
                                                     const char* path) {
  return Guarded(session, [&] { session->fSurroundings.fTempPath = PathArgument(path, "path"); });
}

predselect_status predselect_session_set_cancel(predselect_session* session,
                                                predselect_cancel_query query, void* user_data) {
  return Guarded(session, [&] {
    session->fAskToStop = nullptr;
    if (query == nullptr) return;
    session->fAskToStop = [query, user_data] { return query(user_data) != 0; };
  });
}

void predselect_session_cancel(predselect_session* session) {
  if (session != nullptr) session->fbCancelled = true;
}

predselect_status predselect_session_set_progress(predselect_session* session,
                                                  predselect_progress_listener listener,
                                                  void* user_data) {
  return Guarded(session, [&] {
    session->fSurroundings.fReportProgress = nullptr;
    if (listener == nullptr) return;
    session->fSurroundings.fReportProgress = [listener, user_data](const std::string& text) {
      listener(user_data, text.c_str());
    };
  });
}

predselect_status predselect_session_set_state_keys(predselect_session* session,
                                                    const char* sign_key_path,
                                                    const char* verify_key_path) {
  return Guarded(session, [&] {
    const auto key = [](const char* path) {
      return PredSelect::ReadStateKey(path == nullptr ? "" : path);
    };
    const std::string signKey = key(sign_key_path);
    session->fVerifyKey = key(verify_key_path);
    session->fSurroundings.fStateKey = signKey;
  });
}

predselect_status predselect_session_set_threads(predselect_session* session, size_t threads) {
  return Guarded(session, [&] {
    if (threads > PredSelect::kMostThreads) throw Misuse("threads are more than 1024");
    session->fSurroundings.fThreads =
        threads == 0 ? PredSelect::AvailableThreads() : static_cast<int>(threads);
  });
}
