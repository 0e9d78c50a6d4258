#include "operations/Findings.h"

#include <algorithm>
#include <cmath>
#include <utility>
#include <vector>

#include "common/MissingValue.h"
#include "feature/FSCriterion.h"
#include "feature/FSSettings.h"
#include "feature/IFSAlgorithm.h"
#include "host/data/ITable.h"
#include "modelfiles/ComponentFile.h"
#include "operations/FindingsParts.h"

namespace PredSelect {

namespace {

// The first criterion that has ranked.
MCFSCommon::RankCriteria RankingOf(const IFSAlgorithm& component) {
  for (const FSCriterion& criterion : FSCriterion::All()) {
    const bool isOn = component.GetSettings()->GetCriterion(criterion.fCode);
    if (isOn && !component.GetRanks(criterion.fCode).empty()) return criterion.fCode;
  }
  return MCFSCommon::kPearson;
}

}  // namespace

std::string TextOf(const Json& json) {
  return json.dump(-1, ' ', false, Json::error_handler_t::replace);
}

Json JsonNumber(double value) {
  return MCMV::IsMissing(value) || !std::isfinite(value) ? Json(nullptr) : Json(value);
}

const KOVA_Variable* FindVariable(const MCHost::ITable* table, const std::string& name) {
  for (int i = 0; table != nullptr && i < table->ColumnCount(); ++i) {
    if (table->GetVariable(i).GetName() == name) return &table->GetVariable(i);
  }
  return nullptr;
}

std::string ValueText(const KOVA_Variable* variable, double value, const std::string& text) {
  const std::string* label =
      variable == nullptr ? nullptr : variable->GetValueLabels().FindLabel(value);
  return label == nullptr ? text : *label;
}

std::string ValueText(const KOVA_Variable* variable, const std::string& value) {
  const std::string* label =
      variable == nullptr ? nullptr : variable->GetValueLabels().FindLabel(value);
  return label == nullptr ? value : *label;
}

std::string FindingsText(const PRSFindings& findings, const MCHost::ITable* table) {
  return TextOf(findings.fpNaive == nullptr ? RankingFindings(findings, table)
                                            : ModelFindings(findings, table));
}

std::string FindingsByBits(const std::string& findings) {
  if (findings.empty()) return findings;
  Json json = Json::parse(findings);
  std::vector<Json> predictors = json["predictors"];
  const auto bitsOf = [](const Json& predictor) {
    return predictor["bits"].is_number() ? predictor["bits"].get<double>() : MCMV::gMissingValue;
  };
  std::stable_sort(predictors.begin(), predictors.end(),
                   [&](const Json& a, const Json& b) { return bitsOf(a) > bitsOf(b); });
  for (std::size_t i = 0; i < predictors.size(); ++i) predictors[i]["rank"] = i + 1;
  json["predictors"] = std::move(predictors);
  json["criterion"] = "Bits";
  return TextOf(json);
}

std::string FindingsText(const ComponentFile& state) {
  PRSFindings findings;
  findings.fpNaive = state.fpNaive.get();
  findings.fpFeature = state.fpFeature.get();
  findings.fpDictionary = state.fDictionary ? &*state.fDictionary : nullptr;
  if (findings.fpNaive != nullptr && !findings.fpNaive->IsModelBuilt()) return "";
  if (findings.fpFeature != nullptr) {
    if (findings.fpDictionary == nullptr || !findings.fpFeature->ArePredictorsRanked()) return "";
    findings.fRanking = RankingOf(*findings.fpFeature);
  }
  return FindingsText(findings, nullptr);
}

}  // namespace PredSelect
