#include "modelfiles/StateEnvelope.h"

#include <gtest/gtest.h>

#include <fstream>
#include <iomanip>
#include <regex>
#include <sstream>

#include "modelfiles/ComponentFile.h"
#include "tests/modelfiles/Damage.h"

namespace {

using MCModelFiles::OpenedEnvelope;
using MCModelFiles::OpenEnvelope;
using MCModelFiles::PutIntoEnvelope;

constexpr const char* kKey = "0123456789abcdef";
constexpr const char* kUnsigned =
    "it is not signed, and only files that were signed with the key are to be read";
constexpr const char* kWrongKey = "it was not signed with this key, or was changed since";
constexpr const char* kOtherKey = "0123456789abcdeF";

std::string ContentOf(const std::string& path) {
  std::ostringstream bytes;
  bytes << std::ifstream(path, std::ios::binary).rdbuf();
  return bytes.str();
}

std::string KeptState(const std::string& name) {
  return ContentOf(PREDSELECT_SOURCE_DIR "/tests/modelfiles/states/" + name);
}

OpenedEnvelope Open(const std::string& bytes, bool xml, const std::string& key = "") {
  std::istringstream file(bytes);
  return OpenEnvelope(file, xml, key);
}

std::string ReadBytes(const std::string& bytes, const std::string& name) {
  const std::string path = testing::TempDir() + name;
  std::ofstream(path, std::ios::binary) << bytes;
  ComponentFile file;
  return ReadComponentFile(path, file);
}

// The digests are those of Python's hashlib and hmac.
TEST(StateEnvelope, HasAFormThatIsKept) {
  const auto hex = [](const std::string& bytes) {
    std::ostringstream text;
    for (const char byte : bytes) {
      text << std::hex << std::setw(2) << std::setfill('0') << (byte & 255);
    }
    return text.str();
  };
  const std::string head = "505346494c4520312e3030";  // PSFILE 1.00
  EXPECT_EQ(hex(PutIntoEnvelope("abc", false, "")),
            head +
                "00000000"
                "0300000000000000"
                "616263"
                "dd489ac69e095765059ff3e313ddb1bfb3adae3da0ea6d1100ecd76b0649a544");
  EXPECT_EQ(hex(PutIntoEnvelope("abc", false, kKey)),
            head +
                "01000000"
                "0300000000000000"
                "616263"
                "0a55c851af57cd00f36f28c3134154ea2fc6aa151da3e552edb5832ba6fce9fa"
                "3c3f6964a5fa9290a9124baf868e8f4e115b63800ab3359d2ac3d7ae9108b660");
  EXPECT_EQ(PutIntoEnvelope("<?xml version=\"1.0\"?>\n<a/>\n", true, kKey),
            "<?xml version=\"1.0\"?>\n<?predselect-state version=\"1.00\" length=\"6\"?>\n<a/>\n"
            "<?predselect-end sha256=\""
            "33c104e7b21547bc222437956bab2129a93a8f6eb263591ab5b55b54676d701e\" hmac-sha256=\""
            "55473a901b680d67653535212b9b641a8f4f3315073cb954d85d4e703eecbfc2\"?>\n");
}

TEST(StateEnvelope, GivesBackWhatWasPutIn) {
  for (const bool xml : {false, true}) {
    const std::string content = KeptState(xml ? "naive.xml" : "naive.bin");
    for (const std::string key : {"", kKey}) {
      const std::string file = PutIntoEnvelope(content, xml, key);
      const OpenedEnvelope opened = Open(file, xml, key);
      EXPECT_TRUE(opened.fbThere);
      EXPECT_EQ(opened.fTrouble, "");
      EXPECT_EQ(opened.fContent, xml ? file : content);
      EXPECT_EQ(Open(file, xml).fTrouble, "");
    }
    EXPECT_FALSE(Open(content, xml).fbThere);
    EXPECT_EQ(Open(content, xml).fTrouble, "");
  }
}

TEST(StateEnvelope, IsRefusedWithoutTheSignatureThatIsAskedFor) {
  for (const bool xml : {false, true}) {
    const std::string content = KeptState(xml ? "feature.xml" : "feature.bin");
    EXPECT_EQ(Open(content, xml, kKey).fTrouble, kUnsigned);
    EXPECT_EQ(Open(PutIntoEnvelope(content, xml, ""), xml, kKey).fTrouble, kUnsigned);
    EXPECT_EQ(Open(PutIntoEnvelope(content, xml, kOtherKey), xml, kKey).fTrouble,
              kWrongKey);
    // A signature of other content.
    std::string moved = PutIntoEnvelope(content, xml, kKey);
    std::string changed = content;
    changed[changed.size() - 9] = static_cast<char>(changed[changed.size() - 9] ^ 1);
    const std::string other = PutIntoEnvelope(changed, xml, kKey);
    const std::size_t from = moved.size() - (xml ? 70 : 32);
    moved.replace(from, moved.npos, other.substr(from));
    EXPECT_EQ(Open(moved, xml, kKey).fTrouble, kWrongKey);
  }
}

TEST(StateEnvelope, OfWhichAPartIsLeftIsDamage) {
  const std::string document = PutIntoEnvelope(KeptState("naive.xml"), true, "");
  const std::size_t start = document.find("<?predselect-state");
  const std::size_t end = document.rfind("<?predselect-end");
  std::string endless = document.substr(0, end);
  std::string headless = document;
  headless.erase(start, document.find("\n", start) - start);
  const std::string binary = PutIntoEnvelope(KeptState("naive.bin"), false, "");
  for (const auto& [bytes, xml] : {std::pair(endless, true),
                                   {headless, true},
                                   {binary.substr(0, 20), false},
                                   {binary + "x", false},
                                   {document + "<!-- more -->", true}}) {
    const OpenedEnvelope opened = Open(bytes, xml);
    EXPECT_TRUE(opened.fbThere);
    EXPECT_NE(opened.fTrouble.find("checksum"), std::string::npos) << opened.fTrouble;
  }
  EXPECT_EQ(ReadBytes(document, "whole.xml"), "");
  EXPECT_EQ(ReadBytes(binary, "whole.bin"), "");
}

TEST(StateEnvelope, KeepsRandomDamageOut) {
  std::mt19937_64 draw(1);
  for (const std::string name : {"feature.bin", "feature.xml", "naive.bin", "naive.xml"}) {
    SCOPED_TRACE(name);
    const bool xml = IsXMLStateName(name);
    const std::string whole = testing::TempDir() + "whole" + name;
    std::ofstream(whole, std::ios::binary) << PutIntoEnvelope(KeptState(name), xml, "");
    for (const Seal seal : {Seal::kBroken, Seal::kAnew}) {
      const DamageReport report =
          DamageState(whole, testing::TempDir() + "damaged" + name, 300, seal, draw);
      EXPECT_EQ(report.fTrials, 300);
      EXPECT_EQ(report.fUnusable, 0);
      EXPECT_LT(report.fMostSeconds, 1.0);
      EXPECT_TRUE(seal == Seal::kAnew || report.fOther == 0) << report.fOther;
    }
  }
}

// What stands in a kept document between fields, and what takes its place: every value by itself
// may be as it is.
TEST(State, OfWhichThePartsContradictEachOtherIsRefused) {
  const auto number = [](const std::string& value) { return "<Double>" + value + "</Double>"; };
  const auto numbers = [&](const std::vector<std::string>& values) {
    std::string all;
    for (const std::string& value : values) all += number(value) + "\\s*";
    return all;
  };
  struct Contradiction {
    const char* fWhat;
    const char* fFile;
    std::string fFound;
    std::string fInstead;
  };
  const Contradiction kCases[] = {
      {"pairs and their margins", "feature.xml",
       number("4") + "(\\s*<Long>0</Long>\\s*<Long>1</Long>)", number("5") + "$1"},
      {"categories and their cases", "feature.xml",
       number("6") + "(\\s*<Long>1</Long>\\s*)" + number("4"), number("7") + "$1" + number("3")},
      {"groups and their cases", "feature.xml", number("5") + "(\\s*)" + number("1.7"),
       number("6") + "$1" + number("1.7")},
      {"the target and all cases", "feature.xml",
       number("5") + "(\\s*<Long>1</Long>\\s*<Long>2</Long>\\s*)" + number("5"),
       number("5") + "$1" + number("6")},
      {"a constant predictor of two categories", "feature.xml",
       "(FSCatPCatTAccum\">\\s*<Double>10</Double>\\s*<Long>4</Long>\\s*<Double>0</Double>\\s*"
       "<Long>0</Long>\\s*)<Long>0</Long>",
       "$1<Long>1</Long>"},
      {"a category without a value", "feature.xml",
       "<Long>2</Long>(\\s*<String>p</String>)\\s*<String>q</String>", "<Long>1</Long>$1"},
      {"a predictor's category without a value", "feature.xml",
       "<Long>2</Long>(\\s*<String>u</String>)\\s*<String>v</String>", "<Long>1</Long>$1"},
      {"classes and their sum", "naive.xml", numbers({"10", "10"}), number("10") + number("9")},
      {"an input of more cases than its class", "naive.xml", numbers({"5", "4", "5", "6"}),
       number("6") + number("4") + number("5") + number("6")},
      {"priors and their counts", "naive.xml", numbers({"0.5", "0.5"}),
       number("0.6") + number("0.4")},
      {"a probability and its count", "naive.xml", number("0.599009900990099"),
       number("0.599009910990099")},
      {"categories in use", "naive.xml", "<Long>3</Long>(\\s*<Long>2</Long>\\s*<Long>8</Long>)",
       "<Long>4</Long>$1"},
  };
  for (const Contradiction& contradiction : kCases) {
    SCOPED_TRACE(contradiction.fWhat);
    const std::string whole = KeptState(contradiction.fFile);
    const std::string changed =
        std::regex_replace(whole, std::regex(contradiction.fFound), contradiction.fInstead,
                           std::regex_constants::format_first_only);
    ASSERT_NE(changed, whole);
    EXPECT_NE(ReadBytes(changed, contradiction.fFile), "");
    EXPECT_NE(ReadBytes(PutIntoEnvelope(changed, true, ""), contradiction.fFile), "");
  }
}

}  // namespace
