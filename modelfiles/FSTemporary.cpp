#include "feature/FSAlgorithm.h"
#include "feature/FSFactory.h"

using MCFeature::MCStatus;

MCStatus FSAlgorithm::Merge(const IFSAlgorithm&, const FSCategoryMaps*) {
  return MCFeature::Error(MCFeature::kCannotMerge);
}
