// A heading over categories of a pivot table under construction: a handle.
#pragma once

#include "host/output/OutputFormat.h"
#include "host/output/OutputText.h"
#include "host/output/pivot/BpCategory.h"

class BpDimension;
class BpPivotTable;

class BpGroup {
 public:
  BpGroup AddGroup(MCHost::OutputText label);
  BpCategory AddCategory(MCHost::OutputText label,
                         MCHost::OutputFormat format = MCHost::OutputFormat::kText);

  // Puts a footnote on the heading.
  void Note(MCHost::OutputText text);

 private:
  friend class BpDimension;

  BpGroup(const BpDimension& dimension, int category);

  BpPivotTable* fpTable;
  int fDimension;
  int fCategory;
};
