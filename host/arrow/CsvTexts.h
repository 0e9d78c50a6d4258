// Columns of a CSV file that are read as texts, and turned into what they are here: numbers with
// thousands marks, columns with null texts of their own, what is rare.
#pragma once

#include <arrow/record_batch.h>
#include <arrow/result.h>

#include <memory>
#include <string>
#include <vector>

#include "host/arrow/CsvNumbers.h"

namespace MCHost {

class CsvTexts {
 public:
  explicit CsvTexts(CsvNumbers numbers) : fNumbers(numbers) {}

  // `column` is its place in the batches, `type` what its cells become.
  void Add(int column, std::shared_ptr<arrow::DataType> type, std::vector<std::string> nulls) {
    fColumns.push_back({column, std::move(type), std::move(nulls)});
  }

  // Nobody has looked at all cells: one is an error also where only its type would take it.
  void ExpectNothing() { fbChecked = false; }

  // An error for a text that is not of the type.
  arrow::Result<std::shared_ptr<arrow::RecordBatch>> Turn(
      std::shared_ptr<arrow::RecordBatch> batch) const;

  std::shared_ptr<arrow::Schema> TurnedSchema(const arrow::Schema& schema) const;

  // The same for each batch of a reader; itself where no column was added.
  std::shared_ptr<arrow::RecordBatchReader> Turn(
      std::shared_ptr<arrow::RecordBatchReader> batches) const;

 private:
  struct Column {
    int fPlace;
    std::shared_ptr<arrow::DataType> fpType;
    std::vector<std::string> fNulls;
  };

  arrow::Result<std::shared_ptr<arrow::Array>> TurnColumn(const Column& column,
                                                          const arrow::Array& texts) const;
  arrow::Result<std::shared_ptr<arrow::Array>> Numbers(const arrow::Array& texts) const;

  CsvNumbers fNumbers;
  bool fbChecked = true;
  std::vector<Column> fColumns;
};

}  // namespace MCHost
