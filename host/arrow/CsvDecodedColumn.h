// The cells of one column while lines of text are taken apart.
#pragma once

#include <arrow/buffer.h>
#include <arrow/result.h>
#include <arrow/type_fwd.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace MCHost {

class CsvDecodedColumn {
 public:
  // What other bytes may be read behind a text that is added.
  static constexpr std::size_t kBehind = 8;

  // Room for so many cells of doubles, of a dictionary of texts (each at least once, by 32-bit
  // codes), of texts, or of nothing but nulls.
  static arrow::Result<CsvDecodedColumn> Make(std::shared_ptr<arrow::DataType> type,
                                              std::size_t most);

  // The doubles, to be set by their rows, all but those of nulls.
  double* Numbers() { return fpNumbers; }

  // One cell after the other. REQUIRES: texts with kBehind, or a dictionary of them.
  void AddWord(std::size_t row, std::string_view text) { fpCodes[row] = CodeOf(text); }
  void AddText(std::string_view text);
  // Of doubles and dictionaries by their rows.
  arrow::Status SetNull(std::size_t row);

  // So many cells.
  arrow::Result<std::shared_ptr<arrow::ArrayData>> Finish(std::size_t rows);

 private:
  static constexpr std::size_t kSlots = 256;

  std::int32_t CodeOf(std::string_view text);

  std::shared_ptr<arrow::DataType> fpType;
  std::size_t fMost = 0;
  std::size_t fnNulls = 0;
  std::shared_ptr<arrow::Buffer> fpValid;  // null until there is a null
  std::shared_ptr<arrow::Buffer> fpCells;
  double* fpNumbers = nullptr;
  std::int32_t* fpCodes = nullptr;
  std::vector<std::int32_t> fEnds{0};  // of the texts one after the other
  std::string fTexts;
  // Of a dictionary: codes of some texts, by their hash; -1 for none.
  std::vector<std::int32_t> fSlots;
};

}  // namespace MCHost
