// What a table holds, as a text, for targets that hold it against another reading of the same.
#pragma once

#include <cmath>
#include <cstdint>
#include <cstdio>
#include <string>

#include "fuzz/FuzzCheck.h"
#include "host/data/DataTable.h"

namespace PredSelectFuzz {

// The names, kinds and cells of a table.
inline std::string ContentsOf(MCHost::DataTable& table) {
  std::string contents = std::to_string(table.CaseCount()) + " cases\n";
  for (int i = 0; i < table.ColumnCount(); ++i) {
    const KOVA_Variable& variable = table.GetVariable(i);
    contents += variable.GetName() + ":" + std::to_string(variable.GetType());
    const auto scan = table.Scan({i});
    while (const MCHost::TableBatch* batch = scan->Next()) {
      const MCHost::ColumnView& view = batch->fColumns.at(0);
      for (std::size_t k = 0; k < batch->fNCases; ++k) {
        if (view.fpNumbers != nullptr) {
          char digits[40];
          std::snprintf(digits, sizeof(digits), " %.17g", view.fpNumbers[k] + 0.0);  // no -0
          Require(std::isfinite(view.fpNumbers[k]), "a cell is finite or missing", contents);
          contents += digits;
        } else {
          const std::int32_t code = view.fpCodes[k];
          contents += code < 0 ? " ." : " \"" + view.fpDictionary->At(code) + "\"";
        }
      }
    }
    contents += "\n";
  }
  return contents;
}

}  // namespace PredSelectFuzz
