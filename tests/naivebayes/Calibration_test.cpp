// Calibrations against their definitions: the slope of the log-loss, the min-max formula of
// isotonic regression, and models that are trained anew without a fold.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <memory>

#include "naivebayes/NBAlgorithm.h"
#include "naivebayes/NBCalibrator.h"
#include "tests/naivebayes/TestRecords.h"

namespace {

using MCCommon::Record;
using nbtest::RandomData;
using nbtest::Reference;
using nbtest::TestRecords;

using Records = std::vector<Record>;
using Curve = NBCalibration::Curve;
constexpr std::uint64_t kSeed = 5;
constexpr int kCases = 300;
const std::vector<int> kAll = {0, 1, 2, 3, 4, 5};

Records DataOf(int classes, unsigned seed) {
  Records records = RandomData::Make(kCases, seed);
  for (Record& record : records) {
    record[RandomData::kTarget] = std::min<double>(record[RandomData::kTarget], classes - 1);
  }
  return records;
}

std::unique_ptr<NBAlgorithm> ModelOf(const Records& records, int classes) {
  auto model =
      std::make_unique<NBAlgorithm>(NaiveBayesSettings(), RandomData::MakeList(kAll, classes));
  TestRecords source(records);
  EXPECT_FALSE(model->BuildModel(source, static_cast<int>(records.size())).IsError());
  return model;
}

std::vector<double> PosteriorsOf(const NBAlgorithm& model, const Record& record, int classes) {
  NBOutput output(classes);
  EXPECT_FALSE(model.ScoreFullRecord(record, output).IsError());
  return output.GetOutProbabilities();
}

// A case that counts, with the posteriors of a model that does not hold it.
struct Case {
  std::vector<double> fPosteriors;
  std::size_t fTarget;
  double fWeight;
};

void Append(const NBAlgorithm& model, const Records& records, int classes,
            std::vector<Case>& cases) {
  for (const Record& record : records) {
    if (!Reference::IsValid(record)) continue;
    cases.push_back({PosteriorsOf(model, record, classes),
                     static_cast<std::size_t>(Reference::Class(record)),
                     record[RandomData::kWeight]});
  }
}

// The generator SplitMix64 as Steele, Lea and Flood wrote it down.
std::uint64_t SplitMix(std::uint64_t state) {
  state += 0x9e3779b97f4a7c15;
  state = (state ^ (state >> 30)) * 0xbf58476d1ce4e5b9;
  state = (state ^ (state >> 27)) * 0x94d049bb133111eb;
  return state ^ (state >> 31);
}

// Each training case as a model scores it that is made of the other folds alone.
std::vector<Case> CasesByFolds(const Records& records, int classes) {
  std::vector<Case> cases;
  for (std::uint64_t fold = 0; fold < 10; ++fold) {
    Records inside, others;
    for (std::size_t i = 0; i < records.size(); ++i) {
      const bool isInside = SplitMix(SplitMix(kSeed) + i) % 10 == fold;
      (isInside ? inside : others).push_back(records[i]);
    }
    Append(*ModelOf(others, classes), inside, classes, cases);
  }
  return cases;
}

std::vector<double> Tempered(std::vector<double> posteriors, double inverse) {
  double sum = 0;
  for (double& value : posteriors) sum += value = std::pow(value, inverse);
  for (double& value : posteriors) value /= sum;
  return posteriors;
}

// Where the slope of the log-loss by the inverse of the temperature is 0.
double TemperatureOf(const std::vector<Case>& cases) {
  double low = 1e-3, high = 1e3;
  while (high / low > 1 + 1e-12) {
    const double inverse = std::sqrt(low * high);
    double slope = 0;
    for (const Case& one : cases) {
      const std::vector<double> shares = Tempered(one.fPosteriors, inverse);
      slope -= one.fWeight * std::log(one.fPosteriors[one.fTarget]);
      for (std::size_t k = 0; k < shares.size(); ++k) {
        slope += one.fWeight * shares[k] * std::log(one.fPosteriors[k]);
      }
    }
    (slope < 0 ? low : high) = inverse;
  }
  return 1 / low;
}

// By isotonic regression of class k, at each case's posterior p: the largest, of all runs of cases
// that begin at or below p, of the least mean of those that end at or above it.
void ExpectIsotonic(const Curve& curve, std::vector<Case> cases, std::size_t k) {
  std::ranges::sort(cases, {}, [k](const Case& one) { return one.fPosteriors[k]; });
  const auto isSame = [&](std::size_t i, std::size_t j) {
    return std::abs(cases[i].fPosteriors[k] - cases[j].fPosteriors[k]) < 1e-12;
  };
  for (std::size_t at = 0; at < cases.size(); ++at) {
    double largest = 0;
    for (std::size_t first = 0; first <= at; ++first) {
      if (first > 0 && isSame(first - 1, first)) continue;
      double least = 1, sum = 0, weight = 0;
      for (std::size_t last = first; last < cases.size(); ++last) {
        sum += cases[last].fTarget == k ? cases[last].fWeight : 0;
        weight += cases[last].fWeight;
        const bool isEnd = last + 1 == cases.size() || !isSame(last, last + 1);
        if (last >= at && isEnd) least = std::min(least, sum / weight);
      }
      largest = std::max(largest, least);
    }
    const double p = cases[at].fPosteriors[k];
    EXPECT_NEAR(curve.At({p, 1 - p}), largest, 1e-9) << k << " " << p;
  }
}

void ExpectByDefinition(const NBCalibrator& calibrator, const std::vector<Case>& cases,
                        bool isOfUse = true) {
  const std::size_t classes = cases.front().fPosteriors.size();
  EXPECT_EQ(calibrator.GetNCases(), cases.size());
  const NBCalibration found = calibrator.Fit(NBCalibration::kTemperature);
  EXPECT_EQ(found.GetMethod(), isOfUse ? NBCalibration::kTemperature : NBCalibration::kNone);
  const double temperature = isOfUse ? TemperatureOf(cases) : 1;
  EXPECT_NEAR(found.GetTemperature(), temperature, 1e-9 * temperature);
  const std::vector<Curve> curves = calibrator.Fit(NBCalibration::kIsotonic).GetCurves();
  ASSERT_EQ(curves.size(), classes == 2 ? 1 : classes);
  for (std::size_t k = 0; k < curves.size(); ++k) {
    ExpectIsotonic(curves[k], cases, classes == 2 ? 1 : k);
  }
}

// What a pass over the data does, by blocks of records.
template <class Take>
void ForBlocks(const Records& records, Take take) {
  TestRecords source(records);
  while (source.HasMore()) take(source.NextBlock(64));
}

// A model that takes each class for another one has no temperature, and curves that are level.
TEST(Calibration, OfHeldOutCasesIsTheBestByItsDefinition) {
  for (const auto& [classes, isOfUse] : {std::pair{2, true}, {3, true}, {2, false}, {3, false}}) {
    const auto model = ModelOf(DataOf(classes, 1), classes);
    Records others = DataOf(classes, 2);
    for (Record& record : others) {
      double& target = record[RandomData::kTarget];
      if (!isOfUse && target >= 0) target = std::fmod(target + 1, classes);
    }
    NBCalibrator calibrator(*model, kSeed);
    ForBlocks(others, [&](const auto& block) { calibrator.Add(block); });
    std::vector<Case> cases;
    Append(*model, others, classes, cases);
    ExpectByDefinition(calibrator, cases, isOfUse);
  }
}

TEST(Calibration, OfTrainingCasesScoresEachWithoutItsFold) {
  for (const int classes : {2, 3}) {
    const Records records = DataOf(classes, 1);
    const auto model = ModelOf(records, classes);
    NBCalibrator calibrator(*model, kSeed);
    ForBlocks(records, [&](const auto& block) { calibrator.Divide(block); });
    calibrator.SetFolds();
    ForBlocks(records, [&](const auto& block) { calibrator.Add(block); });
    ExpectByDefinition(calibrator, CasesByFolds(records, classes));
  }
}

// Six predictors that all know the class, of cases with large weights: the posteriors are 1, and
// below 1e-100.
TEST(Calibration, OfTheCertainIsOneStepAndNoTemperature) {
  NBVarList list;
  list.AddCatVar("y", "", 2, INBVariable::kNumericCategorical, INBVariable::kOutput);
  list.AddWeightVar("w", "", INBVariable::kAsIs);
  Records records(2, Record(8));
  for (int j = 0; j < 6; ++j) {
    list.AddCatVar("x" + std::to_string(j), "", 2, INBVariable::kNumericCategorical,
                   INBVariable::kInput);
  }
  for (std::size_t i = 0; i < 8; ++i) {
    records[0][i] = i == 1 ? 1e12 : 0;
    records[1][i] = i == 1 ? 1e12 : 1;
  }
  NBAlgorithm model(NaiveBayesSettings(), list);
  TestRecords source(records);
  ASSERT_FALSE(model.BuildModel(source, static_cast<int>(records.size())).IsError());
  NBCalibrator calibrator(model, kSeed);
  EXPECT_EQ(calibrator.Fit(NBCalibration::kIsotonic).GetMethod(), NBCalibration::kNone);
  for (std::size_t i = 0; i < 2; ++i) {
    ForBlocks({records[i]}, [&](const auto& block) { calibrator.Add(block); });
    const NBCalibration curves = calibrator.Fit(NBCalibration::kIsotonic);
    EXPECT_EQ(curves.GetMethod(), i == 0 ? NBCalibration::kNone : NBCalibration::kIsotonic);
  }
  EXPECT_EQ(calibrator.Fit(NBCalibration::kTemperature).GetMethod(), NBCalibration::kNone);
  const Curve curve = calibrator.Fit(NBCalibration::kIsotonic).GetCurves().at(0);
  EXPECT_THAT(curve.fX, testing::ElementsAre(0, 1));
  EXPECT_THAT(curve.fY, testing::ElementsAre(0, 1));
}

// Curves by hand: straight between points, level beyond them, and of what the classes' values come
// to each its share.
TEST(Calibration, CurvesApplyAsTheyAreDrawn) {
  const Curve bent = {{0.2, 0.4, 0.8}, {0.1, 0.5, 0.7}};
  const Curve low = {{0.1, 0.9}, {0.0, 0.4}};
  const Curve zero = {{0.5}, {0.0}};
  const struct {
    std::vector<Curve> fCurves;
    std::vector<double> fPosteriors, fExpected;
  } cases[] = {
      {{bent}, {0.9, 0.1}, {0.9, 0.1}},
      {{bent}, {0.7, 0.3}, {0.7, 0.3}},
      {{bent}, {0.4, 0.6}, {0.4, 0.6}},
      {{bent}, {0.01, 0.99}, {0.3, 0.7}},
      {{low, low, low}, {0.5, 0.3, 0.2}, {4.0 / 7, 2.0 / 7, 1.0 / 7}},
      {{bent, zero, zero}, {0.4, 0.3, 0.3}, {1, 0, 0}},
      {{zero, zero, zero}, {0.8, 0.1, 0.1}, {1.0 / 3, 1.0 / 3, 1.0 / 3}},
  };
  for (const auto& one : cases) {
    std::vector<double> values = one.fPosteriors;
    NBCalibration::ByCurves(one.fCurves).ApplyToPosteriors(values);
    EXPECT_THAT(values, testing::Pointwise(testing::DoubleNear(1e-15), one.fExpected));
  }
}

// A calibrated model's scores, of one record and of a block.
TEST(Calibration, IsAppliedToScores) {
  for (const int classes : {2, 3}) {
    const Records records = DataOf(classes, 1);
    const auto model = ModelOf(records, classes);
    const std::vector<double> plain = PosteriorsOf(*model, records[0], classes);
    model->SetCalibration(NBCalibration::ByTemperature(2.5));
    EXPECT_THAT(PosteriorsOf(*model, records[0], classes),
                testing::Pointwise(testing::DoubleNear(1e-14), Tempered(plain, 0.4)));
    const auto count = static_cast<std::size_t>(classes == 2 ? 1 : classes);
    model->SetCalibration(NBCalibration::ByCurves(std::vector<Curve>(count, {{0.5}, {0.25}})));
    const double first = classes == 2 ? 0.75 : 1.0 / 3;
    EXPECT_NEAR(PosteriorsOf(*model, records[0], classes)[0], first, 1e-15);
  }
}

}  // namespace
