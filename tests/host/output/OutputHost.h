// A session without data over an output document, installed for the thread.
#pragma once

#include <string>

#include "host/data/MemoryTable.h"
#include "host/output/OutputDocument.h"
#include "host/session/Session.h"
#include "host/session/SessionScope.h"

namespace MCTest {

class OutputHost {
 public:
  OutputHost() : fSession(fTable, fDocument), fScope(fSession) { fDocument.BeginRun("SELECTPRED"); }

  MCHost::MemoryTable fTable;
  MCHost::OutputDocument fDocument;
  MCHost::Session fSession;

 private:
  MCHost::SessionScope fScope;
};

}  // namespace MCTest
