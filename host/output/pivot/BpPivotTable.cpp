#include "host/output/pivot/BpPivotTable.h"

#include <algorithm>

#include "common/MCAssert.h"
#include "common/MissingValue.h"
#include "host/output/IOutputSink.h"
#include "host/output/TellApart.h"
#include "host/session/ISession.h"
#include "host/session/SessionScope.h"

using MCHost::OutputCell;
using MCHost::OutputDimension;
using MCHost::OutputFormat;
using MCHost::OutputText;

namespace {

constexpr const char* kSource = "host/output/BpPivotTable";

}  // namespace

BpPivotTable::BpPivotTable(const std::string& titleKey, std::string subtype) {
  fTable.fTitle = OutputText::Key(titleKey);
  fTable.fSubtype = std::move(subtype);
}

BpDimension BpPivotTable::RowDimension(const std::string& nameKey) {
  return AddDimension(nameKey, OutputDimension::kRow);
}

BpDimension BpPivotTable::ColumnDimension(const std::string& nameKey) {
  return AddDimension(nameKey, OutputDimension::kColumn);
}

BpDimension BpPivotTable::LayerDimension(const std::string& nameKey) {
  return AddDimension(nameKey, OutputDimension::kLayer);
}

BpDimension BpPivotTable::AddDimension(const std::string& nameKey, OutputDimension::Axis axis) {
  fTable.fDimensions.push_back({OutputText::Key(nameKey), axis, false, {}});
  return {this, static_cast<int>(fTable.fDimensions.size()) - 1};
}

void BpPivotTable::SetCell(std::initializer_list<BpCategory> place, double value) {
  OutputCell& cell = CellAt(place);
  if (!MCMV::IsMissing(value)) cell.fValue = value;
  for (const BpCategory& category : place) {
    const OutputFormat format = At(category.fDimension, category.fCategory).fFormat;
    if (format != OutputFormat::kText) cell.fFormat = format;
  }
}

void BpPivotTable::SetCell(std::initializer_list<BpCategory> place, OutputText value) {
  CellAt(place).fValue = std::move(value);
}

void BpPivotTable::Show() {
  MCHost::TellApart(fTable);
  MCHost::CurrentSession().Output().AddTable(std::move(fTable));
}

MCHost::OutputCategory& BpPivotTable::At(int dimension, int category) {
  OutputDimension& found = fTable.fDimensions[static_cast<std::size_t>(dimension)];
  return found.fCategories[static_cast<std::size_t>(category)];
}

int BpPivotTable::AddFootnote(OutputText text) {
  auto& notes = fTable.fFootnotes;
  const auto found = std::find(notes.begin(), notes.end(), text);
  const auto place = found - notes.begin();
  if (found == notes.end()) notes.push_back(std::move(text));
  return static_cast<int>(place);
}

OutputCell& BpPivotTable::CellAt(const std::vector<BpCategory>& place) {
  MCCommon::Assert(place.size() == fTable.fDimensions.size(), "one category a dimension", kSource);
  std::vector<int> leaves;
  for (const BpCategory& category : place) {
    MCCommon::Assert(category.fDimension == static_cast<int>(leaves.size()),
                     "categories in the order of the dimensions", kSource);
    leaves.push_back(category.fCategory);
  }
  const auto [found, added] = fCellPlaces.try_emplace(leaves, fTable.fCells.size());
  if (added) fTable.fCells.push_back({std::move(leaves), {}, OutputFormat::kText, {}});
  return fTable.fCells[found->second];
}
