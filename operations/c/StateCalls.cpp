#include <memory>
#include <string>

#include "operations/ExportModel.h"
#include "operations/MergeStates.h"
#include "operations/ModelFile.h"
#include "operations/ScoreTable.h"
#include "operations/StateFile.h"
#include "operations/c/Arguments.h"
#include "operations/c/Guard.h"
#include "operations/c/Handles.h"

using namespace PredSelectC;

predselect_status predselect_state_load(predselect_session* session, const char* path,
                                        predselect_state** state) {
  Clear(state);
  return Guarded(session, [&] {
    predselect_state*& out = Given(state, "state");
    auto loaded = std::make_unique<predselect_state>();
    loaded->fName = PathArgument(path, "path");
    loaded->fState = PredSelect::LoadState(loaded->fName, session->fVerifyKey);
    out = loaded.release();
  });
}

predselect_status predselect_state_set_name(predselect_session* session, predselect_state* state,
                                            const char* name) {
  return Guarded(session, [&] { Given(state, "state").fName = TextArgument(name, "name"); });
}

predselect_status predselect_state_save(predselect_session* session, const predselect_state* state,
                                        const char* path) {
  return Guarded(session, [&] {
    PredSelect::SaveState(Given(state, "state").fState, PathArgument(path, "path"),
                          session->fSurroundings.fStateKey);
  });
}

predselect_status predselect_state_merge(predselect_session* session, predselect_state* into,
                                         const predselect_state* from) {
  return Guarded(session, [&] {
    const predselect_state& added = Given(from, "from");
    if (into == from) throw Misuse("a state cannot be merged into itself");
    PredSelect::MergeStates(Given(into, "into").fState, added.fState, added.fName);
  });
}

predselect_status predselect_state_pmml(predselect_session* session, const predselect_state* state,
                                        const char* path) {
  return Guarded(session, [&] {
    const predselect_state& model = Given(state, "state");
    PredSelect::ExportModel(PredSelect::ModelOf(model.fState, model.fName),
                            PathArgument(path, "path"), session->fSurroundings.fApplication);
  });
}

predselect_status predselect_state_export(predselect_session* session,
                                          const predselect_state* state, const char* path,
                                          const predselect_export_options* options) {
  return Guarded(session, [&] {
    const predselect_export_options given = GivenOptions(options);
    const predselect_state& model = Given(state, "state");
    PredSelect::ExportRequest request;
    request.fFile = PathArgument(path, "path");
    request.fTo = TextArgument(given.format, "format", "");
    request.fTable = TextArgument(given.table, "table", request.fTable.c_str());
    for (const std::string& note :
         PredSelect::WriteModelFile(PredSelect::ModelOf(model.fState, model.fName), request)) {
      session->fNotes += note + "\n";
    }
  });
}

void predselect_state_close(predselect_state* state) { delete state; }
