#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstring>
#include <functional>
#include <memory>
#include <regex>

#include "naivebayes/NBAlgorithm.h"
#include "naivebayes/NBFactory.h"
#include "tests/modelfiles/StateStreams.h"
#include "tests/naivebayes/TestRecords.h"

namespace {

using MCCommon::Record;
using nbtest::RandomData;
using nbtest::TestRecords;
using Component = std::unique_ptr<INBAlgorithm>;

std::string Binary(const INBAlgorithm& component) {
  BinaryStream os;
  EXPECT_TRUE(component.SaveState(os).IsOK());
  return os.Content();
}

std::string Document(const INBAlgorithm& component) {
  std::ostringstream os;
  EXPECT_TRUE(component.SaveStateXML(os).IsOK());
  return os.str();
}

MCNaive::MCStatus StatusOf(const Component& restored) {
  return restored ? MCNaive::MCStatus() : MCNaive::Error(MCNaive::kNotRestored);
}

Component FromBinary(const std::string& bytes) {
  BinaryStream is(bytes);
  NBFactory factory;
  Component component = factory.RestoreNBAlgorithmFromBinary(is);
  EXPECT_EQ(factory.GetStatus(), StatusOf(component));
  return component;
}

Component FromXML(const std::string& document) {
  XMLStream is(document);
  NBFactory factory;
  Component component = factory.RestoreNBAlgorithmFromXML(is);
  EXPECT_EQ(factory.GetStatus(), StatusOf(component));
  return component;
}

NaiveBayesSettings MakeSettings() {
  NaiveBayesSettings settings;
  settings.SetRandomSeed(12);
  settings.SetMaxRecordsInMemory(50);
  return settings;
}

Component Make() {
  return std::make_unique<NBAlgorithm>(MakeSettings(), RandomData::MakeList({0, 1, 2, 3, 4, 5}));
}

Component MakeBuilt(unsigned seed) {
  auto data = RandomData::Make(150, seed);
  for (Record& r : data) r[7] = r[7] > 5 ? 5 : r[7];  // bins left empty
  TestRecords source(data);
  Component component = Make();
  EXPECT_TRUE(component->BuildModel(source, 150).IsOK());
  return component;
}

// A component in each of the states that training can leave it in.
Component MakeInBatches() {
  TestRecords source(RandomData::Make(90, 2));
  Component component = Make();
  EXPECT_TRUE(component->Update(source, 40).IsOK());
  EXPECT_TRUE(component->Update(source, 40).IsOK());
  return component;
}

Component MakeSelected() {
  TestRecords source(RandomData::Make(200, 3));
  auto component = std::make_unique<NBAlgorithm>(MakeSettings(), RandomData::MakeList({1}));
  std::vector<int> selected;
  std::vector<double> logLikelihoods;
  std::vector<std::pair<int, double>> results;
  EXPECT_TRUE(component
                  ->SelectAttributes(source, 200, selected, logLikelihoods, results, 3, true,
                                     nullptr, 0, 0, nullptr, nullptr)
                  .IsOK());
  return component;
}

Component MakeHalfMerged() {
  Component component = MakeBuilt(4);
  const Component other = MakeBuilt(5);
  EXPECT_TRUE(component->MergeModel(other.get(), false).IsOK());
  return component;
}

NBVarList MakeStringList() {
  NBVarList list;
  list.AddCatVar("y", "t\xC3\xA4rget", std::vector<std::string>{"no", "<yes>"}, {"No", "Yes"},
                 INBVariable::kOutput);
  list.AddCatVar("x", "", std::vector<double>{5, 3}, INBVariable::kInput);
  list.AddDiscreteUserMissing(0, "?", "unknown");
  list.AddDiscreteUserMissing(1, 9, "");
  list.SetMissingInterval(1, 90, 99);
  return list;
}

Component MakeSmall() {
  TestRecords source({Record({0, 0}), Record({1, 1}), Record({1, 0}), Record({0, 0})});
  auto component = std::make_unique<NBAlgorithm>(NaiveBayesSettings(), MakeStringList());
  EXPECT_TRUE(component->BuildModel(source, 4).IsOK());
  return component;
}

Component MakeOfPriorsAlone() {
  TestRecords source({Record({0, 0}), Record({1, 0}), Record({1, 0})});
  auto component = std::make_unique<NBAlgorithm>(NaiveBayesSettings(), MakeStringList());
  EXPECT_EQ(component->BuildModel(source, 3).GetErrorCode(), MCNaive::kPredictorDropped);
  return component;
}

// All that a component says, to the bit.
std::string Describe(INBAlgorithm& component, const std::vector<Record>& records) {
  std::ostringstream os;
  component.Display(os);
  std::ostringstream model;
  os << component.ExportModelXML(model, nullptr).GetErrorCode()
     << std::regex_replace(model.str(), std::regex("<Timestamp>.*"), "");
  double weights[2];
  int counts[2];
  component.GetNValidNExcluded(weights[0], weights[1], counts[0], counts[1]);
  os << std::hexfloat << weights[0] << ' ' << weights[1] << ' ' << counts[0] << ' ' << counts[1];
  const int k = component.GetNTargetCategories();
  NBOutput output(k);
  for (const Record& record : records) {
    os << '\n' << component.ScoreAndAccum(record, output, false).GetErrorCode();
    for (const double p : output.GetOutProbabilities()) os << ' ' << p;
    os << ' ' << output.GetWinningIndex();
  }
  NBOutputStatistics stats(k);
  TestRecords source(records);
  os << '\n' << component.ComputeOutputStats(source, stats, -1).GetErrorCode();
  for (const auto& row : stats.GetMisClassMatrixAsVecOfRows()) {
    for (const double cell : row) os << ' ' << cell;
  }
  return os.str();
}

TEST(ComponentState, ARestoredComponentGoesOnAsTheOneThatWasSaved) {
  const std::vector<Record> random = RandomData::Make(40, 9);
  const std::vector<Record> small = {Record({0, 1}), Record({1, 0}), Record({1, -1})};
  const struct {
    Component (*make)();
    const std::vector<Record>& records;
  } cases[] = {{[] { return MakeBuilt(1); }, random},
               {MakeInBatches, random},
               {MakeSelected, random},
               {MakeHalfMerged, random},
               {MakeSmall, small},
               {MakeOfPriorsAlone, small}};
  for (const auto& c : cases) {
    const Component original = c.make();
    const std::string bytes = Binary(*original);
    const std::string document = Document(*original);
    const std::function<Component()> restores[] = {[&] { return FromBinary(bytes); },
                                                   [&] { return FromXML(document); }};
    for (const auto& restore : restores) {
      const Component restored = restore(), unsaved = c.make();
      ASSERT_NE(restored, nullptr);
      EXPECT_EQ(Binary(*restored), bytes);
      EXPECT_EQ(Document(*restored), document);
      EXPECT_TRUE(restored->GetSettings() == unsaved->GetSettings());
      EXPECT_EQ(Describe(*restored, c.records), Describe(*unsaved, c.records));
      const auto goOn = [&](INBAlgorithm& component) {
        TestRecords more(c.records);
        EXPECT_FALSE(component.Update(more, 30).IsError());
        EXPECT_FALSE(component.MergeModel(original.get(), true).IsError());
        return Describe(component, c.records) + Binary(component);
      };
      EXPECT_EQ(goOn(*restored), goOn(*unsaved));
    }
  }
}

TEST(ComponentState, ARestoredSelectionCanBeRepeated) {
  const Component original = MakeSelected(), restored = FromBinary(Binary(*original));
  const auto data = RandomData::Make(120, 6);
  const auto select = [&](INBAlgorithm& component) {
    TestRecords source(data);
    std::vector<int> selected;
    std::vector<double> logLikelihoods;
    std::vector<std::pair<int, double>> results;
    EXPECT_TRUE(component
                    .SelectAttributes(source, 120, selected, logLikelihoods, results, -1, false,
                                      nullptr, 0, 0, nullptr, nullptr)
                    .IsOK());
    EXPECT_EQ(selected.size(), 6u);
    return Binary(component);
  };
  EXPECT_EQ(select(*restored), select(*original));
}

TEST(ComponentState, IsWhatItsDescriptionSays) {
  const std::string bytes = Binary(*MakeSmall());
  EXPECT_EQ(bytes.substr(0, 16), "NBAlgorithm 1.00");
  std::int32_t numbers[2];
  double weight;
  std::memcpy(numbers, &bytes[16], 8);
  std::memcpy(&weight, &bytes[24], 8);
  EXPECT_EQ(numbers[0], 1);  // inputs
  EXPECT_EQ(numbers[1], 4);  // records
  EXPECT_EQ(weight, 4.0);
  EXPECT_EQ(bytes.substr(44, 5), "NBOUT");
  const std::string document = Document(*MakeSmall());
  EXPECT_THAT(document, testing::HasSubstr("<!DOCTYPE MCXMLRoot SYSTEM \"savexml.dtd\">"));
  EXPECT_THAT(document, testing::HasSubstr("<Object name=\"NBAlgorithm 1.00\">"));
}

// A model with one is saved in a form of its own, and what cannot be one is not read.
TEST(ComponentState, HoldsTheCalibration) {
  using Curves = std::vector<NBCalibration::Curve>;
  const struct {
    NBCalibration fCalibration;
    bool fbValid;
  } cases[] = {{NBCalibration::ByTemperature(2.5), true},
               {NBCalibration::ByTemperature(0), false},
               {NBCalibration::ByTemperature(-1), false},
               {NBCalibration::ByCurves(Curves{{{0.1, 0.1 + 0.2}, {0, 1}}}), true},
               {NBCalibration::ByCurves(Curves{}), false},
               {NBCalibration::ByCurves(Curves(9, {{0.2}, {0.5}})), false},
               {NBCalibration::ByCurves(Curves{{{}, {}}}), false},
               {NBCalibration::ByCurves(Curves{{{0.2, 0.2}, {0, 1}}}), false},
               {NBCalibration::ByCurves(Curves{{{0.2, 0.4}, {0.5, 0.4}}}), false},
               {NBCalibration::ByCurves(Curves{{{0.2}, {0.5, 0.6}}}), false},
               {NBCalibration::ByCurves(Curves{{{0.2}, {1.5}}}), false}};
  const QuietErrors quiet;
  for (const auto& c : cases) {
    const Component model = MakeSmall();
    dynamic_cast<NBAlgorithm&>(*model).SetCalibration(c.fCalibration);
    const std::string bytes = Binary(*model);
    EXPECT_EQ(bytes.substr(0, 16), "NBAlgorithm 1.01");
    const Component restored[] = {FromBinary(bytes), FromXML(Document(*model))};
    for (const Component& again : restored) {
      ASSERT_EQ(again != nullptr, c.fbValid) << &c - cases;
      if (again != nullptr) {
        EXPECT_EQ(Binary(*again), bytes);
      }
    }
  }
}

// Kept files: what was saved once can be restored for ever.
TEST(ComponentState, OfEarlierDaysIsStillRead) {
  const std::string path = PREDSELECT_SOURCE_DIR "/tests/modelfiles/states/naive";
  const auto read = [](const std::string& name) {
    std::ostringstream content;
    content << std::ifstream(name, std::ios::binary).rdbuf();
    return content.str();
  };
  const std::string bytes = read(path + ".bin"), document = read(path + ".xml");
  std::fstream binary(path + ".bin", std::ios::in | std::ios::binary);
  std::ifstream xml(path + ".xml", std::ios::binary);
  NBFactory factory;
  const Component restored[] = {factory.RestoreNBAlgorithmFromBinary(binary),
                                factory.RestoreNBAlgorithmFromXML(xml)};
  for (const Component& component : restored) {
    ASSERT_NE(component, nullptr);
    EXPECT_EQ(Binary(*component), bytes);
    EXPECT_EQ(Document(*component), document);
    NBOutput output(2);
    EXPECT_TRUE(component->ScoreFullRecord(Record({0, 1, 1, 2.5, 0}), output).IsOK());
    // 5 and 6 of 10 cases each have this string; 2.5 ends the bin that 3 of 10 each are in.
    EXPECT_NEAR(output.GetOutProbabilities()[0], 5.05 / (5.05 + 6.05), 1e-15);
  }
}

TEST(ComponentState, IsNotSavedWithoutAModelOrAgainstACancel) {
  const auto refused = [](const INBAlgorithm& component) {
    BinaryStream binary;
    std::ostringstream document;
    const MCNaive::MCStatus status = component.SaveState(binary);
    EXPECT_EQ(component.SaveStateXML(document), status);
    EXPECT_EQ(binary.Content() + document.str(), "");
    return status;
  };
  EXPECT_EQ(refused(*Make()), MCNaive::Error(MCNaive::kNotSaved));
  const Component cancelled = MakeSmall();
  cancelled->Cancel();
  EXPECT_EQ(refused(*cancelled), MCNaive::Error(MCNaive::kCancelled));
  TestRecords none({});
  const Component failed = Make();
  EXPECT_EQ(refused(*failed), MCNaive::Error(MCNaive::kNotSaved));
  EXPECT_TRUE(failed->BuildModel(none, 1).IsError());
  EXPECT_EQ(refused(*failed), MCNaive::Error(MCNaive::kNoRecordsFound));

  const Component good = MakeSmall();
  BinaryStream broken;
  broken.setstate(std::ios::failbit);
  EXPECT_EQ(good->SaveState(broken).GetErrorCode(), MCNaive::kNotSaved);
  NBFactory factory;
  EXPECT_EQ(factory.RestoreNBAlgorithmFromBinary(broken), nullptr);
  EXPECT_EQ(factory.GetStatus(), MCNaive::Error(MCNaive::kNotRestored));
  std::ifstream missing("/nonexistent");
  EXPECT_EQ(factory.RestoreNBAlgorithmFromXML(missing), nullptr);
}

TEST(ComponentState, TextsThatXMLCannotHoldAreRefusedThereAlone) {
  NBVarList list = MakeStringList();
  list.GetVarAt(1)->SetVariableLabel("\x01");
  NBAlgorithm component(NaiveBayesSettings(), list);
  TestRecords source({Record({0, 0}), Record({1, 1})});
  ASSERT_TRUE(component.BuildModel(source, 2).IsOK());
  std::ostringstream document;
  MCNaive::MCStatus refused = MCNaive::Error(MCNaive::kTextNotForXML);
  refused.SetDiscreteDatum(0, 1);
  EXPECT_EQ(component.SaveStateXML(document), refused);
  EXPECT_EQ(document.str(), "");
  const Component restored = FromBinary(Binary(component));
  ASSERT_NE(restored, nullptr);
  EXPECT_EQ(restored->GetVarList().GetVarAt(1)->GetVariableLabel(), "\x01");
}

// A few bytes must not stand for tables and documents of any size.
TEST(ComponentState, CategoriesKnownByTheirNumberAloneHaveALimit) {
  constexpr int kMost = 1 << 20;
  const auto build = [](int categories) {
    NBVarList list = MakeStringList();
    list.AddCatVar("many", "", categories, INBVariable::kStringCategorical, INBVariable::kUnused);
    auto component = std::make_unique<NBAlgorithm>(NaiveBayesSettings(), list);
    TestRecords source({Record({0, 0, 0}), Record({1, 1, 0})});
    EXPECT_TRUE(component->BuildModel(source, 2).IsOK());
    return component;
  };
  const Component most = build(kMost);
  std::string bytes = Binary(*most), document = Document(*most);
  EXPECT_NE(FromBinary(bytes), nullptr);
  EXPECT_NE(FromXML(document), nullptr);
  const auto count = [](int n) { return std::string(reinterpret_cast<const char*>(&n), sizeof n); };
  bytes.replace(bytes.find(count(kMost)), sizeof kMost, count(kMost + 1));
  document.replace(document.find("1048576"), 7, "1048577");
  EXPECT_EQ(FromBinary(bytes), nullptr);
  EXPECT_EQ(FromXML(document), nullptr);
  BinaryStream os;
  EXPECT_EQ(build(kMost + 1)->SaveState(os), MCNaive::Error(MCNaive::kNotSaved));
}

// Damaged state gives no component, or one that works and can be saved and restored like any other.
void ExpectNoHarm(const Component& component) {
  if (component == nullptr) return;
  std::ostringstream os;
  component->Display(os);
  NBOutput output(component->GetNTargetCategories());
  EXPECT_FALSE(component->ScoreFullRecord(Record({1, 0}), output).IsOK() &&
               output.GetWinningIndex() < 0);
  const std::string bytes = Binary(*component);
  const Component again = FromBinary(bytes);
  ASSERT_NE(again, nullptr);
  EXPECT_EQ(Binary(*again), bytes);
  EXPECT_FALSE(component->MergeModel(again.get(), true).IsError());
}

TEST(ComponentState, NoCutAndNoFlippedBitDoesHarm) {
  const QuietErrors errors;
  const std::string bytes = Binary(*MakeSmall());
  for (std::size_t n = 0; n < bytes.size(); ++n) {
    ASSERT_EQ(FromBinary(bytes.substr(0, n)), nullptr) << n;
  }
  int refused = 0;
  for (std::size_t bit = 0; bit < 8 * bytes.size(); ++bit) {
    std::string flipped = bytes;
    flipped[bit / 8] = static_cast<char>(flipped[bit / 8] ^ (1 << bit % 8));
    const Component component = FromBinary(flipped);
    refused += component == nullptr;
    ASSERT_NO_FATAL_FAILURE(ExpectNoHarm(component)) << bit;
  }
  EXPECT_GT(refused, static_cast<int>(bytes.size()));
}

TEST(ComponentState, NoDamagedDocumentDoesHarm) {
  const QuietErrors errors;
  const std::string document = Document(*MakeSmall());
  for (std::size_t n = 0; n + 1 < document.size(); n += 13) {
    ASSERT_EQ(FromXML(document.substr(0, n)), nullptr) << n;
  }
  EXPECT_EQ(FromXML(document + "<more/>"), nullptr);
  // Every number in turn as another one, every element under another name.
  const std::regex field("<(Long|Double)>([^<]+)<");
  for (std::sregex_iterator i(document.begin(), document.end(), field), end; i != end; ++i) {
    for (const char* value : {"-1", "2147483647", "1e300", "", "nan", "0"}) {
      std::string changed = document;
      changed.replace(i->position(2), i->length(2), value);
      ASSERT_NO_FATAL_FAILURE(ExpectNoHarm(FromXML(changed))) << i->position(2) << ' ' << value;
    }
    std::string renamed = document;
    renamed.replace(i->position(1), 1, "X");
    ASSERT_EQ(FromXML(renamed), nullptr);
  }
}

}  // namespace
