// Files of every kind of component: what contradicts itself is refused, and nothing is exported
// that its form cannot hold.

#include "modelfiles/ComponentFile.h"

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <nlohmann/json.hpp>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "common/state/StateBytes.h"
#include "modelfiles/NBPartModel.h"
#include "modelfiles/export/ExportText.h"
#include "modelfiles/export/JSONModel.h"
#include "modelfiles/export/ModelFormats.h"
#include "naivebayes/NBAlgorithm.h"
#include "naivebayes/parts/NBPartCodes.h"
#include "tests/naivebayes/TestRecords.h"

namespace {

using MCModelFiles::ExportError;
using MCModelFiles::ExportModel;
using MCModelFiles::ModelFormat;
using nbtest::RandomData;
using nbtest::TestRecords;
using nlohmann::json;

const std::vector<int> kAll = {0, 1, 2, 3, 4, 5};

std::unique_ptr<NBAlgorithm> Trained(const NBVarList& variables) {
  auto model = std::make_unique<NBAlgorithm>(NaiveBayesSettings(), variables);
  TestRecords source(RandomData::Make(150, 4));
  EXPECT_TRUE(model->BuildModel(source, 150).IsOK());
  return model;
}

TEST(JSONModel, OfWhichAFieldCannotBeIsRefused) {
  const json model =
      json::parse(ExportModel(*Trained(RandomData::MakeList(kAll)), ModelFormat::kJSON, {}).fBytes);
  EXPECT_NE(MCModelFiles::ModelFromJSON(model.dump()), nullptr);
  const std::pair<const char*, json> fields[] = {
      {"", 3},
      {"/predselect_model", 9},
      {"/predselect_model", nullptr},
      {"/training/cases", 1},
      {"/training/cases", -5},
      {"/training/cases", 3000000000U},
      {"/training/weight", 0},
      {"/training/weight", "many"},
      {"/target/categories", 5},
      {"/target/categories", json::array()},
      {"/target/categories", {1, 1, 2}},
      {"/target/counts/0", -1},
      {"/target/counts/0", "one"},
      {"/predictors/0/categories", json::array()},
      {"/predictors/0/counts", json::array()},
      {"/predictors/0/counts/0", {1, 2}},
      {"/predictors/0/counts/0/0", -1},
      {"/predictors/1/name", model["predictors"][0]["name"]},
      {"/predictors/5/cutpoints", json::array()},
      {"/predictors/5/cutpoints", {4, 3, 2, 1}},
      {"/predictors/5/range", {1}},
  };
  for (const auto& [place, value] : fields) {
    json changed = model;
    changed[json::json_pointer(place)] = value;
    EXPECT_THROW((void)MCModelFiles::ModelFromJSON(changed.dump()), ExportError) << place << value;
  }
}

TEST(ExportModel, RefusesWhatItsFormCannotHold) {
  EXPECT_THROW((void)ExportModel(*Trained(RandomData::MakeList()), ModelFormat::kC, {}),
               ExportError)
      << "no predictor";
  NBVarList labelled;
  labelled.AddCatVar("y", "", 3, INBVariable::kNumericCategorical, INBVariable::kOutput);
  labelled.AddWeightVar("w", "", INBVariable::kAsIs);
  labelled.AddCatVar("x", std::string("a\0b", 3), 2, INBVariable::kNumericCategorical,
                     INBVariable::kInput);
  EXPECT_THROW((void)ExportModel(*Trained(labelled), ModelFormat::kJSON, {}), ExportError);
  const auto curved = Trained(RandomData::MakeList(kAll));
  const NBCalibration::Curve curve = {{0.0, 1.0}, {0.25, 0.75}};
  curved->SetCalibration(NBCalibration::ByCurves({curve, curve, curve}));
  EXPECT_THROW((void)ExportModel(*curved, ModelFormat::kPMML, {}), ExportError);
  EXPECT_NO_THROW((void)ExportModel(*curved, ModelFormat::kC, {}));
}

TEST(ExportText, NamesArePlainAndEachTheirOwn) {
  const std::pair<const char*, const char*> names[] = {
      {"aZ_9", "aZ_9"}, {"9z", "_9z"}, {"", "_"}, {"[{`@/:", "______"}, {"\xC3\xA4", "__"}};
  for (const auto& [text, plain] : names) EXPECT_EQ(MCModelFiles::PlainName(text), plain);
  std::set<std::string> taken = {"a", "a_2"};
  EXPECT_EQ(MCModelFiles::Untaken("a", taken), "a_3");
  EXPECT_EQ(MCModelFiles::Untaken("b", taken), "b");
}

NBPartModel PartModel() {
  NBAlgorithm algorithm(NaiveBayesSettings(), RandomData::MakeList(kAll));
  TestRecords source(RandomData::Make(80, 9));
  NBPartCounts counts;
  std::unique_ptr<NBPartCodes> none;
  EXPECT_TRUE(algorithm.CountPart({source, 80, nullptr, false, false}, counts, none).IsOK());
  return {7, {3}, NaiveBayesSettings(), algorithm.GetVarList(), counts};
}

TEST(NBPartModel, OfWhichTheTablesAreNotThoseOfItsVariablesIsRefused) {
  const NBPartModel part = PartModel();
  NBPartModel read;
  ASSERT_TRUE(StateBytes::To(StateBytes::Of(part), read));
  EXPECT_NE(read.Build(), nullptr);
  using C = NBPartCounts;
  const std::pair<const char*, std::function<void(C&)>> changes[] = {
      {"categories", [](C& c) { ++c.fCategories[0], c.fInputs[0].resize(9, 1.0); }},
      {"an input less", [](C& c) { c.fCategories.pop_back(), c.fInputs.pop_back(); }},
      {"no table", [](C& c) { c.fInputs[2].clear(); }},
      {"weight", [](C& c) { c.fWeight *= 2; }},
      {"no record", [](C& c) { c.fNRecords = 0; }},
      {"a class more", [](C& c) {
         c.fTarget.push_back(0.0), c.fRecords.push_back(0);
         for (auto& table : c.fInputs) table.resize(table.size() / 3 * 4);
       }}};
  for (const auto& [what, change] : changes) {
    NBPartModel changed = part;
    change(changed.fCounts);
    EXPECT_FALSE(StateBytes::To(StateBytes::Of(changed), read)) << what;
  }
  NBPartModel sum = part, other = part;
  EXPECT_EQ(sum.Add(other), "part 3 is there already");
  other.fParts = {4};
  other.fCounts.fTarget.pop_back();
  EXPECT_EQ(sum.Add(other), "its tables have other categories");
  other.fRanges = 8;
  EXPECT_EQ(sum.Add(other), "it was counted with other ranges");
  EXPECT_EQ(StateBytes::Of(sum), StateBytes::Of(part));
  other.fCounts.fRecords.clear();
  EXPECT_EQ(other.Build(), nullptr);
}

TEST(ComponentFile, HoldsPartsAndRangesInBothForms) {
  TableRanges ranges;
  ranges.fParts = {{0, 5}, {2, 7}};
  for (const char* ending : {".bin", ".xml"}) {
    const std::string path = testing::TempDir() + "kinds" + ending;
    const StateWriting how = {.fbXML = IsXMLStateName(path)};
    ComponentFile part, table;
    EXPECT_EQ(WriteComponentFile(path, how, PartModel()), "");
    ASSERT_EQ(ReadComponentFile(path, part), "");
    EXPECT_EQ(StateBytes::Of(*part.fpPart), StateBytes::Of(PartModel()));
    EXPECT_NE(part.fpNaive, nullptr);
    EXPECT_EQ(WriteComponentFile(path, how, ranges), "");
    ASSERT_EQ(ReadComponentFile(path, table), "");
    EXPECT_EQ(table.fRanges->fParts, ranges.fParts);
  }
  ComponentFile file;
  for (const std::string& bytes : {StateBytes::Of(PartModel()), StateBytes::Of(ranges),
                                   ComponentBytes(*Trained(RandomData::MakeList(kAll)))}) {
    EXPECT_EQ(ReadComponentBytes(bytes, file), "");
    EXPECT_NE(ReadComponentBytes(bytes + "x", file), "") << "two in one";
  }
  EXPECT_NE(WriteComponentFile(testing::TempDir() + "no such folder/a.bin", {}, ranges), "");
  EXPECT_TRUE(IsXMLStateName("a.XmL"));
  EXPECT_FALSE(IsXMLStateName("xml"));
  EXPECT_FALSE(IsXMLStateName("a.[ml"));
}

TEST(ComponentFile, HasADictionaryOfItsOwnComponent) {
  ComponentFile kept;
  ASSERT_EQ(ReadComponentFile(PREDSELECT_SOURCE_DIR "/tests/modelfiles/states/feature.xml", kept),
            "");
  const std::string path = testing::TempDir() + "dictionary.xml";
  const auto readWith = [&](const StateDictionary* dictionary) {
    EXPECT_EQ(WriteComponentFile(path, {.fbXML = true}, *kept.fpFeature, dictionary), "");
    ComponentFile file;
    return ReadComponentFile(path, file);
  };
  EXPECT_EQ(readWith(nullptr), "");
  EXPECT_EQ(readWith(&*kept.fDictionary), "");
  using D = StateDictionary;
  void (*const changes[])(D&) = {[](D& d) { d.fPredictors.pop_back(); },
                                 [](D& d) { d.fWeight = d.fWeight.empty() ? "w" : ""; },
                                 [](D& d) { d.fTarget.fbCategorical = false; },
                                 [](D& d) { d.fPredictors[0].fbCategorical ^= true; }};
  for (const auto& change : changes) {
    D dictionary = *kept.fDictionary;
    change(dictionary);
    EXPECT_NE(readWith(&dictionary), "") << &change - changes;
    ComponentFile file;
    EXPECT_NE(ReadComponentBytes(ComponentBytes(*kept.fpFeature, &dictionary), file), "");
  }
  // A component alone is another file than one with its dictionary.
  const std::uint64_t digest = DigestOf(kept);
  kept.fDictionary.reset();
  EXPECT_NE(DigestOf(kept), digest);
  EXPECT_EQ(WriteComponentFile(path, {.fbXML = true}, kept), "");
  ComponentFile alone;
  EXPECT_EQ(ReadComponentFile(path, alone), "");
  EXPECT_EQ(DigestOf(alone), DigestOf(kept));
}

}  // namespace
