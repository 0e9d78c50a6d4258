#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstring>

#include "common/state/IOException.h"
#include "common/state/StateFields.h"
#include "common/xml/XMLDocType.h"
#include "tests/modelfiles/StateStreams.h"

namespace {

constexpr std::size_t kTag = 5;

// One of every kind of field.
struct Sample {
  int fInt = -7;
  std::int64_t fLong = std::int64_t{1} << 60;
  bool fFlag = true;
  double fDouble = 0.1;
  double fAny = -INFINITY;
  std::string fText = "a<b\n\xE2\x82\xAC";
  std::vector<double> fDoubles = {1.5, -0.0, 5e-324};
  std::vector<int> fInts = {};
  std::vector<std::string> fTexts = {"", "x"};

  template <class Archive, class Self>
  static void Fields(Archive& archive, Self& self) {
    archive.Int(self.fInt);
    archive.Long(self.fLong);
    archive.Flag(self.fFlag);
    archive.Double(self.fDouble);
    archive.AnyDouble(self.fAny);
    archive.Text(self.fText);
    archive.Gap(4);
    StateDoubles(archive, self.fDoubles);
    StateInts(archive, self.fInts);
    StateTexts(archive, self.fTexts);
  }
  int WriteObject(std::fstream& os) const;
  int ReadObject(std::fstream& is);
  void WriteObjectXML(std::ostream& os, int indent) const;
  void ReadObjectXML(std::ifstream& is);
  bool operator==(const Sample&) const = default;
};
MC_STATE_OPERATIONS(Sample, "SAMPL", "Sample")

// Where the fields stand in the binary form.
enum Place : std::size_t {
  kFlagAt = kTag + 12,
  kDoubleAt = kFlagAt + 4,
  kAnyAt = kDoubleAt + 8,
  kTextAt = kAnyAt + 8,
  kDoublesAt = kTextAt + 4 + 7 + 4,
  kIntsAt = kDoublesAt + 4 + 24,
  kTextsAt = kIntsAt + 4
};

std::string Binary(const Sample& sample) {
  BinaryStream stream;
  sample.WriteObject(stream);
  return stream.Content();
}

std::string XML(const Sample& sample) {
  std::ostringstream os;
  MCCommonXML::ExportFormat(os,
                            MCCommonXML::XMLDocType::Create("MCXMLRoot", "savexml.dtd", nullptr));
  MCCommonXML::StartRoot(os, "test");
  sample.WriteObjectXML(os, 2);
  MCCommonXML::EndRoot(os);
  return os.str();
}

// What a refused reading says; empty for one that is taken.
std::string Refusal(const std::string& bytes, bool xml) {
  const QuietErrors errors;
  try {
    Sample sample;
    if (xml) {
      XMLStream stream(bytes);
      sample.ReadObjectXML(stream);
    } else {
      BinaryStream stream(bytes);
      sample.ReadObject(stream);
    }
  } catch (const MCCommon::IOException&) {
    return errors.Text();
  }
  return "";
}

template <class Value>
std::string With(std::string bytes, std::size_t at, Value value) {
  std::memcpy(bytes.data() + at, &value, sizeof value);
  return bytes;
}

TEST(StateArchive, BothFormsGiveBackEveryBit) {
  Sample nan;
  nan.fAny = -NAN;
  for (const Sample& sample : {Sample(), nan}) {
    Sample read{0, 0, false, 0, 0, "", {}, {1}, {}};
    BinaryStream binary(Binary(sample));
    EXPECT_EQ(read.ReadObject(binary), static_cast<int>(Binary(sample).size()));
    EXPECT_EQ(Binary(read), Binary(sample));
    Sample fromXML{0, 0, false, 0, 0, "", {}, {1}, {}};
    XMLStream xml(XML(sample));
    fromXML.ReadObjectXML(xml);
    EXPECT_EQ(Binary(fromXML), Binary(sample));
  }
  EXPECT_EQ(Binary(Sample()).size(), kTextsAt + 4 + 4 + 5);
}

TEST(StateArchive, RefusesBinaryFormsThatAreCutOrHoldWhatCannotBe) {
  const std::string whole = Binary(Sample());
  for (std::size_t n = 0; n < whole.size(); ++n) {
    EXPECT_EQ(Refusal(whole.substr(0, n), false), "Error reading Sample!\n") << n;
  }
  constexpr std::int32_t kHuge = 0x7FFFFFFF;
  const std::pair<const char*, std::string> kCases[] = {
      {"tag", With(whole, 0, 's')},
      {"flag", With(whole, kFlagAt, 2)},
      {"infinity", With(whole, kDoubleAt, INFINITY * 1.0)},
      {"nan", With(whole, kDoubleAt, std::nan(""))},
      {"text of negative length", With(whole, kTextAt, -1)},
      {"text of huge length", With(whole, kTextAt, kHuge)},
      {"negative count", With(whole, kDoublesAt, -1)},
      {"huge count", With(whole, kDoublesAt, kHuge)},
      {"huge count of integers", With(whole, kIntsAt, kHuge)},
      {"one text too many", With(whole, kTextsAt, 3)}};
  for (const auto& [name, bytes] : kCases) {
    EXPECT_EQ(Refusal(bytes, false), "Error reading Sample!\n") << name;
  }
  EXPECT_EQ(Refusal(With(whole, kAnyAt, std::nan("")), false), "");
}

TEST(StateArchive, RefusesXMLFormsThatHoldWhatCannotBe) {
  const std::string whole = XML(Sample());
  constexpr std::array<std::array<const char*, 2>, 11> kChanges = {{
      {"Object name=\"Sample\"", "Object name=\"Simple\""},
      {"<Long>-7</Long>", "<Long>-2147483649</Long>"},
      {"<Long>-7</Long>", "<Double>-7</Double>"},
      {"<Long>-7</Long>", ""},
      {"<Long>1</Long>", "<Long>2</Long>"},
      {"<Double>0.1</Double>", "<Double>inf</Double>"},
      {"<Double>0.1</Double>", "<Double>1e309</Double>"},
      {"<Long>3</Long>", "<Long>2147483647</Long>"},
      {"<Long>3</Long>", "<Long>-1</Long>"},
      {"<Long>3</Long>", "<Long>4294967299</Long>"},
      {"<String>x</String>", "<String>x</String><String>y</String>"},
  }};
  EXPECT_EQ(Refusal(whole, true), "");
  for (const auto& [from, to] : kChanges) {
    std::string changed = whole;
    const std::size_t at = changed.find(from);
    ASSERT_NE(at, std::string::npos) << from;
    changed.replace(at, std::strlen(from), to);
    EXPECT_EQ(Refusal(changed, true), "Failure reading Sample!\n") << from << " -> " << to;
  }
}

TEST(StateArchive, TellsWhichClassComesNextWithoutReadingIt) {
  const std::array<StateName, 2> names = {StateName{"Other", "SAMPLE", "Other"}, kSample};
  BinaryStream binary("HEAD" + Binary(Sample()));
  BinaryStateReader reader(binary, {"Head", "HEAD", "Head"});
  EXPECT_EQ(reader.Which(names), 1U);
  EXPECT_EQ(reader.Which(names), 1U);
  Sample sample;
  reader.Object(sample);
  const QuietErrors errors;
  EXPECT_THROW(reader.Which(names), MCCommon::IOException);  // nothing is left
}

TEST(StateArchive, LeavesAFailedStreamFailed) {
  std::fstream full("/dev/full", std::ios::out | std::ios::binary);
  ASSERT_TRUE(full);
  Sample().WriteObject(full);
  full.flush();
  EXPECT_FALSE(full);
}

}  // namespace
