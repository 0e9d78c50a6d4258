// A continuous predictor and a continuous target: their moments and correlation.
#pragma once

#include "common/MissingValue.h"
#include "feature/accumulators/FSPairSums.h"
#include "feature/accumulators/FSPredictorState.h"
#include "feature/accumulators/IFSPredTargetAccum.h"

class FSContPContTAccum : public IFSPredTargetAccum {
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
  // Variances are 0 where the valid weight is not above 1; the correlation is missing there, and
  // where either variance is not positive. It is 1 or -1, exactly, where rounding may be all that
  // keeps it from being so.
  void ComputeVariances() override;
  void EndPass() override { fSums.Settle(); }
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
  bool IsGrown() const;
  std::size_t AddShared(const double* predictor, const FSCaseBlock& cases);
  double Correlation(double total) const;

  FSPredictorState fState{FSPredictorState::kNoNumber};
  FSPairSums fSums;  // the variances are in units of its scales
  double fPredictorVariance = MCMV::gMissingValue;
  double fTargetVariance = MCMV::gMissingValue;
  double fCorrelation = MCMV::gMissingValue;
};
