#include <array>
#include <cmath>
#include <iostream>

#include "common/state/IOException.h"
#include "common/state/QuietReading.h"
#include "common/state/StateArchive.h"
#include "common/xml/XMLObjParser.h"

namespace {

constexpr std::int64_t kSmallCount = 4096;  // bytes that need no look at the stream
constexpr std::int64_t kLeastElement = 14;  // "<Long>0</Long>"

[[noreturn]] void Refuse(const char* what, const std::string& className) {
  const std::string message = what + className + "!";
  if (!QuietReading::IsInForce()) std::cerr << message + "\n";
  throw MCCommon::IOException(message);
}

// Bytes from `from` to the end of a stream; 0 for one that cannot tell. The place stays.
std::int64_t BytesFrom(std::istream& is, bool fromHere) {
  std::streambuf& buffer = *is.rdbuf();
  const std::streamoff here = buffer.pubseekoff(0, std::ios_base::cur, std::ios_base::in);
  const std::streamoff end = buffer.pubseekoff(0, std::ios_base::end, std::ios_base::in);
  if (here < 0 || end < 0) return 0;
  buffer.pubseekpos(here, std::ios_base::in);
  return fromHere ? end - here : end;
}

}  // namespace

BinaryStateReader::BinaryStateReader(std::fstream& is, StateName name)
    : fIs(is), fName(std::move(name)) {
  std::string tag(fName.fTag.size(), '\0');
  Bytes(tag.data(), tag.size());
  Check(tag == fName.fTag);
}

BinaryStateReader::BinaryStateReader(std::fstream& is, std::span<const StateName> forms)
    : fIs(is), fName(forms.front()), fForm(Which(forms)) {
  std::string tag(forms[fForm].fTag.size(), '\0');
  Bytes(tag.data(), tag.size());
}

void BinaryStateReader::Flag(bool& value) {
  std::int32_t stored = 0;
  Raw(stored);
  Check(stored == 0 || stored == 1);
  value = stored == 1;
}

void BinaryStateReader::Double(double& value) {
  Raw(value);
  Check(std::isfinite(value));
}

void BinaryStateReader::AnyDouble(double& value) {
  Raw(value);
  value = OneNaN(value);
}

void BinaryStateReader::Text(std::string& value) {
  value.resize(Count(1));
  Bytes(value.data(), value.size());
}

void BinaryStateReader::Gap(int bytes) {
  std::array<char, 8> skipped{};
  Bytes(skipped.data(), static_cast<std::size_t>(bytes));
}

std::size_t BinaryStateReader::Which(std::span<const StateName> names) {
  const std::streampos start = fIs.tellg();
  for (std::size_t i = 0; i < names.size(); ++i) {
    std::string tag(names[i].fTag.size(), '\0');
    fIs.read(tag.data(), static_cast<std::streamsize>(tag.size()));
    fIs.clear();
    fIs.seekg(start);
    if (tag == names[i].fTag) return i;
  }
  Fail();
}

void BinaryStateReader::Bytes(char* bytes, std::size_t n) {
  fIs.read(bytes, static_cast<std::streamsize>(n));
  Check(static_cast<std::size_t>(fIs.gcount()) == n);
  fBytes += static_cast<std::int64_t>(n);
}

std::size_t BinaryStateReader::Count(int bytesPerElement) {
  std::int32_t count = 0;
  Raw(count);
  Check(count >= 0);
  const std::int64_t bytes = std::int64_t{count} * bytesPerElement;
  Check(bytes <= kSmallCount || bytes <= BytesFrom(fIs, true));
  return static_cast<std::size_t>(count);
}

void BinaryStateReader::Fail() const { Refuse("Error reading ", fName.fClass); }

XMLStateReader::XMLStateReader(std::ifstream& is, StateName name)
    : fIs(is), fName(std::move(name)) {
  Check(MCCommonXML::ParseStartObj(fIs, fName.fElement));
}

XMLStateReader::XMLStateReader(std::ifstream& is, std::span<const StateName> forms)
    : fIs(is), fName(forms.front()), fForm(Which(forms)) {
  Check(MCCommonXML::ParseStartObj(fIs, forms[fForm].fElement));
}

std::int64_t XMLStateReader::Integer() {
  std::int64_t value = 0;
  Check(MCCommonXML::ParseValue(fIs, value));
  return value;
}

void XMLStateReader::Flag(bool& value) {
  const std::int64_t stored = Integer();
  Check(stored == 0 || stored == 1);
  value = stored == 1;
}

void XMLStateReader::Double(double& value) { Check(MCCommonXML::ParseValue(fIs, value)); }

void XMLStateReader::AnyDouble(double& value) {
  Check(MCCommonXML::ParseAnyValue(fIs, value));
  value = OneNaN(value);
}

void XMLStateReader::Text(std::string& value) { Check(MCCommonXML::ParseValue(fIs, value)); }

std::size_t XMLStateReader::Which(std::span<const StateName> names) {
  std::string found;
  Check(MCCommonXML::ParseNextName(fIs, found));
  for (std::size_t i = 0; i < names.size(); ++i) {
    if (names[i].fElement == found) return i;
  }
  Fail();
}

std::size_t XMLStateReader::Count() {
  const std::int64_t count = Integer();
  Check(count >= 0 && count <= INT32_MAX);
  const std::int64_t bytes = count * kLeastElement;
  Check(bytes <= kSmallCount || bytes <= BytesFrom(fIs, false));
  return static_cast<std::size_t>(count);
}

int XMLStateReader::Finish() {
  Check(MCCommonXML::ParseEndObj(fIs));
  return 0;
}

void XMLStateReader::Fail() const { Refuse("Failure reading ", fName.fClass); }
