#include "naivebayes/parts/NBPartSums.h"

#include <cstddef>

#include "common/state/StateFields.h"

void NBPartSums::Add(const NBPartSums& other) {
  fNCases += other.fNCases;
  fWeight.Add(other.fWeight);
  for (std::size_t i = 0; i < fSums.size(); ++i) fSums[i].Add(other.fSums[i]);
}

template <class Archive, class Self>
void NBPartQuestion::Fields(Archive& archive, Self& self) {
  archive.Object(self.fModel);
  const int nInputs = static_cast<int>(self.fModel.fInputs.size());
  StateRangedInts(archive, self.fOrder, 0, nInputs - 1);
  StateRangedInts(archive, self.fCandidates, 0, nInputs - 1);
  archive.Int(self.fFirst);
  archive.Flag(self.fbTest);
  archive.Check(self.fFirst >= 0 && self.fModel.fWeight > 0);
  for (const auto* named : {&self.fOrder, &self.fCandidates}) {
    for (const int j : *named) {
      archive.Check(!self.fModel.fInputs[static_cast<std::size_t>(j)].empty());
    }
  }
}

template <class Archive, class Self>
void NBPartSums::Fields(Archive& archive, Self& self) {
  archive.Long(self.fNCases);
  StateSum(archive, self.fWeight);
  archive.Size(self.fSums, 16);
  for (auto& sum : self.fSums) StateSum(archive, sum);
  archive.Check(self.fNCases >= 0);
}

MC_STATE_OPERATIONS(NBPartQuestion, "NBPASK", "NBPartQuestion")
MC_STATE_OPERATIONS(NBPartSums, "NBPSUMS", "NBPartSums")
