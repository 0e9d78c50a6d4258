// Turns the caller's records into processed records of category codes, and stores them for several
// passes.
//
// Original record: one value per variable of the list. Processed record: the target's code, then
// the case weight when the list has a weight variable, then one code per input in input order.
// Input-only record: one code per input. Missing codes are -1. Categorical values are the caller's
// codes and are taken as they are; continuous values are binned by the variable's encoder. The
// variable list is the component's and must outlive the preparator.
#pragma once

#include <cstddef>
#include <cstdint>
#include <iosfwd>
#include <memory>
#include <string>
#include <vector>

#include "common/Record.h"
#include "common/RecordIterator.h"
#include "common/Workers.h"
#include "naivebayes/MCStatus.h"
#include "naivebayes/NBCancelInfo.h"
#include "naivebayes/encoders/NBCategoryCode.h"
#include "naivebayes/store/NBCodeStore.h"

class NBBinningEncoder;
class NBInternalAdapter;
class NBRoundEncoder;
class NBVarList;
class NBayesInput;

// Records left out of a pass, and their weight as far as it is known.
struct NBExcluded {
  int fNRecords = 0;
  double fWeight = 0;
};

// How records are to be stored: no more than so many accepted ones, in memory or else in a
// temporary file, whose name begins with fTempDir.
struct NBStoreRequest {
  int fNRecords = 0;
  bool fbInMemory = true;
  std::string fTempDir;
};

// What came of it. The store stands at its first case; after an error it is of no use.
struct NBStored {
  std::unique_ptr<NBCodeStore> fpStore;
  int fNRecords = 0;
  NBExcluded fExcluded;
};

class NBDataPreparator {
 public:
  // A code that is neither missing nor within the variable's categories.
  static constexpr std::int32_t kOutOfRange = kNBOutOfRange;

  // Candidates count as inputs when usePossibleInputs. `nRecords` is for the interface's sake: each
  // pass has a limit of its own. The workers share out the inputs of a block; they stay the
  // caller's.
  NBDataPreparator(NBVarList& varList, bool usePossibleInputs, int nRecords, NBCancelInfo& cancel,
                   MCCommon::Workers& workers = MCCommon::Workers::Alone());

  // Encodes an original record. 70018 and 70017 (errors of this record alone) leave it out for its
  // weight or its target; 70010 as an error is a target code out of range. Warnings: 70010 an input
  // code out of range, which becomes missing; 70016 no valid input.
  MCNaive::MCStatus ProcessRecord(const MCCommon::Record& original, MCCommon::Record& processed,
                                  double& weight);
  // Encodes a record that holds one value per input, for scoring: a code per input, -1 for missing.
  // Warnings as for ProcessRecord; 70012 for a record of another size.
  MCNaive::MCStatus ProcessInputs(const MCCommon::Record& original,
                                  std::vector<std::int32_t>& inputs) const;
  // The same for the inputs of an original record; the weight is 1 without a weight variable, and
  // the missing value when it is missing or not above 0. 70012 for a record that is too short.
  MCNaive::MCStatus ProcessInputsFromRecord(const MCCommon::Record& record,
                                            std::vector<std::int32_t>& inputs,
                                            double& weight) const;

  // Stores the processed records of at most so many accepted ones; what is left out is counted to
  // the end of the source. Errors: 70001 the temporary file
  // cannot be made or written, 70004 the source failed, 70010 a target out of range, 70011 nothing
  // to store. Warning: 70010 of the first input out of range. After a cancel the store holds what
  // was read.
  MCNaive::MCStatus ProcessSource(MCCommon::RecordIterator& source, const NBStoreRequest& request,
                                  NBStored& stored);

  // The column forms of the above, for cases of one column of original records. Of codes they
  // return the lowest, at most 0.
  std::int32_t EncodeInputs(int input, const double* values, std::size_t cases,
                            std::int32_t* codes) const;
  std::int32_t EncodeTargets(const double* values, std::size_t cases, std::int32_t* codes) const;
  static std::int32_t LowestOf(const std::int32_t* codes, std::size_t cases);
  void EncodeWeights(const double* values, std::size_t cases, double* weights) const;

  // Reads the numbers of categories, or everything about the inputs, anew from the list.
  void UpdateNCats();
  void UpdateInputInfo(bool usePossibleInputs);
  void RemovePredictor(int input);
  // Puts each binned input's encoder, re-binned by the input's counts, in place.
  // REQUIRES: `inputs` are the preparator's inputs, in order.
  void RebinEncoders(const std::vector<NBayesInput>& inputs);

  bool UsesPossibleInputs() const { return fbPossibleInputs; }
  int GetOriginalSize() const { return fNOriginal; }
  int GetProcessedSize() const { return GetFirstInput() + GetInputSize(); }
  int GetInputSize() const { return static_cast<int>(fvInputs.size()); }
  // Columns of an original record: target, weight (-1 for none), and an input.
  int GetTargetColumn() const { return fTarget; }
  int GetWeightColumn() const { return fWeight; }
  int GetInputColumn(int input) const { return fvInputs[input].fVarIndex; }
  int GetTargetCategories() const { return fNTargetCats; }
  // Column of the first input in a processed record.
  int GetFirstInput() const { return fWeight < 0 ? 1 : 2; }
  NBCancelInfo& GetCancelInfo() const { return fCancel; }
  MCCommon::Workers& GetWorkers() const { return fWorkers; }

  // 70010 for a code that is too high.
  MCNaive::MCStatus MakeRangeStatus(bool warning, std::int64_t record, double value,
                                    int categories) const;
  int GetInputCategories(int input) const { return fvInputs[input].fNCats; }

  void Display(std::ostream& os) const;

 private:
  struct Input {
    int fVarIndex;
    int fNCats;
    const NBBinningEncoder* fpBinning;  // null for a categorical input
  };

  Input DescribeInput(int varIndex) const;
  std::int32_t EncodeInput(int input, double value) const;
  // Encodes one value per input, found by `valueOf`; warnings as for ProcessRecord.
  template <typename ValueOf, typename Out>
  MCNaive::MCStatus EncodeAll(ValueOf valueOf, Out& out, int first) const;
  double WeightOf(const MCCommon::Record& original) const;
  // Each stores what the adapter gives; false when the file cannot take it or give it back.
  void StoreInMemory(NBInternalAdapter& adapter, NBStored& stored) const;
  bool StoreInFile(NBInternalAdapter& adapter, const std::string& tempDir, NBStored& stored) const;

  NBVarList& fVarList;
  NBCancelInfo& fCancel;
  MCCommon::Workers& fWorkers;
  bool fbPossibleInputs;
  int fNOriginal = 0;
  int fTarget = -1;
  int fNTargetCats = 0;
  int fWeight = -1;
  const NBRoundEncoder* fpRounding = nullptr;
  std::vector<Input> fvInputs;
  std::int64_t fNProcessed = 0;  // records seen by ProcessRecord
};
