// The result documents of the feature selection component; their types are described by
// modelfiles/dtd/fsoutputonecrit.dtd and fsoutputallcrit.dtd.

#include <algorithm>
#include <array>
#include <cmath>
#include <memory>
#include <ostream>

#include "common/MissingValue.h"
#include "common/xml/DocumentHeader.h"
#include "common/xml/XMLDocType.h"
#include "common/xml/XMLElement.h"
#include "feature/FSAlgorithm.h"
#include "feature/FSSettings.h"

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

// FSOutputOne has a name of its own for Cramer's V.
std::string NameInRanking(RankCriteria criterion) {
  return criterion == kCramer ? "Cramer V" : FSPredictorSet::GetRankCritName(criterion);
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

void AddScreeningCriteria(XMLElement& parent, const FSSettings& settings) {
  struct Rule {
    PredictorDelReason fReason;
    bool fbInForce;
    double fValue;
  };
  const std::array<Rule, 6> rules = {{
      {kManyMissing, settings.IsDeleteManyMissing(), settings.GetMaxPctMiss()},
      {kManyInSingleCategory, settings.IsDeleteManySingle(), settings.GetMaxPctSingle()},
      {kManyCategories, settings.IsDeleteManyCategories(), settings.GetMaxNCatAsPct()},
      {kManyCategoriesWithOneCase, settings.IsDeleteManyOneCase(),
       settings.GetMaxPctCatWithOneCase()},
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
  for (int c = 0; c < kNCriteria; ++c) {
    const auto criterion = static_cast<RankCriteria>(c);
    if (!settings.GetCriterion(criterion)) continue;
    list.AddChild("Criterion").AddAttribute("name", FSPredictorSet::GetRankCritName(criterion));
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
  const MCStatus exported = fPredictors.ExportOneXML(out, criterion, nBest);
  if (!exported.IsOK()) return exported;
  if (!status.IsOK() || nBest <= fPredictors.GetNValidPred()) return status;
  MCStatus tooFew = MCFeature::Warning(MCFeature::kTooFewPredictors);
  tooFew.SetDiscreteDatum(0, fPredictors.GetNValidPred());
  return tooFew;
}

MCStatus FSAlgorithm::ExportAllXML(std::ostream& out) const {
  const MCStatus status = StatusNow();
  if (status.IsError()) return status;
  const MCStatus exported = fPredictors.ExportAllXML(out);
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
  const auto root = CreateRoot("FSOutputOne");
  root->AddAttribute("predictorSetType", SetTypeName(fSetType));
  int n = fNBest;
  if (n == 0 && (nBest <= 0 || nBest >= fNPredictors)) {
    root->AddAttribute("predictorChoiceType", "all");
  } else {
    if (nBest > 0 && (nBest < n || n == 0)) n = nBest;
    root->AddAttribute("predictorChoiceType", "numberOfBest");
    root->AddAttribute("numberOfBest", n);
  }
  MCModelFiles::AddHeader(*root, kComponent, nullptr);
  root->AddChild("Criterion").AddAttribute("name", NameInRanking(criterion));
  AddTarget(*root, *fpSettings);
  const std::size_t before = root->GetNChildren();
  ExportRanking(*root, criterion, n == 0 ? fNPredictors : n);
  root->AddAttribute("numberOfPredictors", static_cast<double>(root->GetNChildren() - before));
  Write(out, *root, "FSOutputOne", "fsoutputonecrit.dtd");
  return status;
}

// The first n entries of the order; categorical predictors have no F against a categorical target,
// but keep their positions.
void FSPredictorSet::ExportRanking(XMLElement& root, RankCriteria criterion, int n) const {
  const std::vector<FSPredSort>& sorted = SortVectorOf(criterion);
  const int count = std::min(n, static_cast<int>(sorted.size()));
  for (int position = 0; position < count; ++position) {
    const FSPredSort& sort = sorted[static_cast<std::size_t>(position)];
    const bool categorical = fpSettings->IsCatPredictor(sort.fIndex);
    if (criterion == kFStat && categorical && fpSettings->IsCatTarget()) continue;
    XMLElement& predictor = root.AddChild("Predictor");
    ExportPredictor(predictor, sort.fIndex);
    ExportDoubleValue(predictor, sort.fValue);
    predictor.AddAttribute("rankOrder", position);
  }
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
    if (std::binary_search(fDeletedIndices.begin(), fDeletedIndices.end(), j)) continue;
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
  for (std::size_t k = 0; k < fDeletedIndices.size(); ++k) {
    XMLElement& predictor = excluded.AddChild("ExclPredictor");
    predictor.AddAttribute("predictorIndex", fDeletedIndices[k]);
    predictor.AddAttribute("predictorType",
                           TypeName(fpSettings->IsCatPredictor(fDeletedIndices[k])));
    predictor.AddAttribute("screenCriterion", RuleName(fDeletedReasons[k]));
  }
}

// The criteria that suit predictor and target. A continuous predictor enters the chi-square
// rankings with its analysis of variance, of which only value and rank are shown there.
void FSPredictorSet::ExportCriteria(XMLElement& element, int predictor) const {
  const bool categorical = fpSettings->IsCatPredictor(predictor);
  if (!fpSettings->IsCatTarget()) {
    ExportCritAndRank(element, predictor, categorical ? kFStat : kTStat);
  } else if (categorical) {
    for (const RankCriteria c : {kPearson, kLikelihood, kCramer, kLambda}) {
      ExportCritAndRank(element, predictor, c);
    }
  } else {
    ExportCritAndRank(element, predictor, kFStat);
    for (const RankCriteria c : {kPearson, kLikelihood}) {
      if (!fpSettings->GetCriterion(c) || RankOf(c, predictor) < 0) continue;
      XMLElement& shown = element.AddChild("CriterionAndRank");
      shown.AddAttribute("criterionName", GetRankCritName(c));
      ExportDoubleValue(shown, fCriterionValues[c][static_cast<std::size_t>(predictor)]);
      shown.AddAttribute("rankOrder", RankOf(c, predictor));
    }
  }
}

// -1 for a predictor that is not ranked.
int FSPredictorSet::RankOf(RankCriteria criterion, int predictor) const {
  const std::vector<int>& ranks = fRanks[criterion];
  return ranks.empty() ? -1 : ranks[static_cast<std::size_t>(predictor)];
}

void FSPredictorSet::ExportCritAndRank(XMLElement& element, int predictor,
                                       RankCriteria criterion) const {
  if (!fpSettings->GetCriterion(criterion)) return;
  double value = 0.0, out2 = 0.0, out3 = 0.0, out4 = 0.0;
  GetPredictorStats(criterion, predictor, value, out2, out3, out4);
  XMLElement& shown = element.AddChild("CriterionAndRank");
  shown.AddAttribute("criterionName", GetRankCritName(criterion));
  ExportDoubleValue(shown, value);
  if (criterion == kTStat) {
    ExportDoubleValue(shown, "corrCoeff", out2);
    ExportDoubleValue(shown, "statisticValue", out3);
    ExportDoubleValue(shown, "df", out4);
  } else if (criterion != kCramer && criterion != kLambda) {
    ExportDoubleValue(shown, "statisticValue", out2);
    ExportDoubleValue(shown, "df", out3);
    if (criterion == kFStat) ExportDoubleValue(shown, "df2", out4);
  }
  if (RankOf(criterion, predictor) >= 0) {
    shown.AddAttribute("rankOrder", RankOf(criterion, predictor));
  }
}
