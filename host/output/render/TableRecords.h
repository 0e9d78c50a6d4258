// A pivot table laid flat, to be handed out as an Arrow stream: one record a row of the page (layer
// by layer), for programs that want to sort, join and plot.
//
// Fields, in order:
//   - of each row dimension, then of each layer dimension, text: "<name>: Group 1", ... for the
//     headings of nested categories from the outermost, null where a category has fewer; then
//     "<name>", the category itself;
//   - of each column, its keys joined with ": " ("Value" where there are none): numbers at full
//     precision, or text in a column that holds any. Missing cells are null. Metadata "label": as
//     it is shown.
// Texts are what programs know them by: keys of the string table, names and values. A name that is
// taken already gets " 2", " 3", ... behind it. Footnotes and captions are left to the JSON
// document. Metadata of the stream: "title" (a key), "label" (the title as it is shown), "subtype".
#pragma once

#include <cstddef>
#include <set>
#include <string>
#include <vector>

#include "host/data/ArrowStreamWriter.h"
#include "host/output/OutputTable.h"
#include "host/output/render/TableAxis.h"

namespace MCHost {

class TableRecords : public IArrowBatches {
 public:
  // Reads the table whole, and keeps nothing of it.
  explicit TableRecords(const OutputTable& table);

  const std::vector<ArrowField>& Fields() const override { return fFields; }
  ArrowMetadata Metadata() const override { return fMetadata; }
  std::size_t Next(std::vector<ArrowCells>& columns) override;

 private:
  struct Record {
    const AxisEntry* fpRow;
    const AxisEntry* fpLayer;
  };

  void AddKeys(const OutputTable& table, OutputDimension::Axis axis,
               const std::vector<Record>& records);
  void AddKey(const OutputDimension& dimension, const std::vector<int>& leaves);
  void AddValues(const OutputTable& table, const std::vector<Record>& records);
  ArrowCells& AddField(const std::string& name, bool numeric, ArrowMetadata metadata);

  std::vector<ArrowField> fFields;
  ArrowMetadata fMetadata;
  std::set<std::string> fNames;
  std::vector<ArrowCells> fColumns;
  std::size_t fNRecords = 0;
};

}  // namespace MCHost
