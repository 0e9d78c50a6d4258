// A table of people, whole and in parts, and what their runs are compared by.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <random>
#include <string>
#include <vector>

#include "host/data/MemoryTable.h"
#include "host/output/OutputDocument.h"
#include "operations/TableOptions.h"

namespace MCTest {

using MCHost::MemoryTable;

constexpr int kRows = 900;

// Cells of a table of people, made by a formula; some are missing, some user-missing.
class People {
 public:
  explicit People(unsigned seed = 7) : fRandom(seed) {
    for (int i = 0; i < kRows; ++i) AddRow(i);
  }

  // The rows from `first` up to `end`.
  std::unique_ptr<MemoryTable> Table(int first, int end) const {
    auto table = std::make_unique<MemoryTable>();
    for (const auto& [name, cells] : fTexts) table->AddStrings(name, Slice(cells, first, end));
    for (const auto& [name, cells] : fNumbers) table->AddNumbers(name, Slice(cells, first, end));
    return table;
  }
  // As many rows in which everything is missing.
  std::unique_ptr<MemoryTable> Missing(int rows) const {
    auto table = std::make_unique<MemoryTable>();
    const auto n = static_cast<std::size_t>(rows);
    for (const auto& each : fTexts) {
      table->AddStrings(each.first, std::vector<std::optional<std::string>>(n));
    }
    for (const auto& each : fNumbers) {
      table->AddNumbers(each.first, std::vector<double>(n, MCMV::gMissingValue));
    }
    return table;
  }

 private:
  double Draw() { return std::uniform_real_distribution<double>(0, 1)(fRandom); }
  template <class T>
  static std::vector<T> Slice(const std::vector<T>& cells, int first, int end) {
    return {cells.begin() + first, cells.begin() + end};
  }
  std::optional<std::string> Word(std::initializer_list<const char*> words, double at) {
    if (Draw() < 0.04) return {};
    return *(words.begin() + static_cast<int>(at * static_cast<double>(words.size())) %
                                 static_cast<int>(words.size()));
  }
  double Number(double value) { return Draw() < 0.05 ? MCMV::gMissingValue : value; }

  void AddRow(int i) {
    const double u = Draw(), v = Draw(), w = Draw();
    const int income = static_cast<int>(3 * std::min(0.999, 0.7 * u + 0.3 * Draw()));
    constexpr const char* kIncomes[] = {"low", "middle", "high"};
    fTexts["income"].push_back(kIncomes[income]);
    if (Draw() < 0.03) fTexts["income"].back().reset();
    fTexts["home"].push_back(Word({"own", "rent", "shared", "other"}, 0.5 * u + 0.5 * v));
    fTexts["town"].push_back(Word({"a", "b", "c", "d", "e", "f", "g"}, w));
    fNumbers["age"].push_back(Number(std::floor(18 + 60 * (0.6 * u + 0.4 * w))));
    fNumbers["hours"].push_back(Draw() < 0.1 ? 99 : Number(20 + 30 * v + 10 * income));
    fNumbers["rooms"].push_back(Number(std::floor(1 + 6 * (0.4 * u + 0.6 * v))));
    fNumbers["noise"].push_back(w - 0.5);
    // Constant for long, so in whole parts.
    fNumbers["late"].push_back(i < 600 ? 2.5 : Draw());
    fNumbers["times"].push_back(std::floor(4 * Draw()));
    fNumbers["train"].push_back(Draw() < 0.7 ? 1 : 0);
  }

  std::mt19937 fRandom;
  std::map<std::string, std::vector<std::optional<std::string>>> fTexts;
  std::map<std::string, std::vector<double>> fNumbers;
};

PredSelect::TableOptions Said(bool weighted);

using Parts = std::vector<std::shared_ptr<MemoryTable>>;

// Seven parts, one without a row, one where all is missing, and the whole that they make.
Parts SevenParts(const People& people);
void Join(const People& people, MemoryTable& all);

// Pieces as one, and the merged ranges of parts, which are prepared for that.
std::string Merge(const std::vector<std::string>& pieces);
std::string RangesOf(const Parts& parts, bool weighted, std::vector<std::string>* each = nullptr);

std::string MessagesOf(const MCHost::OutputDocument& document);
// Messages and tables alike, numbers to 1e-12.
void ExpectSame(const MCHost::OutputDocument& found, const MCHost::OutputDocument& expected);

}  // namespace MCTest
