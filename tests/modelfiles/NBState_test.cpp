#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <memory>

#include "common/state/IOException.h"
#include "common/xml/XMLDocType.h"
#include "common/xml/XMLObj.h"
#include "naivebayes/NaiveBayesSettings.h"
#include "naivebayes/encoders/NBCatNumEncoder.h"
#include "naivebayes/encoders/NBNumericUserMissing.h"
#include "naivebayes/encoders/NBRoundEncoder.h"
#include "naivebayes/encoders/NBStringEncoder.h"
#include "naivebayes/encoders/NBStringUserMissing.h"
#include "naivebayes/model/NBayesInput.h"
#include "naivebayes/model/NBayesOutput.h"
#include "naivebayes/selection/MCRandom.h"
#include "naivebayes/store/NBMemoryIter.h"
#include "naivebayes/variables/NBCatVar.h"
#include "naivebayes/variables/NBContVar.h"
#include "naivebayes/variables/NBVarList.h"
#include "naivebayes/variables/NBWeightVar.h"
#include "tests/modelfiles/StateStreams.h"

namespace {

using Cuts = std::vector<double>;

constexpr double kHighest = std::numeric_limits<double>::max();

template <class T>
std::string Binary(const T& object) {
  BinaryStream os;
  const int bytes = object.WriteObject(os);
  EXPECT_EQ(bytes, static_cast<int>(os.Content().size()));
  return os.Content();
}

template <class T>
std::string Document(const T& object) {
  std::ostringstream os;
  MCCommonXML::ExportFormat(os,
                            MCCommonXML::XMLDocType::Create("MCXMLRoot", "savexml.dtd", nullptr));
  MCCommonXML::StartRoot(os, "test");
  object.WriteObjectXML(os, 2);
  MCCommonXML::EndRoot(os);
  return os.str();
}

// Binary into one fresh object, XML of that into another, and binary again: the same bytes.
template <class T>
void ExpectRoundTrip(const T& object, T binaryCopy, T xmlCopy, const std::string& tag) {
  const std::string bytes = Binary(object);
  EXPECT_EQ(bytes.substr(0, tag.size()), tag);
  BinaryStream is(bytes);
  EXPECT_EQ(binaryCopy.ReadObject(is), static_cast<int>(bytes.size()));
  EXPECT_EQ(Binary(binaryCopy), bytes);
  XMLStream document(Document(binaryCopy));
  xmlCopy.ReadObjectXML(document);
  EXPECT_EQ(Binary(xmlCopy), bytes) << document.Content();
}

std::unique_ptr<INBUserMissing> Missing() {
  auto missing = std::make_unique<NBNumericUserMissing>();
  missing->AddDiscreteValue(0.1, "a tenth");
  missing->AddDiscreteValue(-0.0, "");
  missing->SetInterval(NBNumericInterval(5e-324, kHighest));
  return missing;
}

TEST(NBState, KeepsUserMissingDefinitions) {
  ExpectRoundTrip(NBNumericInterval(-1.5, 1 / 3.0), {}, {}, "NBNumInt");
  EXPECT_EQ(Binary(NBNumericInterval()).size(), 24u);
  ExpectRoundTrip(NBNumericInterval(), {1.0, 2.0}, {3.0, 4.0}, "NBNumInt");
  ExpectRoundTrip(static_cast<const NBNumericUserMissing&>(*Missing()), {}, {}, "NBNumUMi");
  NBStringUserMissing strings;
  strings.AddDiscreteValue("n/a", "<not> & \"asked\"");
  strings.AddDiscreteValue("", "\xE2\x82\xAC\r\n\t");
  ExpectRoundTrip(strings, {}, {}, "NBStrUMi");
  // The missing value stands for the unbounded right end, and only for it.
  EXPECT_THAT(Document(NBNumericInterval(1, false)),
              testing::HasSubstr("<Double>-1.7976931348623157e+308</Double>\n  </Object>"));
  EXPECT_THROW(Document(NBNumericInterval(-kHighest, -kHighest)), MCNaive::IOException);
}

TEST(NBState, KeepsEncoders) {
  NBBinningEncoder bins(Cuts{-kHighest, 0.1, 0.1, kHighest});
  bins.SetValueLabel(1, "low");
  bins.SetUserMissingInfo(Missing());
  ExpectRoundTrip(bins, NBBinningEncoder(Cuts{}), NBBinningEncoder(Cuts{1}), "BIEN");
  NBCatNumEncoder numbers({5, 3, -0.25});
  numbers.SetValueLabels({"five", "", "quarter"});
  ExpectRoundTrip(numbers, NBCatNumEncoder(0), NBCatNumEncoder({1, 2}), "CNEN");
  NBStringEncoder strings({"z", "", "a", "\xC3\xBC"});
  strings.SetUserMissingInfo(std::make_unique<NBStringUserMissing>());
  ExpectRoundTrip(strings, NBStringEncoder(0), NBStringEncoder({"z", "y"}), "STEN");
  NBRoundEncoder rounding(INBVariable::kRound);
  rounding.SetUserMissingInfo(Missing());
  ExpectRoundTrip(rounding, NBRoundEncoder(INBVariable::kAsIs), NBRoundEncoder(INBVariable::kAsIs),
                  "ROEN");
}

NBVarList MakeList() {
  NBVarList list;
  list.AddCatVar("y", "target", std::vector<std::string>{"no", "yes"}, INBVariable::kOutput);
  list.AddCatVar("x", "", std::vector<double>{1, 2}, {"one", "two"}, INBVariable::kPossibleInput);
  list.AddContVar("c", "", -1, 1, 4, INBVariable::kInput);
  list.AddWeightVar("w", "weight", INBVariable::kTruncate);
  list.AddContVar("empty", "", kHighest, -kHighest, 3, INBVariable::kUnused);
  list.SetMissingInterval(2, -kHighest, -9);
  list.AddDiscreteUserMissing(0, "?", "unknown");
  dynamic_cast<NBContVar*>(list.GetVarAt(4))->ClearEncoder(false);
  return list;
}

TEST(NBState, KeepsVariablesAndTheirList) {
  const NBVarList list = MakeList();
  ExpectRoundTrip(dynamic_cast<const NBCatVar&>(*list.GetVarAt(1)),
                  NBCatVar("", "", 3, INBVariable::kStringCategorical, INBVariable::kInput),
                  NBCatVar("", "", 0, INBVariable::kNumericCategorical, INBVariable::kInput),
                  "CAVR");
  const NBContVar fresh("", "", 0, 1, 2, INBVariable::kInput);
  ExpectRoundTrip(dynamic_cast<const NBContVar&>(*list.GetVarAt(2)), fresh, fresh, "COVR");
  ExpectRoundTrip(dynamic_cast<const NBContVar&>(*list.GetVarAt(4)), fresh, fresh, "COVR");
  const NBWeightVar weight("", "", INBVariable::kAsIs);
  ExpectRoundTrip(dynamic_cast<const NBWeightVar&>(*list.GetVarAt(3)), weight, weight, "WEVR");
  ExpectRoundTrip(list, NBVarList(), NBVarList(list), "NBVL");
  NBVarList copy;
  BinaryStream is(Binary(list));
  copy.ReadObject(is);
  EXPECT_EQ(copy.GetTargetIndex(), 0);
  EXPECT_EQ(copy.GetWeightIndex(), 3);
  EXPECT_EQ(copy.FindVariable("c"), 2);
  std::ostringstream before, after;
  list.Display(before);
  copy.Display(after);
  EXPECT_EQ(after.str(), before.str());
}

TEST(NBState, KeepsTheTablesOfTheModel) {
  NBCatVar variable("x", "", 3, INBVariable::kNumericCategorical, INBVariable::kInput);
  NBayesInput input(7, &variable, 2);
  input.Setup(1 / 3.0, {{0.1, 2}, {}, {3, 0}});
  ExpectRoundTrip(input, NBayesInput(), NBayesInput(input), "NBIN");
  NBayesOutput output;
  output.Setup(3);
  const std::int32_t targets[] = {0, 2};
  const double weights[] = {0.1, 2};
  output.AddCases(targets, weights, 2);
  output.ComputeProbabilities(2.1);
  ExpectRoundTrip(output, NBayesOutput(), NBayesOutput(output), "NBOUT");
}

TEST(NBState, KeepsSettingsButNotWhatBelongsToTheCaller) {
  NaiveBayesSettings settings;
  settings.SetNSkippedReports(3);
  settings.SetMaxRecordsInMemory(5'000'000'000);
  settings.SetSampleSize4SimData(77);
  settings.SetRandomSeed(4'000'000'000u);
  settings.SetRNGOption(NaiveBayesSettings::kLibrary);
  settings.SetTempDir("/tmp/");
  const std::string bytes = Binary(settings);
  EXPECT_EQ(bytes.size(), 3u + 4 + 4 + 8 + 4 + 4);
  ExpectRoundTrip(settings, NaiveBayesSettings(), NaiveBayesSettings(), "NBS");
  NaiveBayesSettings read;
  read.SetTempDir("/tmp/");
  BinaryStream is(bytes);
  read.ReadObject(is);
  EXPECT_TRUE(read == settings);
}

TEST(NBState, GoesOnWithTheSameRandomNumbersAndRecords) {
  for (const bool twister : {true, false}) {
    MCNaiveBayes::MCRandom random(876543, true, twister, nullptr);
    for (int i = 0; i < 1000; ++i) random.GetRandom();
    ExpectRoundTrip(random, {1, true, !twister, nullptr}, {1, true, twister, nullptr}, "MCRa");
    MCNaiveBayes::MCRandom copy(0, true, false, nullptr);
    BinaryStream is(Binary(random));
    copy.ReadObject(is);
    for (int i = 0; i < 1000; ++i) ASSERT_EQ(copy.GetRandom(), random.GetRandom());
  }
  MCNaive::NBMemoryIter records(2, 5);
  for (const double x : {1.0, 2.0, std::nan("")}) {
    records.AddRecord(MCCommon::Record({x, -HUGE_VAL}));
  }
  records.NextRecord();
  BinaryStream is(Binary(records));
  MCNaive::NBMemoryIter copy(9, 1), again(1, 1);
  copy.ReadObject(is);
  EXPECT_EQ((*copy.NextRecord())[0], 2);
  EXPECT_TRUE(copy.NewPass());
  EXPECT_TRUE(records.NewPass());
  XMLStream document(Document(copy));
  again.ReadObjectXML(document);
  EXPECT_EQ(Binary(again), Binary(records));
  EXPECT_EQ(again.GetCapacity(), 5);
}

// What a reader says and throws.
template <class T>
void ExpectRefused(T object, const std::string& bytes, const std::string& message) {
  const QuietErrors errors;
  BinaryStream is(bytes);
  EXPECT_THROW(object.ReadObject(is), MCNaive::IOException);
  EXPECT_EQ(errors.Text(), message);
}

TEST(NBState, RefusesWhatIsNoStateOfTheClass) {
  ExpectRefused(NBNumericInterval(), "NBNumIn", "Error reading NBNumericInterval!\n");
  ExpectRefused(NBayesOutput(), Binary(NBNumericInterval()), "Error reading NBayesOutput!\n");
  {
    const QuietErrors errors;
    XMLStream document(Document(NBNumericInterval()));
    NBayesInput input;
    EXPECT_THROW(input.ReadObjectXML(document), MCNaive::IOException);
    EXPECT_EQ(errors.Text(), "Failure reading NBayesInput!\n");
  }
  const auto changed = [](std::string bytes, std::size_t at, std::int32_t number) {
    return bytes.replace(at, 4, reinterpret_cast<const char*>(&number), 4);
  };
  // A list that claims more than there is must not be allocated.
  const std::string bins = Binary(NBBinningEncoder(Cuts{1, 2, 3}));
  ExpectRefused(NBBinningEncoder(Cuts{}), changed(bins, 8, 2'000'000'000),
                "Error reading NBBinningEncoder!\n");
  ExpectRefused(NBBinningEncoder(Cuts{}), changed(bins, 4, 7), "Error reading NBBinningEncoder!\n");
  // Values that contradict each other or mean nothing.
  const std::string round = Binary(NBRoundEncoder(INBVariable::kAsIs));
  ExpectRefused(NBRoundEncoder(INBVariable::kAsIs), changed(round, 4, 3),
                "Error reading NBRoundEncoder!\n");
  NBCatNumEncoder twice({1, 2});
  std::string values = Binary(twice);
  values.replace(8, 8, values.substr(16, 8));
  ExpectRefused(twice, values, "Error reading NBCatNumEncoder!\n");
  const std::string list = Binary(MakeList());
  ExpectRefused(NBVarList(), changed(list, list.size() - 8, 1), "Error reading NBVarList!\n");
  MCNaive::NBMemoryIter records(1, 5);
  for (const double x : {1.0, 2.0, 3.0}) records.AddRecord(MCCommon::Record(std::vector{x}));
  const std::string kept = Binary(records);
  constexpr std::size_t kCapacity = 3, kCurrent = 11;  // behind the tag
  ExpectRefused(MCNaive::NBMemoryIter(1, 1), changed(kept, kCapacity, 2),
                "Error reading NBMemoryIter!\n");
  ExpectRefused(MCNaive::NBMemoryIter(1, 1), changed(kept, kCurrent, 4),
                "Error reading NBMemoryIter!\n");
  using MCNaiveBayes::MCRandom;
  const std::string drawn = Binary(MCRandom(1, true, true, nullptr));
  ExpectRefused(MCRandom(1, true, true, nullptr), changed(drawn, drawn.size() - 4, 1),
                "Error reading MCRandom!\n");
}

}  // namespace
