// The first rows of a text, taken apart by a delimiter and a quote that are being tried.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace MCHost {

class CsvSample {
 public:
  // `isWhole`: the text ends where the file does; else its last row may be cut and is left out.
  CsvSample(std::string_view text, bool isWhole, char delimiter, char quote);

  const std::vector<std::vector<std::string>>& Rows() const { return fRows; }
  std::size_t Width() const { return fRows.empty() ? 0 : fRows[0].size(); }
  char Delimiter() const { return fDelimiter; }
  char Quote() const { return fQuote; }

  // Empties the cells below the first row that hold one of these texts, in one column or in all.
  void Empty(const std::vector<std::string>& texts);
  void Empty(const std::vector<std::string>& texts, std::size_t column);

  // Whether (nearly) all rows have as many fields as the first, two at least, and quotes close.
  bool IsTable() const;
  bool IsExact() const { return IsTable() && fnOdd == 0; }

  // Fields that begin with the quote.
  std::size_t QuotedCount() const { return fnQuoted; }
  // Whether each field that the quote opens is closed by it, before a delimiter or a line's end.
  bool AreQuotesSound() const { return fbSound; }

 private:
  std::size_t TakeField(std::string_view text, std::size_t at, std::string& field);
  std::size_t TakeQuoted(std::string_view text, std::size_t at, std::string& field);

  char fDelimiter;
  char fQuote;
  std::vector<std::vector<std::string>> fRows;
  std::size_t fnQuoted = 0;
  std::size_t fnOdd = 0;  // rows of another width
  bool fbSound = true;
};

}  // namespace MCHost
