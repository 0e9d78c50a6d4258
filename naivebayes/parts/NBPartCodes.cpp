#include "naivebayes/parts/NBPartCodes.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "common/RecordBlock.h"
#include "naivebayes/selection/NBDataSteps.h"
#include "naivebayes/selection/NBSizeTerms.h"
#include "naivebayes/store/NBCodeBuffer.h"

namespace {

constexpr std::string_view kTag = "NBPCODES";

template <class T>
void Append(std::string& bytes, const T* values, std::size_t n) {
  bytes.append(reinterpret_cast<const char*>(values), n * sizeof(T));
}

void AppendNumber(std::string& bytes, std::int64_t number) { Append(bytes, &number, 1); }

// Takes values from the front of bytes; fails once, for good.
class Bytes {
 public:
  explicit Bytes(std::string_view bytes) : fLeft(bytes) {}

  template <class T>
  bool Take(T* values, std::size_t n) {
    if (fLeft.size() / sizeof(T) < n) return fbGood = false;
    if (n > 0) std::memcpy(values, fLeft.data(), n * sizeof(T));
    fLeft.remove_prefix(n * sizeof(T));
    return fbGood;
  }
  std::int64_t Number() {
    std::int64_t number = -1;
    Take(&number, 1);
    return number;
  }
  std::size_t Left() const { return fLeft.size(); }
  bool IsGood() const { return fbGood; }

 private:
  std::string_view fLeft;
  bool fbGood = true;
};

// Codes of a column in the width of its categories, of the bytes.
bool TakeCodes(Bytes& bytes, int categories, std::size_t cases, std::vector<std::int32_t>& codes) {
  const auto take = [&](auto kind) {
    std::vector<decltype(kind)> narrow(cases);
    if (!bytes.Take(narrow.data(), cases)) return false;
    codes.assign(narrow.begin(), narrow.end());
    return std::all_of(codes.begin(), codes.end(),
                       [categories](std::int32_t code) { return code >= -1 && code < categories; });
  };
  if (categories <= 128) return take(std::int8_t());
  return categories <= 32768 ? take(std::int16_t()) : take(std::int32_t());
}

// Writes blocks one after the other: cases, targets, weights, codes.
void AppendBlocks(std::string& bytes, NBMemoryStore store, std::int64_t cases, bool hasWeight) {
  AppendNumber(bytes, cases);
  static_cast<void>(store.NewPass());
  while (const NBCodeBlock* block = store.NextCodes()) {
    Append(bytes, block->Targets(), block->Cases());
    if (hasWeight) Append(bytes, block->Weights(), block->Cases());
    for (int j = 0; j < block->Inputs(); ++j) {
      std::visit([&](const auto* column) { Append(bytes, column, block->Cases()); },
                 block->Codes(j));
    }
  }
}

bool AreWeights(const std::vector<double>& weights) {
  return std::all_of(weights.begin(), weights.end(), [](double weight) { return weight > 0; });
}

bool TakeBlock(Bytes& bytes, int targets, const std::vector<int>& categories, bool hasWeight,
               std::size_t cases, NBCodeBuffer& block) {
  block.Resize(categories.size(), cases);
  if (!bytes.Take(block.fvTargets.data(), cases)) return false;
  for (const std::int32_t target : block.fvTargets) {
    if (target < 0 || target >= targets) return false;
  }
  if (hasWeight && !(bytes.Take(block.fvWeights.data(), cases) && AreWeights(block.fvWeights))) {
    return false;
  }
  for (std::size_t j = 0; j < categories.size(); ++j) {
    if (!TakeCodes(bytes, categories[j], cases, block.fvCodes[j])) return false;
  }
  return true;
}

}  // namespace

// A model's tables, with estimates by what all parts have counted.
struct NBPartCodes::Model {
  explicit Model(const NBPartCounts& counts) {
    const int targets = static_cast<int>(counts.fTarget.size());
    std::vector<std::int32_t> codes;
    for (int k = 0; k < targets; ++k) codes.push_back(k);
    fOutput.Setup(targets);
    fOutput.AddCases(codes.data(), counts.fTarget.data(), codes.size());
    fOutput.ComputeProbabilities(counts.fWeight);
    fInputs.resize(counts.fInputs.size());
    for (std::size_t j = 0; j < fInputs.size(); ++j) {
      fInputs[j].Setup(counts.fCategories[j], targets);
      if (!counts.fInputs[j].empty()) fInputs[j].AddCounts(counts.fInputs[j]);
      fInputs[j].ComputeProbabilities(counts.fWeight);
    }
  }

  NBayesOutput fOutput;
  std::vector<NBayesInput> fInputs;
};

// The last step, from which the next may go on.
struct NBPartCodes::Steps {
  Steps(const NBPartQuestion& question, NBMemoryStore& store, NBCancelInfo& cancel,
        MCCommon::Workers& workers, std::size_t mostKept)
      : fbTest(question.fbTest),
        fCounts(question.fModel),
        fModel(fCounts),
        fSteps({fModel.fOutput, fModel.fInputs}, fCounts.fWeight, store, cancel, workers,
               mostKept) {}

  // Whether the question goes on from here, about the same counts.
  bool LeadTo(const NBPartQuestion& question) const {
    const auto isSame = [&](int j) {
      const auto place = static_cast<std::size_t>(j);
      return question.fModel.fInputs[place] == fCounts.fInputs[place];
    };
    return question.fbTest == fbTest && question.fModel.fWeight == fCounts.fWeight &&
           question.fModel.fTarget == fCounts.fTarget && question.fOrder.size() >= fOrder.size() &&
           std::equal(fOrder.begin(), fOrder.end(), question.fOrder.begin()) &&
           std::ranges::all_of(question.fOrder, isSame) &&
           std::ranges::all_of(question.fCandidates, isSame);
  }

  bool fbTest;
  NBPartCounts fCounts;
  Model fModel;
  NBDataSteps fSteps;
  std::vector<int> fOrder;  // what has entered
};

NBPartCodes::NBPartCodes(int targets, std::vector<int> categories, bool hasWeight)
    : fNTargets(targets),
      fvCategories(std::move(categories)),
      fbHasWeight(hasWeight),
      fTraining(fvCategories, hasWeight),
      fTest(fvCategories, hasWeight) {}

NBPartCodes::~NBPartCodes() = default;

bool NBPartCodes::Add(NBCodeSource& source, bool test) {
  while (const NBCodeBlock* block = source.NextCodes()) {
    (test ? fTest : fTraining).Add(*block);
    (test ? fNTest : fNTraining) += static_cast<std::int64_t>(block->Cases());
  }
  return !source.HasFailed();
}

std::string NBPartCodes::Bytes() const {
  std::string bytes(kTag);
  AppendNumber(bytes, fNTargets);
  AppendNumber(bytes, fbHasWeight ? 1 : 0);
  AppendNumber(bytes, static_cast<std::int64_t>(fvCategories.size()));
  Append(bytes, fvCategories.data(), fvCategories.size());
  AppendBlocks(bytes, fTraining, fNTraining, fbHasWeight);
  AppendBlocks(bytes, fTest, fNTest, fbHasWeight);
  return bytes;
}

std::unique_ptr<NBPartCodes> NBPartCodes::From(std::string_view given) {
  if (!given.starts_with(kTag)) return nullptr;
  ::Bytes bytes(given.substr(kTag.size()));
  const std::int64_t targets = bytes.Number(), weight = bytes.Number(), inputs = bytes.Number();
  if (targets < 1 || targets > INT32_MAX || (weight != 0 && weight != 1) || inputs < 0 ||
      static_cast<std::size_t>(inputs) > bytes.Left() / sizeof(int)) {
    return nullptr;
  }
  std::vector<int> categories(static_cast<std::size_t>(inputs));
  if (!bytes.Take(categories.data(), categories.size())) return nullptr;
  auto codes = std::make_unique<NBPartCodes>(static_cast<int>(targets), categories, weight == 1);
  for (const bool test : {false, true}) {
    std::int64_t left = bytes.Number();
    if (left < 0) return nullptr;
    (test ? codes->fNTest : codes->fNTraining) = left;
    NBCodeBuffer block;
    while (left > 0) {
      const auto cases = static_cast<std::size_t>(
          std::min(left, static_cast<std::int64_t>(MCCommon::RecordBlock::kMaxCases)));
      if (!TakeBlock(bytes, codes->fNTargets, categories, weight == 1, cases, block))
        return nullptr;
      (test ? codes->fTest : codes->fTraining).Add(block.View());
      left -= static_cast<std::int64_t>(cases);
    }
  }
  return bytes.IsGood() && bytes.Left() == 0 ? std::move(codes) : nullptr;
}

bool NBPartCodes::IsOfThese(const NBPartQuestion& question) const {
  return question.fModel.fCategories == fvCategories &&
         static_cast<int>(question.fModel.fTarget.size()) == fNTargets;
}

NBDataSteps& NBPartCodes::StepsTo(const NBPartQuestion& question, NBCancelInfo& cancel,
                                  MCCommon::Workers& workers, std::size_t mostKept) {
  if (fpSteps == nullptr || !fpSteps->LeadTo(question)) {
    fpSteps = std::make_unique<Steps>(question, question.fbTest ? fTest : fTraining, cancel,
                                      workers, mostKept);
  }
  std::vector<int>& entered = fpSteps->fOrder;
  while (entered.size() < question.fOrder.size()) {
    entered.push_back(question.fOrder[entered.size()]);
    fpSteps->fSteps.Enter(entered.back());
  }
  return fpSteps->fSteps;
}

bool NBPartCodes::Answer(const NBPartQuestion& question, NBCancelInfo& cancel,
                         MCCommon::Workers& workers, NBPartSums& sums, std::size_t mostKept) {
  if (!IsOfThese(question)) return false;
  NBMemoryStore& store = question.fbTest ? fTest : fTraining;
  sums = {question.fbTest ? fNTest : fNTraining, {}, {}};
  if (!store.NewPass()) return false;
  std::vector<double> totals;
  if (!question.fCandidates.empty()) {
    NBDataSteps& steps = StepsTo(question, cancel, workers, mostKept);
    if (!steps.ComputeSums(question.fCandidates, totals)) return false;
  } else {
    const Model model(question.fModel);
    const NBModelView view{model.fOutput, model.fInputs};
    if (!NBSizeTerms::Sum(view, question.fOrder, question.fFirst, store, cancel, totals,
                          sums.fWeight)) {
      return false;
    }
  }
  if (mostKept == 0) fpSteps.reset();
  for (const double total : totals) sums.fSums.emplace_back(total, 0.0);
  return !cancel.IsCancel();
}
