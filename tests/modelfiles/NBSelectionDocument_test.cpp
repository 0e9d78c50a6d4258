#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <regex>
#include <sstream>

#include "common/xml/MCApplicInfo4XML.h"
#include "naivebayes/NBAlgorithm.h"
#include "tests/modelfiles/Validate.h"
#include "tests/naivebayes/TestRecords.h"

namespace {

using nbtest::RandomData;
using nbtest::TestRecords;

struct Selected {
  MCNaive::MCStatus fStatus;
  std::vector<int> fvOrder;
  std::vector<std::pair<int, double>> fvResults;
  std::string fDocument;
  bool fbBuilt = false;
};

Selected Select(NBVarList list, int size, bool exact, bool test, MCApplicInfo4XML* info) {
  NBAlgorithm algorithm(NaiveBayesSettings(), list);
  TestRecords data(RandomData::Make(150, 1)), testData(RandomData::Make(60, 2));
  Selected selected;
  std::vector<double> logLikelihoods;
  std::ostringstream os;
  selected.fStatus =
      algorithm.SelectAttributes(data, 150, selected.fvOrder, logLikelihoods, selected.fvResults,
                                 size, exact, test ? &testData : nullptr, -1, 3, &os, info);
  selected.fDocument = os.str();
  selected.fbBuilt = algorithm.IsModelBuilt();
  return selected;
}

// The values of one attribute of all elements of a name, in order.
std::vector<std::string> Values(const std::string& document, const std::string& element,
                                const std::string& attribute) {
  const std::regex pattern("<" + element + " [^>]*" + attribute + "=\"([^\"]*)\"");
  std::vector<std::string> values;
  for (std::sregex_iterator i(document.begin(), document.end(), pattern), end; i != end; ++i) {
    values.push_back((*i)[1]);
  }
  return values;
}

TEST(SelectionDocument, HoldsTheOrderOfEntryAndTheReportedSubsets) {
  NBVarList list = RandomData::MakeList({1});
  list.GetVarAt(RandomData::kFirst)->SetVariableLabel("first & \"last\"");
  for (bool test : {false, true}) {
    const Selected s = Select(list, -1, false, test, nullptr);
    ASSERT_TRUE(s.fStatus.IsOK());
    EXPECT_EQ(ValidationErrors(s.fDocument), "");
    EXPECT_THAT(s.fDocument, testing::HasSubstr("<!DOCTYPE NaiveBayesAttrSelection SYSTEM "
                                                "\"nbasoutput.dtd\">\n<NaiveBayesAttrSelection "
                                                "version=\"1.0\" subsetChoiceType=\"maxNumber\" "
                                                "numberOfPredictors=\"6\" numberOfSubsets=\"3\" "
                                                "criterion=\"" +
                                                std::string(test ? "testData" : "BIC") + "\">"));
    EXPECT_THAT(s.fDocument, testing::HasSubstr("<Target targetIndex=\"0\" variableName=\"y\" "
                                                "numberOfCategories=\"3\"/>"));
    std::vector<std::string> order, refs;
    for (int index : s.fvOrder) order.push_back(std::to_string(index));
    EXPECT_EQ(Values(s.fDocument, "Predictor", "predictorIndex"), order);
    EXPECT_EQ(Values(s.fDocument, "Predictor", "variableLabel"),
              std::vector<std::string>{"first &amp; &quot;last&quot;"});
    const auto sizes = Values(s.fDocument, "Subset", "numberOfPredictors");
    const auto criteria = Values(s.fDocument, "Subset", "criterionValue");
    ASSERT_EQ(s.fvResults.size(), 3u);
    for (std::size_t i = 0; i < s.fvResults.size(); ++i) {
      EXPECT_EQ(sizes.at(i), std::to_string(s.fvResults[i].first));
      EXPECT_EQ(std::stod(criteria.at(i)), s.fvResults[i].second);
      refs.insert(refs.end(), order.begin(), order.begin() + s.fvResults[i].first);
    }
    EXPECT_EQ(Values(s.fDocument, "Subset", "rankOrder"),
              (std::vector<std::string>{"0", "1", "2"}));
    EXPECT_EQ(Values(s.fDocument, "PredictorRef", "predictorIndex"), refs);
  }
}

TEST(SelectionDocument, OfAnExactSizeHasOneSubsetWithoutCriterion) {
  MCApplicInfo4XML info{true, "App", "3", "\xC2\xA9 us"};
  const Selected s = Select(RandomData::MakeList(), 2, true, false, &info);
  ASSERT_TRUE(s.fStatus.IsOK());
  EXPECT_EQ(ValidationErrors(s.fDocument), "");
  EXPECT_THAT(s.fDocument, testing::HasSubstr("subsetChoiceType=\"exactNumber\" "
                                              "numberOfPredictors=\"2\" numberOfSubsets=\"1\">"));
  EXPECT_THAT(s.fDocument, testing::HasSubstr("copyright=\"\xC2\xA9 us\""));
  EXPECT_THAT(s.fDocument, testing::HasSubstr("<Subset numberOfPredictors=\"2\">"));
  EXPECT_EQ(Values(s.fDocument, "PredictorRef", "predictorIndex"),
            Values(s.fDocument, "Predictor", "predictorIndex"));
}

TEST(SelectionDocument, ThatCannotBeWrittenLeavesTheModelUsable) {
  NBVarList list = RandomData::MakeList();
  list.GetVarAt(RandomData::kFirst + 2)->SetVariableLabel("\x03");
  const Selected s = Select(list, -1, false, false, nullptr);
  MCNaive::MCStatus refused = MCNaive::Warning(MCNaive::kTextNotForXML);
  refused.SetDiscreteDatum(0, RandomData::kFirst + 2);
  EXPECT_EQ(s.fStatus, refused);
  EXPECT_EQ(s.fDocument, "");
  EXPECT_TRUE(s.fbBuilt);
}

}  // namespace
