// The result documents of the feature selection component; their types are described by
// modelfiles/dtd/fsoutputonecrit.dtd and fsoutputallcrit.dtd.

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <memory>
#include <ostream>

#include "common/MissingValue.h"
#include "common/xml/DocumentHeader.h"
#include "common/xml/XMLDocType.h"
#include "common/xml/XMLElement.h"
#include "feature/FSAlgorithm.h"
#include "feature/FSCriterion.h"
#include "feature/FSSettings.h"
#include "feature/FSWithinMemory.h"

using namespace MCFSCommon;
using MCCommonXML::XMLElement;
using MCFeature::MCStatus;

namespace {

constexpr const char* kComponent = "PredSelect Feature Selection Component";

const char* TypeName(bool categorical) { return categorical ? "categorical" : "continuous"; }

// A set without predictors passes for a categorical one.
const char* SetTypeName(PredictorSetType type) {
  return type == kMixed ? "mixed" : TypeName(type != kAllContinuous);
}

// Result files name every rule, also the one that GetScreenCritName has no name for.
std::string RuleName(int reason) {
  return reason == kManyCategoriesWithOneCase
             ? "manyCategsWithOneCase"
             : FSPredictorSet::GetScreenCritName(static_cast<PredictorDelReason>(reason));
}

std::unique_ptr<XMLElement> CreateRoot(const std::string& name) {
  auto root = XMLElement::Create(name);
  root->AddAttribute("version", "1.0");
  return root;
}

void AddTarget(XMLElement& root, const FSSettings& settings) {
  if (settings.GetFlagTrInput()) return;
  root.AddChild("Target").AddAttribute("targetIndex", settings.GetTargetPosition());
}

// The percent that was given for a stored fraction: 7 is stored as 0.07, and 100 times that is
// 7.000000000000001. Digits that no double needs are taken for it where they are the same fraction.
double PercentOf(double fraction) {
  constexpr int kSafeDigits = 15;
  char text[32];
  const char* end =
      std::to_chars(text, text + sizeof text, 100.0 * fraction, std::chars_format::general,
                    kSafeDigits)
          .ptr;
  double percent = 0.0;
  (void)std::from_chars(text, end, percent);
  return percent / 100.0 == fraction ? percent : 100.0 * fraction;
}

void AddScreeningCriteria(XMLElement& parent, const FSSettings& settings) {
  struct Rule {
    PredictorDelReason fReason;
    bool fbInForce;
    double fValue;
  };
  const std::array<Rule, 6> rules = {{
      {kManyMissing, settings.IsDeleteManyMissing(), PercentOf(settings.GetMaxMissFraction())},
      {kManyInSingleCategory, settings.IsDeleteManySingle(),
       PercentOf(settings.GetMaxSingleFraction())},
      {kManyCategories, settings.IsDeleteManyCategories(),
       PercentOf(settings.GetMaxNCatFraction())},
      {kManyCategoriesWithOneCase, settings.IsDeleteManyOneCase(),
       PercentOf(settings.GetMaxOneCaseFraction())},
      {kSmallVariation, settings.IsDeleteSmallVariation(), settings.GetMinVariation()},
      {kSmallStddev, settings.IsDeleteSmallStddev() && settings.GetMinStddev() > 0.0,
       settings.GetMinStddev()},
  }};
  XMLElement& list = parent.AddChild("ScreeningCriteria");
  for (const PredictorDelReason always : {kAllMissing, kAllConstant}) {
    list.AddChild("ScreenCriterion").AddAttribute("name", RuleName(always));
  }
  for (const Rule& rule : rules) {
    if (!rule.fbInForce) continue;
    XMLElement& criterion = list.AddChild("ScreenCriterion");
    criterion.AddAttribute("name", RuleName(rule.fReason));
    // A threshold that nothing reaches is no number that a document can hold.
    if (std::isfinite(rule.fValue)) {
      criterion.AddAttribute("value", rule.fValue);
    } else {
      criterion.AddAttribute("value", "INF");
    }
  }
  list.AddAttribute("numberOfCriteria", static_cast<double>(list.GetNChildren()));
}

void AddCriteriaList(XMLElement& root, const FSSettings& settings) {
  XMLElement& list = root.AddChild("CriteriaList");
  for (const FSCriterion& criterion : FSCriterion::All()) {
    if (!settings.GetCriterion(criterion.fCode)) continue;
    list.AddChild("Criterion").AddAttribute("name", criterion.fShortName);
  }
  list.AddAttribute("numberOfCriteria", static_cast<double>(list.GetNChildren()));
}

void Write(std::ostream& out, const XMLElement& root, const char* name, const char* dtd) {
  const auto docType = MCCommonXML::XMLDocType::Create(name, dtd, nullptr);
  MCModelFiles::WriteDocument(out, &docType, root, nullptr);
}

}  // namespace

MCStatus FSAlgorithm::ExportOneXML(std::ostream& out, RankCriteria criterion, int nBest) const {
  if (fStatus.IsError()) return fStatus;
  if (!fbPredictorsRanked) return MCFeature::Error(MCFeature::kNotRanked);
  const MCStatus status = StatusNow();
  if (status.IsError()) return status;
  if (!fpSettings->GetCriterion(criterion)) return MCFeature::Error(MCFeature::kNotComputed);
  const MCStatus exported =
      FSWithinMemory(out, [&] { return fPredictors.ExportOneXML(out, criterion, nBest); });
  if (!exported.IsOK()) return exported;
  if (!status.IsOK() || nBest <= fPredictors.GetNValidPred()) return status;
  MCStatus tooFew = MCFeature::Warning(MCFeature::kTooFewPredictors);
  tooFew.SetDiscreteDatum(0, fPredictors.GetNValidPred());
  return tooFew;
}

MCStatus FSAlgorithm::ExportAllXML(std::ostream& out) const {
  const MCStatus status = StatusNow();
  if (status.IsError()) return status;
  const MCStatus exported = FSWithinMemory(out, [&] { return fPredictors.ExportAllXML(out); });
  return exported.IsOK() ? status : exported;
}

// OK from a stage on; error 1 when cancelled, else error 6.
MCStatus FSPredictorSet::MayExport(PredictorSetStatus from) const {
  if (fpCancel->IsCancel()) return MCFeature::Error(MCFeature::kCancelled);
  return fStatus >= from ? MCStatus() : MCFeature::Error(MCFeature::kNotRanked);
}

void FSPredictorSet::ExportDoubleValue(XMLElement& element, double value) {
  ExportDoubleValue(element, "criterionValue", value);
}

void FSPredictorSet::ExportDoubleValue(XMLElement& element, const char* name, double value) {
  if (MCMV::IsMissing(value)) {
    element.AddAttribute(name, "Missing");
  } else {
    element.AddAttribute(name, value);
  }
}

MCStatus FSPredictorSet::ExportOneXML(std::ostream& out, RankCriteria criterion, int nBest) const {
  const MCStatus status = MayExport(kRanked);
  if (!status.IsOK()) return status;
  const FSCriterion& row = FSCriterion::Of(criterion);
  const auto root = CreateRoot("FSOutputOne");
  root->AddAttribute("predictorSetType", SetTypeName(fSetType));
  int n = fRanking.GetNBest();
  if (n == 0 && (nBest <= 0 || nBest >= fNPredictors)) {
    root->AddAttribute("predictorChoiceType", "all");
  } else {
    if (nBest > 0 && (nBest < n || n == 0)) n = nBest;
    root->AddAttribute("predictorChoiceType", "numberOfBest");
    root->AddAttribute("numberOfBest", n);
  }
  MCModelFiles::AddHeader(*root, kComponent, nullptr);
  root->AddChild("Criterion").AddAttribute("name", row.fNameInRanking);
  AddTarget(*root, *fpSettings);
  const std::size_t before = root->GetNChildren();
  ExportRanking(*root, row, n == 0 ? fNPredictors : n);
  root->AddAttribute("numberOfPredictors", static_cast<double>(root->GetNChildren() - before));
  Write(out, *root, "FSOutputOne", "fsoutputonecrit.dtd");
  return status;
}

// The first n entries of the order. Predictors that the criterion does not rank are left out, but
// keep their positions.
void FSPredictorSet::ExportRanking(XMLElement& root, const FSCriterion& criterion, int n) const {
  const std::vector<FSPredSort>& sorted = fRanking.OrderOf(criterion.fCode, fSetType);
  const int count = std::min(n, static_cast<int>(sorted.size()));
  for (int position = 0; position < count; ++position) {
    const FSPredSort& sort = sorted[static_cast<std::size_t>(position)];
    if (PartOf(criterion, sort.fIndex) == FSPart::kNone) continue;
    XMLElement& predictor = root.AddChild("Predictor");
    ExportPredictor(predictor, sort.fIndex);
    ExportDoubleValue(predictor, sort.fValue);
    predictor.AddAttribute("rankOrder", position);
  }
}

FSPart FSPredictorSet::PartOf(const FSCriterion& criterion, int predictor) const {
  return criterion.PartOf(fpSettings->IsCatPredictor(predictor), fpSettings->IsCatTarget());
}

// Index and, where a set has both, type.
void FSPredictorSet::ExportPredictor(XMLElement& element, int predictor) const {
  element.AddAttribute("predictorIndex", predictor);
  if (fSetType == kMixed) {
    element.AddAttribute("predictorType", TypeName(fpSettings->IsCatPredictor(predictor)));
  }
}

MCStatus FSPredictorSet::ExportAllXML(std::ostream& out) const {
  const MCStatus status = MayExport(kScreened);
  if (!status.IsOK()) return status;
  const auto root = CreateRoot("FSOutputAll");
  root->AddAttribute("targetType", TypeName(fpSettings->IsCatTarget()));
  root->AddAttribute("predictorSetType", SetTypeName(fSetType));
  MCModelFiles::AddHeader(*root, kComponent, nullptr);
  ExportExcludedPredictors(*root);
  AddCriteriaList(*root, *fpSettings);
  AddTarget(*root, *fpSettings);
  int written = 0;
  for (int j = 0; j < fNPredictors && fStatus == kRanked; ++j) {
    if (fExclusions.Contains(j)) continue;
    XMLElement& predictor = root->AddChild("Predictor");
    ExportPredictor(predictor, j);
    ExportCriteria(predictor, j);
    ++written;
  }
  root->AddAttribute("numberOfPredictors", written);
  Write(out, *root, "FSOutputAll", "fsoutputallcrit.dtd");
  return status;
}

void FSPredictorSet::ExportExcludedPredictors(XMLElement& root) const {
  XMLElement& excluded = root.AddChild("ExcludedPredictors");
  excluded.AddAttribute("numberOfPredictors", GetNDeletedPred());
  AddScreeningCriteria(excluded, *fpSettings);
  for (std::size_t k = 0; k < GetIndicesDelPred().size(); ++k) {
    const int index = GetIndicesDelPred()[k];
    XMLElement& predictor = excluded.AddChild("ExclPredictor");
    predictor.AddAttribute("predictorIndex", index);
    predictor.AddAttribute("predictorType", TypeName(fpSettings->IsCatPredictor(index)));
    predictor.AddAttribute("screenCriterion", RuleName(GetReasonsDelPred()[k]));
  }
}

// The criteria that show the predictor; then, against a categorical target, those that rank it
// beside predictors of the other kind.
void FSPredictorSet::ExportCriteria(XMLElement& element, int predictor) const {
  for (const FSCriterion& criterion : FSCriterion::All()) {
    if (PartOf(criterion, predictor) != FSPart::kShown) continue;
    ExportCritAndRank(element, predictor, criterion.fCode);
  }
  for (const FSCriterion& criterion : FSCriterion::All()) {
    if (!fpSettings->IsCatTarget() || PartOf(criterion, predictor) != FSPart::kBeside) continue;
    if (fRanking.RankOf(criterion.fCode, predictor) < 0) continue;
    ExportCritAndRank(element, predictor, criterion.fCode);
  }
}

// Of a predictor that is only ranked, value and rank.
void FSPredictorSet::ExportCritAndRank(XMLElement& element, int predictor,
                                       RankCriteria criterion) const {
  if (!fpSettings->GetCriterion(criterion)) return;
  const FSCriterion& row = FSCriterion::Of(criterion);
  XMLElement& shown = element.AddChild("CriterionAndRank");
  shown.AddAttribute("criterionName", row.fShortName);
  if (PartOf(row, predictor) == FSPart::kShown) {
    double out[FSCriterion::kMaxOutputs];
    GetPredictorStats(criterion, predictor, out[0], out[1], out[2], out[3]);
    for (std::size_t i = 0; i < row.fOutputs.size(); ++i) {
      ExportDoubleValue(shown, row.fOutputs[i].fAttribute, out[i]);
    }
  } else {
    ExportDoubleValue(shown, GetCriterionValues(criterion)[static_cast<std::size_t>(predictor)]);
  }
  const int rank = fRanking.RankOf(criterion, predictor);
  if (rank >= 0) shown.AddAttribute("rankOrder", rank);
}
