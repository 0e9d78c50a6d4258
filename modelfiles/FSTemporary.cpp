#include "feature/FSAlgorithm.h"
#include "feature/FSFactory.h"

using MCFeature::MCStatus;

MCStatus FSAlgorithm::ExportOneXML(std::ostream&, MCFSCommon::RankCriteria, int) const {
  return MCFeature::Error(MCFeature::kNotComputed);
}
MCStatus FSAlgorithm::ExportAllXML(std::ostream&) const {
  return MCFeature::Error(MCFeature::kNotComputed);
}
MCStatus FSAlgorithm::Merge(const IFSAlgorithm&, const FSCategoryMaps*) {
  return MCFeature::Error(MCFeature::kCannotMerge);
}
