// A continuous predictor in a pass without target: its mean and variance.
#pragma once

#include "feature/accumulators/FSGroupSums.h"
#include "feature/accumulators/FSPredictorState.h"
#include "feature/accumulators/IFSPredTargetAccum.h"

class FSContAccum : public IFSPredTargetAccum {
 public:
  void AddCase(double, double, double, bool) override {}
  void AddMissing(double weight) override;
  void AddCaseOneVariable(double predictor, double weight, bool update) override;
  void AddBlock(const double* predictor, const FSCaseBlock& cases) override;
  bool IsAllMissing() const override { return fState.IsAllMissing(); }
  bool IsAllConstant() const override { return fState.IsAllConstant(); }
  std::size_t CheckAllReasons(const FSSettings* settings, std::vector<int>& reasons) const override;
  void Merge(const IFSPredTargetAccum& other, const FSRecode& predictor,
             const FSRecode& target) override;
  // The variance keeps its old value (0 at first) where the valid weight is not above 1.
  void ComputeVariances() override;
  void EndPass() override { fSums.Settle(); }
  FSScores ComputeScores(const MCFSCommon::CriteriaSet&) const override { return {}; }
  void ComputeCrit(int, double&, double&, double&, double&, double&) const override {}
  bool GetOutputStats(int, double&, double&, double&, double&) const override { return false; }
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
  FSGroupStats Moments() const { return fSums.GetMoments().Together(); }

  FSPredictorState fState{FSPredictorState::kNoNumber};
  FSGroupSums fSums;       // of one group
  double fVariance = 0.0;  // in units of the sums
};
