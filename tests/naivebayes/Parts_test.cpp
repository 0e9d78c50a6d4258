// Records that lie in parts: what a part counts and answers, and what the component makes of parts
// that fail or tell what cannot be.

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <functional>
#include <limits>
#include <memory>
#include <string>
#include <vector>

#include "common/Workers.h"
#include "common/state/StateBytes.h"
#include "naivebayes/NBAlgorithm.h"
#include "naivebayes/parts/INBParts.h"
#include "naivebayes/parts/NBPartClassified.h"
#include "naivebayes/parts/NBPartCodes.h"
#include "naivebayes/store/NBCodeBuffer.h"
#include "tests/naivebayes/TestRecords.h"

namespace {

using MCCommon::Record;
using MCNaive::MCStatus;
using nbtest::RandomData;
using nbtest::TestRecords;

const std::vector<int> kForced = {1};

struct Part {
  NBPartCounts fCounts;
  std::unique_ptr<NBPartCodes> fpCodes;
};

class CancelAt : public MCQueryCancel {
 public:
  explicit CancelAt(int poll) : fLeft(poll) {}
  bool IsCancel() override { return --fLeft < 0; }
  int fLeft;
};

MCStatus Count(std::vector<Record> records, std::vector<Record> test, bool kept, Part& part,
               MCQueryCancel* cancel = nullptr, std::size_t failAt = SIZE_MAX,
               std::size_t testFailsAt = SIZE_MAX) {
  NBAlgorithm algorithm(NaiveBayesSettings(), RandomData::MakeList(kForced));
  algorithm.SetCancelPtr(cancel);
  const int n = static_cast<int>(records.size());
  TestRecords source(std::move(records)), tested(std::move(test));
  source.fFailAt = failAt;
  tested.fFailAt = testFailsAt;
  return algorithm.CountPart({source, n, tested.All().empty() ? nullptr : &tested, true, kept},
                             part.fCounts, part.fpCodes);
}

// Parts in memory, of which the n-th answer is wrong.
class PartsHere : public INBParts {
 public:
  enum Fault { kNone, kFails, kOneSumLess, kOtherCases, kOtherShape };

  explicit PartsHere(int parts, Fault fault = kNone, int faultAt = 0)
      : fFault(fault), fLeft(faultAt) {
    const auto train = RandomData::Make(240, 5), test = RandomData::Make(90, 6);
    const auto share = [parts](const std::vector<Record>& all, int p) {
      const auto n = static_cast<std::ptrdiff_t>(all.size()) / parts;
      return std::vector<Record>(all.begin() + p * n, all.begin() + (p + 1) * n);
    };
    for (int p = 0; p < parts; ++p) {
      EXPECT_TRUE(::Count(share(train, p), share(test, p), true, fvParts.emplace_back()).IsOK());
    }
  }

  bool Count(NBPartCounts& counts) override {
    counts = fvParts[0].fCounts;
    for (std::size_t p = 1; p < fvParts.size(); ++p) counts.Add(fvParts[p].fCounts);
    const bool isWrong = fLeft-- == 0;
    if (isWrong && fFault == kOtherShape) counts.fInputs.pop_back();
    return !isWrong || fFault != kFails;
  }

  bool Ask(const NBPartQuestion& question, NBPartSums& sums) override {
    NBPartQuestion told;
    EXPECT_TRUE(StateBytes::To(StateBytes::Of(question), told));
    for (std::size_t p = 0; p < fvParts.size(); ++p) {
      // From the start, and from where the question before has led.
      NBPartSums answer, next;
      const auto codes = NBPartCodes::From(fvParts[p].fpCodes->Bytes());
      MCCommon::Workers& alone = MCCommon::Workers::Alone();
      EXPECT_TRUE(codes->Answer(told, fCancel, alone, answer));
      EXPECT_TRUE(fvParts[p].fpCodes->Answer(told, fCancel, alone, next, 1 << 20));
      EXPECT_EQ(StateBytes::Of(next), StateBytes::Of(answer));
      p == 0 ? sums = answer : (sums.Add(answer), sums);
    }
    const bool isWrong = fLeft-- == 0;
    if (isWrong && fFault == kOneSumLess) sums.fSums.pop_back();
    if (isWrong && fFault == kOtherCases) ++sums.fNCases;
    return !isWrong || fFault != kFails;
  }

  bool HasFaulted() const { return fLeft < 0; }

  std::vector<Part> fvParts;

 private:
  Fault fFault;
  int fLeft;
  NBCancelInfo fCancel{nullptr};
};

struct Outcome {
  MCStatus fStatus;
  NBSelectionResult fResult;
  bool fbBuilt = false;
};

Outcome Select(INBParts& parts, int size, bool exact, bool byTest) {
  NBAlgorithm algorithm(NaiveBayesSettings(), RandomData::MakeList(kForced));
  TestRecords none({});
  Outcome out;
  out.fStatus = algorithm.SelectAttributes({.fData = none,
                                            .fNRecords = 1,
                                            .fSize = size,
                                            .fbExact = exact,
                                            .fNReport = 99,
                                            .fpParts = &parts,
                                            .fbTestInParts = byTest},
                                           out.fResult);
  out.fbBuilt = algorithm.IsModelBuilt();
  return out;
}

struct Choice {
  int fSize;
  bool fbExact, fbByTest;
};
constexpr Choice kChoices[] = {{-1, false, false}, {3, true, false}, {-1, false, true}};

TEST(Parts, AnyNumberOfThemChoosesTheSame) {
  for (const Choice& c : kChoices) {
    PartsHere one(1), three(3);
    const Outcome whole = Select(one, c.fSize, c.fbExact, c.fbByTest);
    const Outcome parts = Select(three, c.fSize, c.fbExact, c.fbByTest);
    EXPECT_TRUE(parts.fStatus.IsOK()) << parts.fStatus.GetErrorCode();
    EXPECT_TRUE(parts.fbBuilt);
    EXPECT_GT(parts.fResult.fvSelected.size(), kForced.size());
    EXPECT_EQ(parts.fResult.fvSelected, whole.fResult.fvSelected);
  }
}

// Whichever answer is missing or is not one to the question, nothing is chosen by it.
TEST(Parts, AWrongAnswerEndsTheSelection) {
  for (const Choice& c : kChoices) {
    for (const auto fault : {PartsHere::kFails, PartsHere::kOneSumLess, PartsHere::kOtherCases}) {
      for (int at = fault == PartsHere::kFails ? 0 : 1;; ++at) {
        PartsHere parts(1, fault, at);
        const Outcome out = Select(parts, c.fSize, c.fbExact, c.fbByTest);
        if (!parts.HasFaulted()) break;
        EXPECT_TRUE(out.fStatus.IsError()) << fault << at;
        EXPECT_FALSE(out.fbBuilt) << fault << at;
        EXPECT_TRUE(out.fResult.fvSelected.empty()) << fault << at;
      }
    }
  }
  PartsHere other(1, PartsHere::kOtherShape), failing(1, PartsHere::kFails);
  EXPECT_EQ(Select(other, -1, false, false).fStatus, MCNaive::Error(MCNaive::kModelsDiffer));
  NBAlgorithm algorithm(NaiveBayesSettings(), RandomData::MakeList(kForced));
  EXPECT_EQ(algorithm.BuildModelInParts(failing), MCNaive::Error(MCNaive::kSourceFailed));
  EXPECT_FALSE(algorithm.IsModelBuilt());
}

TEST(Parts, ACancelAtAnyPollOrAFailingSourceEndsTheCount) {
  const auto data = RandomData::Make(60, 3);
  for (const bool kept : {true, false}) {
    for (int poll = 0;; ++poll) {
      CancelAt cancel(poll);
      Part part;
      const MCStatus status = Count(data, data, kept, part, &cancel);
      if (cancel.fLeft >= 0) {
        EXPECT_TRUE(status.IsOK());
        break;
      }
      EXPECT_EQ(status.GetErrorCode(), MCNaive::kCancelled) << poll;
    }
    Part part;
    EXPECT_EQ(Count(data, data, kept, part, nullptr, 17).GetErrorCode(), MCNaive::kSourceFailed);
    const auto testFails = Count(data, data, kept, part, nullptr, SIZE_MAX, 17);
    EXPECT_EQ(testFails.IsError(), kept) << "else it is not read";
  }
}

TEST(Parts, CodesAnswerNoQuestionAboutOthersAndStopWhenToldTo) {
  const PartsHere parts(1);
  NBPartQuestion question;
  question.fModel = parts.fvParts[0].fCounts;
  question.fCandidates = {0, 2};
  NBPartCodes& codes = *parts.fvParts[0].fpCodes;
  const auto answers = [&codes](const NBPartQuestion& asked, int poll) {
    CancelAt query(poll);
    NBCancelInfo cancel(&query);
    NBPartSums sums;
    return codes.Answer(asked, cancel, MCCommon::Workers::Alone(), sums);
  };
  EXPECT_TRUE(answers(question, INT32_MAX));
  EXPECT_FALSE(answers(question, 0));
  NBPartQuestion sizes = question;
  sizes.fCandidates.clear();
  sizes.fOrder = {0, 2};
  EXPECT_TRUE(answers(sizes, INT32_MAX));
  EXPECT_FALSE(answers(sizes, 0));
  // What is kept of a question serves no other one.
  NBCancelInfo never(nullptr);
  const auto sumsOf = [&](const NBPartQuestion& asked, std::size_t mostKept) {
    NBPartSums sums;
    EXPECT_TRUE(codes.Answer(asked, never, MCCommon::Workers::Alone(), sums, mostKept));
    return StateBytes::Of(sums);
  };
  question.fOrder = {1, 3};
  const std::function<void(NBPartQuestion&)> changes[] = {
      [](NBPartQuestion& q) { q.fbTest = true; },
      [](NBPartQuestion& q) { q.fModel.fWeight *= 2; },
      [](NBPartQuestion& q) { q.fModel.fTarget[0] *= 2; },
      [](NBPartQuestion& q) { q.fOrder = {1}; },
      [](NBPartQuestion& q) {
        q.fOrder = {3, 1};
      },
      [](NBPartQuestion& q) { q.fModel.fInputs[1][0] += 1; },
      [](NBPartQuestion& q) { q.fModel.fInputs[2][0] += 1; }};
  for (const auto& change : changes) {
    NBPartQuestion changed = question;
    change(changed);
    sumsOf(question, 1 << 20);
    const std::string next = sumsOf(changed, 1 << 20);
    EXPECT_EQ(next, sumsOf(changed, 0)) << &change - changes;
  }
  // Where no product has room none is kept, so that a case may still come.
  NBMemoryStore another(question.fModel.fCategories, true);
  NBCodeBuffer one;
  one.Resize(question.fModel.fCategories.size(), 1);
  one.fvTargets[0] = 0;
  one.fvWeights[0] = 1;
  for (auto& column : one.fvCodes) column[0] = 0;
  another.Add(one.View());
  ASSERT_TRUE(another.NewPass());
  sumsOf(question, 1);
  ASSERT_TRUE(codes.Add(another, false));
  sumsOf(question, 1);
  question.fModel.fCategories[1] += 1;
  EXPECT_FALSE(answers(question, INT32_MAX));
  sizes.fModel.fTarget.push_back(1.0);
  EXPECT_FALSE(answers(sizes, INT32_MAX));
}

// Three targets, weights, and inputs of which the codes take one, two and four bytes: a case each
// of training and test.
std::string SmallCodes() {
  const std::vector<int> categories = {2, 200, 40000};
  NBPartCodes codes(3, categories, true);
  for (const bool test : {false, true}) {
    NBMemoryStore store(categories, true);
    NBCodeBuffer one;
    one.Resize(3, 1);
    one.fvTargets[0] = 2;
    one.fvWeights[0] = 1.5;
    one.fvCodes = {{-1}, {199}, {39999}};
    store.Add(one.View());
    EXPECT_TRUE(store.NewPass());
    EXPECT_TRUE(codes.Add(store, test));
  }
  return codes.Bytes();
}

template <class T>
std::string With(std::string bytes, std::size_t at, T value) {
  std::memcpy(bytes.data() + at, &value, sizeof value);
  return bytes;
}

TEST(Parts, BytesThatAreNoCodesAreRefused) {
  const std::string bytes = SmallCodes();
  const auto whole = NBPartCodes::From(bytes);
  ASSERT_NE(whole, nullptr);
  EXPECT_EQ(whole->Bytes(), bytes);
  EXPECT_EQ(whole->GetNTest(), 1);
  for (std::size_t n = 0; n < bytes.size(); ++n) {
    EXPECT_EQ(NBPartCodes::From(std::string_view(bytes).substr(0, n)), nullptr) << n;
  }
  // Tag, targets, weighted, inputs, categories; then cases, target, weight, codes of training.
  constexpr std::size_t kTargets = 8, kWeighted = 16, kInputs = 24, kCases = 44, kTarget = 52,
                        kWeight = 56, kFirst = 64, kSecond = 65, kThird = 67;
  using Number = std::int64_t;
  const std::string damaged[] = {
      bytes + '\0',
      With(bytes, 0, 'X'),
      With(bytes, kTargets, Number{0}),
      With(bytes, kTargets, Number{1} << 40),
      With(bytes, kWeighted, Number{2}),
      With(bytes, kInputs, Number{-1}),
      With(bytes, kInputs, Number{1} << 40),
      With(bytes, kCases, Number{-1}),
      With(bytes, kCases, Number{1} << 40),
      With(bytes, kTarget, std::int32_t{-1}),
      With(bytes, kTarget, std::int32_t{3}),
      With(bytes, kWeight, 0.0),
      With(bytes, kWeight, std::numeric_limits<double>::quiet_NaN()),
      With(bytes, kFirst, std::int8_t{2}),
      With(bytes, kFirst, std::int8_t{-2}),
      With(bytes, kSecond, std::int16_t{200}),
      With(bytes, kThird, std::int32_t{40000}),
  };
  for (const std::string& d : damaged) EXPECT_EQ(NBPartCodes::From(d), nullptr) << &d - damaged;
}

// Whatever cannot be is refused when it is read.
template <class T>
void ExpectRefused(const T& valid, const std::vector<std::function<void(T&)>>& changes) {
  T read;
  EXPECT_TRUE(StateBytes::To(StateBytes::Of(valid), read));
  for (std::size_t k = 0; k < changes.size(); ++k) {
    T changed = valid;
    changes[k](changed);
    EXPECT_FALSE(StateBytes::To(StateBytes::Of(changed), read)) << k;
  }
}

TEST(Parts, NumbersThatCannotBeAreRefused) {
  const PartsHere parts(1);
  const NBPartCounts counts = parts.fvParts[0].fCounts;
  using C = NBPartCounts;
  ExpectRefused<C>(
      counts,
      {[](C& c) { c.fNCases = -1; }, [](C& c) { c.fNTest = -1; }, [](C& c) { c.fNRecords = -1; },
       [](C& c) { c.fNExcluded = -1; }, [](C& c) { c.fWeight = -1; },
       [](C& c) { c.fTarget[1] = -1; }, [](C& c) { c.fRecords.pop_back(); },
       [](C& c) { c.fCategories.push_back(1); }, [](C& c) { c.fCategories[0] = -2; },
       [](C& c) { c.fInputs[2][1] = -1; }, [](C& c) { c.fInputs[2].pop_back(); }});
  NBPartQuestion question;
  question.fModel = counts;
  question.fOrder = {1};
  using Q = NBPartQuestion;
  ExpectRefused<Q>(question, {[](Q& q) { q.fFirst = -1; }, [](Q& q) { q.fModel.fWeight = 0; },
                              [](Q& q) { q.fModel.fInputs[1].clear(); }});
  ExpectRefused<NBPartSums>({}, {[](NBPartSums& s) { s.fNCases = -1; }});
  NBPartClassified classified;
  classified.fNTargets = 3;
  classified.fTest.assign(9, 1.0);
  classified.fEvaluation.emplace(3);
  using K = NBPartClassified;
  ExpectRefused<K>(classified,
                   {[](K& k) { k.fNCases = -1; }, [](K& k) { k.fNTargets = 0; },
                    [](K& k) { (k = {}).fNTargets = 1 << 16; }, [](K& k) { k.fTest.pop_back(); },
                    [](K& k) { k.fEvaluation.emplace(2); }, [](K& k) { k.fCurves[0].emplace(2); }});
  K other = classified;
  other.fNTargets = 2;
  EXPECT_FALSE(classified.Add(other));
}

TEST(Parts, CountsOfAnotherShapeAreNotAdded) {
  const PartsHere parts(1);
  const NBPartCounts counts = parts.fvParts[0].fCounts;
  EXPECT_TRUE(counts.HasShapeOf(counts));
  void (*const changes[])(NBPartCounts&) = {[](NBPartCounts& c) { c.fTarget.pop_back(); },
                                            [](NBPartCounts& c) { ++c.fCategories[0]; },
                                            [](NBPartCounts& c) { c.fInputs[1].clear(); }};
  for (const auto& change : changes) {
    NBPartCounts other = counts;
    change(other);
    EXPECT_FALSE(counts.HasShapeOf(other));
  }
}

}  // namespace
