// Arrow arrays as a source of data.
#pragma once

#include <arrow/api.h>
#include <arrow/c/bridge.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "host/data/IArrowSource.h"

namespace MCHost {

// A source of columns in memory, in batches of the given length.
class BatchSource : public IArrowSource {
 public:
  BatchSource(std::vector<std::pair<std::string, std::shared_ptr<arrow::Array>>> columns,
              std::int64_t batchCases, int columnsAtATime = 1000)
      : fColumns(std::move(columns)), fBatchCases(batchCases), fColumnsAtATime(columnsAtATime) {}

  const std::string& Name() const override { return fName; }
  bool HasTypes() const override { return true; }
  int ColumnsAtATime() const override { return fColumnsAtATime; }
  void Open(const std::vector<int>* columns, ArrowArrayStream* stream) override {
    arrow::FieldVector fields;
    arrow::ArrayVector arrays;
    for (std::size_t i = 0; i < fColumns.size(); ++i) {
      const auto wanted = [i](int column) { return column == static_cast<int>(i); };
      if (columns != nullptr && std::none_of(columns->begin(), columns->end(), wanted)) continue;
      fields.push_back(arrow::field(fColumns[i].first, fColumns[i].second->type()));
      arrays.push_back(fColumns[i].second);
    }
    const std::int64_t n = arrays.empty() ? 0 : arrays[0]->length();
    const auto schema = arrow::schema(fields);
    const auto whole = arrow::RecordBatch::Make(schema, n, arrays);
    arrow::RecordBatchVector batches;
    for (std::int64_t at = 0; at < n; at += fBatchCases)
      batches.push_back(whole->Slice(at, fBatchCases));
    const auto reader = arrow::RecordBatchReader::Make(batches, schema).ValueOrDie();
    ASSERT_TRUE(arrow::ExportRecordBatchReader(reader, stream).ok());
  }

 private:
  std::string fName = "batches";
  std::vector<std::pair<std::string, std::shared_ptr<arrow::Array>>> fColumns;
  std::int64_t fBatchCases;
  int fColumnsAtATime;
};

}  // namespace MCHost
