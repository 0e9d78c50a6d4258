// Option --save-data: the table as a file.
#pragma once

#include <string>
#include <vector>

#include "operations/Surroundings.h"

namespace MCHost {
class DataTable;
struct DataTarget;
}  // namespace MCHost

namespace PredSelectApp {

struct SaveOptions;

class SaveTable {
 public:
  // Both are borrowed. Throws PredSelect::RequestError for keys that the data do not have: made
  // before the work, this says so before it.
  SaveTable(MCHost::DataTable& table, const SaveOptions& options);

  // Throws MCHost::HostIOError.
  void Write() const;

  // The same, to wherever it is wanted.
  void WriteTo(const MCHost::DataTarget& target) const;

  // Writes the table where that is wanted and the commands have filled it; else says that it does
  // not, on standard error. Returns the exit code.
  int WriteAfter(PredSelect::Outcome outcome) const;

 private:
  MCHost::DataTable* fpTable;
  const SaveOptions* fpOptions;
  std::vector<int> fKeys;
};

}  // namespace PredSelectApp
