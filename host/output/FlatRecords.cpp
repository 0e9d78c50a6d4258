#include "host/output/FlatRecords.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "common/MissingValue.h"
#include "host/text/CsvText.h"

namespace MCHost {

void FlatColumn::AddMissing() {
  if (fbNumeric) {
    fNumbers.push_back(MCMV::gMissingValue);
  } else {
    fTexts.emplace_back();
  }
}

void FlatColumn::MakeText() {
  if (!std::exchange(fbNumeric, false)) return;
  for (const double number : std::exchange(fNumbers, {})) {
    fTexts.emplace_back();
    if (!MCMV::IsMissing(number)) AppendNumber(fTexts.back().emplace(), number);
  }
}

void FlatRecords::Append(FlatRecords more) {
  const std::size_t size = Size();
  const std::size_t all = size + more.Size();
  for (FlatColumn& from : more.fColumns) {
    auto to = std::find_if(fColumns.begin(), fColumns.end(),
                           [&](const FlatColumn& column) { return column.fName == from.fName; });
    if (to == fColumns.end()) {
      to = fColumns.insert(to, {from.fName, from.fLabel, from.fbNumeric, {}, {}});
      while (to->Size() < size) to->AddMissing();
    }
    if (to->fbNumeric != from.fbNumeric) {
      to->MakeText();
      from.MakeText();
    }
    to->fNumbers.insert(to->fNumbers.end(), from.fNumbers.begin(), from.fNumbers.end());
    std::move(from.fTexts.begin(), from.fTexts.end(), std::back_inserter(to->fTexts));
  }
  for (FlatColumn& column : fColumns) {
    while (column.Size() < all) column.AddMissing();
  }
}

FlatBatches::FlatBatches(FlatRecords records) : fRecords(std::move(records)) {
  for (const FlatColumn& column : fRecords.fColumns) {
    ArrowMetadata metadata;
    if (!column.fLabel.empty()) metadata.emplace_back("label", column.fLabel);
    fFields.push_back({column.fName, column.fbNumeric, std::move(metadata)});
  }
}

ArrowMetadata FlatBatches::Metadata() const {
  return {{"title", fRecords.fTitle}, {"label", fRecords.fLabel}, {"subtype", fRecords.fSubtype}};
}

std::size_t FlatBatches::Next(std::vector<ArrowCells>& columns) {
  if (std::exchange(fbGiven, true)) return 0;
  for (std::size_t j = 0; j < columns.size(); ++j) {
    const FlatColumn& from = fRecords.fColumns[j];
    if (from.fbNumeric) columns[j].AddNumbers(from.fNumbers.data(), from.fNumbers.size());
    for (const std::optional<std::string>& text : from.fTexts) {
      text ? columns[j].AddText(*text) : columns[j].AddMissing();
    }
  }
  return fRecords.Size();
}

}  // namespace MCHost
