// What the handles of the C interface are behind its header.
#pragma once

#include <atomic>
#include <functional>
#include <memory>
#include <string>

#include "host/data/DataTable.h"
#include "host/output/OutputDocument.h"
#include "modelfiles/ComponentFile.h"
#include "operations/Surroundings.h"
#include "operations/c/predselect.h"

struct predselect_session {
  PredSelect::Surroundings fSurroundings;
  std::string fVerifyKey;  // that states must be signed with; empty for none
  std::atomic_flag fBusy;  // a call is under way
  // The callback, or another thread, has asked to stop it.
  std::atomic<bool> fbCancelled = false;
  std::function<bool()> fAskToStop;  // the cancel callback, empty for none
  std::string fNotes;                // of the last call
  std::string fError;                // of the last call
  const char* fpError = "";          // it, or a fixed text where there was no memory for it
};

// Shared with the results and streams that were made from it.
struct predselect_table {
  std::shared_ptr<MCHost::DataTable> fpTable;
  std::string fName;
  std::string fNotes;
};

struct predselect_state {
  ComponentFile fState;
  std::string fName;  // what messages call it
};

struct predselect_piece {
  std::string fBytes;
};

struct predselect_result {
  MCHost::OutputDocument fDocument;
  std::shared_ptr<MCHost::DataTable> fpTable;  // null for a result without one
  int fFirstNewColumn = 0;
  int fNewColumnsEnd = 0;
  std::string fJson;  // empty until it is asked for
  std::string fPage;
  std::string fReport;
  std::string fKept;
};
