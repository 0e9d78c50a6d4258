#include "host/output/pivot/BpCategory.h"

#include <vector>

#include "host/output/pivot/BpPivotTable.h"

void BpCategory::Note(MCHost::OutputText text) {
  const int footnote = fpTable->AddFootnote(std::move(text));
  fpTable->At(fDimension, fCategory).fNotes.push_back(footnote);
}

void BpCategory::CellNote(std::initializer_list<BpCategory> others, MCHost::OutputText text) {
  std::vector<BpCategory> place(others);
  place.push_back(*this);
  const int footnote = fpTable->AddFootnote(std::move(text));
  fpTable->CellAt(place).fNotes.push_back(footnote);
}
