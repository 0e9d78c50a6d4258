// The model as an ONNX graph: each input becomes the evidence of the row that its value stands for,
// or none; the sum of these and the priors' goes through a softmax. All in double precision.
#include <nlohmann/json.hpp>
#include <set>

#include "modelfiles/export/ExportText.h"
#include "modelfiles/export/ModelFormats.h"
#include "modelfiles/export/ONNXGraph.h"
#include "modelfiles/export/ScoringModel.h"

namespace MCModelFiles {

namespace {

constexpr std::int64_t kCases = -1;
constexpr auto kDouble = static_cast<std::int64_t>(ONNXGraph::Element::kDouble);

class Builder {
 public:
  explicit Builder(const ScoringModel& model)
      : fModel(model), fNClasses(static_cast<std::int64_t>(model.GetNClasses())) {
    for (const ScoringInput& input : model.fInputs) fTaken.insert(input.fName);
    fLabel = Untaken("label", fTaken);
    fProbabilities = Untaken("probabilities", fTaken);
  }

  std::string Build(const std::string& version) {
    ScoringInput prior;
    prior.fNumbers = {0};
    prior.fFactors = fModel.fPriors;
    ONNXGraph::Names terms = {Name("priors")};
    fGraph.AddDoubles(terms[0], {1, fNClasses}, EvidenceOf(prior, fModel.GetNClasses()));
    for (const ScoringInput& input : fModel.fInputs) {
      using Element = ONNXGraph::Element;
      fGraph.AddInput(input.fName, input.fbTexts ? Element::kText : Element::kDouble, {kCases, 1});
      terms.push_back(input.fbTexts ? OfTexts(input) : OfNumbers(input));
    }
    Decide(terms);
    return fGraph.Bytes(version,
                        "Naive Bayes classifier. A missing number is NaN, a missing text one that "
                        "is no category. Of "
                        "classes that are equally likely the first one is the label.",
                        {{"target", fModel.fTarget.fName}, {"classes", Classes()}});
  }

 private:
  std::string Name(const std::string& name) { return Untaken(name, fTaken); }

  // Of each predictor the evidence by case and class.
  std::string OfTexts(const ScoringInput& input) {
    std::vector<double> table = EvidenceOf(input, fModel.GetNClasses());
    table.insert(table.end(), fModel.GetNClasses(), 0.0);  // of any other text
    const auto rows = static_cast<std::int64_t>(input.GetNRows() + 1);
    const std::string constant = Name(input.fName + ".table");
    const std::string place = Name(input.fName + ".place");
    const std::string picked = Name(input.fName + ".picked");
    const std::string evidence = Name(input.fName + ".evidence");
    fGraph.AddDoubles(constant, {rows, fNClasses}, table);
    fGraph.AddPlaces(input.fName, place, input.fTexts);
    fGraph.AddNode("Gather", {constant, place}, picked, {{"axis", 0}});
    fGraph.AddNode("Squeeze", {picked, SecondAxis()}, evidence);
    return evidence;
  }

  std::string OfNumbers(const ScoringInput& input) {
    const std::vector<double> table = EvidenceOf(input, fModel.GetNClasses());
    std::vector<double> rows;
    const std::string isIn = input.fbBinned ? InIntervals(input, table, rows) : IsEqual(input);
    if (!input.fbBinned) rows = table;
    const auto n = static_cast<std::int64_t>(rows.size()) / fNClasses;
    const std::string constant = Name(input.fName + ".table");
    const std::string as01 = Name(input.fName + ".row");
    const std::string evidence = Name(input.fName + ".evidence");
    fGraph.AddDoubles(constant, {n, fNClasses}, rows);
    fGraph.AddNode("Cast", {isIn}, as01, {{"to", kDouble}});
    fGraph.AddNode("MatMul", {as01, constant}, evidence);
    return evidence;
  }

  std::string IsEqual(const ScoringInput& input) {
    const std::string values = Name(input.fName + ".values");
    const std::string isIn = Name(input.fName + ".is");
    fGraph.AddDoubles(values, {static_cast<std::int64_t>(input.fNumbers.size())}, input.fNumbers);
    fGraph.AddNode("Equal", {input.fName, values}, isIn);
    return isIn;
  }

  // Gives the rows of the table, one an interval.
  std::string InIntervals(const ScoringInput& input, const std::vector<double>& table,
                          std::vector<double>& rows) {
    std::vector<double> lows, highs;
    for (const ScoringInterval& interval : IntervalsOf(input)) {
      lows.push_back(interval.fAbove);
      highs.push_back(interval.fUpTo);
      const auto row = table.begin() + static_cast<std::int64_t>(interval.fRow) * fNClasses;
      rows.insert(rows.end(), row, row + fNClasses);
    }
    const auto n = static_cast<std::int64_t>(lows.size());
    const std::string low = Name(input.fName + ".low");
    const std::string high = Name(input.fName + ".high");
    const std::string above = Name(input.fName + ".above");
    const std::string upTo = Name(input.fName + ".up_to");
    const std::string isIn = Name(input.fName + ".is");
    fGraph.AddDoubles(low, {n}, lows);
    fGraph.AddDoubles(high, {n}, highs);
    fGraph.AddNode("Greater", {input.fName, low}, above);
    fGraph.AddNode("LessOrEqual", {input.fName, high}, upTo);
    fGraph.AddNode("And", {above, upTo}, isIn);
    return isIn;
  }

  void Decide(const ONNXGraph::Names& terms) {
    const std::string sum = Name("evidence");
    const std::string winner = Name("winner");
    const std::string classes = Name("classes");
    const bool isText = fModel.fTarget.fbTexts;
    isText ? fGraph.AddTexts(classes, fModel.fTarget.fTexts)
           : fGraph.AddDoubles(classes, {fNClasses}, fModel.fTarget.fNumbers);
    fGraph.AddNode("Sum", terms, sum);
    fGraph.AddNode("Softmax", {Calibrated(sum)}, fProbabilities, {{"axis", 1}});
    fGraph.AddNode("ArgMax", {sum}, winner, {{"axis", 1}, {"keepdims", 0}});
    fGraph.AddNode("Gather", {classes, winner}, fLabel, {{"axis", 0}});
    fGraph.AddOutput(fLabel, isText ? ONNXGraph::Element::kText : ONNXGraph::Element::kDouble,
                     {kCases});
    fGraph.AddOutput(fProbabilities, ONNXGraph::Element::kDouble, {kCases, fNClasses});
  }

  // What the softmax is taken of.
  std::string Calibrated(const std::string& sum) {
    if (fModel.fCalibration.GetMethod() != NBCalibration::kTemperature) return sum;
    const std::string temperature = Name("temperature");
    const std::string calibrated = Name("calibrated");
    fGraph.AddDoubles(temperature, {1}, {fModel.fCalibration.GetTemperature()});
    fGraph.AddNode("Div", {sum, temperature}, calibrated);
    return calibrated;
  }

  const std::string& SecondAxis() {
    if (fSecondAxis.empty()) {
      fSecondAxis = Name("second_axis");
      fGraph.AddInts(fSecondAxis, {1});
    }
    return fSecondAxis;
  }

  std::string Classes() const {
    const ScoringVariable& target = fModel.fTarget;
    return (target.fbTexts ? nlohmann::json(target.fTexts) : nlohmann::json(target.fNumbers))
        .dump();
  }

  const ScoringModel& fModel;
  const std::int64_t fNClasses;
  std::set<std::string> fTaken;
  std::string fLabel;
  std::string fProbabilities;
  std::string fSecondAxis;
  ONNXGraph fGraph;
};

}  // namespace

ExportedModel ToONNX(const ScoringModel& model, const ExportOptions& options) {
  std::vector<std::string> notes;
  for (const ScoringInput& input : model.fInputs) {
    for (const std::string& text : input.fTexts) {
      if (!text.empty()) continue;
      notes.push_back("The empty text is a category of \"" + input.fName +
                      "\": what is missing there must be another text that is no category.");
    }
  }
  return {Builder(model).Build(options.fVersion), notes};
}

}  // namespace MCModelFiles
