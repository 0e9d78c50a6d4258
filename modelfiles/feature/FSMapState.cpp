// Saved state of the maps.

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

template <class Archive, class Self>
void FSMapIStat::Fields(Archive& archive, Self& self) {
  FSState::MapEntries(archive, self.Entries(), 36, [&](auto& entry) {
    archive.Int(entry.first);
    FSState::PositiveWeight(archive, entry.second.fWeight);
    archive.AnyDouble(entry.second.fMean);
    FSState::Squares(archive, entry.second.fSquaredDeviations);
    FSState::Squares(archive, entry.second.fVariance);
  });
}

// The two counts by category share their tag: do not change it.
MC_STATE_OPERATIONS(FSMapICnt, "FSMII", "FSMapICnt")
MC_STATE_OPERATIONS(FSMapIPCnt, "FSMII", "FSMapIPCnt")
MC_STATE_OPERATIONS(FSMapPiCnt, "FSMPI", "FSMapPiCnt")
MC_STATE_OPERATIONS(FSMapIStat, "FSMIS", "FSMapIStat")
