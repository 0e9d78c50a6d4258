// The whole of which a table is a part, or the whole whose parts lie elsewhere.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "common/parts/TableRanges.h"
#include "host/data/IPartPasses.h"

class KOVA_Variable;

namespace MCHost {

struct WholeTable {
  std::string fName;  // what messages call the ranges
  TableRanges fRanges;
  std::int64_t fPart = -1;  // the table's number among the parts; -1: nobody has said
  std::shared_ptr<IPartPasses> fpPasses{};  // null where the cases are the table's own

  // The number of the table's first case in the whole, -1 where that is not known.
  std::int64_t FirstCase() const { return fPart < 0 ? -1 : fRanges.FirstCaseOf(fPart); }
  // How many cases the table had when its ranges were found, -1 where that is not known.
  std::int64_t CaseCount() const { return fPart < 0 ? -1 : fRanges.CaseCountOf(fPart); }
};

// A variable's dictionary as plain values, and back.
ColumnDictionary DictionaryOf(const KOVA_Variable& variable);
KOVA_Variable VariableOf(const ColumnDictionary& dictionary);

}  // namespace MCHost
