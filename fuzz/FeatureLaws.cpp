#include "fuzz/FeatureLaws.h"

#include <ostream>
#include <sstream>
#include <string>
#include <vector>

#include "feature/FSFactory.h"
#include "feature/FSSettings.h"
#include "fuzz/FuzzCheck.h"
#include "tests/feature/RandomRuns.h"
#include "tests/modelfiles/StateStreams.h"

namespace PredSelectFuzz {

namespace {

using MCFSCommon::RankCriteria;

std::string SaveBinary(const IFSAlgorithm& component) {
  BinaryStream out;
  Require(!component.SaveState(out).IsError(), "a component without error is saved");
  return out.Content();
}

std::string SaveXML(const IFSAlgorithm& component) {
  std::ostringstream out;
  Require(!component.SaveStateXML(out).IsError(), "a component without error is saved as XML");
  return out.str();
}

// Weights may have overflowed since; such a component is refused.
void CheckStateIsWhole(const IFSAlgorithm& component, bool mayBeRefused) {
  FSFactory factory;
  BinaryStream binary(SaveBinary(component));
  const auto fromBinary = factory.RestoreFSAlgorithmFromBinary(binary);
  if (fromBinary == nullptr && mayBeRefused) return;
  Require(fromBinary != nullptr, "what was saved is restored");
  XMLStream xml(SaveXML(*fromBinary));
  const auto fromXML = factory.RestoreFSAlgorithmFromXML(xml);
  Require(fromXML != nullptr, "what was saved as XML is restored", xml.Content());
  Require(SaveBinary(*fromXML) == binary.Content(), "a state comes back as it was");
  Require(fromXML->GetStatus() == component.GetStatus(), "a state comes back with its status");
}

void AskEverything(const IFSAlgorithm& component) {
  std::ostringstream out;
  component.Display(out);
  ReportOf(component);
  for (int c = 0; c < MCFSCommon::kNCriteria; ++c) {
    for (const int n : {0, 1, 1000}) {
      (void)component.ExportOneXML(out, static_cast<RankCriteria>(c), n);
    }
  }
  (void)component.ExportAllXML(out);
}

// A few cases over the first columns; settings may ask for columns that there are not.
void TakeCases(IFSAlgorithm& component) {
  const Table table = {{0, 1, 2, 1}, {1, 0.5, 2, 1}, {3, 1, -1, 3}, {2.5, 1, 7, 300}, {1, 1, 0, 1}};
  BlocksOf source(table, 3);
  (void)component.Accumulate(source, -1);
}

}  // namespace

void CheckRestored(IFSAlgorithm* component, const FSFactory& factory, int code) {
  if (component == nullptr) {
    Require(factory.GetStatus() == MCFeature::MCStatus(code, false), "a refusal has its status");
    return;
  }
  Require(!component->GetStatus().IsError(), "a restored component is not in error");
  CheckStateIsWhole(*component, false);
  AskEverything(*component);
  BinaryStream again(SaveBinary(*component));
  FSFactory other;
  const auto twin = other.RestoreFSAlgorithmFromBinary(again);
  (void)component->Merge(*twin, nullptr);
  TakeCases(*component);
  (void)component->CheckPredAllMissConst();
  (void)component->ScreenPredictors();
  (void)component->SortAndRank(0);
  AskEverything(*component);
  (void)twin->SortAndRank(1);
  if (!component->GetStatus().IsError()) CheckStateIsWhole(*component, true);
}

}  // namespace PredSelectFuzz
