// The portable model document. Standard evaluators divide each count by the sum of its predictor's
// and put the threshold in the place of a count that is left out; so what stands here for counts
// are the smoothed probabilities themselves, all of them.
#include <algorithm>
#include <cmath>
#include <optional>
#include <sstream>

#include "common/WholeText.h"
#include "common/xml/DocumentHeader.h"
#include "common/xml/MCApplicInfo4XML.h"
#include "common/xml/XMLElement.h"
#include "modelfiles/export/ExportText.h"
#include "modelfiles/export/MadeUpCases.h"
#include "modelfiles/export/ModelFormats.h"
#include "modelfiles/export/ScoringModel.h"
#include "modelfiles/naivebayes/NBDocuments.h"

namespace MCModelFiles {

namespace {

using MCCommonXML::XMLElement;
using MCCommonXML::XMLString;

constexpr const char* kNamespace = "http://www.dmg.org/PMML-4_3";
constexpr const char* kName = "name";
constexpr const char* kField = "field";
constexpr const char* kDouble = "double";
constexpr const char* kCategorical = "categorical";
constexpr int kVerified = 20;  // cases

std::string ValueOf(const ScoringVariable& variable, std::size_t category) {
  return variable.fbTexts ? variable.fTexts[category] : RealDigits(variable.fNumbers[category]);
}

const char* TypeOf(const ScoringVariable& variable) {
  return variable.fbTexts ? "string" : kDouble;
}

// A value that no data have, and no category is: that of the row that levels sums. A field has to
// know it for some evaluators to take the row.
std::string NoValueOf(const ScoringInput& input) {
  std::string text = "(no value: makes sums equal)";
  while (std::ranges::find(input.fTexts, text) != input.fTexts.end()) text += "_";
  double number = -1e-300;
  while (std::ranges::find(input.fNumbers, number) != input.fNumbers.end()) number *= 2;
  return input.fbTexts ? text : RealDigits(number);
}

bool HasLevels(const ScoringModel& model) {
  return model.fCalibration.GetMethod() != NBCalibration::kNone;
}

XMLElement& AddField(XMLElement& dictionary, const ScoringVariable& variable, bool isBinned) {
  XMLElement& field = dictionary.AddChild("DataField");
  field.AddAttribute(kName, variable.fName);
  if (!variable.fLabel.empty()) field.AddAttribute("displayName", variable.fLabel);
  field.AddAttribute(pmml::kOptype, isBinned ? "continuous" : kCategorical);
  field.AddAttribute(pmml::kDataType, TypeOf(variable));
  for (std::size_t i = 0; i < variable.GetNCategories(); ++i) {
    field.AddChild(pmml::kValue).AddAttribute(pmml::kValueAttribute, ValueOf(variable, i));
  }
  return field;
}

void AddDictionary(XMLElement& root, const ScoringModel& model) {
  XMLElement& dictionary = root.AddChild("DataDictionary");
  dictionary.AddAttribute("numberOfFields", std::to_string(model.fInputs.size() + 1));
  for (const ScoringInput& input : model.fInputs) {
    XMLElement& field = AddField(dictionary, input, input.fbBinned);
    if (input.fbBinned || !HasLevels(model)) continue;
    field.AddChild(pmml::kValue).AddAttribute(pmml::kValueAttribute, NoValueOf(input));
  }
  AddField(dictionary, model.fTarget, false);
}

void AddSchema(XMLElement& document, const ScoringModel& model) {
  XMLElement& schema = document.AddChild("MiningSchema");
  for (const ScoringInput& input : model.fInputs) {
    XMLElement& field = schema.AddChild("MiningField");
    field.AddAttribute(kName, input.fName);
    field.AddAttribute("invalidValueTreatment", "asMissing");
  }
  XMLElement& target = schema.AddChild("MiningField");
  target.AddAttribute(kName, model.fTarget.fName);
  target.AddAttribute("usageType", "target");
}

void AddOutput(XMLElement& document, const ScoringModel& model, const OutputNames& names) {
  XMLElement& output = document.AddChild("Output");
  const auto add = [&output](const std::string& name, bool isClass, const char* type) -> auto& {
    XMLElement& field = output.AddChild("OutputField");
    field.AddAttribute(kName, name);
    field.AddAttribute(pmml::kOptype, isClass ? kCategorical : "continuous");
    field.AddAttribute(pmml::kDataType, type);
    field.AddAttribute("feature", isClass ? "predictedValue" : "probability");
    return field;
  };
  add(names.fPredicted, true, TypeOf(model.fTarget));
  for (std::size_t k = 0; k < model.GetNClasses(); ++k) {
    add(names.fProbabilities[k], false, kDouble)
        .AddAttribute(pmml::kValueAttribute, ValueOf(model.fTarget, k));
  }
}

// Rows of bins go by numbers that count from 0: some evaluators find them by these.
std::string RowName(std::size_t row) { return RealDigits(static_cast<double>(row)); }

void AddBin(XMLElement& discretize, std::size_t row, std::optional<double> above,
            std::optional<double> upTo) {
  XMLElement& bin = discretize.AddChild("DiscretizeBin");
  bin.AddAttribute("binValue", RowName(row));
  XMLElement& interval = bin.AddChild("Interval");
  interval.AddAttribute("closure", upTo ? "openClosed" : "openOpen");
  if (above) interval.AddAttribute("leftMargin", RealDigits(*above));
  if (upTo) interval.AddAttribute("rightMargin", RealDigits(*upTo));
}

// What is missing between the intervals, and beyond the finite numbers, has a row of its own behind
// the others: not every evaluator takes a number in no bin as missing.
// Another row, of no value, stands behind it in a bin that no number gets to: some evaluators go by
// the number of bins.
void AddBins(XMLElement& element, const ScoringInput& input, std::size_t rows) {
  XMLElement& derived = element.AddChild("DerivedField");
  derived.AddAttribute(pmml::kOptype, "continuous");
  derived.AddAttribute(pmml::kDataType, kDouble);
  XMLElement& discretize = derived.AddChild("Discretize");
  discretize.AddAttribute(kField, input.fName);
  const std::vector<ScoringInterval> intervals = IntervalsOf(input);
  for (const ScoringInterval& row : intervals) AddBin(discretize, row.fRow, row.fAbove, row.fUpTo);
  std::optional<double> end;
  for (const ScoringInterval& row : intervals) {
    if (row.fAbove != end) AddBin(discretize, input.GetNRows(), end, row.fAbove);
    end = row.fUpTo;
  }
  for (std::size_t row = input.GetNRows(); row < rows; ++row) {
    AddBin(discretize, row, end, std::nullopt);
  }
}

void AddCounts(XMLElement& element, const ScoringVariable& target, const double* counts) {
  XMLElement& list = element.AddChild(pmml::kTargetValueCounts);
  for (std::size_t k = 0; k < target.GetNCategories(); ++k) {
    XMLElement& count = list.AddChild("TargetValueCount");
    count.AddAttribute(pmml::kValueAttribute, ValueOf(target, k));
    count.AddAttribute("count", RealDigits(counts[k]));
  }
}

// A temperature is a power of every probability.
void Calibrate(const NBCalibration& calibration, std::vector<double>& probabilities) {
  if (calibration.GetMethod() != NBCalibration::kTemperature) return;
  for (double& p : probabilities) p = std::pow(p, 1 / calibration.GetTemperature());
}

// Larger than any evaluator takes for 0. The scale of counts does not matter.
void ScaleUp(std::vector<double>& counts) {
  const double least = *std::ranges::min_element(counts);
  const double scale = std::exp2(std::ceil(-std::log2(least)));
  for (double& count : counts) count *= scale;
}

// Adds a row, of no value, that makes the sums of all classes the same.
void LevelSums(std::size_t classes, std::vector<double>& counts) {
  std::vector<double> sums(classes, 0.0);
  for (std::size_t i = 0; i < counts.size(); ++i) sums[i % classes] += counts[i];
  const double largest = *std::ranges::max_element(sums);
  for (const double sum : sums) counts.push_back(2 * largest - sum);
}

// Evaluators divide by the sum of a predictor's rows, which is 1 but for rows without training
// cases. What is the same for all classes does not matter, so that these rows can be made so light
// that they are lost in the sum. A binned predictor has one more row, of the numbers that are in
// none: it says nothing of the classes.
std::vector<double> CountsOf(const ScoringInput& input, const ScoringModel& model) {
  constexpr double kLight = 0x1p-48;
  const std::size_t classes = model.GetNClasses();
  std::vector<double> counts = input.fFactors;
  Calibrate(model.fCalibration, counts);
  for (std::size_t first = 0; first < counts.size(); first += classes) {
    double cases = 0;
    for (std::size_t k = 0; k < classes; ++k) cases += input.fCounts[first + k];
    for (std::size_t k = 0; k < classes && !(cases > 0); ++k) counts[first + k] *= kLight;
  }
  if (input.fbBinned) counts.insert(counts.end(), classes, 1.0);
  if (HasLevels(model)) LevelSums(classes, counts);
  ScaleUp(counts);
  return counts;
}

void AddInput(XMLElement& inputs, const ScoringModel& model, const ScoringInput& input) {
  const std::size_t classes = model.GetNClasses();
  XMLElement& element = inputs.AddChild("BayesInput");
  element.AddAttribute(pmml::kFieldName, input.fName);
  const std::vector<double> counts = CountsOf(input, model);
  const std::size_t rows = counts.size() / classes;
  if (input.fbBinned) AddBins(element, input, rows);
  for (std::size_t row = 0; row < rows; ++row) {
    const std::string value = input.fbBinned                 ? RowName(row)
                              : row < input.GetNCategories() ? ValueOf(input, row)
                                                             : NoValueOf(input);
    XMLElement& pair = element.AddChild("PairCounts");
    pair.AddAttribute(pmml::kValueAttribute, value);
    AddCounts(pair, model.fTarget, &counts[row * classes]);
  }
}

std::string InputColumn(std::size_t input) { return "x" + std::to_string(input + 1); }
std::string ClassColumn(std::size_t k) { return "p" + std::to_string(k + 1); }

void AddCell(XMLElement& row, const std::string& column, const std::string& text) {
  row.AddChild(column).SetText(XMLString::Create(text));
}

void AddCase(XMLElement& row, const MadeUpCase& made) {
  for (std::size_t j = 0; j < made.fValues.size(); ++j) {
    if (!made.fValues[j]) continue;
    const auto* text = std::get_if<std::string>(&*made.fValues[j]);
    AddCell(row, InputColumn(j), text ? *text : RealDigits(std::get<double>(*made.fValues[j])));
  }
  const std::vector<double>& probabilities = made.fScores.GetOutProbabilities();
  for (std::size_t k = 0; k < probabilities.size(); ++k) {
    AddCell(row, ClassColumn(k), RealDigits(probabilities[k]));
  }
}

// What evaluators hold themselves against when they are asked to.
void AddVerification(XMLElement& document, const INBAlgorithm& component, const ScoringModel& model,
                     const OutputNames& names) {
  XMLElement& verification = document.AddChild("ModelVerification");
  verification.AddAttribute("recordCount", std::to_string(kVerified));
  verification.AddAttribute("fieldCount",
                            std::to_string(model.fInputs.size() + model.GetNClasses()));
  XMLElement& fields = verification.AddChild("VerificationFields");
  const auto add = [&fields](const std::string& name, const std::string& column) -> auto& {
    XMLElement& field = fields.AddChild("VerificationField");
    field.AddAttribute(kField, name);
    field.AddAttribute("column", column);
    return field;
  };
  for (std::size_t j = 0; j < model.fInputs.size(); ++j)
    add(model.fInputs[j].fName, InputColumn(j));
  for (std::size_t k = 0; k < model.GetNClasses(); ++k) {
    XMLElement& field = add(names.fProbabilities[k], ClassColumn(k));
    field.AddAttribute("precision", "1E-9");
    field.AddAttribute("zeroThreshold", "1E-12");
  }
  XMLElement& rows = verification.AddChild("InlineTable");
  MadeUpCases cases(component, model);
  for (int i = 0; i < kVerified; ++i) AddCase(rows.AddChild("row"), cases.Next());
}

}  // namespace

ExportedModel ToPMML(const INBAlgorithm& component, const ExportOptions& options) {
  const ScoringModel model(component);
  const OutputNames names = NamesOf(model);
  const MCApplicInfo4XML info{true, "PredSelect", options.fVersion, ""};
  const auto root = XMLElement::Create("PMML");
  root->AddAttribute("version", "4.3");
  root->AddAttribute("xmlns", kNamespace);
  AddHeader(*root, kNBComponentName, &info);
  AddDictionary(*root, model);
  XMLElement& document = root->AddChild("NaiveBayesModel");
  document.AddAttribute("functionName", "classification");
  document.AddAttribute("threshold", "0.0");
  XMLElement& ties = document.AddChild("Extension");
  ties.AddAttribute("extender", "PredSelect");
  ties.AddAttribute(kName, "ties");
  ties.AddAttribute(pmml::kValueAttribute,
                    "Of classes that are equally likely an evaluator takes one by its own rule.");
  AddSchema(document, model);
  AddOutput(document, model, names);
  XMLElement& inputs = document.AddChild("BayesInputs");
  for (const ScoringInput& input : model.fInputs) AddInput(inputs, model, input);
  XMLElement& output = document.AddChild("BayesOutput");
  output.AddAttribute(pmml::kFieldName, model.fTarget.fName);
  std::vector<double> priors = model.fPriors;
  Calibrate(model.fCalibration, priors);
  ScaleUp(priors);
  AddCounts(output, model.fTarget, priors.data());
  AddVerification(document, component, model, names);
  std::ostringstream text;
  WriteDocument(text, nullptr, *root, &info);
  ExportedModel exported{MCCommon::WholeText(text), {}};
  for (const ScoringInput& input : model.fInputs) {
    if (std::ranges::find(input.fTexts, "") == input.fTexts.end()) continue;
    exported.fNotes.push_back("The empty text is a category of \"" + input.fName +
                              "\", which evaluators may take as missing.");
  }
  return exported;
}

}  // namespace MCModelFiles
