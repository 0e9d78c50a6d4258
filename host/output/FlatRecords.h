// A table of records for programs, as a plain value: columns of numbers or of texts, one name each.
//
// Made of a table of the output (render/LayFlat.h, render/TableRecords.h) or column by column;
// handed out as lines of text (render/RenderRecords.h) or as an Arrow stream (FlatBatches).
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "host/data/ArrowStreamWriter.h"

namespace MCHost {

struct FlatColumn {
  std::string fName;
  std::string fLabel;  // what a page calls it; empty for nothing else
  bool fbNumeric = true;
  std::vector<double> fNumbers;                    // of a numeric column; missing values for none
  std::vector<std::optional<std::string>> fTexts;  // of any other

  std::size_t Size() const { return fbNumeric ? fNumbers.size() : fTexts.size(); }
  void AddMissing();
  // Numbers as their digits.
  void MakeText();
};

struct FlatRecords {
  std::string fSubtype;              // of the table, as programs know it: "Ranking"
  std::string fTitle;                // its key
  std::string fLabel;                // the title that a page shows
  std::vector<FlatColumn> fColumns;  // all of one length

  std::size_t Size() const { return fColumns.empty() ? 0 : fColumns.front().Size(); }

  // Puts others behind these. Columns meet by name; what one of both does not have is missing
  // there, and a column that is text in one is text.
  void Append(FlatRecords more);
};

// The records as one batch: numbers as 64-bit floating point, texts as UTF-8, nothing as null. A
// field has "label" as metadata, where there is one, the stream "title", "label" and "subtype".
class FlatBatches : public IArrowBatches {
 public:
  explicit FlatBatches(FlatRecords records);

  const std::vector<ArrowField>& Fields() const override { return fFields; }
  ArrowMetadata Metadata() const override;
  std::size_t Next(std::vector<ArrowCells>& columns) override;

 private:
  FlatRecords fRecords;
  std::vector<ArrowField> fFields;
  bool fbGiven = false;
};

}  // namespace MCHost
