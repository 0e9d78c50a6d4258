// A categorical predictor and a continuous target: the target's moments by predictor category.
#pragma once

#include "feature/accumulators/FSGroupSums.h"
#include "feature/accumulators/FSMaps.h"
#include "feature/accumulators/FSPredictorState.h"
#include "feature/accumulators/IFSPredTargetAccum.h"

class FSCatPContTAccum : public IFSPredTargetAccum {
 public:
  void AddCase(double predictor, double target, double weight, bool update) override;
  void AddMissing(double weight) override;
  void AddCaseOneVariable(double, double, bool) override {}
  void AddBlock(const double* predictor, const FSCaseBlock& cases) override;
  bool IsAllMissing() const override { return fState.IsAllMissing(); }
  bool IsAllConstant() const override { return fState.IsAllConstant(); }
  // Without the rule on categories with one case.
  std::size_t CheckAllReasons(const FSSettings* settings, std::vector<int>& reasons) const override;
  void Merge(const IFSPredTargetAccum& other, const FSRecode& predictor,
             const FSRecode& target) override;
  void ComputeVariances() override;
  void EndPass() override;
  FSScores ComputeScores(const MCFSCommon::CriteriaSet& wanted) const override;
  MCCommon::LeakTraits GetLeakTraits() const override;
  FSEffect ComputeEffect(MCFSCommon::RankCriteria ranking) const override;
  FSProfile GetProfile() const override;
  bool IsCategorical() const override { return true; }
  const FSMapICnt* GetCategories() const override { return &fPredictorCounts; }
  int WriteObject(std::fstream& os) const override;
  int ReadObject(std::fstream& is) override;
  void WriteObjectXML(std::ostream& os, int indent) const override;
  void ReadObjectXML(std::ifstream& is) override;
  void Display(std::ostream& out) const override;

 private:
  template <class Archive, class Self>
  static void Fields(Archive& archive, Self& self, bool grown);
  bool IsGrown() const { return fSums.GetScale().GetExponent() != 0; }
  // Whether the target's values need no look at their scale.
  bool FitFirst(const double* predictor, const FSCaseBlock& cases);
  std::size_t AddSorted(const double* predictor, const FSCaseBlock& cases);
  std::size_t AddOneByOne(const double* predictor, const FSCaseBlock& cases);
  // A value that may be a large category. Returns 1 if it is missing.
  std::size_t AddOther(std::size_t i, double value, const FSCaseBlock& cases);

  FSPredictorState fState{FSPredictorState::kNoCategory};
  FSGroupSums fSums;           // of the target, by predictor category
  double fTargetMean = 0.0;    // over the cases valid on this predictor, in units of the sums
  FSMapICnt fPredictorCounts;  // the weights of the groups
};
