// The cells of one column on their way out of the host, in the layout of the Arrow C data
// interface: numbers as 64-bit floating point, texts as UTF-8 with 32-bit offsets.
//
// Filled cell by cell, then exported once. What was exported owns itself and no longer needs
// anything of the host.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

struct ArrowArray;

namespace MCHost {

class ArrowCells {
 public:
  explicit ArrowCells(bool numeric) : fbNumeric(numeric) {}

  bool IsNumeric() const { return fbNumeric; }
  std::size_t Size() const { return fNCells; }

  // A missing number, NaN and the infinities become null. REQUIRES: IsNumeric().
  void AddNumbers(const double* values, std::size_t n);

  // REQUIRES: !IsNumeric(). Throws HostIOError beyond 2 GB of text.
  void AddText(std::string_view text);

  void AddMissing();

  // Moves the cells into `array`, which whoever receives it releases; they are empty afterwards.
  void Export(ArrowArray* array);

 private:
  struct Exported;

  void AddValidity(bool valid);

  bool fbNumeric;
  std::size_t fNCells = 0;
  std::size_t fNMissing = 0;
  std::vector<std::uint8_t> fValid;  // a bit a cell, from the lowest
  std::vector<double> fNumbers;
  std::vector<std::int32_t> fOffsets{0};  // where each text starts, and where the last one ends
  std::string fTexts;
};

// Moves columns of one length into `array` as one batch of records.
void ExportBatch(std::vector<ArrowCells> columns, std::size_t nRecords, ArrowArray* array);

}  // namespace MCHost
