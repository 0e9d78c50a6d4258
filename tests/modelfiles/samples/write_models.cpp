// Writes models, the data they were trained on and our predictions, for an independent evaluator:
// write_models FOLDER makes NAME.xml, NAME-data.csv and NAME-predictions.csv for each sample, and
// the saved state of a component with a variable of each kind, such as tests/modelfiles/states
// keeps.
#include <fstream>
#include <iostream>
#include <random>
#include <stdexcept>
#include <string>
#include <vector>

#include "common/MissingValue.h"
#include "naivebayes/NBAlgorithm.h"
#include "naivebayes/encoders/NBCatNumEncoder.h"
#include "naivebayes/encoders/NBStringEncoder.h"
#include "naivebayes/store/NBMemoryIter.h"

namespace {

using MCCommon::Record;

// Columns: target, then a weight, two categorical inputs and two continuous ones.
NBVarList MakeList(bool numericTarget) {
  NBVarList list;
  if (numericTarget) {
    list.AddCatVar("class", "", std::vector<double>{3, 1, 2.5}, INBVariable::kOutput);
  } else {
    list.AddCatVar("class", "", std::vector<std::string>{"a & b", "<c>", "\xC3\xA9t\xC3\xA9"},
                   INBVariable::kOutput);
  }
  list.AddWeightVar("w", "", INBVariable::kAsIs);
  list.AddCatVar("grade", "", std::vector<double>{10, 0.5, -2}, INBVariable::kInput);
  list.AddCatVar("colour", "", std::vector<std::string>{"red", "green", "blue", "none"},
                 INBVariable::kInput);
  list.AddContVar("length", "", 0, 10, 8, INBVariable::kInput);
  list.AddContVar("width", "", std::vector<double>{0, 0.25, 0.5, 0.75}, INBVariable::kInput);
  list.AddDiscreteUserMissing(3, "n/a", "");
  list.AddDiscreteUserMissing(5, 99, "not measured");
  return list;
}

// `sparse`: some cells of the tables stay empty. Every value is exact in single precision, which
// is what the documents say of numbers.
std::vector<Record> MakeRecords(int n, bool sparse) {
  std::mt19937 random(5);
  const auto below = [&](unsigned end) { return static_cast<double>(random() % end); };
  std::vector<Record> records;
  for (int i = 0; i < n; ++i) {
    const double y = below(3);
    const double shift = sparse ? 3 * y : y;
    Record r({y, 1 + below(2) / 2, below(3), below(sparse ? 3 : 4), (below(48) + 16 * shift) / 16,
              below(64) / 64});
    if (sparse && r[4] > 5 && r[4] < 7.5) r[4] = 7.75;  // empty bins between others
    for (std::size_t j = 2; j < r.Size(); ++j) {
      if (below(12) == 0 || i == 1) r[j] = MCMV::gMissingValue;
    }
    if (below(12) == 0) r[5] = 99;
    records.push_back(r);
  }
  return records;
}

// A value as the data have it; a missing string is sometimes the declared one.
void WriteValue(std::ostream& os, const INBVariable& variable, double code) {
  const bool missing = MCMV::IsMissing(code);
  if (missing && variable.GetVariableName() == "colour" && os.tellp() % 2 == 0) os << "n/a";
  if (missing) return;
  const auto* strings = dynamic_cast<const NBStringEncoder*>(variable.GetEncoder());
  const auto* numbers = dynamic_cast<const NBCatNumEncoder*>(variable.GetEncoder());
  if (strings != nullptr) os << '"' << *strings->Decode(static_cast<long>(code)) << '"';
  if (numbers != nullptr) os << numbers->Decode(static_cast<long>(code));
  if (strings == nullptr && numbers == nullptr) os << code;
}

void WriteSample(const std::string& path, bool numericTarget, bool sparse) {
  const NBVarList list = MakeList(numericTarget);
  const std::vector<Record> records = MakeRecords(400, sparse);
  MCNaive::NBMemoryIter source(list.Size(), 400);
  for (const Record& record : records) source.AddRecord(record);
  NBAlgorithm algorithm(NaiveBayesSettings(), list);
  std::ofstream model(path + ".xml"), data(path + "-data.csv"),
      predictions(path + "-predictions.csv");
  predictions.precision(17);
  bool failed = algorithm.BuildModel(source, 400).IsError() ||
                algorithm.ExportModelXML(model, nullptr).IsError();
  predictions << "predicted";
  for (int k = 0; k < algorithm.GetNTargetCategories(); ++k) predictions << ",p" << k;
  predictions << '\n';
  data << "grade,colour,length,width\n";
  NBOutput output(algorithm.GetNTargetCategories());
  for (const Record& record : records) {
    for (int j = 2; j < list.Size(); ++j) {
      if (j > 2) data << ',';
      WriteValue(data, *list.GetVarAt(j), record[j]);
    }
    data << '\n';
    failed = failed || algorithm.ScoreFullRecord(record, output).IsError();
    WriteValue(predictions, *list.GetVarAt(0), output.GetWinningIndex());
    for (double p : output.GetOutProbabilities()) predictions << ',' << p;
    predictions << '\n';
  }
  if (failed || !model || !data || !predictions) throw std::runtime_error("cannot write " + path);
}

void WriteState(const std::string& path) {
  NBVarList list;
  list.AddCatVar("y", "the class", std::vector<double>{2, 1}, {"two", "one"}, INBVariable::kOutput);
  list.AddWeightVar("w", "", INBVariable::kRound);
  list.AddCatVar("s", "", std::vector<std::string>{"a & b", "\xC3\xBC"}, INBVariable::kInput);
  list.AddContVar("x", "", 0, 4, 4, INBVariable::kInput);
  list.AddCatVar("spare", "", 1, INBVariable::kStringCategorical, INBVariable::kUnused);
  list.AddDiscreteUserMissing(2, "?", "unknown");
  list.SetMissingInterval(3, 100, 200);
  MCNaive::NBMemoryIter source(list.Size(), 20);
  for (int i = 0; i < 20; ++i) {
    const double x = i % 7 * 0.5;
    source.AddRecord(Record({i % 2 * 1.0, 1, x > 1 ? 1.0 : 0.0, x > 2 ? x + 1 : x, 0}));
  }
  NBAlgorithm algorithm(NaiveBayesSettings(), list);
  std::fstream binary(path + ".bin", std::ios::out | std::ios::binary);
  std::ofstream document(path + ".xml", std::ios::binary);
  if (algorithm.BuildModel(source, 20).IsError() || algorithm.SaveState(binary).IsError() ||
      algorithm.SaveStateXML(document).IsError()) {
    throw std::runtime_error("cannot write " + path);
  }
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) return 2;
  try {
    const std::string folder = argv[1];
    WriteSample(folder + "/dense", true, false);
    WriteSample(folder + "/sparse", false, true);
    WriteState(folder + "/naive");
  } catch (const std::exception& error) {
    std::cerr << error.what() << '\n';
    return 1;
  }
  return 0;
}
