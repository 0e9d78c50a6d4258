// The cases of a NAIVEBAYES command, split into training and test cases: what the driver hands to
// the engine.
//
// Which sample a case belongs to is settled in the first pass over the data, in file order, and the
// same in every later pass: by a variable (1 marks a training case, everything else a test case),
// or by drawing, one uniform number a case. Without either every case is a training case. In the
// first pass cases without a valid dependent value are skipped; later passes deliver them.
#pragma once

#include <memory>
#include <vector>

#include "host/cases/UAProcDataSourceIter.h"

class PRSValidSpecs;
class UACaseValueReader;
namespace MCCommon {
class MCRandom;
}

class NaiveDataSourceIter final : public UAProcDataSourceIter {
 public:
  // Everything is borrowed. `trainTestFlags` is shared by all streams of a command: empty when the
  // first is made, which fills it in its first pass with true for each training case that is drawn.
  // The caller starts the stream (Start, NewPass).
  // REQUIRES: at least one of the two kinds of case is needed; the adapter reads the dependent
  // variable and, if there is one, the training variable.
  NaiveDataSourceIter(UAInputAdapter& adapter, const PRSValidSpecs* specs,
                      std::vector<bool>& trainTestFlags, bool needTrainData, bool needTestData);
  ~NaiveDataSourceIter() override;

  // True for a case of a kind that is needed.
  bool PreprocessCase() override;

  // Whether the case that the stream stands at is a training case; for each case of the last block.
  bool IsTrainSampleCase() const;
  void MarkTrainSample(std::vector<char>& flags);

  // Cases that were met in the first pass; test cases among them that have a valid dependent value.
  int GetNCases() const { return fNCases; }
  int GetNTestCases() const { return fNTestCases; }

 protected:
  void FilterCases(std::size_t cases, std::vector<std::size_t>& accepted) override;

 private:
  bool IsFirstPass() const;
  bool IsSplit() const;
  std::size_t GetCase() const;
  void DrawSample();
  void PassOverOtherParts();
  bool HasDependentValue() const;

  const PRSValidSpecs* fpSpecs;
  MCCommon::MCRandom* fpRandom;
  std::unique_ptr<UACaseValueReader> fpDependReader;  // of the stream that makes the first pass
  double fTrainSampProp;
  int fTrainSampVar;
  std::vector<bool>& fTrainTestFlags;
  bool fbNeedTrainData;
  bool fbNeedTestData;
  int fNCases = 0;
  int fNTestCases = 0;
};
