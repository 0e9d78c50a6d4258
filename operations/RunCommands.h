// A text of commands, run over a table.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "host/session/ISession.h"
#include "operations/ModelFile.h"
#include "operations/Surroundings.h"

namespace MCHost {
class DataTable;
class OutputDocument;
}  // namespace MCHost

namespace PredSelect {

// Empty unless named.
struct RunRequest {
  std::string fCommands{};       // one or more, each ended by a period at the end of a line,
                                 // or before the next one's first word
  std::string fStatePath{};      // where the last command's engine is saved; empty: nowhere
  std::string fResultsFolder{};  // made for the result documents; empty: none are written
  // What a file is there for that no command may write over ("the data"), empty for nothing. The
  // state's file need not be among them.
  std::function<std::string(const std::string& path)> fUseOf{};
  // Kilobytes of memory for the cases of a command that needs it and states none; 0: the command's
  // own default. A warning says so where no command takes it. See AutomaticMemory.
  double fMemory = 0.0;
  // Receives what each command would do that was understood, and then none is done.
  std::vector<MCHost::CommandPlan>* fpPlans = nullptr;
  // The model of the last command, as a file for other programs; no file: not wanted.
  ExportRequest fExport{};
  // How the models' probabilities are calibrated. A warning says so where no command builds one.
  MCHost::CalibrationWish fCalibration{};
};

// Throws MCHost::HostIOError where the state, the result documents or the exported model could not
// be written, RequestError for a model of no format.
// RunCommands begins with it; a caller who reads much data first may ask earlier.
void CheckOutputs(const RunRequest& request);

// Runs the commands in order, each in a run of the document, whose data source is the caller's to
// name. Macros that one sets are there for the later ones; one that reports an error does not keep
// the later ones from running. The new variables of a command stay in the table.
// Files that the commands write take their places together, at the end, in the way of
// MCHost::OutputGroup: none does when the run is cancelled, or when a command lacked data, memory
// or room for a file. Throws RequestError for a text without a command, and for a model that is to
// be exported of a command that builds none; MCHost::HostIOError for outputs that cannot be written
// and for data that cannot be read before a pass. REQUIRES: the table was prepared.
Outcome RunCommands(MCHost::DataTable& table, MCHost::OutputDocument& document,
                    const RunRequest& request, const Surroundings& surroundings);

}  // namespace PredSelect
