// One dimension of a pivot table under construction: a handle.
#pragma once

#include "host/output/OutputFormat.h"
#include "host/output/OutputText.h"
#include "host/output/pivot/BpCategory.h"
#include "host/output/pivot/BpGroup.h"

class BpPivotTable;

class BpDimension {
 public:
  // Categories and groups are shown in the order in which they are added. A group nothing is added
  // to is not shown.
  BpGroup AddGroup(MCHost::OutputText label);
  BpCategory AddCategory(MCHost::OutputText label,
                         MCHost::OutputFormat format = MCHost::OutputFormat::kText);

  // Puts the dimension's name above its columns. Rows and layers show theirs anyway.
  void ShowName();

 private:
  friend class BpPivotTable;
  friend class BpGroup;

  BpDimension(BpPivotTable* table, int dimension) : fpTable(table), fDimension(dimension) {}
  // `parent` -1 is the top. Returns the new category's place.
  int Append(MCHost::OutputText label, int parent, bool group, MCHost::OutputFormat format);

  BpPivotTable* fpTable;
  int fDimension;
};
