// The Naive Bayes component: owns its settings, variable list, model and data preparator.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "common/Workers.h"
#include "naivebayes/INBAlgorithm.h"
#include "naivebayes/NBCancelInfo.h"
#include "naivebayes/model/NBCalibration.h"
#include "naivebayes/model/NBayesInput.h"
#include "naivebayes/model/NBayesOutput.h"
#include "naivebayes/selection/NBAttributeSelector.h"
#include "naivebayes/store/NBDataPreparator.h"

class NBAlgorithm : public INBAlgorithm {
 public:
  // Copies both. REQUIRES: the list has a target.
  NBAlgorithm(const NaiveBayesSettings& settings, const NBVarList& varList);

  std::string GetComponentVersion() const override;
  MCNaive::MCStatus BuildModel(MCCommon::MultiPassRecordIter& data, int nRecords) override;
  bool IsModelBuilt() const override { return fbBuilt; }
  MCNaive::MCStatus Update(MCCommon::MultiPassRecordIter& data, int nRecords) override;
  MCNaive::MCStatus ComputeOutputStats(MCCommon::RecordIterator& records, NBOutputStatistics& stats,
                                       int limit) const override;
  MCNaive::MCStatus Score(const MCCommon::Record& inputs, NBOutput& output) const override;
  MCNaive::MCStatus ScoreFullRecord(const MCCommon::Record& record,
                                    NBOutput& output) const override;
  MCNaive::MCStatus ScoreAndAccum(const MCCommon::Record& record, NBOutput& output,
                                  bool isTraining) override;
  const NBOutputStatistics* GetTrainOutStats() const override {
    return fTrainStats ? &*fTrainStats : nullptr;
  }
  const NBOutputStatistics* GetTestOutStats() const override {
    return fTestStats ? &*fTestStats : nullptr;
  }
  MCNaive::MCStatus ExportModelXML(std::ostream& os, MCApplicInfo4XML* info) const override;
  void SetCancelPtr(MCQueryCancel* cancel) override;
  MCNaive::MCStatus SaveState(std::fstream& os) const override;
  MCNaive::MCStatus SaveStateXML(std::ostream& os) const override;
  void Cancel() override { fCancel.SetCancel(); }
  const MCNaive::MCStatus& GetStatus() const override { return fStatus; }
  MCNaive::MCStatus SelectAttributes(MCCommon::MultiPassRecordIter& data, int nRecords,
                                     std::vector<int>& selected,
                                     std::vector<double>& logLikelihoods,
                                     std::vector<std::pair<int, double>>& results, int size,
                                     bool exact, MCCommon::MultiPassRecordIter* test, int nTest,
                                     int nReport, std::ostream* xml,
                                     MCApplicInfo4XML* appInfo) override;
  MCNaive::MCStatus SelectAttributes(const NBSelectionRequest& request,
                                     NBSelectionResult& result) override;
  MCNaive::MCStatus MergeModel(const INBAlgorithm* other, bool computeProbabilities) override;
  void GetNValidNExcluded(double& validWeight, double& excludedWeight, int& nValid,
                          int& nExcluded) const override;
  int GetNTargetCategories() const override { return fOutput.GetNCategories(); }
  double GetTargetCategoryCount(int category) const override { return fOutput.GetCount(category); }
  int GetTargetCategoryRecords(int category) const override { return fOutput.GetRecords(category); }
  int GetNumberOfInputVars() const override { return fNInputs; }
  const std::vector<NBInputTraits>& GetLeakTraits() const override { return fvLeakTraits; }
  void SetProgressListener(ProgressListener* listener) override;
  const NaiveBayesSettings& GetSettings() const override { return fSettings; }
  const NBVarList& GetVarList() const override { return fVarList; }
  void Display(std::ostream& os) const override;
  MCNaive::MCStatus ScoreBlock(const MCCommon::RecordBlock& block,
                               NBScoredBlock& scored) const override;
  MCNaive::MCStatus ScoreAndAccumBlock(const MCCommon::RecordBlock& block, NBScoredBlock& scored,
                                       const std::vector<char>& isTraining) override;

  MCNaive::MCStatus BuildModelInParts(INBParts& parts) override;
  MCNaive::MCStatus CountPart(const NBPartSource& source, NBPartCounts& counts,
                              std::unique_ptr<NBPartCodes>& codes) override;
  void AddClassified(const NBPartClassified& classified) override;

  // The model. Records of codes hold one code per input of the model.
  // Pi(k) times the product of P(m|k), as a plain product of doubles.
  double ComputePXYPY(const MCCommon::Record& codes, int k) const;
  // The joint values of the first `categories` categories divided by their sum, underflow or not.
  void ComputeOutProbabilities(const MCCommon::Record& codes, int categories,
                               std::vector<double>& out) const;
  int SelectWinner(const std::vector<double>& probabilities) const;
  // The codes of an input of the model for the cases of a block of original records, as ScoreBlock
  // has them: negative ones have no row in the input's table. REQUIRES: the model was built.
  void EncodeInput(int input, const MCCommon::RecordBlock& block, std::int32_t* codes) const;
  // The targets and weights of such cases: a negative target, or a missing weight, is none.
  void EncodeCases(const MCCommon::RecordBlock& block, std::int32_t* targets,
                   double* weights) const;
  // What scores are calibrated by; part of the saved state. Training anew and merging end it.
  const NBCalibration& GetCalibration() const { return fCalibration; }
  // REQUIRES: it fits the number of target categories.
  void SetCalibration(const NBCalibration& calibration) { fCalibration = calibration; }
  const NBayesOutput& GetOutput() const { return fOutput; }
  const std::vector<NBayesInput>& GetInputs() const { return fInputs; }
  double GetTotalWeight() const { return fTotalWeight; }

 private:
  friend class NBFactory;  // which restores
  // A component to be read.
  NBAlgorithm() = default;
  int WriteObject(std::fstream& os) const;
  int ReadObject(std::fstream& is);
  void WriteObjectXML(std::ostream& os, int indent) const;
  void ReadObjectXML(std::ifstream& is);
  template <class Archive, class Self>
  static void Fields(Archive& archive, Self& self, bool calibrated);
  bool IsGrown() const { return fCalibration.GetMethod() != NBCalibration::kNone; }
  // Makes one component of the parts that were read; false when they do not fit together.
  bool LinkParts();
  // Whether the counts add up: the target's to the weight, and no input's to more than the
  // target's.
  bool HasSensibleCounts() const;
  // Categories outside the model of which a state holds nothing but their number.
  std::int64_t CountUnlistedCategories() const;
  MCNaive::MCStatus DoExport(std::ostream& os, MCApplicInfo4XML* info) const;
  MCNaive::MCStatus CheckSaving() const;
  // Whether the total weight and its inverse, from which all estimates come, are numbers.
  bool HasFiniteWeight() const;
  void DoSave(std::fstream& os) const;
  void DoSaveXML(std::ostream& os) const;

  // Errors stick; a warning replaces what is not an error. Returns the component's status.
  MCNaive::MCStatus Raise(const MCNaive::MCStatus& status);
  // Takes the status of an operation that changes the component: want of memory in its midst leaves
  // nothing to go on with, and sticks.
  MCNaive::MCStatus Changed(const MCNaive::MCStatus& status);
  // Raises the cancel, if one is pending; true when the operation must stop.
  bool MustStop();
  void DoCancel();

  // Makes preparator and tables fit the use of candidates, unless they do already.
  void Prepare(bool usePossibleInputs, int nRecords);
  // Gives the inputs the bins of their set-up, from which re-binning starts anew.
  void RestoreBins();
  void ResetAllCounts(bool totalsToo);
  // Counts all cases of a source and computes the estimates.
  MCNaive::MCStatus CountData(NBCodeSource& source, bool showProgress);
  // The same for at most so many valid records of the caller's; what is left out is counted among
  // them, or to the end of the data.
  MCNaive::MCStatus CountSource(MCCommon::MultiPassRecordIter& data, int nRecords, bool toTheEnd);
  // What follows the counting: estimates, and what tells leaks.
  void FinishTraining();
  // Takes the counts of all parts as those of the records.
  MCNaive::MCStatus TakeCounts(const NBPartCounts& counts);
  MCNaive::MCStatus DoBuildInParts(INBParts& parts);
  MCNaive::MCStatus DoCountPart(const NBPartSource& source, NBPartCounts& counts,
                                std::unique_ptr<NBPartCodes>& codes);
  MCNaive::MCStatus CountRecords(NBCodeSource& records);
  MCNaive::MCStatus CountOnly(const NBPartSource& source);
  MCNaive::MCStatus CountAndKeep(const NBPartSource& source, std::unique_ptr<NBPartCodes>& codes);
  NBPartCounts PartCounts() const;
  void SelectInParts(const NBSelectionRequest& request, NBSelectionResult& result);
  // What the selector has chosen: the model of it.
  void FinishSelection(const NBSelectionRequest& request, bool byTest,
                       NBAttributeSelector& selector, NBSelectionResult& result);
  // Estimates from the counts; drops inputs with fewer than 2 categories in use.
  void FinishCounts();

  MCNaive::MCStatus DoBuild(MCCommon::MultiPassRecordIter& data, int nRecords);
  MCNaive::MCStatus DoUpdate(MCCommon::MultiPassRecordIter& data, int nRecords);
  MCNaive::MCStatus DoMerge(const INBAlgorithm* other, bool computeProbabilities);

  MCNaive::MCStatus DoSelect(const NBSelectionRequest& request, NBSelectionResult& result);
  MCNaive::MCStatus CheckSelection(const NBSelectionRequest& request) const;
  void RunSelection(const NBSelectionRequest& request, NBSelectionResult& result);
  MCNaive::MCStatus LoadSelectionData(const NBSelectionRequest& request, bool inMemory,
                                      NBStored& stored);
  int DecideSize(int size, int forced, int candidates);
  // False after a cancel.
  [[nodiscard]] bool CrossValidate(const NBSelectionRequest& request, NBCodeStore& records);
  MCNaive::MCStatus Dispatch(const NBSelectionRequest& request,
                             const NBAttributeSelector::Training& training,
                             NBAttributeSelector& selector, NBSelectionResult& result);
  // Keeps the inputs with the role of inputs.
  void KeepChosenInputs();

  MCNaive::MCStatus DoScore(const MCCommon::Record& inputs, NBOutput& output) const;
  MCNaive::MCStatus DoScoreFull(const MCCommon::Record& record, NBOutput& output) const;
  MCNaive::MCStatus DoScoreBlock(const MCCommon::RecordBlock& block, NBScoredBlock& scored) const;
  MCNaive::MCStatus DoComputeStats(MCCommon::RecordIterator& records, NBOutputStatistics& stats,
                                   int limit) const;
  MCNaive::MCStatus FinishScore(const MCNaive::MCStatus& encoded,
                                const std::vector<std::int32_t>& codes, NBOutput& output) const;
  // The class probabilities of one code per input, before they are calibrated.
  void ComputePosteriors(const std::vector<std::int32_t>& codes, std::vector<double>& out) const;
  // The same calibrated, and the winner.
  int ComputeCalibrated(const std::vector<std::int32_t>& codes, std::vector<double>& out) const;
  // Counts each scored case of a block that has a valid target and weight in statsOf(its place in
  // the block); returns how many these are. REQUIRES: one winner per case, below 0 for not scored.
  template <typename Choose>
  int Classify(const MCCommon::RecordBlock& block, const std::int32_t* winners,
               Choose statsOf) const;
  // What GetTrainOutStats or GetTestOutStats shows, made when first needed.
  NBOutputStatistics& StatsOf(bool isTraining);

  NaiveBayesSettings fSettings;
  NBVarList fVarList;
  MCCommon::Workers fWorkers;  // of what changes the component
  std::unique_ptr<NBDataPreparator> fpPreparator;
  bool fbBuilt = false;
  MCNaive::MCStatus fStatus;
  int fNInputs = 0;
  NBayesOutput fOutput;
  NBCalibration fCalibration;
  std::vector<NBayesInput> fInputs;
  std::vector<NBInputTraits> fvLeakTraits;
  std::vector<int> fvKeptInputs;  // where the inputs stood before the last pass dropped some
  std::int32_t fNRecords = 0;
  double fTotalWeight = 0;
  NBExcluded fExcluded;
  mutable NBCancelInfo fCancel;
  std::optional<NBOutputStatistics> fTrainStats;
  std::optional<NBOutputStatistics> fTestStats;
};
