#include "host/arrow/CsvSample.h"

#include <algorithm>
#include <utility>

namespace MCHost {

namespace {

constexpr std::size_t kMostRows = 1000;
constexpr std::size_t kOddOfRows = 10;  // less than one row in so many may have another width

bool IsLineEnd(char c) { return c == '\n' || c == '\r'; }

}  // namespace

CsvSample::CsvSample(std::string_view text, bool isWhole, char delimiter, char quote)
    : fDelimiter(delimiter), fQuote(quote) {
  std::size_t at = text.starts_with("\xEF\xBB\xBF") ? 3 : 0;
  while (fRows.size() < kMostRows) {
    while (at < text.size() && IsLineEnd(text[at])) ++at;
    if (at == text.size()) break;
    std::vector<std::string> row;
    for (bool isMore = true; isMore; ++at) {
      at = TakeField(text, at, row.emplace_back());
      isMore = at < text.size() && text[at] == fDelimiter;
    }
    if (at > text.size() && !isWhole) break;
    at = std::min(at, text.size());
    fRows.push_back(std::move(row));
  }
  fnOdd =
      static_cast<std::size_t>(std::count_if(fRows.begin(), fRows.end(), [this](const auto& row) {
        return row.size() != fRows[0].size();
      }));
}

// Gives the place behind the field.
std::size_t CsvSample::TakeField(std::string_view text, std::size_t at, std::string& field) {
  const auto isEnd = [&](std::size_t place) {
    return place >= text.size() || text[place] == fDelimiter || IsLineEnd(text[place]);
  };
  if (fQuote != '\0' && at < text.size() && text[at] == fQuote) {
    ++fnQuoted;
    at = TakeQuoted(text, at + 1, field);
    fbSound &= isEnd(at);
  }
  while (!isEnd(at)) field += text[at++];
  return std::min(at, text.size());
}

// The same for what stands in quotes.
std::size_t CsvSample::TakeQuoted(std::string_view text, std::size_t at, std::string& field) {
  while (true) {
    const std::size_t close = text.find(fQuote, at);
    field += text.substr(at, close - at);
    if (close == std::string_view::npos) return text.size();
    at = close + 1;
    if (at == text.size() || text[at] != fQuote) return at;
    field += text[at++];
  }
}

void CsvSample::Empty(const std::vector<std::string>& texts) {
  for (std::size_t j = 0; j < Width(); ++j) Empty(texts, j);
}

void CsvSample::Empty(const std::vector<std::string>& texts, std::size_t column) {
  for (std::size_t i = 1; i < fRows.size(); ++i) {
    if (column >= fRows[i].size()) continue;
    std::string& cell = fRows[i][column];
    if (std::find(texts.begin(), texts.end(), cell) != texts.end()) cell.clear();
  }
}

bool CsvSample::IsTable() const {
  return Width() >= 2 && fbSound && fnOdd * kOddOfRows < fRows.size();
}

}  // namespace MCHost
