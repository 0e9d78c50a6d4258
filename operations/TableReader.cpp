#include "operations/TableReader.h"

#include <utility>

#include "common/MissingValue.h"
#include "host/output/ShowText.h"

namespace PredSelect {

using MCHost::OutputCell;
using MCHost::OutputText;

TableReader::TableReader(const MCHost::OutputTable& table) : fTable(table) {
  for (const OutputCell& cell : table.fCells) fCells[cell.fPlace] = &cell;
  for (std::size_t dimension = 0; dimension < table.fDimensions.size(); ++dimension) {
    fPaths.emplace_back();
    for (const int leaf : Leaves(dimension)) {
      std::string path;
      for (const int category : table.fDimensions[dimension].PathTo(leaf)) {
        path += (path.empty() ? "" : ": ") + MCHost::TextId(LabelOf(dimension, category));
      }
      fPaths.back().emplace(std::move(path), leaf);
    }
  }
}

int TableReader::Find(std::size_t dimension, const std::string& path) const {
  const auto found = fPaths[dimension].find(path);
  return found == fPaths[dimension].end() ? -1 : found->second;
}

const OutputText& TableReader::LabelOf(std::size_t dimension, int category) const {
  return fTable.fDimensions[dimension].fCategories[static_cast<std::size_t>(category)].fLabel;
}

const OutputCell* TableReader::At(const std::vector<int>& place) const {
  const auto found = fCells.find(place);
  return found == fCells.end() ? nullptr : found->second;
}

double TableReader::Number(const std::vector<int>& place) const {
  const OutputCell* cell = At(place);
  const auto* number = cell == nullptr ? nullptr : std::get_if<double>(&cell->fValue);
  return number == nullptr ? MCMV::gMissingValue : *number;
}

OutputText TableReader::Text(const std::vector<int>& place) const {
  const OutputCell* cell = At(place);
  const auto* text = cell == nullptr ? nullptr : std::get_if<OutputText>(&cell->fValue);
  return text == nullptr ? OutputText() : *text;
}

}  // namespace PredSelect
