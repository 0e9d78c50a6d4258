// Whether a column of texts holds numbers but for a few cells, as where a code for missing values
// is not known.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace MCHost {

class NearlyNumbers {
 public:
  // Takes the next cell that is not null. Texts are cut to a length that can be shown.
  void Count(bool isNumber, std::string_view text) {
    if (!fbOpen) return;
    ++fNCells;
    if (!isNumber) CountText(text);
  }

  // False once the column has proved to be one of texts; no further cell needs to be counted.
  bool IsOpen() const { return fbOpen; }

  // Whether there are such cells, and few of them: one in twenty, or one text over and over.
  bool AreThere() const;

  std::int64_t CellCount() const { return fNCells; }
  std::int64_t TextCount() const { return fNTexts; }
  // The first few different ones.
  const std::vector<std::string>& Texts() const { return fTexts; }
  bool HasMoreTexts() const { return fbMore; }

 private:
  void CountText(std::string_view text);

  std::int64_t fNCells = 0;
  std::int64_t fNTexts = 0;
  std::vector<std::string> fTexts;
  bool fbMore = false;
  bool fbOpen = true;
};

}  // namespace MCHost
