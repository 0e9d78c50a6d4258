// A categorical predictor and a categorical target: their weighted contingency table.
#pragma once

#include "feature/accumulators/FSCrossTable.h"
#include "feature/accumulators/FSMaps.h"
#include "feature/accumulators/FSPredictorState.h"
#include "feature/accumulators/IFSPredTargetAccum.h"
#include "feature/statistics/FSStatistics.h"

class FSCatPCatTAccum : public IFSPredTargetAccum {
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
  void ComputeVariances() override { EndPass(); }
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
  static void Fields(Archive& archive, Self& self);
  std::size_t AddTable(const double* predictor, const FSCaseBlock& cases);
  void Add(int predictor, int target, double weight);
  void Count(int predictor, int target, double weight);
  FSStatistics::ContingencyTable Counts() const;

  FSPredictorState fState{FSPredictorState::kNoCategory};
  FSMapICnt fPredictorCounts;
  FSMapICnt fTargetCounts;  // among the cases valid on this predictor
  FSMapPiCnt fJointCounts;
  FSCrossTable fTable;  // of cases that are not in the counts yet
};
