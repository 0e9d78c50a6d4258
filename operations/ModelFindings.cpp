// The findings of a Naive Bayes model: its tables, whole, and how its probabilities did.
#include <string>
#include <vector>

#include "common/MCAssert.h"
#include "common/evaluation/Evaluation.h"
#include "common/evaluation/ScoreCurves.h"
#include "naivebayes/NBAlgorithm.h"
#include "naivebayes/encoders/NBNumericUserMissing.h"
#include "naivebayes/variables/NBContVar.h"
#include "operations/FindingsParts.h"
#include "operations/ModelCategories.h"

namespace PredSelect {

Json CategoryTexts(const INBVariable& variable, int nCategories, const MCHost::ITable* table) {
  const KOVA_Variable* known = FindVariable(table, variable.GetVariableName());
  const bool isNumeric = variable.GetMeasureLevel() == INBVariable::kNumericCategorical;
  Json texts = Json::array();
  for (int code = 0; code < nCategories; ++code) {
    const std::string text = CategoryText(variable, code);
    texts.push_back(isNumeric ? ValueText(known, CategoryNumber(variable, code), text)
                              : ValueText(known, text));
  }
  return texts;
}

namespace {

// What a number must be to count as missing although it is one.
Json UserMissing(const INBVariable& variable) {
  const auto* missing = dynamic_cast<const NBNumericUserMissing*>(variable.GetUserMissingInfo());
  if (missing == nullptr) return nullptr;
  Json json = {{"values", missing->GetDiscreteValues()}};
  if (missing->HasInterval()) {
    json["range"] = {missing->GetInterval().GetLeftEnd(), missing->GetInterval().GetRightEnd()};
  }
  return json;
}

// Weights and probabilities of each category or bin (rows) by class.
void AddTables(const NBayesInput& input, Json& json) {
  Json counts = Json::array();
  Json factors = Json::array();
  for (int m = 0; m < input.GetNCategories(); ++m) {
    Json row = Json::array();
    Json shares = Json::array();
    for (int k = 0; k < input.GetNTargetCategories(); ++k) {
      row.push_back(JsonNumber(input.GetCount(m, k)));
      shares.push_back(input.GetProbability(m, k));
    }
    counts.push_back(std::move(row));
    factors.push_back(std::move(shares));
  }
  json["counts"] = std::move(counts);
  json["factors"] = std::move(factors);
}

Json Input(const NBayesInput& input, const MCHost::ITable* table) {
  const INBVariable& variable = *input.GetVariable();
  const auto* scale = dynamic_cast<const NBContVar*>(&variable);
  Json json = {{"name", variable.GetVariableName()},
               {"label", variable.GetVariableLabel()},
               {"scale", scale != nullptr}};
  if (scale != nullptr) {
    json["low"] = JsonNumber(scale->GetMin());
    json["high"] = JsonNumber(scale->GetMax());
    json["cuts"] = scale->GetEncoder()->GetBinningCutpoints();
    json["user_missing"] = UserMissing(variable);
  } else {
    json["categories"] = CategoryTexts(variable, input.GetNCategories(), table);
  }
  AddTables(input, json);
  return json;
}

// By category the steps that hold a case: number of the step, weight of the category's cases and of
// the others, mean probability.
Json Curves(const MCCommon::ScoreCurves& curves) {
  Json categories = Json::array();
  for (int k = 0; k < curves.GetNCategories(); ++k) {
    Json steps = Json::array();
    int number = 0;
    for (const MCCommon::ScoreCurves::Step& step : curves.StepsOf(k)) {
      const double weight = step.fOf + step.fOthers;
      if (weight > 0.0) steps.push_back({number, step.fOf, step.fOthers, step.fSum / weight});
      ++number;
    }
    categories.push_back(std::move(steps));
  }
  return {{"weight", curves.GetWeight()}, {"categories", std::move(categories)}};
}

// Under the ROC curves that have steps, but from the probabilities themselves; null for a category
// with no case or all, and for all where there were too many different ones.
Json Areas(const MCCommon::Evaluation& evaluation, const MCCommon::ScoreCurves& curves) {
  Json areas = Json::array();
  for (int k = 0; k < curves.GetNCategories(); ++k) {
    const double area = evaluation.fClasses[static_cast<std::size_t>(k)].fAUC.fValue;
    areas.push_back(evaluation.fbAUCRounded ? Json(nullptr) : JsonNumber(area));
  }
  return areas;
}

Json Samples(const PRSFindings& findings) {
  Json samples = Json::object();
  if (findings.fpTraining != nullptr) samples["training"] = Curves(*findings.fpTraining);
  if (findings.fpTest != nullptr) samples["test"] = Curves(*findings.fpTest);
  const bool isTested = findings.fpTest != nullptr;
  const MCCommon::ScoreCurves* evaluated = isTested ? findings.fpTest : findings.fpTraining;
  if (findings.fpEvaluation != nullptr && evaluated != nullptr) {
    samples[isTested ? "test" : "training"]["areas"] = Areas(*findings.fpEvaluation, *evaluated);
  }
  return samples;
}

// By observed (rows) and predicted category.
Json Confusion(const NBOutputStatistics* statistics) {
  return statistics == nullptr ? Json(nullptr) : Json(statistics->GetMisClassMatrixAsVecOfRows());
}

// The sizes on the way, with the predictor that each adds (-1 for the forced ones before the first
// step): average log-likelihood of the training cases, and what the sizes are compared by, where
// they were (null, and no chosen size, for an exact size).
Json Path(const PRSFindings& findings, const NBVarList& variables) {
  const NBSelectionResult& selection = *findings.fpSelection;
  Json steps = Json::array();
  const auto nForced = static_cast<std::size_t>(findings.fNForced);
  for (std::size_t i = nForced > 0 ? nForced - 1 : 0; i < selection.fvLogLikelihoods.size(); ++i) {
    Json step = {{"size", i + 1}, {"added", nullptr}, {"criterion", nullptr}};
    if (i >= nForced && i < selection.fvSelected.size()) {
      step["added"] = variables.GetVarAt(selection.fvSelected[i])->GetVariableName();
    }
    step["log_likelihood"] = JsonNumber(selection.fvLogLikelihoods[i]);
    for (const auto& [size, criterion] : selection.fvResults) {
      if (size == static_cast<int>(i) + 1) step["criterion"] = JsonNumber(criterion);
    }
    steps.push_back(std::move(step));
  }
  Json chosen;
  if (!selection.fvResults.empty()) chosen = selection.fvResults.front().first;
  return {{"steps", std::move(steps)},
          {"forced", findings.fNForced},
          {"by_test_data", findings.fbByTestData},
          {"chosen", std::move(chosen)}};
}

Json Target(const NBAlgorithm& model, const MCHost::ITable* table) {
  const INBVariable& variable = *model.GetVarList().GetVarAt(model.GetVarList().GetTargetIndex());
  const int nCategories = model.GetNTargetCategories();
  Json counts = Json::array();
  for (int k = 0; k < nCategories; ++k)
    counts.push_back(JsonNumber(model.GetTargetCategoryCount(k)));
  return {{"name", variable.GetVariableName()},
          {"label", variable.GetVariableLabel()},
          {"categories", CategoryTexts(variable, nCategories, table)},
          {"counts", std::move(counts)},
          {"priors", model.GetOutput().GetPriors()}};
}

}  // namespace

Json ModelFindings(const PRSFindings& findings, const MCHost::ITable* table) {
  const auto* model = dynamic_cast<const NBAlgorithm*>(findings.fpNaive);
  MCCommon::Assert(model != nullptr, "model != 0", "operations/ModelFindings");
  double valid = 0.0, excluded = 0.0;
  int nValid = 0, nExcluded = 0;
  model->GetNValidNExcluded(valid, excluded, nValid, nExcluded);
  Json json = {{"kind", "model"}, {"target", Target(*model, table)}};
  json["cases"] = {{"valid", nValid},
                   {"excluded", nExcluded},
                   {"valid_weight", JsonNumber(valid)},
                   {"excluded_weight", JsonNumber(excluded)}};
  json["inputs"] = Json::array();
  for (const NBayesInput& input : model->GetInputs()) json["inputs"].push_back(Input(input, table));
  json["confusion"] = {{"training", Confusion(model->GetTrainOutStats())},
                       {"test", Confusion(model->GetTestOutStats())}};
  json["path"] =
      findings.fpSelection == nullptr ? Json(nullptr) : Path(findings, model->GetVarList());
  json["excluded"] = Json::array();
  for (const PRSLeftOut& predictor : findings.fLeftOut) {
    json["excluded"].push_back({{"name", predictor.fName},
                                {"label", predictor.fLabel},
                                {"scale", !predictor.fbCategorical},
                                {"reason", predictor.fReason},
                                {"threshold", JsonNumber(predictor.fThreshold)}});
  }
  json["curves"] = Samples(findings);
  return json;
}

}  // namespace PredSelect
