// Saving and restoring of whole components.

#include "common/state/IOException.h"
#include "common/xml/DocumentHeader.h"
#include "common/xml/XMLDocType.h"
#include "common/xml/XMLObjParser.h"
#include "feature/FSAlgorithm.h"
#include "feature/FSFactory.h"
#include "feature/FSSettings.h"
#include "feature/FSWithinMemory.h"
#include "modelfiles/feature/FSStateFields.h"

using MCFeature::MCStatus;

template <class Archive, class Self>
void FSAlgorithm::Fields(Archive& archive, Self& self, bool exact) {
  if constexpr (Archive::kReading) self.fpSettings->SetExactPValues(exact);
  archive.Object(*self.fpSettings);
  archive.Object(self.fPredictors);
  archive.Flag(self.fbDataAccumulated);
  archive.Flag(self.fbPredictorsRanked);
  if constexpr (Archive::kReading) {
    const std::int64_t warning = self.fPredictors.GetWarning();
    self.fStatus = warning == 0 ? MCStatus() : MCStatus(warning, true);
  }
}

// A program that knows of no exact p-values refuses a state with them, instead of ranking by
// others.
MC_STATE_OPERATIONS_OF_TWO_FORMS(FSAlgorithm, "FSAlgorithm 1.00", "FSAlgorithm 1.00",
                                 "FSAlgorithm 1.01", "FSAlgorithm 1.01")

bool FSAlgorithm::IsGrown() const { return fpSettings->ArePValuesExact(); }

MCStatus FSAlgorithm::SaveState(std::fstream& out) const {
  const MCStatus status = SavingStatus();
  if (status.IsError()) return status;
  return FSWithinMemory(out, [&] {
    DoSave(out);
    return status;
  });
}

MCStatus FSAlgorithm::SaveStateXML(std::ostream& out) const {
  const MCStatus status = SavingStatus();
  if (status.IsError()) return status;
  return FSWithinMemory(out, [&] {
    DoSaveXML(out);
    return status;
  });
}

void FSAlgorithm::DoSave(std::fstream& out) const {
  WriteObject(out);
  out.flush();
}

void FSAlgorithm::DoSaveXML(std::ostream& out) const {
  MCCommonXML::ExportFormat(out,
                            MCCommonXML::XMLDocType::Create("MCXMLRoot", "savexml.dtd", nullptr));
  MCCommonXML::StartRoot(out, MCModelFiles::Copyright());
  WriteObjectXML(out, 2);
  MCCommonXML::EndRoot(out);
  out.flush();
}

namespace {

// What a restore gives: the component, or null and the status.
template <class Stream, class Read>
std::unique_ptr<FSAlgorithm> Restore(Stream& in, MCFeature::StatusCode failure, MCStatus& status,
                                     Read read) {
  if (status.GetErrorCode() == MCFeature::kCancelled) return nullptr;
  if (!in.good()) {
    status = MCFeature::Error(MCFeature::kBadStream);
    return nullptr;
  }
  try {
    auto component = std::make_unique<FSAlgorithm>(std::make_unique<FSSettings>());
    read(*component);
    status = component->GetStatus();
    return component;
  } catch (...) {
    status = MCFeature::Error(failure);
    return nullptr;
  }
}

std::weak_ptr<FSAlgorithm*> LinkTo(const FSAlgorithm* component) {
  return component != nullptr ? component->GetLink() : std::weak_ptr<FSAlgorithm*>();
}

}  // namespace

std::unique_ptr<IFSAlgorithm> FSFactory::RestoreFSAlgorithmFromBinary(std::fstream& in) {
  auto component = Restore(in, MCFeature::kBadBinaryState, fStatus,
                           [&in](FSAlgorithm& read) { read.ReadObject(in); });
  fpLast = LinkTo(component.get());
  return component;
}

std::unique_ptr<IFSAlgorithm> FSFactory::RestoreFSAlgorithmFromXML(std::ifstream& in) {
  auto component = Restore(in, MCFeature::kBadXMLState, fStatus, [&in](FSAlgorithm& read) {
    read.ReadObjectXML(in);
    if (!MCCommonXML::ParseEndRoot(in)) throw MCFeature::IOException("after the component");
  });
  fpLast = LinkTo(component.get());
  return component;
}
