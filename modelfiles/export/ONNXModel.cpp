// The model as an ONNX graph: each input becomes the evidence of the row that its value stands for,
// or none; the sum of these and the priors' goes through a softmax, and its shares through isotonic
// curves where there are some. All in double precision.
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
constexpr auto kInt64 = static_cast<std::int64_t>(ONNXGraph::Element::kInt64);

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
                        "is no category.",
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
    const std::string sum = Add("Sum", terms, "evidence");
    const NBCalibration::Method method = fModel.fCalibration.GetMethod();
    std::string compared = sum;
    if (method == NBCalibration::kIsotonic) {
      const std::string posteriors = Add("Softmax", {sum}, "posteriors", {{"axis", 1}});
      fGraph.AddNode("Identity", {OfCurves(posteriors)}, fProbabilities);
      compared = fProbabilities;
    } else {
      fGraph.AddNode("Softmax", {Tempered(sum)}, fProbabilities, {{"axis", 1}});
    }
    const std::string classes = Name("classes");
    const bool isText = fModel.fTarget.fbTexts;
    isText ? fGraph.AddTexts(classes, fModel.fTarget.fTexts)
           : fGraph.AddDoubles(classes, {fNClasses}, fModel.fTarget.fNumbers);
    fGraph.AddNode("Gather", {classes, Winner(compared)}, fLabel, {{"axis", 0}});
    fGraph.AddOutput(fLabel, isText ? ONNXGraph::Element::kText : ONNXGraph::Element::kDouble,
                     {kCases});
    fGraph.AddOutput(fProbabilities, ONNXGraph::Element::kDouble, {kCases, fNClasses});
  }

  // What the softmax is taken of.
  std::string Tempered(const std::string& sum) {
    if (fModel.fCalibration.GetMethod() != NBCalibration::kTemperature) return sum;
    return Add("Div", {sum, Numbers({fModel.fCalibration.GetTemperature()}, "temperature")},
               "tempered");
  }

  // Of classes that are equally likely, the one that INBAlgorithm takes: by weight; but where the
  // first class is among them, the next one of them is passed over.
  std::string Winner(const std::string& values) {
    const std::vector<std::size_t> byWeight = ClassesByWeight(fModel);
    std::vector<double> ranks(byWeight.size());
    std::vector<double> isLater(byWeight.size(), 1);
    std::vector<std::int64_t> places;
    isLater[0] = 0;
    for (std::size_t i = 0; i < byWeight.size(); ++i) {
      ranks[byWeight[i]] = static_cast<double>(byWeight.size() - i);
      places.push_back(static_cast<std::int64_t>(i));
    }
    const std::string largest = Add("ArgMax", {values}, "first", {{"axis", 1}});
    const std::string value = Add("GatherElements", {values, largest}, "largest", {{"axis", 1}});
    const std::string isTied = AsDouble(Add("Equal", {values, value}, "is_tied"));
    const std::string later = Add("Mul", {isTied, Numbers(isLater, "is_later")}, "tied_later");
    const std::string next = Add("ArgMax", {later}, "next", {{"axis", 1}});
    const std::string isNext = AsDouble(Add("Equal", {next, Ints(places, "places")}, "is_next"));
    const std::string withFirst = Column(isTied, 0, "first_is_tied");
    const std::string passed =
        Add("Mul", {Add("Mul", {later, isNext}, "next_tied"), withFirst}, "passed_over");
    const std::string left = Add("Sub", {isTied, passed}, "left");
    return Add("ArgMax", {Add("Mul", {left, Numbers(ranks, "ranks")}, "ranked")}, "winner",
               {{"axis", 1}, {"keepdims", 0}});
  }

  // What isotonic curves make of posteriors (NBCalibration::ApplyToPosteriors).
  std::string OfCurves(const std::string& posteriors) {
    const std::vector<NBCalibration::Curve>& curves = fModel.fCalibration.GetCurves();
    const std::string one = Numbers({1}, "one");
    const std::string isLikely = Add("Greater", {posteriors, Numbers({0.5}, "half")}, "is_likely");
    const std::string low = Add("Where", {isLikely, Numbers({0}, "zero"), posteriors}, "low");
    const std::string rests =
        Add("Where", {isLikely, Total(low), Add("Sub", {one, posteriors}, "rest")}, "rests");
    const bool isOne = curves.size() == 1 && fNClasses == 2;
    ONNXGraph::Names values;
    for (std::size_t i = 0; i < curves.size(); ++i) {
      const std::int64_t k = isOne ? 1 : static_cast<std::int64_t>(i);
      values.push_back(OfCurve(curves[i], Column(posteriors, k, "p"), Column(rests, k, "q")));
    }
    if (isOne) return Joined({Add("Sub", {one, values[0]}, "other"), values[0]});
    const std::string joined = Joined(values);
    const std::string sum = Total(joined);
    const std::string isSome = Add("Greater", {sum, Numbers({0}, "zero")}, "is_some");
    return Add("Where",
               {isSome, Add("Div", {joined, sum}, "shares"),
                Numbers({1.0 / static_cast<double>(fNClasses)}, "equal")},
               "calibrated");
  }

  // Counts the points that a posterior has reached, which tell the line that it is on.
  std::string OfCurve(const NBCalibration::Curve& curve, const std::string& p,
                      const std::string& q) {
    const std::size_t n = curve.fX.size();
    std::vector<double> lower, upper, base, rise, length, ofP, ofQ, start;
    for (const double x : curve.fX) x > 0.5 ? upper.push_back(1 - x) : lower.push_back(x);
    for (std::size_t i = 0; i <= n; ++i) {
      const bool isLine = i > 0 && i < n;
      const double x = curve.fX[i == 0 ? 0 : i - 1];
      base.push_back(curve.fY[i == 0 ? 0 : i - 1]);
      rise.push_back(isLine ? curve.fY[i] - curve.fY[i - 1] : 0);
      length.push_back(isLine ? curve.fX[i] - x : 1);
      ofP.push_back(x > 0.5 ? 0 : 1);
      ofQ.push_back(x > 0.5 ? -1 : 0);
      start.push_back(x > 0.5 ? 1 - x : -x);
    }
    ONNXGraph::Names reached;
    if (!lower.empty())
      reached.push_back(Add("GreaterOrEqual", {p, Numbers(lower, "lower")}, "is_from"));
    if (!upper.empty())
      reached.push_back(Add("LessOrEqual", {q, Numbers(upper, "upper")}, "is_from"));
    const std::string line =
        Add("Cast", {Total(AsDouble(Joined(reached)))}, "line", {{"to", kInt64}});
    const auto of = [&](const std::vector<double>& table, const char* name) {
      return Add("Gather", {Numbers(table, name), line}, name, {{"axis", 0}});
    };
    const std::string beyond = Add("Sum",
                                   {Add("Mul", {p, of(ofP, "of_p")}, "p_of"),
                                    Add("Mul", {q, of(ofQ, "of_q")}, "q_of"), of(start, "start")},
                                   "beyond");
    const std::string share = Add("Div", {beyond, of(length, "length")}, "share");
    return Add("Sum", {of(base, "base"), Add("Mul", {of(rise, "rise"), share}, "risen")}, "value");
  }

  std::string Add(const char* op, const ONNXGraph::Names& inputs, const char* name,
                  const std::vector<std::pair<std::string, std::int64_t>>& attributes = {}) {
    const std::string output = Name(name);
    fGraph.AddNode(op, inputs, output, attributes);
    return output;
  }
  std::string Numbers(const std::vector<double>& values, const char* name) {
    const std::string constant = Name(name);
    fGraph.AddDoubles(constant, {static_cast<std::int64_t>(values.size())}, values);
    return constant;
  }
  std::string Ints(const std::vector<std::int64_t>& values, const char* name) {
    const std::string constant = Name(name);
    fGraph.AddInts(constant, values);
    return constant;
  }
  std::string AsDouble(const std::string& input) {
    return Add("Cast", {input}, "as_number", {{"to", kDouble}});
  }
  std::string Column(const std::string& input, std::int64_t column, const char* name) {
    return Add("Gather", {input, Ints({column}, "column")}, name, {{"axis", 1}});
  }
  std::string Total(const std::string& input) {
    return Add("ReduceSum", {input, SecondAxis()}, "total");
  }
  std::string Joined(const ONNXGraph::Names& columns) {
    return Add("Concat", columns, "joined", {{"axis", 1}});
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
