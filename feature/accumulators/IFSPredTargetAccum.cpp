#include "feature/accumulators/IFSPredTargetAccum.h"

#include "feature/FSCriterion.h"

namespace {

FSScore ScoreOf(const IFSPredTargetAccum& accumulator, const FSCriterion& criterion) {
  MCFSCommon::CriteriaSet wanted{};
  wanted[criterion.fCode] = true;
  return accumulator.ComputeScores(wanted)[criterion.fCode];
}

}  // namespace

int IFSPredTargetAccum::CheckDelete(const FSSettings* settings) const {
  std::vector<int> reasons;
  CheckAllReasons(settings, reasons);
  return reasons.empty() ? static_cast<int>(MCFSCommon::kNotDeleted) : reasons.front();
}

void IFSPredTargetAccum::ComputeCrit(int criterion, double& value, double& tie1, double& tie2,
                                     double& extra1, double& extra2) const {
  const FSCriterion* row = FSCriterion::Find(criterion);
  const FSScore score = row != nullptr ? ScoreOf(*this, *row) : FSScore();
  value = score.fValue;
  tie1 = score.fTie1;
  tie2 = score.fTie2;
  extra1 = score.fExtra1;
  extra2 = score.fExtra2;
}

bool IFSPredTargetAccum::GetOutputStats(int criterion, double& value, double& out2, double& out3,
                                        double& out4) const {
  value = out2 = out3 = out4 = MCMV::gMissingValue;
  const FSCriterion* row = FSCriterion::Find(criterion);
  return row != nullptr && row->GetOutputs(ScoreOf(*this, *row), value, out2, out3, out4);
}
