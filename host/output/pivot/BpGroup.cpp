#include "host/output/pivot/BpGroup.h"

#include "host/output/pivot/BpDimension.h"
#include "host/output/pivot/BpPivotTable.h"

BpGroup::BpGroup(const BpDimension& dimension, int category)
    : fpTable(dimension.fpTable), fDimension(dimension.fDimension), fCategory(category) {}

BpGroup BpGroup::AddGroup(MCHost::OutputText label) {
  BpDimension dimension(fpTable, fDimension);
  const int group =
      dimension.Append(std::move(label), fCategory, true, MCHost::OutputFormat::kText);
  return {dimension, group};
}

BpCategory BpGroup::AddCategory(MCHost::OutputText label, MCHost::OutputFormat format) {
  const int category =
      BpDimension(fpTable, fDimension).Append(std::move(label), fCategory, false, format);
  return {fpTable, fDimension, category};
}

void BpGroup::Note(MCHost::OutputText text) {
  const int footnote = fpTable->AddFootnote(std::move(text));
  fpTable->At(fDimension, fCategory).fNotes.push_back(footnote);
}
