#include "common/parts/PartRequest.h"

#include "common/state/StateFields.h"

template <class Archive, class Self>
void PartRequest::Fields(Archive& archive, Self& self) {
  StateRanged(archive, self.fKind, kCount, kClassify);
  archive.Long(self.fRanges);
  archive.Text(self.fCommand);
  archive.Size(self.fMacros, 8);
  for (auto& [name, values] : self.fMacros) {
    archive.Text(name);
    StateTexts(archive, values);
  }
  StateInts(archive, self.fNumbers);
  archive.Text(self.fContent);
  archive.Flag(self.fbFindings);
}

MC_STATE_OPERATIONS(PartRequest, "PSREQ 1.00", "PartRequest 1.00")
