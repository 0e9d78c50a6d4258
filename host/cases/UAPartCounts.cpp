#include "host/cases/UAPartCounts.h"

#include "common/state/StateFields.h"

void UAPartCounts::AddNumbers(const UAPartCounts& other) {
  fNCases += other.fNCases;
  fNDelivered += other.fNDelivered;
  fNTest += other.fNTest;
  fLost.Add(other.fLost);
}

template <class Archive, class Self>
void UAPartCounts::Fields(Archive& archive, Self& self) {
  archive.Long(self.fNCases);
  archive.Long(self.fNDelivered);
  archive.Long(self.fNTest);
  UALostWeights::Fields(archive, self.fLost);
  archive.Text(self.fComponent);
  archive.Check(self.fNDelivered >= 0 && self.fNDelivered <= self.fNCases && self.fNTest >= 0);
}

MC_STATE_OPERATIONS(UAPartCounts, "PSCOUNTS", "PartCounts")
