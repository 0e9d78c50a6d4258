// Saved state of the maps.

#include <algorithm>

#include "feature/accumulators/FSMapIStat.h"
#include "feature/accumulators/FSMaps.h"
#include "modelfiles/feature/FSStateFields.h"

template <class Archive, class Self>
void FSMapICnt::Fields(Archive& archive, Self& self) {
  FSState::MapEntries(archive, self.Entries(), 12, [&](auto& entry) {
    archive.Int(entry.first);
    FSState::PositiveWeight(archive, entry.second);
  });
}

// An entry is 20 bytes in the binary form: the key, and the pair as it lies in memory.
template <class Archive, class Self>
void FSMapIPCnt::Fields(Archive& archive, Self& self) {
  FSState::MapEntries(archive, self.Entries(), 20, [&](auto& entry) {
    archive.Int(entry.first);
    archive.Int(entry.second.first);
    archive.Gap(4);
    FSState::PositiveWeight(archive, entry.second.second);
    archive.Check(entry.second.first > 0);
  });
}

template <class Archive, class Self>
void FSMapPiCnt::Fields(Archive& archive, Self& self) {
  FSState::MapEntries(archive, self.Entries(), 16, [&](auto& entry) {
    archive.Int(entry.first.first);
    archive.Int(entry.first.second);
    FSState::PositiveWeight(archive, entry.second);
  });
}

bool FSMapIStat::IsGrown() const {
  return std::any_of(begin(), end(),
                     [](const auto& entry) { return entry.second.fMean.fRest != 0.0; });
}

template <class Archive, class Self>
void FSMapIStat::Fields(Archive& archive, Self& self, bool grown) {
  FSState::MapEntries(archive, self.Entries(), grown ? 44 : 36, [&](auto& entry) {
    archive.Int(entry.first);
    FSState::PositiveWeight(archive, entry.second.fWeight);
    archive.AnyDouble(entry.second.fMean.fValue);
    FSState::Squares(archive, entry.second.fSquaredDeviations);
    FSState::Squares(archive, entry.second.fVariance);
    if (grown) archive.AnyDouble(entry.second.fMean.fRest);
  });
}

// The two counts by category share their tag: do not change it.
MC_STATE_OPERATIONS(FSMapICnt, "FSMII", "FSMapICnt")
MC_STATE_OPERATIONS(FSMapIPCnt, "FSMII", "FSMapIPCnt")
MC_STATE_OPERATIONS(FSMapPiCnt, "FSMPI", "FSMapPiCnt")
MC_STATE_OPERATIONS_OF_TWO_FORMS(FSMapIStat, "FSMIS", "FSMapIStat", "FSMS2", "FSMapIStat 2")
