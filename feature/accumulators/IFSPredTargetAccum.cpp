#include "feature/accumulators/IFSPredTargetAccum.h"

#include "feature/MCFSCommon.h"

int IFSPredTargetAccum::CheckDelete(const FSSettings* settings) const {
  std::vector<int> reasons;
  CheckAllReasons(settings, reasons);
  return reasons.empty() ? static_cast<int>(MCFSCommon::kNotDeleted) : reasons.front();
}
