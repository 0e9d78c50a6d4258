// What must hold of any bytes that are restored as a Naive Bayes component, in either form: none
// comes of them, or one that works, and that can be saved and restored without a change.
#pragma once

#include <memory>
#include <sstream>
#include <string>

#include "fuzz/FuzzCheck.h"
#include "naivebayes/INBAlgorithm.h"
#include "naivebayes/NBFactory.h"
#include "naivebayes/store/NBMemoryIter.h"
#include "tests/modelfiles/StateStreams.h"

namespace PredSelectFuzz {

using Component = std::unique_ptr<INBAlgorithm>;

inline Component FromBinary(const std::string& bytes) {
  BinaryStream is(bytes);
  return NBFactory().RestoreNBAlgorithmFromBinary(is);
}

inline Component FromXML(const std::string& document) {
  XMLStream is(document);
  return NBFactory().RestoreNBAlgorithmFromXML(is);
}

inline std::string ToBinary(const INBAlgorithm& component) {
  BinaryStream os;
  Require(component.SaveState(os).IsOK(), "what was restored can be saved");
  return os.Content();
}

// Uses a component in every way; statuses may be what they are.
inline void Use(INBAlgorithm& component, const INBAlgorithm& copy) {
  std::ostringstream os;
  component.Display(os);
  static_cast<void>(component.ExportModelXML(os, nullptr));
  const int columns = component.GetVarList().Size();
  MCNaive::NBMemoryIter records(columns, 4);
  NBOutput output(component.GetNTargetCategories());
  for (const double value : {0.0, 1.0, -1.0, 1e300}) {
    MCCommon::Record record(std::vector<double>(columns, value));
    records.AddRecord(record);
    const bool scored = component.ScoreAndAccum(record, output, true).IsOK();
    Require(!scored || (output.GetWinningIndex() >= 0 &&
                        output.GetWinningIndex() < component.GetNTargetCategories()),
            "a winner is a category");
  }
  NBOutputStatistics stats(component.GetNTargetCategories());
  static_cast<void>(component.ComputeOutputStats(records, stats, -1));
  static_cast<void>(component.MergeModel(&copy, true));
  static_cast<void>(component.Update(records, 4));
  component.Display(os);
}

inline void CheckComponent(const Component& component) {
  if (component == nullptr) return;
  const std::string bytes = ToBinary(*component);
  const Component copy = FromBinary(bytes);
  Require(copy != nullptr && ToBinary(*copy) == bytes, "binary state is kept", bytes);
  std::ostringstream document;
  if (component->SaveStateXML(document).IsOK()) {
    const Component read = FromXML(document.str());
    Require(read != nullptr && ToBinary(*read) == bytes, "XML is as good as binary", bytes);
  } else {
    Require(document.view().empty(), "XML is written whole or not at all", bytes);
  }
  Use(*component, *copy);
}

}  // namespace PredSelectFuzz
