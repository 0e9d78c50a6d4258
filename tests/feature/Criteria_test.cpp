// The table of ranking criteria, the settings that choose from it, and what single accumulators
// tell of a criterion beside what the component tells.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <initializer_list>
#include <memory>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "feature/FSCriterion.h"
#include "feature/FSFactory.h"
#include "feature/FSSettings.h"
#include "feature/accumulators/FSCatAccum.h"
#include "feature/accumulators/FSCatPCatTAccum.h"
#include "feature/accumulators/FSCatPContTAccum.h"
#include "feature/accumulators/FSContAccum.h"
#include "feature/accumulators/FSContPCatTAccum.h"
#include "feature/accumulators/FSContPContTAccum.h"
#include "tests/feature/RandomRuns.h"
#include "tests/feature/Tables.h"

namespace {

using namespace MCFSCommon;

using Stats = std::vector<double>;

Stats StatsOf(const IFSAlgorithm& component, int criterion, int predictor) {
  Stats out(4);
  component.GetPredictorStats(criterion, predictor, out[0], out[1], out[2], out[3]);
  return out;
}

TEST(FSCriterion, EachIsFoundByItsCodeAndByItsWord) {
  std::set<std::string> names, stems, headings, words;
  for (const FSCriterion& criterion : FSCriterion::All()) {
    EXPECT_EQ(FSCriterion::Find(criterion.fCode), &criterion);
    EXPECT_EQ(GetCriterionName(criterion.fCode), criterion.fName);
    if (criterion.IsChoice()) {
      EXPECT_EQ(FSCriterion::FindKeyword(criterion.fKeyword), &criterion);
      EXPECT_TRUE(words.insert(criterion.fKeyword).second);
    }
    EXPECT_TRUE(names.insert(criterion.fName).second);
    EXPECT_TRUE(stems.insert(criterion.fFileStem).second);
    EXPECT_TRUE(headings.insert(criterion.fHeading).second);
  }
  EXPECT_EQ(FSCriterion::Find(-1), nullptr);
  EXPECT_EQ(FSCriterion::Find(kNCriteria), nullptr);
  EXPECT_EQ(FSCriterion::FindKeyword("F"), nullptr);
}

TEST(MCFSCommon, NamesWhatThereIsAndNothingElse) {
  EXPECT_EQ(GetCriterionShortName(kPearson), "Pearson");
  EXPECT_EQ(GetDelReasonName(kAllMissing), "allMissing");
  for (const int none : {-1, 99}) {
    EXPECT_EQ(GetCriterionName(none), "Unrecognized");
    EXPECT_EQ(GetCriterionShortName(none), "");
    EXPECT_EQ(GetSetTypeName(none), "Unrecognized");
    EXPECT_EQ(GetDelReasonName(none), "");
    EXPECT_EQ(GetWeightToFreqName(none), "unrecognized method");
  }
  EXPECT_EQ(ToFrequency(kTruncate, 2.75), 2.0);
  EXPECT_EQ(ToFrequency(kRound, 2.5), 3.0);
}

// A criterion that is on for a set shows each kind of predictor in it, or ranks it beside the
// other.
TEST(FSCriterion, WhatSuitsASetHasAFormulaForSomeOfItsPredictors) {
  for (const FSCriterion& criterion : FSCriterion::All()) {
    for (const bool catTarget : {true, false}) {
      const auto part = [&](bool catPredictor) {
        return criterion.PartOf(catPredictor, catTarget);
      };
      EXPECT_EQ(criterion.Suits(catTarget, kAllCategorical), part(true) == FSPart::kShown)
          << criterion.fName;
      EXPECT_EQ(criterion.Suits(catTarget, kAllContinuous), part(false) == FSPart::kShown)
          << criterion.fName;
    }
  }
}

TEST(FSSettings, ACriterionIsTurnedOnAndOffWhereItBelongs) {
  struct Case {
    bool fbCatTarget;
    PredictorSetType fSet;
    std::string fOn, fOff;  // by code, whether the request is granted from the defaults
    RankCriteria fMain;     // when Lambda is asked for
  };
  const Case cases[] = {
      {true, kAllCategorical, "111100", "111111", kLambda},
      {true, kAllContinuous, "000010", "111101", kFStat},
      {true, kMixed, "110010", "111101", kPearson},
      {true, kNoPredictors, "111110", "111111", kLambda},
      {false, kAllCategorical, "000010", "111101", kFStat},
      {false, kAllContinuous, "000001", "111110", kTStat},
      {false, kMixed, "000011", "111100", kFStat},
      {false, kNoPredictors, "000011", "111111", kFStat},
  };
  for (const Case& c : cases) {
    FSSettings fresh;
    if (c.fSet == kAllCategorical || c.fSet == kMixed) fresh.AddPredictor(true);
    if (c.fSet == kAllContinuous || c.fSet == kMixed) fresh.AddPredictor(false);
    fresh.SetTargetType(c.fbCatTarget);
    ASSERT_EQ(fresh.GetTypeAllPredictors(), c.fSet);
    std::string on, off;
    for (const FSCriterion& criterion : FSCriterion::All()) {
      FSSettings settings = fresh;
      on += settings.SetCriterion(criterion.fCode, true) ? '1' : '0';
      EXPECT_EQ(settings.GetCriterion(criterion.fCode), on.back() == '1');
      settings = fresh;
      off += settings.SetCriterion(criterion.fCode, false) ? '1' : '0';
    }
    EXPECT_EQ(on, c.fOn) << c.fbCatTarget << c.fSet;
    EXPECT_EQ(off, c.fOff) << c.fbCatTarget << c.fSet;
    EXPECT_EQ(fresh.GetMainCriterion(kLambda), c.fMain) << c.fbCatTarget << c.fSet;
  }
  // Before there are predictors, F stays on against a categorical target alone.
  FSSettings empty;
  EXPECT_TRUE(empty.SetCriterion(kFStat, true));
  EXPECT_FALSE(empty.SetCriterion(kFStat, false));
  empty.SetTargetType(false);
  EXPECT_TRUE(empty.SetCriterion(kFStat, true));
  EXPECT_TRUE(empty.SetCriterion(kFStat, false));
}

std::unique_ptr<IFSPredTargetAccum> AccumulatorOf(bool catPredictor, bool catTarget) {
  if (catPredictor && catTarget) return std::make_unique<FSCatPCatTAccum>();
  if (catPredictor) return std::make_unique<FSCatPContTAccum>();
  if (catTarget) return std::make_unique<FSContPCatTAccum>();
  return std::make_unique<FSContPContTAccum>();
}

TEST(Accumulators, TellOfACriterionWhatTheComponentTells) {
  for (const bool catTarget : {true, false}) {
    const Table table = RandomTable(400, catTarget, 21);
    FSSettings settings({true, true, false, false}, catTarget);
    FSFactory factory;
    const auto component = factory.CreateFSAlgorithm(&settings);
    const Table columns = {table[0], table[2], table[3], table[4], table[5]};
    BlocksOf source(columns, 64);
    ASSERT_TRUE(component->AccumulateAndRank(source, -1, false, 0).IsOK());
    for (int j = 0; j < 4; ++j) {
      const auto accumulator = AccumulatorOf(settings.IsCatPredictor(j), catTarget);
      const auto& values = columns[static_cast<std::size_t>(j) + 1];
      const double missing = settings.IsCatPredictor(j) ? -1.0 : KOVA_SystemMissing;
      const double noTarget = catTarget ? -1.0 : KOVA_SystemMissing;
      for (std::size_t i = 0; i < values.size(); ++i) {
        if (columns[0][i] == noTarget) continue;
        if (values[i] == missing) {
          accumulator->AddMissing(1.0);
        } else {
          accumulator->AddCase(values[i], columns[0][i], 1.0, true);
        }
      }
      accumulator->ComputeVariances();
      for (int c = -1; c <= kNCriteria; ++c) {
        Stats out(4), crit(5);
        const bool shown = accumulator->GetOutputStats(c, out[0], out[1], out[2], out[3]);
        accumulator->ComputeCrit(c, crit[0], crit[1], crit[2], crit[3], crit[4]);
        EXPECT_EQ(out, StatsOf(*component, c, j)) << c << j;
        if (shown) {
          EXPECT_EQ(out[0], crit[0]);
        }
        const auto& known = component->GetCriterionValues(static_cast<RankCriteria>(c));
        if (!known.empty()) {
          EXPECT_EQ(known[static_cast<std::size_t>(j)], crit[0]) << c << j;
        }
      }
    }
  }
  Stats out(5, 7.0);
  FSCatAccum().ComputeCrit(kPearson, out[0], out[1], out[2], out[3], out[4]);
  EXPECT_EQ(out, Stats(5, 7.0)) << "without a target there is nothing to tell";
}

// Statistics are kept once they are known: they must not outlive the counts they were made of.
TEST(Ranking, StatisticsFollowLaterPassesAndCriteria) {
  for (const bool catTarget : {true, false}) {
    const Table first = RandomTable(300, catTarget, 31), second = RandomTable(300, catTarget, 32);
    Table both = first;
    for (std::size_t j = 0; j < both.size(); ++j) {
      both[j].insert(both[j].end(), second[j].begin(), second[j].end());
    }
    FSSettings settings = SettingsFor(catTarget), sameSettings = SettingsFor(catTarget);
    FSFactory factory;
    const auto inTwo = factory.CreateFSAlgorithm(&settings);
    const auto inOne = factory.CreateFSAlgorithm(&sameSettings);
    BlocksOf a(first, 64), b(second, 64), whole(both, 64);
    ASSERT_TRUE(inOne->AccumulateAndRank(whole, -1, false, 0).IsOK());
    ASSERT_TRUE(inTwo->Accumulate(a, -1).IsOK());
    (void)ReportOf(*inTwo);
    ASSERT_TRUE(inTwo->ScreenAndRank(false, 0).IsOK());
    (void)ReportOf(*inTwo);
    ASSERT_TRUE(inTwo->Accumulate(b, -1).IsOK());
    (void)ReportOf(*inTwo);
    ASSERT_TRUE(inTwo->ScreenAndRank(false, 0).IsOK());
    const std::vector<double> x = ReportOf(*inTwo), y = ReportOf(*inOne);
    ASSERT_EQ(x.size(), y.size());
    for (std::size_t i = 0; i < x.size(); ++i) {
      EXPECT_NEAR(x[i], y[i], 1e-9 * std::max(1.0, std::abs(y[i]))) << i;
    }
  }
}

TEST(Accumulators, AreNotChangedByACaseWithoutWeight) {
  const auto newAccumulators = [] {
    std::vector<std::unique_ptr<IFSPredTargetAccum>> all;
    for (const int kinds : {0, 1, 2, 3}) all.push_back(AccumulatorOf(kinds < 2, kinds % 2 == 0));
    all.push_back(std::make_unique<FSCatAccum>());
    all.push_back(std::make_unique<FSContAccum>());
    return all;
  };
  const auto dump = [](IFSPredTargetAccum& accumulator) {
    std::ostringstream out;
    accumulator.ComputeVariances();
    accumulator.Display(out);
    return out.str();
  };
  const auto fresh = newAccumulators(), weightless = newAccumulators();
  for (std::size_t k = 0; k < fresh.size(); ++k) {
    for (const double weight : {0.0, -1.0, std::nan("")}) {
      weightless[k]->AddCase(1.0, 0.0, weight, true);
      weightless[k]->AddMissing(weight);
      weightless[k]->AddCaseOneVariable(1.0, weight, true);
    }
    EXPECT_EQ(dump(*weightless[k]), dump(*fresh[k])) << k;
    std::vector<int> reasons = {kManyMissing};  // of another one
    const FSSettings settings(1, true, true);
    EXPECT_EQ(weightless[k]->CheckAllReasons(&settings, reasons), 0u) << k;
    EXPECT_TRUE(reasons.empty()) << k;
  }
}

TEST(Accumulators, OfOneVariableSeeAValueThatTheyDoNotCount) {
  FSCatAccum categories;
  FSContAccum numbers;
  for (IFSPredTargetAccum* accumulator :
       std::initializer_list<IFSPredTargetAccum*>{&categories, &numbers}) {
    accumulator->AddMissing(1.0);
    EXPECT_TRUE(accumulator->IsAllMissing());
    accumulator->AddCaseOneVariable(3.0, 2.0, true);
    EXPECT_TRUE(accumulator->IsAllConstant());
    accumulator->AddCaseOneVariable(4.0, 1.0, false);
    EXPECT_FALSE(accumulator->IsAllConstant());
    accumulator->ComputeVariances();
  }
  EXPECT_EQ(categories.GetCategories()->Size(), 1u);
  std::ostringstream out;
  numbers.Display(out);
  EXPECT_NE(out.str().find("Mean = 3\n"), std::string::npos) << out.str();
}

}  // namespace
