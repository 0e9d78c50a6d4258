// Saved state of what serves the engine beside its model: settings, random numbers, stored records.
#include <limits>
#include <sstream>
#include <string>

#include "modelfiles/naivebayes/NBStateFields.h"
#include "naivebayes/NaiveBayesSettings.h"
#include "naivebayes/selection/MCRandom.h"
#include "naivebayes/store/NBMemoryIter.h"

template <class Archive, class Self>
void NaiveBayesSettings::Fields(Archive& archive, Self& self) {
  archive.Int(self.fNSkippedReports);
  archive.Check(self.fNSkippedReports >= 0);
  StateRanged(archive, self.fRNG, kMersenneTwister, kUserProvided);
  archive.Long(self.fNMaxInMemory);
  archive.Int(self.fNSimulated);
  archive.Int(self.fSeed);
}
MC_STATE_OPERATIONS(NaiveBayesSettings, "NBS", "NaiveBayesSettings")

namespace {

// The generator's state as the numbers that its standard text form consists of.
std::vector<std::uint64_t> StateOf(const std::mt19937& twister) {
  std::stringstream text;
  text.imbue(std::locale::classic());
  text << twister;
  std::vector<std::uint64_t> numbers;
  for (std::uint64_t number; text >> number;) numbers.push_back(number);
  return numbers;
}

bool SetState(std::mt19937& twister, const std::vector<std::uint64_t>& numbers) {
  std::stringstream text;
  text.imbue(std::locale::classic());
  for (const std::uint64_t number : numbers) {
    if (number > std::numeric_limits<std::uint32_t>::max()) return false;
    text << number << ' ';
  }
  return static_cast<bool>(text >> twister);
}

}  // namespace

namespace MCNaiveBayes {

template <class Archive, class Self>
void MCRandom::Fields(Archive& archive, Self& self) {
  archive.Long(self.fState);
  archive.Flag(self.fbPortable);
  bool twister = self.fpTwister != nullptr;
  archive.Flag(twister);
  if constexpr (Archive::kReading) {
    self.fpTwister = twister ? std::make_unique<std::mt19937>() : nullptr;
  }
  if (!twister) return;
  std::vector<std::uint64_t> numbers = StateOf(*self.fpTwister);
  const std::size_t expected = numbers.size();
  archive.Size(numbers, 8);
  for (auto& number : numbers) archive.Long(number);
  if constexpr (Archive::kReading) {
    archive.Check(numbers.size() == expected && SetState(*self.fpTwister, numbers));
  }
}
MC_STATE_OPERATIONS(MCRandom, "MCRa", "MCRandom")

}  // namespace MCNaiveBayes

namespace MCNaive {

template <class Archive, class Self>
void NBMemoryIter::Fields(Archive& archive, Self& self) {
  archive.Int(self.fCapacity);
  archive.Int(self.fCount);
  archive.Int(self.fIndCurRecord);
  archive.Size(self.fvColumns, 4);
  for (auto& column : self.fvColumns) {
    archive.Size(column, 8);
    for (auto& value : column) archive.AnyDouble(value);
    archive.Check(column.size() == self.fCount);
  }
  archive.Check(self.fIndCurRecord <= self.fCount && self.fCount <= self.fCapacity &&
                self.fCapacity <= std::numeric_limits<std::int32_t>::max());
  if constexpr (Archive::kReading) self.fCurRecord = MCCommon::Record(self.fvColumns.size());
}
MC_STATE_OPERATIONS(NBMemoryIter, "RBI", "NBMemoryIter")

}  // namespace MCNaive
