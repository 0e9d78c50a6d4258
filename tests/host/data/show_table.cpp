// Prints the table that a file is read as, or why it is not, as JSON, in memory and streamed; for
// tests/host/data/odd_files.py.
//   show_table FILE [OPTION[=WORD]]...
#include <exception>
#include <iostream>
#include <memory>
#include <nlohmann/json.hpp>
#include <string>

#include "common/MissingValue.h"
#include "host/arrow/DataFile.h"
#include "host/session/HostIOError.h"

namespace {

using MCHost::DataTable;
using nlohmann::ordered_json;

ordered_json CellsOf(DataTable& table, int column) {
  ordered_json cells = ordered_json::array();
  const auto scan = table.Scan({column});
  while (const MCHost::TableBatch* batch = scan->Next()) {
    const MCHost::ColumnView& view = batch->fColumns[0];
    for (std::size_t i = 0; i < batch->fNCases; ++i) {
      if (view.fpNumbers != nullptr) {
        const double value = view.fpNumbers[i];
        cells.push_back(MCMV::IsMissing(value) ? ordered_json() : ordered_json(value));
      } else {
        const int code = view.fpCodes[i];
        cells.push_back(code < 0 ? ordered_json() : ordered_json(view.fpDictionary->At(code)));
      }
    }
  }
  return cells;
}

ordered_json Show(const std::string& path, const MCHost::DataFileOptions& options,
                  MCHost::TableStorage storage) {
  try {
    const auto table = MCHost::OpenDataFile(path, options, storage);
    ordered_json shown{{"columns", ordered_json::object()}, {"notes", table->Notes()}};
    for (int i = 0; i < table->ColumnCount(); ++i) {
      shown["columns"][table->GetVariable(i).GetName()] = CellsOf(*table, i);
    }
    return shown;
  } catch (const MCHost::HostIOError& error) {
    return {{"error", error.Place() + ": " + error.Reason()}};
  }
}

}  // namespace

int main(int argc, char** argv) {
  MCHost::DataFileOptions options;
  for (int i = 2; i < argc; ++i) {
    const std::string word = argv[i];
    const std::size_t equals = std::min(word.find('='), word.size());
    const std::string value = equals < word.size() ? word.substr(equals + 1) : "";
    const std::string wrong =
        MCHost::SetReadingOption(options.fReading, word.substr(0, equals), value);
    if (wrong.empty()) continue;
    std::cout << ordered_json{{"error", wrong}} << "\n";
    return 0;
  }
  const ordered_json kept = Show(argv[1], options, MCHost::TableStorage::kMemory);
  const ordered_json streamed = Show(argv[1], options, MCHost::TableStorage::kStreamed);
  if (kept != streamed) {
    std::cout << ordered_json{{"error", "memory and stream differ"},
                              {"memory", kept},
                              {"streamed", streamed}}
              << "\n";
    return 0;
  }
  std::cout << kept << "\n";
  return 0;
}
