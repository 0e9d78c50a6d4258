#include "host/output/pivot/BpDimension.h"

#include "host/output/pivot/BpPivotTable.h"

BpGroup BpDimension::AddGroup(MCHost::OutputText label) {
  return {*this, Append(std::move(label), -1, true, MCHost::OutputFormat::kText)};
}

BpCategory BpDimension::AddCategory(MCHost::OutputText label, MCHost::OutputFormat format) {
  return {fpTable, fDimension, Append(std::move(label), -1, false, format)};
}

void BpDimension::ShowName() {
  fpTable->fTable.fDimensions[static_cast<std::size_t>(fDimension)].fbShowName = true;
}

int BpDimension::Append(MCHost::OutputText label, int parent, bool group,
                        MCHost::OutputFormat format) {
  auto& categories = fpTable->fTable.fDimensions[static_cast<std::size_t>(fDimension)].fCategories;
  categories.push_back({std::move(label), parent, group, format, {}});
  return static_cast<int>(categories.size()) - 1;
}
