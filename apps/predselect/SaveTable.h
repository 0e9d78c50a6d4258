// Option --save-data: the table as a file.
#pragma once

#include <string>
#include <vector>

namespace MCHost {
class DataTable;
}

namespace PredSelectApp {

struct SaveOptions;

class SaveTable {
 public:
  // Both are borrowed. Throws PredSelect::RequestError for keys that the data do not have: made
  // before the work, this says so before it.
  SaveTable(MCHost::DataTable& table, const SaveOptions& options);

  // Throws MCHost::HostIOError.
  void Write() const;

 private:
  MCHost::DataTable* fpTable;
  const SaveOptions* fpOptions;
  std::vector<int> fKeys;
};

}  // namespace PredSelectApp
