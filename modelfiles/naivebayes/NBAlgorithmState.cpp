// Saved state of a component and of its model.
#include <algorithm>
#include <cmath>
#include <cstdint>
#include <sstream>

#include "common/WholeText.h"
#include "common/xml/DocumentHeader.h"
#include "common/xml/XMLDocType.h"
#include "common/xml/XMLError.h"
#include "common/xml/XMLObjParser.h"
#include "modelfiles/naivebayes/NBStateFields.h"
#include "naivebayes/NBAlgorithm.h"
#include "naivebayes/NBFactory.h"
#include "naivebayes/NBWithinMemory.h"

using MCNaive::MCStatus;

namespace {

// A few bytes must not stand for gigabytes of tables and documents.
constexpr std::int64_t kMostUnlisted = 1 << 20;

// Whether a sum of weights is another one of the same weights but for its rounding.
bool IsRounded(double sum, double other) { return std::abs(sum - other) <= 1e-7 * other; }

}  // namespace

template <class Archive, class Self>
void NBayesInputBase::TableFields(Archive& archive, Self& self) {
  archive.Int(self.fNCategories);
  archive.Int(self.fNNonEmpty);
  archive.Int(self.fNTargets);
  NBState::Weights(archive, self.fvCounts);
  // Behind the probabilities stands the row of ones, which is not stored.
  std::vector<double> probabilities;
  if constexpr (!Archive::kReading) {
    const auto end = self.fvProbabilities.end() - self.fNTargets;
    probabilities.assign(self.fvProbabilities.begin(), end);
  }
  NBState::Probabilities(archive, probabilities);
  archive.Check(self.fNCategories >= 1 && self.fNTargets >= 1 && self.fNNonEmpty >= 0 &&
                self.fNNonEmpty <= self.fNCategories);
  const auto cells = static_cast<std::size_t>(self.fNCategories) * self.fNTargets;
  archive.Check(self.fvCounts.size() == cells && probabilities.size() == cells);
  if constexpr (Archive::kReading) {
    self.fLeastFactor = 1.0;
    for (const double p : probabilities) self.fLeastFactor = std::min(self.fLeastFactor, p);
    probabilities.insert(probabilities.end(), self.fNTargets, 1.0);
    self.fvProbabilities = std::move(probabilities);
  }
}

template <class Archive, class Self>
void NBayesInput::Fields(Archive& archive, Self& self) {
  TableFields(archive, self);
  archive.Int(self.fVarIndex);
}
MC_STATE_OPERATIONS(NBayesInput, "NBIN", "NBayesInput")

template <class Archive, class Self>
void NBayesOutput::Fields(Archive& archive, Self& self) {
  auto categories = self.GetNCategories();
  archive.Int(categories);
  NBState::Weights(archive, self.fvCounts);
  NBState::Probabilities(archive, self.fvPriors);
  archive.Check(categories >= 1 && self.GetNCategories() == categories &&
                self.fvPriors.size() == self.fvCounts.size());
}
MC_STATE_OPERATIONS(NBayesOutput, "NBOUT", "NBayesOutput")

// What makes the newer form.
struct NBCalibrationState {
  template <class Archive, class Calibration>
  static void Fields(Archive& archive, Calibration& calibration, std::size_t classes) {
    auto method = static_cast<int>(calibration.fMethod);
    auto curves = static_cast<int>(calibration.fCurves.size());
    archive.Int(method);
    NBState::Finite(archive, calibration.fTemperature);
    archive.Int(curves);
    archive.Check(method > NBCalibration::kNone && method <= NBCalibration::kIsotonic &&
                  curves >= 0 && static_cast<std::size_t>(curves) <= classes);
    if constexpr (Archive::kReading) {
      calibration.fMethod = static_cast<NBCalibration::Method>(method);
      calibration.fCurves.resize(static_cast<std::size_t>(curves));
    }
    for (auto& curve : calibration.fCurves) {
      NBState::FiniteList(archive, curve.fX);
      NBState::FiniteList(archive, curve.fY);
    }
    archive.Check(calibration.Fits(classes));
  }
};

template <class Archive, class Self>
void NBAlgorithm::Fields(Archive& archive, Self& self, bool calibrated) {
  archive.Int(self.fNInputs);
  archive.Int(self.fNRecords);
  NBState::Weight(archive, self.fTotalWeight);
  archive.Int(self.fExcluded.fNRecords);
  NBState::Weight(archive, self.fExcluded.fWeight);
  archive.Check(self.fNRecords >= 2 && self.fTotalWeight > 0 && self.HasFiniteWeight() &&
                self.fExcluded.fNRecords >= 0);
  archive.Object(self.fOutput);
  for (int j = 0; j < self.fNInputs; ++j) {
    if constexpr (Archive::kReading) self.fInputs.emplace_back();
    archive.Object(self.fInputs[j]);
  }
  archive.Object(self.fSettings);
  archive.Object(self.fVarList);
  if (calibrated) {
    const auto classes = static_cast<std::size_t>(self.fOutput.GetNCategories());
    NBCalibrationState::Fields(archive, self.fCalibration, classes);
  }
  if constexpr (Archive::kReading) archive.Check(self.LinkParts());
}

// A program that knows of no calibration refuses a state with one, instead of scoring without it.
MC_STATE_OPERATIONS_OF_TWO_FORMS(NBAlgorithm, "NBAlgorithm 1.00", "NBAlgorithm 1.00",
                                 "NBAlgorithm 1.01", "NBAlgorithm 1.01")

std::int64_t NBAlgorithm::CountUnlistedCategories() const {
  std::int64_t unlisted = 0;
  for (int i = 0; i < fVarList.Size(); ++i) {
    const INBVariable& variable = *fVarList.GetVarAt(i);
    const INBEncoder* encoder = variable.GetEncoder();
    const bool isCounted =
        variable.GetVariableRole() == INBVariable::kInput || i == fVarList.GetTargetIndex();
    const int listed = encoder == nullptr ? 0 : encoder->GetNumberOfCategories();
    if (isCounted) continue;
    unlisted += std::max(std::int64_t{variable.GetNumberOfCategories()} - listed, std::int64_t{0});
  }
  return unlisted;
}

bool NBAlgorithm::HasSensibleCounts() const {
  double counted = 0;
  for (int k = 0; k < fOutput.GetNCategories(); ++k) counted += fOutput.GetCount(k);
  if (!IsRounded(counted, fTotalWeight)) return false;
  for (const NBayesInput& input : fInputs) {
    for (int k = 0; k < fOutput.GetNCategories(); ++k) {
      double column = 0;
      for (int m = 0; m < input.GetNCategories(); ++m) column += input.GetCount(m, k);
      const double most = fOutput.GetCount(k);
      if (column > most && !IsRounded(column, most)) return false;  // less: it may be missing
    }
  }
  return true;
}

bool NBAlgorithm::LinkParts() {
  if (CountUnlistedCategories() > kMostUnlisted) return false;
  const int target = fVarList.GetTargetIndex();
  if (target < 0 || fVarList.GetNOutputCats() != fOutput.GetNCategories()) return false;
  fOutput.SetVariable(fVarList.GetVarAt(target));
  fpPreparator = std::make_unique<NBDataPreparator>(fVarList, false, fNRecords, fCancel);
  if (fpPreparator->GetInputSize() != fNInputs) return false;
  for (int j = 0; j < fNInputs; ++j) {
    NBayesInput& input = fInputs[j];
    if (input.GetVarIndex() != fpPreparator->GetInputColumn(j) ||
        input.GetNCategories() != fpPreparator->GetInputCategories(j) ||
        input.GetNTargetCategories() != fOutput.GetNCategories()) {
      return false;
    }
    input.SetVariable(fVarList.GetVarAt(input.GetVarIndex()));
  }
  fbBuilt = HasSensibleCounts();
  return fbBuilt;
}

bool NBAlgorithm::HasFiniteWeight() const {
  return std::isfinite(fTotalWeight) && std::isfinite(1 / fTotalWeight);
}

MCStatus NBAlgorithm::CheckSaving() const {
  if (fStatus.IsError()) return fStatus;
  if (fCancel.TakeCancel()) return MCNaive::Error(MCNaive::kCancelled);
  const bool isSaved = fbBuilt && CountUnlistedCategories() <= kMostUnlisted;
  if (!isSaved) return MCNaive::Error(MCNaive::kNotSaved);
  return HasFiniteWeight() ? MCStatus() : MCNaive::Error(MCNaive::kWeightNotFinite);
}

void NBAlgorithm::DoSave(std::fstream& os) const {
  WriteObject(os);
  os.flush();
}

void NBAlgorithm::DoSaveXML(std::ostream& os) const {
  // Written apart at first, since only the writing shows whether it can be written.
  std::ostringstream text;
  MCCommonXML::ExportFormat(text,
                            MCCommonXML::XMLDocType::Create("MCXMLRoot", "savexml.dtd", nullptr));
  MCCommonXML::StartRoot(text, MCModelFiles::Copyright());
  WriteObjectXML(text, 2);
  MCCommonXML::EndRoot(text);
  os << MCCommon::WholeText(text);
  os.flush();
}

MCStatus NBAlgorithm::SaveState(std::fstream& os) const {
  const MCStatus status = CheckSaving();
  if (status.IsError()) return status;
  return MCNaive::WithinMemory([&] {
    try {
      DoSave(os);
    } catch (const std::bad_alloc&) {
      throw;
    } catch (...) {
      return MCNaive::Error(MCNaive::kNotSaved);
    }
    return os ? MCStatus() : MCNaive::Error(MCNaive::kNotSaved);
  });
}

namespace {

// The first variable whose texts XML cannot hold; -1 for none.
int FindRefused(const NBVarList& varList) {
  for (int i = 0; i < varList.Size(); ++i) {
    try {
      std::ostringstream text;
      varList.GetVarAt(i)->WriteObjectXML(text, 0);
    } catch (const MCCommonXML::XMLError&) {
      return i;
    }
  }
  return -1;
}

}  // namespace

MCStatus NBAlgorithm::SaveStateXML(std::ostream& os) const {
  const MCStatus status = CheckSaving();
  if (status.IsError()) return status;
  return MCNaive::WithinMemory([&] {
    try {
      DoSaveXML(os);
    } catch (const MCCommonXML::XMLError&) {
      MCStatus refused = MCNaive::Error(MCNaive::kTextNotForXML);
      refused.SetDiscreteDatum(0, FindRefused(fVarList));
      return refused;
    } catch (const std::bad_alloc&) {
      throw;
    } catch (...) {
      return MCNaive::Error(MCNaive::kNotSaved);
    }
    return os ? MCStatus() : MCNaive::Error(MCNaive::kNotSaved);
  });
}

std::unique_ptr<INBAlgorithm> NBFactory::RestoreNBAlgorithmFromBinary(std::fstream& is) {
  return Restore(is, [&is](NBAlgorithm& component) { component.ReadObject(is); });
}

std::unique_ptr<INBAlgorithm> NBFactory::RestoreNBAlgorithmFromXML(std::ifstream& is) {
  return Restore(is, [&is](NBAlgorithm& component) {
    component.ReadObjectXML(is);
    if (!MCCommonXML::ParseEndRoot(is)) throw MCNaive::IOException("more than a component");
  });
}

template <class Stream, class Read>
std::unique_ptr<INBAlgorithm> NBFactory::Restore(const Stream& is, Read read) {
  fStatus = MCNaive::Error(MCNaive::kNotRestored);
  if (!is.good()) return nullptr;
  try {
    std::unique_ptr<NBAlgorithm> component(new NBAlgorithm);
    read(*component);
    fStatus = component->GetStatus();
    return component;
  } catch (...) {  // damaged, or more than the memory holds
    return nullptr;
  }
}
