#include "modelfiles/export/ModelFormats.h"

#include <nlohmann/json.hpp>
#include <set>

#include "common/xml/XMLError.h"
#include "modelfiles/export/ExportText.h"
#include "modelfiles/export/ScoringModel.h"

namespace MCModelFiles {

namespace {

// None of the forms can hold a zero byte, nor what is no UTF-8, with which JSON cannot be written.
void CheckText(const std::string& text, const ScoringVariable& variable) {
  bool isText = text.find('\0') == std::string::npos;
  try {
    (void)nlohmann::json(text).dump();
  } catch (const nlohmann::json::exception&) {
    isText = false;
  }
  if (isText) return;
  throw ExportError("a name, label or value of the variable \"" + variable.fName +
                    "\" holds bytes that are no text.");
}

void CheckTexts(const ScoringVariable& variable) {
  CheckText(variable.fName, variable);
  CheckText(variable.fLabel, variable);
  for (const std::string& text : variable.fTexts) CheckText(text, variable);
}

// Powers are all that a document of Naive Bayes can say.
void CheckCalibration(const ScoringModel& model, ModelFormat format) {
  const bool hasCurves = model.fCalibration.GetMethod() == NBCalibration::kIsotonic;
  if (!hasCurves || format != ModelFormat::kPMML) return;
  throw ExportError(
      "its isotonic calibration has no words in this form; the others hold it, and a model that is "
      "calibrated by a temperature goes into every form.");
}

}  // namespace

OutputNames NamesOf(const ScoringModel& model) {
  std::set<std::string> taken = {model.fTarget.fName};
  for (const ScoringInput& input : model.fInputs) taken.insert(input.fName);
  OutputNames names{Untaken("PredictedValue", taken), {}};
  for (std::size_t k = 1; k <= model.GetNClasses(); ++k) {
    names.fProbabilities.push_back(Untaken("PredictedProbability_" + std::to_string(k), taken));
  }
  return names;
}

ExportedModel ExportModel(const INBAlgorithm& component, ModelFormat format,
                          const ExportOptions& options) {
  const ScoringModel model(component);
  if (model.fInputs.empty()) throw ExportError("the model has no predictor.");
  CheckCalibration(model, format);
  CheckTexts(model.fTarget);
  for (const ScoringInput& input : model.fInputs) CheckTexts(input);
  try {
    switch (format) {
      case ModelFormat::kPMML:
        return ToPMML(component, options);
      case ModelFormat::kONNX:
        return ToONNX(model, options);
      case ModelFormat::kSQL:
        return ToSQL(model, options);
      case ModelFormat::kC:
        return ToC(model, options);
      default:
        return ToJSON(model, options);
    }
  } catch (const MCCommonXML::XMLError& error) {
    throw ExportError(std::string(error.what()) + ".");
  }
}

}  // namespace MCModelFiles
