// The cases of a JSON Lines file, or of an array of objects: a key is a column, in the order in
// which they are met.
//
// What is null or not there is missing. Values that are objects or lists are refused, as is a key
// that a record has twice.
#pragma once

#include <arrow/io/type_fwd.h>

#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

#include "host/arrow/CellRows.h"
#include "host/arrow/JsonRecords.h"

namespace MCHost {

class JsonRows final : public ICellRows {
 public:
  // `source` names the file in messages.
  JsonRows(std::shared_ptr<arrow::io::InputStream> input, std::string source);

  bool Next(std::vector<RowCell>& cells) override;
  const std::vector<std::string>& Names() const override { return fNames; }
  std::string Place(std::size_t column) const override;

 private:
  class Handler;

  std::size_t ColumnOf(const std::string& key, std::size_t guess);
  [[noreturn]] void FailAt(std::size_t byte, const std::string& reason) const;
  [[noreturn]] void Fail(const std::string& reason) const;

  std::string fSource;
  JsonRecords fRecords;
  std::vector<std::string> fNames;
  std::unordered_map<std::string, std::size_t> fColumns;
};

}  // namespace MCHost
