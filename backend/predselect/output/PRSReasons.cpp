#include "backend/predselect/output/PRSReasons.h"

#include <string>

#include "backend/predselect/specifications/PRSOptions.h"
#include "backend/predselect/specifications/PRSValidSpecs.h"
#include "feature/FSSettings.h"
#include "host/output/pivot/BpComposite.h"
#include "host/output/pivot/BpProcedure.h"

using MCFSCommon::PredictorDelReason;

namespace {

constexpr PredictorDelReason kReasons[] = {
    MCFSCommon::kAllMissing,     MCFSCommon::kAllConstant,
    MCFSCommon::kManyMissing,    MCFSCommon::kManyInSingleCategory,
    MCFSCommon::kManyCategories, MCFSCommon::kManyCategoriesWithOneCase,
    MCFSCommon::kSmallStddev,    MCFSCommon::kSmallVariation,
};

std::string Percent(const PRSThreshold& threshold) {
  if (!threshold.fTyped.empty()) return threshold.fTyped + "%";
  return MCHost::FormatNumber(threshold.fValue, BpProcedure::Percent());
}

std::string Coefficient(const PRSThreshold& threshold) {
  if (!threshold.fTyped.empty()) return threshold.fTyped;
  return MCHost::FormatNumber(threshold.fValue, BpProcedure::Coefficient());
}

MCHost::OutputText Label(const char* key, const std::string& threshold) {
  return BpComposite(key).AddLiteral(threshold).Finish();
}

}  // namespace

std::span<const PredictorDelReason> PRSReasons() { return kReasons; }

MCHost::OutputText PRSReasonLabel(const PRSValidSpecs& specs, PredictorDelReason reason) {
  const PRSScreening& screening = specs.Options().fScreening;
  switch (reason) {
    case MCFSCommon::kAllMissing:
      return BpComposite("All Cases Missing").Finish();
    case MCFSCommon::kAllConstant:
      return BpComposite("All Cases Constant").Finish();
    case MCFSCommon::kManyMissing:
      return Label("Cases Missing > ^1", Percent(screening.fPctMissing));
    case MCFSCommon::kManyInSingleCategory:
      return Label("Cases Constant > ^1", Percent(screening.fPctEqual));
    case MCFSCommon::kManyCategories:
      return Label("Categories > ^1", Percent(screening.fPctUnequal));
    case MCFSCommon::kManyCategoriesWithOneCase:
      return Label("Categories Containing One Case > ^1",
                   Percent({FSSettings().GetMaxPctCatWithOneCase()}));
    case MCFSCommon::kSmallStddev:
      return Label("Standard Deviation < ^1", Coefficient(screening.fStdDev));
    case MCFSCommon::kSmallVariation:
      return Label("Coefficient Of Variation < ^1", Coefficient(screening.fCoeffVariate));
    case MCFSCommon::kNotDeleted:
      break;
  }
  return {};
}
