// Trains a model on records of its own, saves it, restores it, and scores with what came back.
#include <cstdio>
#include <fstream>

#include "common/RecordIterator.h"
#include "naivebayes/NBFactory.h"

namespace {

// Target and one predictor: they agree in nine cases of ten.
class Records : public MCCommon::MultiPassRecordIter {
 public:
  bool HasMore() override { return fNext < 20; }
  const MCCommon::Record* NextRecord() override {
    if (!HasMore()) return nullptr;
    const int target = fNext % 2;
    fRecord[0] = target;
    fRecord[1] = fNext < 2 ? 1 - target : target;
    ++fNext;
    return &fRecord;
  }
  FailReason GetFailReason() const override { return fNext < 20 ? kSuccess : kNoRecords; }
  bool NewPass() override {
    fNext = 0;
    return true;
  }

 private:
  int fNext = 0;
  MCCommon::Record fRecord{2};
};

}  // namespace

int main() {
  NBVarList variables;
  variables.AddCatVar("target", "", 2, INBVariable::kNumericCategorical, INBVariable::kOutput);
  variables.AddCatVar("input", "", 2, INBVariable::kNumericCategorical, INBVariable::kInput);
  NaiveBayesSettings settings;
  NBFactory factory;
  auto model = factory.CreateNBAlgorithm(settings, variables);
  Records records;
  if (model == nullptr || model->BuildModel(records, 20).IsError()) return 1;

  std::fstream file("model.bin", std::ios::in | std::ios::out | std::ios::trunc | std::ios::binary);
  if (model->SaveState(file).IsError()) return 2;
  file.seekg(0);
  const auto restored = factory.RestoreNBAlgorithmFromBinary(file);
  if (restored == nullptr) return 3;
  NBOutput output(2);
  if (restored->ScoreFullRecord(MCCommon::Record(2), output).IsError()) return 4;
  std::printf("winner %d, probability %.3f\n", output.GetWinningIndex(),
              output.GetOutProbabilities()[0]);
  return 0;
}
