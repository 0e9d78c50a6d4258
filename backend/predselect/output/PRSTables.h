// What the tables of both commands share: lists of names, labels of categories, the notes about
// cases, the case processing summary.
#pragma once

#include <string>
#include <vector>

#include "host/output/OutputText.h"

class KOVA_Value;
class KOVA_Variable;
class PRSValidSpecs;

// The least width of a column of such cells, in points.
inline constexpr int kPRSListWidth = 150;

// A cell that lists names, joined as the host's list pattern says.
MCHost::OutputText PRSListCell(const char* pattern, const std::vector<std::string>& names);

// A category as a label.
MCHost::OutputText PRSCategoryLabel(const KOVA_Variable& variable, const KOVA_Value& value);

// Notes: what counts as missing, and (a key of the string table) which cases are used.
void PRSAddCaseNotes(const PRSValidSpecs& specs, const char* casesUsed);

// The counts of a case processing summary, weighted and not.
struct PRSCaseCount {
  double fWeight = 0.0;
  int fCases = 0;
};

struct PRSCaseCounts {
  struct Category {
    MCHost::OutputText fLabel;
    PRSCaseCount fCount;
  };

  std::vector<Category> fCategories;  // of a categorical target
  PRSCaseCount fValid;
  PRSCaseCount fExcluded;
};

// The table: count, percent of all cases and, with a weight in force, the unweighted count.
// `target` is the variable of the categories, `caption` a key (null: none).
void PRSShowCaseSummary(const PRSValidSpecs& specs, const KOVA_Variable& target,
                        const PRSCaseCounts& counts, const char* caption);

// The table of selected predictors by type; no table when there are none.
void PRSShowSelected(const std::vector<std::string>& categorical,
                     const std::vector<std::string>& scale);

// Gives the macros that the command names the selected predictors.
void PRSSetMacros(const PRSValidSpecs& specs, const std::vector<std::string>& categorical,
                  const std::vector<std::string>& scale);
