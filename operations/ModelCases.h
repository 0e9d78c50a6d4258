// The cases of a table as records of a saved Naive Bayes model: variables are matched by name,
// values become the model's category codes.
//
// A category that the model has not seen is UACategories::kUnseen, which models take as missing,
// and a value that it takes as missing is missing. What the table declares as user-missing does not
// count: the run that built the model has decided whether such values are excluded, and the model
// remembers. Model and data are borrowed.
#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include "common/RecordBlock.h"
#include "host/cases/UAInputAdapter.h"
#include "host/cases/UAProcDataSourceIter.h"
#include "host/cases/UAVarValidSpecs.h"
#include "naivebayes/variables/NBVarList.h"

namespace PredSelect {

class ModelCases {
 public:
  enum class Columns { kInputs, kInputsAndTarget };

  // Throws RequestError when the table lacks a predictor of the model, or the target where it is
  // asked for; HostIOError.
  ModelCases(const NBVarList& variables, ProcedureDataSource& source,
             Columns columns = Columns::kInputs);
  ~ModelCases();

  // The next cases, at most `maxCases`, in a block without cases at the end: a column per variable
  // of the model's list, of which only those asked for are there. Categories of the target are
  // numbered as they come: TargetValue says what they are. Throws RequestError for a
  // text where the model has numbers, or the other way round (a column without any value may be of
  // either kind); HostIOError.
  const MCCommon::RecordBlock& NextBlock(std::size_t maxCases);

  // The stream that gave the block, in its last pass.
  UAProcDataSourceIter& Stream();

  // Of the cases of the block, beside a target: their weights, null where the data have none.
  const double* Weights() const { return fpWeights; }
  // How many values of the target were met, and what a code of it stands for.
  int TargetValues() const;
  KOVA_Value TargetValue(int code) const;

 private:
  class KindCheck;

  void AddColumn(const INBVariable& variable, int column, int position);
  void FixCategories(const NBVarList& variables, const ProcedureDataSource& source);

  UAVarValidSpecs fSpecs{true, false, true};
  std::vector<int> fPositions;  // in the model's list, by column of the stream's records
  std::vector<int> fColumns;    // of the table, likewise
  int fTarget = -1;             // column of the records, -1 where it is not asked for
  const double* fpWeights = nullptr;
  std::unique_ptr<UAInputAdapter> fpAdapter;
  std::unique_ptr<KindCheck> fpStream;
  MCCommon::RecordBlock fBlock;
  std::size_t fNVariables;
};

}  // namespace PredSelect
