// What the stages of one NAIVEBAYES run share: the specifications, the data and the adapter over
// them, the split into training and test cases, and the status.
//
// The status is the engine's and sticks once it is an error. Specifications and data are borrowed.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "backend/predselect/specifications/PRSValidSpecs.h"
#include "common/StatusMessage.h"
#include "host/cases/KOVA_Value.h"
#include "host/cases/UAInpAdaptMsg.h"
#include "host/cases/UAInputAdapter.h"
#include "naivebayes/MCStatus.h"

class NaiveDataSourceIter;
class ProcedureDataSource;
class UAProcDataSourceIter;

class PRSMultiRun {
 public:
  // The source that the assertions of all stages name.
  static constexpr const char* kSource = "backend/predselect/PRSMultiFactory";

  // A table of all pairs of more categories than these helps nobody and may not fit into memory.
  static constexpr int kMostClassified = 1000;

  // REQUIRES: the specifications are complete.
  PRSMultiRun(const PRSValidSpecs& specs, ProcedureDataSource& source);
  PRSMultiRun(const PRSMultiRun&) = delete;
  PRSMultiRun& operator=(const PRSMultiRun&) = delete;

  const PRSValidSpecs& Specs() const { return fSpecs; }
  const UAVarValidSpecs& VarSpecs() const { return *fSpecs.GetVarValidSpecsPtr(); }
  ProcedureDataSource& Source() { return fSource; }
  const ProcedureDataSource& Source() const { return fSource; }
  UAInputAdapter& Adapter() { return fAdapter; }
  const UAInputAdapter& Adapter() const { return fAdapter; }
  const UAInpAdaptMsg& AdapterMessages() const { return fAdapterMessages; }

  bool IsModelSaved() const { return !fSpecs.GetModelFileName().empty(); }
  bool IsSelecting() const { return !fSpecs.GetMultiNoSelection(); }
  // Whether cases are counted by observed and predicted category: the command asks for it, and the
  // target has not too many categories.
  bool IsClassified() const;

  enum class Sample { kTraining, kTest, kBoth };

  // A stream of the cases of the sample; not started.
  std::unique_ptr<NaiveDataSourceIter> NewStream(Sample sample);

  // The value behind a category's code.
  KOVA_Value Decode(int var, int code) const;

  const MCNaive::MCStatus& GetStatus() const { return fStatus; }
  // Want of memory inside the engine is thrown on as such, to end the run as it does anywhere else.
  void SetStatus(const MCNaive::MCStatus& status);
  // Makes the status an error with that code; returns false.
  bool Fail(std::int64_t code);
  // Reads to the end of the first pass or to a stop, showing how far it has come.
  void ReadAll(NaiveDataSourceIter& stream);
  // False, with a message, after a read error or a stop.
  bool IsPassComplete(const UAProcDataSourceIter& stream);
  // True, with a message, once the user or the clock has ended the run.
  bool IsStopped();

  // Raises the text of an error or warning of the engine; codes without a text raise nothing.
  void DisplayMessage(const MCNaive::MCStatus& status) const;

 private:
  std::string ArgumentOf(const MCCommon::StatusMessage& message,
                         const MCNaive::MCStatus& status) const;

  const PRSValidSpecs& fSpecs;
  ProcedureDataSource& fSource;
  UAInputAdapter fAdapter;
  UAInpAdaptMsg fAdapterMessages;
  std::vector<bool> fTrainTestFlags;
  std::int64_t fNCasesRead = 0;  // in the first pass
  MCNaive::MCStatus fStatus;
};
