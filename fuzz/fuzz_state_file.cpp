// Any content as one state file or two, in either form and put into an envelope that fits it, so
// that what is inside is looked at: a refusal, or a component that can be saved in both forms and
// reads as the same; two that were read are merged, or refused and left as they were.
//
// The input: a byte (1 the first is XML, 2 the second is, 4 there is a second), 4 bytes with the
// length of the first content, the contents. The mutator changes numbers as numbers, too, and
// exchanges them.
#include <sys/mman.h>

#include <algorithm>
#include <cctype>
#include <cstdint>
#include <cstring>
#include <fstream>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include "fuzz/FuzzCheck.h"
#include "modelfiles/ComponentFile.h"
#include "modelfiles/StateEnvelope.h"
#include "operations/MergeStates.h"
#include "operations/RequestError.h"

extern "C" std::size_t LLVMFuzzerMutate(std::uint8_t* data, std::size_t size, std::size_t most);

namespace {

using PredSelectFuzz::Require;

constexpr std::size_t kHead = 5;

// A file in memory, by its path.
const std::string& FilePath() {
  static const std::string path =
      "/proc/self/fd/" + std::to_string(memfd_create("predselect-state", 0));
  return path;
}

bool Read(ComponentFile& file, const std::string& key = {}) {
  return ReadComponentFile(FilePath(), file, nullptr, key).empty();
}

void CheckUse(const ComponentFile& file) {
  const std::string key = "0123456789abcdef";
  const std::uint64_t digest = DigestOf(file);
  for (const bool xml : {false, true}) {
    const std::string trouble = WriteComponentFile(FilePath(), {xml, key}, file);
    if (xml && !trouble.empty()) continue;  // it has no place for some characters
    ComponentFile again;
    Require(trouble.empty() && Read(again, key), "what was read can be saved and read", trouble);
    Require(DigestOf(again) == digest, "and is the same");
  }
}

bool ReadContent(std::string_view content, bool xml, ComponentFile& file) {
  if (xml && (!content.starts_with("<?xml") || content.find("?>") == content.npos)) return false;
  std::ofstream(FilePath(), std::ios::binary) << MCModelFiles::PutIntoEnvelope(content, xml, "");
  return Read(file);
}

void CheckMerge(ComponentFile& into, const ComponentFile& from) {
  const std::uint64_t before = DigestOf(into);
  try {
    PredSelect::MergeStates(into, from, "the second");
  } catch (const PredSelect::RequestError&) {
    Require(DigestOf(into) == before, "a refused merge changes nothing");
    return;
  }
  CheckUse(into);
}

// ---- The mutator -------------------------------------------------------------------------------

using Draw = std::minstd_rand;

template <class T>
void ChangeNumber(std::string& bytes, std::size_t at, Draw& draw) {
  T value;
  std::memcpy(&value, bytes.data() + at, sizeof value);
  switch (draw() % 4) {
    case 0:
      value = value + T{1};
      break;
    case 1:
      value = value - T{1};
      break;
    case 2:
      value = value * T{2};
      break;
    default:
      std::memcpy(&value, bytes.data() + draw() % (bytes.size() - sizeof value + 1), sizeof value);
  }
  std::memcpy(bytes.data() + at, &value, sizeof value);
}

void ChangeBinary(std::string& bytes, std::size_t from, Draw& draw) {
  if (bytes.size() < from + sizeof(double)) return;
  const std::size_t at = from + draw() % (bytes.size() - from - sizeof(double) + 1);
  if (draw() % 2 == 0) {
    ChangeNumber<double>(bytes, at, draw);
  } else {
    ChangeNumber<std::uint32_t>(bytes, at, draw);
  }
}

// The number that begins at the first ">" behind a place; empty for none.
std::string_view NumberFrom(const std::string& text, std::size_t from) {
  const std::size_t start = text.find('>', from) + 1;
  if (start == 0) return {};
  const std::size_t end = text.find_first_not_of("0123456789.+-e", start);
  return std::string_view(text).substr(start, end == text.npos ? 0 : end - start);
}

void ChangeDocument(std::string& text, std::size_t from, Draw& draw) {
  if (text.size() <= from) return;
  const std::string_view old = NumberFrom(text, from + draw() % (text.size() - from));
  const std::string other(NumberFrom(text, draw() % text.size()));
  if (old.empty() || other.empty()) return;
  text.replace(static_cast<std::size_t>(old.data() - text.data()), old.size(), other);
}

}  // namespace

extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size,
                                               std::size_t most, unsigned seed) {
  Draw draw(seed);
  if (size <= kHead || draw() % 2 == 0) return LLVMFuzzerMutate(data, size, most);
  std::string bytes(reinterpret_cast<const char*>(data), size);
  if ((bytes[0] & 1) != 0) {
    ChangeDocument(bytes, kHead, draw);
  } else {
    ChangeBinary(bytes, kHead, draw);
  }
  if (bytes.size() > most) return size;
  std::copy(bytes.begin(), bytes.end(), data);
  return bytes.size();
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size < kHead) return 0;
  std::uint32_t length = 0;
  std::memcpy(&length, data + 1, sizeof length);
  const std::string_view contents(reinterpret_cast<const char*>(data) + kHead, size - kHead);
  const bool areTwo = (data[0] & 4) != 0;
  const std::string_view first = areTwo ? contents.substr(0, length) : contents;
  ComponentFile into;
  if (!ReadContent(first, (data[0] & 1) != 0, into)) return 0;
  CheckUse(into);
  ComponentFile from;
  if (!areTwo || !ReadContent(contents.substr(first.size()), (data[0] & 2) != 0, from)) return 0;
  CheckMerge(into, from);
  return 0;
}
