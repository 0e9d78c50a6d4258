// A continuous predictor and a categorical target: the predictor's moments by target category.
#pragma once

#include "feature/accumulators/FSGroupSums.h"
#include "feature/accumulators/FSPredictorState.h"
#include "feature/accumulators/IFSPredTargetAccum.h"

class FSContPCatTAccum : public IFSPredTargetAccum {
 public:
  void AddCase(double predictor, double target, double weight, bool update) override;
  void AddMissing(double weight) override;
  void AddCaseOneVariable(double, double, bool) override {}
  void AddBlock(const double* predictor, const FSCaseBlock& cases) override;
  bool IsAllMissing() const override { return fState.IsAllMissing(); }
  bool IsAllConstant() const override { return fState.IsAllConstant(); }
  std::size_t CheckAllReasons(const FSSettings* settings, std::vector<int>& reasons) const override;
  void Merge(const IFSPredTargetAccum& other, const FSRecode& predictor,
             const FSRecode& target) override;
  void ComputeVariances() override;
  void EndPass() override;
  FSScores ComputeScores(const MCFSCommon::CriteriaSet& wanted) const override;
  MCCommon::LeakTraits GetLeakTraits() const override;
  FSEffect ComputeEffect(MCFSCommon::RankCriteria ranking) const override;
  FSProfile GetProfile() const override;
  bool IsCategorical() const override { return false; }
  const FSMapICnt* GetCategories() const override { return nullptr; }
  int WriteObject(std::fstream& os) const override;
  int ReadObject(std::fstream& is) override;
  void WriteObjectXML(std::ostream& os, int indent) const override;
  void ReadObjectXML(std::ifstream& is) override;
  void Display(std::ostream& out) const override;

 private:
  template <class Archive, class Self>
  static void Fields(Archive& archive, Self& self, bool grown);
  bool IsGrown() const { return fSums.GetScale().GetExponent() != 0; }
  void AddShared(const double* predictor, const FSCaseBlock& cases);

  // Over all valid cases: squared deviations within the groups and of the group means from the
  // overall mean, divided by W - 1; 0 where W is not above 1.
  double OverallStddev() const;

  FSPredictorState fState{FSPredictorState::kNoNumber};
  FSGroupSums fSums;   // of the predictor, by target category
  double fMean = 0.0;  // in units of the sums
};
