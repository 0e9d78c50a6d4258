// A continuous predictor and a continuous target: their moments and correlation.
#pragma once

#include "common/MissingValue.h"
#include "feature/accumulators/FSPredictorState.h"
#include "feature/accumulators/FSScale.h"
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
  FSScores ComputeScores(const MCFSCommon::CriteriaSet& wanted) const override;
  MCCommon::LeakTraits GetLeakTraits() const override;
  FSEffect ComputeEffect(MCFSCommon::RankCriteria ranking) const override;
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
  bool IsGrown() const { return fScaleX.GetExponent() != 0 || fScaleY.GetExponent() != 0; }
  // Weighted means, squared deviations and cross deviations of predictor (x) and target (y).
  struct Moments {
    double fMeanX = 0.0;
    double fSxx = 0.0;
    double fMeanY = 0.0;
    double fSyy = 0.0;
    double fSxy = 0.0;

    // `share` is weight / (before + weight), `before` the valid weight before the case.
    void Add(double x, double y, double share, double before, double weight);
    void Merge(const Moments& other, double weight, double otherWeight);
    // Turns the moments into those of x divided by 2^byX and y divided by 2^byY.
    void Coarsen(int byX, int byY);
  };

  void Add(FSPredictorState& state, Moments& moments, double x, double y, double share,
           double weight);
  double Correlation(double total) const;

  FSPredictorState fState{FSPredictorState::kNoNumber};
  FSScale fScaleX;  // the moments are in units of these
  FSScale fScaleY;
  Moments fMoments;
  double fPredictorVariance = MCMV::gMissingValue;
  double fTargetVariance = MCMV::gMissingValue;
  double fCorrelation = MCMV::gMissingValue;
};
