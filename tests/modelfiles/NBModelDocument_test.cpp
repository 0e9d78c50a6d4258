#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <random>
#include <regex>
#include <sstream>

#include "common/xml/MCApplicInfo4XML.h"
#include "naivebayes/NBAlgorithm.h"
#include "naivebayes/encoders/NBBinningEncoder.h"
#include "tests/naivebayes/TestRecords.h"

namespace {

using MCCommon::Record;
using nbtest::TestRecords;

constexpr double kHighest = std::numeric_limits<double>::max();
constexpr double kMissing = MCMV::gMissingValue;

// One variable of each kind, and the awkward cases: markup in texts, labels, an open missing range,
// cutpoints twice, bins and categories without a case, categories without a value, a negative zero,
// an input that training drops.
NBVarList MakeList() {
  NBVarList list;
  list.AddCatVar("unused", "", 2, INBVariable::kNumericCategorical, INBVariable::kUnused);
  list.AddCatVar("y", "the \"target\"", std::vector<double>{7, 2.5, -0.0},
                 {"seven", "", "none & nothing"}, INBVariable::kOutput);
  list.AddWeightVar("w", "", INBVariable::kAsIs);
  list.AddCatVar("s", "", std::vector<std::string>{"a<b", "\xC3\xBC", "never"},
                 INBVariable::kInput);
  list.AddCatVar("codes", "", 3, INBVariable::kStringCategorical, INBVariable::kInput);
  list.AddContVar("x", "length", {-kHighest, 1, 1, 2, 3, 4, kHighest}, INBVariable::kInput);
  list.AddCatVar("constant", "", 2, INBVariable::kNumericCategorical, INBVariable::kInput);
  list.AddDiscreteUserMissing(3, "n/a", "not \xE2\x89\xA5 1");
  list.SetMissingInterval(5, -kHighest, -100);
  list.AddDiscreteUserMissing(5, 0.1, "");
  return list;
}

std::vector<Record> MakeRecords() {
  return {Record({0, 0, 0.5, 0, 0, 0.5, 1}), Record({0, 0, 1, 1, 2, 2, 1}),
          Record({0, 1, 1, 1, 2, 3.5, 1}), Record({0, 1, 2, kMissing, 0, 3.5, 1}),
          Record({0, 0, 0.25, 0, 2, -200, 1})};
}

std::string Write(const INBAlgorithm& algorithm, MCApplicInfo4XML* info,
                  MCNaive::MCStatus expected = {}) {
  std::ostringstream os;
  EXPECT_EQ(algorithm.ExportModelXML(os, info), expected);
  return std::regex_replace(
      os.str(), std::regex("<Timestamp>[A-Z][^<]+:[0-9]{2} [0-9]{4}</Timestamp>"), "<Timestamp/>");
}

class ModelDocument : public testing::Test {
 protected:
  void Build() {
    TestRecords source(MakeRecords());
    EXPECT_EQ(fAlgorithm.BuildModel(source, 100).GetErrorCode(), MCNaive::kPredictorDropped);
  }
  NBAlgorithm fAlgorithm{NaiveBayesSettings(), MakeList()};
};

// Written by hand after the PMML 4.3 schema and the counts of the five records.
constexpr const char* kFrame =
    R"(<?xml version="1.0" encoding="US-ASCII"?>
<PMML version="4.3" xmlns="http://www.dmg.org/PMML-4_3" xmlns:xsi="http://www.w3.org/2001/XMLSchema-instance" xsi:schemaLocation="http://www.dmg.org/PMML-4_3 pmml-4-3.xsd">
  <Header copyright="Copyright (c) 2026 the PredSelect developers">
    <Application name="Naive Bayes Component" version="1.0"/>
    <Timestamp/>
  </Header>
  <DataDictionary numberOfFields="4">
    <DataField name="y" displayName="the &quot;target&quot;" optype="categorical" dataType="float">
      <Value value="7" displayValue="seven" property="valid"/>
      <Value value="2.5" property="valid"/>
      <Value value="0" displayValue="none &amp; nothing" property="valid"/>
    </DataField>
    <DataField name="s" optype="categorical" dataType="string">
      <Value value="n/a" displayValue="not &#8805; 1" property="missing"/>
      <Value value="a&lt;b" property="valid"/>
      <Value value="&#252;" property="valid"/>
      <Value value="never" property="valid"/>
    </DataField>
    <DataField name="codes" optype="categorical" dataType="string">
      <Value value="0" property="valid"/>
      <Value value="1" property="valid"/>
      <Value value="2" property="valid"/>
    </DataField>
    <DataField name="x" displayName="length" optype="continuous" dataType="float">
      <Extension extender="PredSelect" name="invalidRangeUpper" value="-100"/>
      <Value value="0.1" property="missing"/>
    </DataField>
  </DataDictionary>
  <NaiveBayesModel functionName="classification" threshold="0.21052631578947367">
    <MiningSchema>
      <MiningField name="s"/>
      <MiningField name="codes"/>
      <MiningField name="x"/>
      <MiningField name="y" usageType="predicted"/>
    </MiningSchema>
    <BayesInputs>
      <BayesInput fieldName="s">
        <PairCounts value="a&lt;b">
          <TargetValueCounts>
            <TargetValueCount value="7" count="0.75"/>
          </TargetValueCounts>
        </PairCounts>
        <PairCounts value="&#252;">
          <TargetValueCounts>
            <TargetValueCount value="7" count="1"/>
            <TargetValueCount value="2.5" count="1"/>
          </TargetValueCounts>
        </PairCounts>
      </BayesInput>
      <BayesInput fieldName="codes">
        <PairCounts value="0">
          <TargetValueCounts>
            <TargetValueCount value="7" count="0.5"/>
            <TargetValueCount value="2.5" count="2"/>
          </TargetValueCounts>
        </PairCounts>
        <PairCounts value="1">
          <TargetValueCounts>
            <TargetValueCount value="7" count="1.25"/>
            <TargetValueCount value="2.5" count="1"/>
          </TargetValueCounts>
        </PairCounts>
      </BayesInput>
      <BayesInput fieldName="x">
        <DerivedField dataType="float" optype="continuous">
          <Discretize field="x">
            <DiscretizeBin binValue="0">
              <Interval closure="openClosed" rightMargin="1"/>
            </DiscretizeBin>
            <DiscretizeBin binValue="1">
              <Interval closure="openClosed" leftMargin="1" rightMargin="2.5"/>
            </DiscretizeBin>
            <DiscretizeBin binValue="2">
              <Interval closure="openOpen" leftMargin="2.5"/>
            </DiscretizeBin>
          </Discretize>
        </DerivedField>
        <PairCounts value="0">
          <TargetValueCounts>
            <TargetValueCount value="7" count="0.5"/>
          </TargetValueCounts>
        </PairCounts>
        <PairCounts value="1">
          <TargetValueCounts>
            <TargetValueCount value="7" count="1"/>
          </TargetValueCounts>
        </PairCounts>
        <PairCounts value="2">
          <TargetValueCounts>
            <TargetValueCount value="2.5" count="3"/>
          </TargetValueCounts>
        </PairCounts>
      </BayesInput>
    </BayesInputs>
    <BayesOutput fieldName="y">
      <TargetValueCounts>
        <TargetValueCount value="7" count="1.75"/>
        <TargetValueCount value="2.5" count="3"/>
        <TargetValueCount value="0" count="0"/>
      </TargetValueCounts>
    </BayesOutput>
  </NaiveBayesModel>
</PMML>
)";

TEST_F(ModelDocument, HoldsTheWholeModelAsTheSchemaOrdersIt) {
  Build();
  EXPECT_EQ(Write(fAlgorithm, nullptr), kFrame);
}

TEST_F(ModelDocument, SaysOfTheApplicationWhatItSaysOfItself) {
  Build();
  MCApplicInfo4XML info{true, "My \xC3\xA4pp", "2 <beta>", "me"};
  const std::string document = Write(fAlgorithm, &info);
  EXPECT_THAT(document, testing::StartsWith("<?xml version=\"1.0\" encoding=\"UTF-8\"?>"));
  EXPECT_THAT(document, testing::HasSubstr("<Header copyright=\"me\">\n    <Application name=\"My "
                                           "\xC3\xA4pp\" version=\"2 &lt;beta&gt;\"/>"));
  EXPECT_THAT(document, testing::HasSubstr("value=\"\xC3\xBC\""));
}

TEST_F(ModelDocument, IsTheSameWhenTrainingWentByBatches) {
  // Batches leave the encoder its empty bins; the document does without them all the same.
  TestRecords source(MakeRecords());
  EXPECT_FALSE(fAlgorithm.Update(source, 3).IsError());
  EXPECT_FALSE(fAlgorithm.Update(source, 2).IsError());
  EXPECT_EQ(Write(fAlgorithm, nullptr), kFrame);
}

// All values of an attribute, in document order; a bound that is not there is infinite.
std::vector<double> NumbersOf(const std::string& document, const std::string& pattern,
                              double none) {
  std::vector<double> numbers;
  const std::regex expression(pattern);
  for (std::sregex_iterator at(document.begin(), document.end(), expression), end; at != end;
       ++at) {
    numbers.push_back((*at)[1].matched ? std::strtod((*at)[1].str().c_str(), nullptr) : none);
  }
  return numbers;
}

// A value falls into one bin of the document, and that is the one whose counts scoring uses. With
// awkward cutpoints, and empty bins anywhere.
TEST(ModelDocumentBins, SendEveryValueToTheCountsItIsScoredWith) {
  std::mt19937 random(7);
  for (int run = 0; run < 60; ++run) {
    std::vector<double> cuts;
    for (unsigned i = 0, n = 1 + random() % 7; i < n; ++i) {
      const double odd[] = {-kHighest, kHighest, -0.0, 0.0, 5e-324, 1e16, 0.1};
      cuts.push_back(random() % 3 == 0 ? odd[random() % 7] : random() % 9 - 4.0);
    }
    std::sort(cuts.begin(), cuts.end());
    std::vector<double> values = {-1e300, 1e300};
    for (const double cut : cuts) {
      for (const double toward : {-HUGE_VAL, HUGE_VAL})
        values.push_back(std::nextafter(cut, toward));
      values.push_back(cut);
    }
    std::erase_if(values, [](double v) { return MCMV::IsMissing(v); });
    NBVarList list;
    list.AddCatVar("y", "", 2, INBVariable::kNumericCategorical, INBVariable::kOutput);
    list.AddContVar("x", "", cuts, INBVariable::kInput);
    NBAlgorithm algorithm(NaiveBayesSettings(), list);
    // Few cases, so that bins stay empty.
    std::vector<Record> records;
    for (unsigned i = 0, n = 2 + random() % 4; i < n; ++i) {
      records.push_back(Record({i % 2 * 1.0, values[random() % values.size()]}));
    }
    TestRecords source(records);
    ASSERT_FALSE(algorithm.BuildModel(source, 100).IsError());
    if (algorithm.GetInputs().empty()) continue;
    const std::string document = Write(algorithm, nullptr);
    const auto left = NumbersOf(
        document, "<Interval[^>]*?(?: leftMargin=\"([^\"]+)\")?(?: rightMargin=\"[^\"]+\")?/>",
        -HUGE_VAL);
    const auto right =
        NumbersOf(document, "<Interval[^>]*?(?: rightMargin=\"([^\"]+)\")?/>", HUGE_VAL);
    const auto pairs = NumbersOf(document, "<PairCounts value=\"([^\"]+)\"", 0);
    ASSERT_EQ(pairs.size(), right.size()) << document;
    const NBayesInput& input = algorithm.GetInputs()[0];
    const auto* encoder = dynamic_cast<const NBBinningEncoder*>(input.GetVariable()->GetEncoder());
    std::vector<int> filled;
    for (int m = 0; m < input.GetNCategories(); ++m) {
      if (input.GetRowTotal(m) > 0) filled.push_back(m);
    }
    for (const double value : values) {
      int bins = 0;
      for (std::size_t i = 0; i < right.size(); ++i) {
        if (!(left[i] < value && value <= right[i])) continue;
        ++bins;
        EXPECT_EQ(pairs[i], static_cast<double>(i));
        EXPECT_EQ(filled[i], encoder->Encode(value)) << value << '\n' << document;
      }
      EXPECT_EQ(bins, 1) << value << '\n' << document;
    }
  }
}

TEST_F(ModelDocument, IsRefusedAsAWholeWithItsReason) {
  const auto status = [](MCNaive::StatusCode code, std::int64_t variable) {
    MCNaive::MCStatus expected = MCNaive::Error(code);
    expected.SetDiscreteDatum(0, variable);
    return expected;
  };
  EXPECT_EQ(Write(fAlgorithm, nullptr, MCNaive::Warning(MCNaive::kNoPreparator)), "");
  Build();
  MCApplicInfo4XML info;
  info.fName = "\x01";
  EXPECT_EQ(Write(fAlgorithm, &info, status(MCNaive::kTextNotForXML, -1)), "");
  std::ostringstream broken;
  broken.setstate(std::ios::failbit);
  EXPECT_TRUE(fAlgorithm.ExportModelXML(broken, nullptr).IsOK());
  EXPECT_TRUE(broken.fail());
  fAlgorithm.Cancel();
  EXPECT_EQ(Write(fAlgorithm, nullptr, MCNaive::Error(MCNaive::kCancelled)), "");

  const auto named = [](const char* name, const char* label, double value) {
    NBVarList list;
    list.AddCatVar("y", "", 2, INBVariable::kNumericCategorical, INBVariable::kOutput);
    list.AddCatVar(name, label, std::vector<double>{1, value}, INBVariable::kInput);
    return list;
  };
  const struct {
    NBVarList list;
    Record second;
    MCNaive::MCStatus status;
  } cases[] = {{named("bad \xFF", "", 2), Record({1, 1}), status(MCNaive::kTextNotForXML, 1)},
               {named("x", "\x02", 2), Record({1, 1}), status(MCNaive::kTextNotForXML, 1)},
               {named("x", "", HUGE_VAL), Record({1, 1}), status(MCNaive::kTextNotForXML, 1)},
               {named("constant", "", 2), Record({1, 0}), status(MCNaive::kNoInputToExport, 0)}};
  for (const auto& c : cases) {
    NBAlgorithm algorithm(NaiveBayesSettings(), c.list);
    TestRecords source({Record({0, 0}), c.second});
    ASSERT_FALSE(algorithm.BuildModel(source, 2).IsError());
    EXPECT_EQ(Write(algorithm, nullptr, c.status), "");
  }

  NBVarList weighted = named("x", "", 2);
  weighted.AddWeightVar("w", "", INBVariable::kAsIs);
  for (const double weight : {1e308, 1e-320}) {
    NBAlgorithm algorithm(NaiveBayesSettings(), weighted);
    TestRecords source({Record({0, 0, weight}), Record({1, 1, weight}), Record({1, 1, weight})});
    ASSERT_FALSE(algorithm.BuildModel(source, 3).IsError());
    EXPECT_EQ(Write(algorithm, nullptr, MCNaive::Error(MCNaive::kWeightNotFinite)), "");
    std::ostringstream state;
    EXPECT_EQ(algorithm.SaveStateXML(state), MCNaive::Error(MCNaive::kWeightNotFinite));
  }
}

}  // namespace
