// The cells of record batches as the text of a CSV file, each in a form from which its value can be
// had again:
//   null                   nothing
//   boolean                true, false
//   integer, decimal       all its digits
//   floating point         as many digits as tell it from its neighbours; inf, -inf, NaN
//   date, timestamp        2024-02-29, 2024-02-29T12:30:00.5, and Z behind it where it has a zone
//   time of day, duration  12:30:00.5; seconds
//   string                 itself, in quotes where the format needs them; "" for an empty one
// and a dictionary's as those of its values.
#pragma once

#include <arrow/type_fwd.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace MCHost {

class CsvCells {
 public:
  // `target` names the file that is written in messages. Without a delimiter (0) texts are as they
  // are.
  CsvCells(char delimiter, std::string target)
      : fDelimiter(delimiter), fTarget(std::move(target)) {}

  // Takes the place of the cells before. Throws HostIOError for a type that has no text.
  void Format(const arrow::RecordBatch& batch);

  // Of column j, without anything where it is null.
  std::string_view Cell(std::int64_t at, std::size_t j) const;

  // Appends the cells of a case with delimiters between them.
  void AppendCase(std::int64_t at, std::string& row) const;

 private:
  struct Column {
    std::string fText;
    std::vector<std::size_t> fEnds;  // of each cell in the text
  };

  void FormatColumn(const arrow::Array& array, const std::string& name, Column& column) const;

  char fDelimiter;
  std::string fTarget;
  std::vector<Column> fColumns;
};

}  // namespace MCHost
