// The JSON form of a model: written by a few lines, read with every number checked.
#include "modelfiles/export/JSONModel.h"

#include <cmath>
#include <limits>
#include <nlohmann/json.hpp>
#include <vector>

#include "modelfiles/export/ExportText.h"
#include "modelfiles/export/ModelFormats.h"
#include "modelfiles/export/ScoringModel.h"
#include "naivebayes/NBAlgorithm.h"
#include "naivebayes/NBFactory.h"
#include "naivebayes/NBModelCounts.h"
#include "naivebayes/variables/NBContVar.h"

namespace MCModelFiles {

namespace {

using Json = nlohmann::ordered_json;

constexpr const char* kFormKey = "predselect_model";
constexpr int kForm = 1;
constexpr int kCalibratedForm = 2;  // which older programs refuse, instead of not calibrating

Json Rows(const std::vector<double>& table, std::size_t classes) {
  Json rows = Json::array();
  for (std::size_t first = 0; first < table.size(); first += classes) {
    rows.push_back(
        std::vector<double>(table.begin() + static_cast<std::ptrdiff_t>(first),
                            table.begin() + static_cast<std::ptrdiff_t>(first + classes)));
  }
  return rows;
}

Json Describe(const ScoringVariable& variable) {
  Json described = {{"name", variable.fName}};
  if (!variable.fLabel.empty()) described["label"] = variable.fLabel;
  return described;
}

void AddCategories(const ScoringVariable& variable, Json& described) {
  described["categories"] = variable.fbTexts ? Json(variable.fTexts) : Json(variable.fNumbers);
}

Json Describe(const ScoringInput& input, std::size_t classes) {
  Json described = Describe(input);
  if (input.fbBinned) {
    described["cutpoints"] = input.fCuts;
    described["range"] = {input.fLow, input.fHigh};
    if (!input.fMissing.empty()) described["missing"] = input.fMissing;
    if (input.fMissingRange) {
      described["missing_range"] = {input.fMissingRange->first, input.fMissingRange->second};
    }
  } else {
    AddCategories(input, described);
  }
  described["counts"] = Rows(input.fCounts, classes);
  described["probabilities"] = Rows(input.fFactors, classes);
  return described;
}

Json Describe(const NBCalibration& calibration) {
  if (calibration.GetMethod() == NBCalibration::kTemperature) {
    return {{"method", "temperature"}, {"temperature", calibration.GetTemperature()}};
  }
  Json curves = Json::array();
  for (const NBCalibration::Curve& curve : calibration.GetCurves()) {
    curves.push_back({{"posteriors", curve.fX}, {"probabilities", curve.fY}});
  }
  return {{"method", "isotonic"}, {"curves", curves}};
}

// ---- Reading: each of these throws what ModelFromJSON turns into an ExportError -----------------

void Require(bool holds, const char* what) {
  if (!holds) throw ExportError(what);
}

std::vector<double> Numbers(const Json& list) {
  std::vector<double> numbers;
  for (const Json& number : list.get_ref<const Json::array_t&>()) {
    Require(number.is_number(), "a number is none");
    numbers.push_back(number.get<double>());
    Require(std::isfinite(numbers.back()), "a number is not finite");
  }
  return numbers;
}

std::string LabelOf(const Json& variable) { return variable.value("label", ""); }

int AddCategorical(const Json& described, INBVariable::VariableRole role, NBVarList& variables) {
  const Json& categories = described.at("categories");
  Require(categories.is_array() && !categories.empty(), "a variable has no categories");
  const std::string name = described.at("name").get<std::string>();
  if (categories.front().is_string()) {
    return variables.AddCatVar(name, LabelOf(described), categories.get<std::vector<std::string>>(),
                               role);
  }
  return variables.AddCatVar(name, LabelOf(described), Numbers(categories), role);
}

int AddBinned(const Json& described, NBVarList& variables) {
  const std::vector<double> range = Numbers(described.at("range"));
  Require(range.size() == 2, "a range has two ends");
  const std::vector<double> cuts = Numbers(described.at("cutpoints"));
  Require(!cuts.empty(), "a predictor has no cutpoints");
  const int place = variables.AddContVar(described.at("name").get<std::string>(),
                                         LabelOf(described), cuts, INBVariable::kInput);
  if (place < 0) return place;
  static_cast<NBContVar&>(*variables.GetVarAt(place)).SetMinMax(range[0], range[1]);
  for (const double value : Numbers(described.value("missing", Json::array()))) {
    variables.AddDiscreteUserMissing(place, value, "");
  }
  if (described.contains("missing_range")) {
    const std::vector<double> missing = Numbers(described["missing_range"]);
    Require(missing.size() == 2, "a range has two ends");
    variables.SetMissingInterval(place, missing[0], missing[1]);
  }
  return place;
}

void AddPredictor(const Json& described, std::size_t classes, NBVarList& variables,
                  NBModelCounts& counts) {
  const int place = described.contains("cutpoints")
                        ? AddBinned(described, variables)
                        : AddCategorical(described, INBVariable::kInput, variables);
  Require(place >= 0, "a name, a category or a cutpoint is there twice, or out of order");
  std::vector<double>& table = counts.fInputs.emplace_back();
  for (const Json& row : described.at("counts").get_ref<const Json::array_t&>()) {
    const std::vector<double> numbers = Numbers(row);
    Require(numbers.size() == classes, "a row of counts has not one a class");
    table.insert(table.end(), numbers.begin(), numbers.end());
  }
  const int rows = variables.GetVarAt(place)->GetNumberOfCategories();
  Require(table.size() == static_cast<std::size_t>(rows) * classes, "rows of counts are missing");
}

NBCalibration CalibrationOf(const Json& described, std::size_t classes) {
  NBCalibration calibration;
  if (described.at("method") == "temperature") {
    const std::vector<double> temperature = Numbers(Json::array({described.at("temperature")}));
    calibration = NBCalibration::ByTemperature(temperature[0]);
  } else {
    std::vector<NBCalibration::Curve> curves;
    for (const Json& curve : described.at("curves").get_ref<const Json::array_t&>()) {
      curves.push_back({Numbers(curve.at("posteriors")), Numbers(curve.at("probabilities"))});
    }
    calibration = NBCalibration::ByCurves(std::move(curves));
  }
  Require(calibration.Fits(classes), "its calibration does not fit its classes");
  return calibration;
}

std::unique_ptr<INBAlgorithm> Read(const Json& document) {
  const bool isCalibrated = document.is_object() && document.contains("calibration");
  const bool isModel = document.is_object() && document.contains(kFormKey) &&
                       document[kFormKey] == (isCalibrated ? kCalibratedForm : kForm);
  Require(isModel, "it is no model of this form");
  NBVarList variables;
  NBModelCounts counts;
  const Json& target = document.at("target");
  counts.fTarget = Numbers(target.at("counts"));
  const Json& training = document.at("training");
  const Json& cases = training.at("cases");
  Require(cases.is_number_unsigned() && cases <= std::numeric_limits<int>::max(),
          "the number of cases is none");
  counts.fNRecords = cases.get<int>();
  counts.fWeight = training.at("weight").get<double>();
  for (const Json& predictor : document.at("predictors").get_ref<const Json::array_t&>()) {
    AddPredictor(predictor, counts.fTarget.size(), variables, counts);
  }
  Require(AddCategorical(target, INBVariable::kOutput, variables) >= 0,
          "a name or a class is there twice");
  auto model = NBFactory().RestoreFromCounts(variables, counts);
  Require(model != nullptr, "its counts are none of a model");
  if (isCalibrated) {
    dynamic_cast<NBAlgorithm&>(*model).SetCalibration(
        CalibrationOf(document["calibration"], counts.fTarget.size()));
  }
  return model;
}

}  // namespace

ExportedModel ToJSON(const ScoringModel& model, const ExportOptions& options) {
  Json target = Describe(model.fTarget);
  AddCategories(model.fTarget, target);
  target["counts"] = model.fCounts;
  target["priors"] = model.fPriors;
  const bool isCalibrated = model.fCalibration.GetMethod() != NBCalibration::kNone;
  Json document = {{kFormKey, isCalibrated ? kCalibratedForm : kForm},
                   {"made_by", "PredSelect " + options.fVersion},
                   {"training", {{"cases", model.fNRecords}, {"weight", model.fTotalWeight}}},
                   {"target", target},
                   {"predictors", Json::array()}};
  if (isCalibrated) document["calibration"] = Describe(model.fCalibration);
  for (const ScoringInput& input : model.fInputs) {
    document["predictors"].push_back(Describe(input, model.GetNClasses()));
  }
  return {document.dump(1) + "\n", {}};
}

std::unique_ptr<INBAlgorithm> ModelFromJSON(const std::string& text) {
  try {
    return Read(Json::parse(text));
  } catch (const nlohmann::json::exception& error) {
    throw ExportError(error.what());
  }
}

}  // namespace MCModelFiles
