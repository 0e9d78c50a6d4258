#include "feature/FSAlgorithm.h"
#include "feature/FSFactory.h"

using MCFeature::MCStatus;

MCStatus FSAlgorithm::ExportOneXML(std::ostream&, MCFSCommon::RankCriteria, int) const {
  return MCFeature::Error(MCFeature::kNotComputed);
}
MCStatus FSAlgorithm::ExportAllXML(std::ostream&) const {
  return MCFeature::Error(MCFeature::kNotComputed);
}
MCStatus FSAlgorithm::SaveState(std::fstream&) const {
  return MCFeature::Error(MCFeature::kBadStream);
}
MCStatus FSAlgorithm::SaveStateXML(std::ostream&) const {
  return MCFeature::Error(MCFeature::kBadStream);
}
MCStatus FSAlgorithm::Merge(const IFSAlgorithm&, const FSCategoryMaps*) {
  return MCFeature::Error(MCFeature::kCannotMerge);
}
std::unique_ptr<IFSAlgorithm> FSFactory::RestoreFSAlgorithmFromBinary(std::fstream&) {
  fStatus = MCFeature::Error(MCFeature::kBadBinaryState);
  return nullptr;
}
std::unique_ptr<IFSAlgorithm> FSFactory::RestoreFSAlgorithmFromXML(std::ifstream&) {
  fStatus = MCFeature::Error(MCFeature::kBadXMLState);
  return nullptr;
}
