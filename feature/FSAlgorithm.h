// The one implementation of the feature selection component. Made by FSFactory.
#pragma once

#include <memory>

#include "feature/FSCancelInfo.h"
#include "feature/FSPredictorSet.h"
#include "feature/IFSAlgorithm.h"

class FSAlgorithm final : public IFSAlgorithm {
 public:
  // The settings are borrowed and must outlive the component.
  explicit FSAlgorithm(FSSettings* settings);
  // A component to be read from saved state, with settings of its own.
  explicit FSAlgorithm(std::unique_ptr<FSSettings> settings);
  ~FSAlgorithm() override;

  std::string GetComponentVersion() const override;
  MCFeature::MCStatus GetStatus() const override { return fStatus; }
  MCFeature::MCStatus Accumulate(MCCommon::RecordIterator& source, int maxRecords) override;
  void GetNValidNExcluded(double& validWeight, double& excludedWeight, int& validCases,
                          int& excludedCases) const override;
  int GetNTargetCategories() const override { return fPredictors.GetNTargetCategories(); }
  int GetTargetCategoryCount(int position) const override;
  bool GetTargetCategoryInfo(int position, int& category,
                             std::pair<int, double>& counts) const override;
  MCFeature::MCStatus CheckPredAllMissConst() override;
  MCFeature::MCStatus ScreenPredictors() override;
  int GetNDeletedPred() const override { return fPredictors.GetNDeletedPred(); }
  const std::vector<int>& GetIndicesDelPred() const override;
  const std::vector<int>& GetReasonsDelPred() const override;
  MCFeature::MCStatus SortAndRank(int nBest) override;
  MCFeature::MCStatus AccumulateAndRank(MCCommon::RecordIterator& source, int maxRecords,
                                        bool screen, int nBest) override;
  MCFeature::MCStatus CheckPredictorsNoTarget(MCCommon::RecordIterator& source,
                                              std::vector<int>& indices,
                                              std::vector<std::vector<int>>& reasons,
                                              int maxRecords) override;
  MCFeature::MCStatus ExportOneXML(std::ostream& out, MCFSCommon::RankCriteria criterion,
                                   int nBest) const override;
  bool GetPredictorStats(int criterion, int predictor, double& value, double& out2, double& out3,
                         double& out4) const override;
  FSEffect GetPredictorEffect(MCFSCommon::RankCriteria ranking, int predictor) const override {
    return fPredictors.GetPredictorEffect(ranking, predictor);
  }
  FSProfile GetPredictorProfile(int predictor) const override {
    return fPredictors.GetPredictorProfile(predictor);
  }
  MCFeature::MCStatus ExportAllXML(std::ostream& out) const override;
  MCFeature::MCStatus SaveState(std::fstream& out) const override;
  MCFeature::MCStatus SaveStateXML(std::ostream& out) const override;
  void Cancel() override { fCancel.SetCancel(); }
  void SetProgressListener(ProgressListener* listener) override;
  void SetCancelPtr(MCQueryCancel* cancel) override;
  const FSSettings* GetSettings() const override { return fpSettings; }
  FSSettings* GetSettings() override { return fpSettings; }
  const std::vector<int>& GetRanks(MCFSCommon::RankCriteria criterion) const override;
  const std::vector<double>& GetCriterionValues(MCFSCommon::RankCriteria criterion) const override;
  MCFeature::MCStatus GetTopPredictors(MCFSCommon::RankCriteria criterion,
                                       std::vector<int>& indices, std::vector<double>& values,
                                       int n) const override;
  MCCommon::LeakTraits GetLeakTraits(int predictor) const override {
    return fPredictors.GetLeakTraits(predictor);
  }
  bool IsDataAccumulated() const override { return fbDataAccumulated; }
  bool ArePredictorsRanked() const override { return fbPredictorsRanked; }
  void Display(std::ostream& out) const override;
  MCFeature::MCStatus Merge(const IFSAlgorithm& other, const FSCategoryMaps* maps) override;
  MCFeature::MCStatus ScreenAndRank(bool screen, int nBest) override;
  MCFeature::MCStatus ScreenWithoutTarget(std::vector<int>& indices,
                                          std::vector<std::vector<int>>& reasons) override;

  // Cancels the component and empties it now; in the midst of a stage, when that ends.
  void Stop();
  // Who holds this can tell whether the component is still there: it points to it as long as it is.
  std::weak_ptr<FSAlgorithm*> GetLink() const { return fpLink; }

  // Weights of the categories of a predictor; null for a continuous or deleted one, and before the
  // first pass.
  const FSMapICnt* GetPredictorCategories(int predictor) const {
    return fPredictors.GetCategories(predictor);
  }

  // Saved state: as for IFSPredTargetAccum. REQUIRES for reading: a new component.
  int WriteObject(std::fstream& os) const;
  int ReadObject(std::fstream& is);
  void WriteObjectXML(std::ostream& os, int indent) const;
  void ReadObjectXML(std::ifstream& is);

 private:
  template <class Archive, class Self>
  static void Fields(Archive& archive, Self& self, bool exact);
  bool IsGrown() const;  // p-values are exact
  template <class Stage>
  MCFeature::MCStatus Run(Stage stage);

  void Abandon(MCFeature::StatusCode code);
  MCFeature::MCStatus StatusNow() const;
  bool HasWholePass() const;
  MCFeature::MCStatus SavingStatus() const;
  void DoSave(std::fstream& out) const;
  void DoSaveXML(std::ostream& out) const;

  std::unique_ptr<FSSettings> fpOwnSettings;  // of a restored component
  FSSettings* fpSettings;
  mutable FSCancelInfo fCancel;  // asking the probe may set the flag
  MCFeature::MCStatus fStatus;
  FSPredictorSet fPredictors;
  bool fbDataAccumulated = false;
  bool fbPredictorsRanked = false;
  bool fbInStage = false;
  std::shared_ptr<FSAlgorithm*> fpLink;
};
