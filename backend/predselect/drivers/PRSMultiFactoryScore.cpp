// The NAIVEBAYES driver's scoring pass: the saved variables and the classification counts.
#include "backend/predselect/command/PRSGrammar.h"
#include "backend/predselect/drivers/NaiveDataSourceIter.h"
#include "backend/predselect/drivers/PRSMultiFactory.h"
#include "backend/predselect/drivers/PRSProgress.h"
#include "backend/predselect/output/PRSTables.h"
#include "backend/predselect/specifications/PRSValidSpecs.h"
#include "common/MCAssert.h"
#include "host/cases/KOVA_InputCaseIterator.h"
#include "host/cases/MCStopProcessor.h"
#include "host/cases/UAInputAdapter.h"
#include "host/command/VarSpecObj.h"
#include "host/data/ProcedureDataSource.h"
#include "host/output/AddNotes.h"
#include "host/output/OutputNote.h"
#include "host/output/ShowText.h"
#include "host/output/pivot/BpComposite.h"
#include "host/output/pivot/BpString.h"
#include "host/output/pivot/BpVariable.h"
#include "naivebayes/INBAlgorithm.h"

namespace {

constexpr const char* kSource = "backend/predselect/PRSMultiFactory";
constexpr int kVariablesNotMade = 2;
constexpr KOVA_Format kProbabilityFormat{KOVA_Format::kNumber, 5, 3};
constexpr std::int64_t kReportEvery = 4096;  // cases

VarSpecObj SaveRole(const char* param, const KOVA_DataSource& source) {
  return {"SAVE", param, PRSGrammar::NewCommand(false), source, false};
}

}  // namespace

bool PRSMultiFactory::IsClassified() const {
  return fpSpecs->GetPrintClassify() &&
         fpAdapter->GetCatVarSize(fpSpecs->GetDependVar()) <= kMostClassified;
}

bool PRSMultiFactory::CreateNewVars() {
  const int target = fpSpecs->GetDependVar();
  for (int code = 0; code < fpAdapter->GetCatVarSize(target); ++code) {
    fDependValues.push_back(Decode(target, code));
  }
  return CreatePredictedValue() && CreateProbabilities();
}

bool PRSMultiFactory::CreatePredictedValue() {
  const KovaVarName& asked = fpSpecs->GetPredValVarName();
  if (asked.IsEmpty()) return true;
  KovaVarName name;
  if (!SaveRole("PREDVAL", *fpSource).NewVarNameByRoot(asked, name)) {
    fParserMessages.InvalidVarName(asked.GetName(), "PREDVAL", "SAVE");
    return false;
  }
  const KOVA_Variable& target = fpSource->GetVariable(fpSpecs->GetDependVar());
  fPredValVar = fpSource->MakeVariable(name.GetName(), target.GetType());
  KOVA_Variable& predicted = fpSource->GetVariable(fPredValVar);
  predicted.SetFormat(target.GetFormat());
  predicted.SetWriteFormat(target.GetWriteFormat());
  predicted.SetMeasurementLevel(target.GetMeasurementLevel());
  predicted.SetAlignment(target.GetAlignment());
  predicted.SetLabel(fParserMessages.GetTranslatedText("Predicted Value"));
  AddNotes(MCHost::OutputNote::kNewVariable, BpString("Predicted Value"),
           MCHost::OutputText::Literal(name.GetName()));
  return true;
}

bool PRSMultiFactory::CreateProbabilities() {
  const KovaVarName& root = fpSpecs->GetPredProbRootName();
  if (root.IsEmpty()) return true;
  std::vector<KovaVarName> names;
  if (!SaveRole("PREDPROB", *fpSource).NewVarNamesByRoot(root, fNSaveDepCats, names)) {
    fParserMessages.InvalidVarName(root.GetName(), "PREDPROB", "SAVE");
    return false;
  }
  const KOVA_Variable& target = fpSource->GetVariable(fpSpecs->GetDependVar());
  for (int i = 0; i < fNSaveDepCats; ++i) {
    const std::string& name = names[static_cast<std::size_t>(i)].GetName();
    const KOVA_Value& category = fDependValues[static_cast<std::size_t>(i)];
    const int column = fpSource->MakeVariable(name, 0);
    KOVA_Variable& probability = fpSource->GetVariable(column);
    probability.SetFormat(kProbabilityFormat);
    probability.SetWriteFormat(kProbabilityFormat);
    probability.SetMeasurementLevel(KOVA_Variable::kScale);
    BpComposite label("Predicted Probability for ^1 with value ^2...");
    label.AddLiteral(target.GetName());
    label.AddLiteral(MCHost::TextId(PRSCategoryLabel(target, category)));
    probability.SetLabel(MCHost::ShowText(label.Finish()));
    BpComposite title("^1 = ^2");
    title.Add(BpVariable(target)).Add(PRSCategoryLabel(target, category));
    AddNotesWithGroup(MCHost::OutputNote::kNewVariable, BpString("Predicted Probabilities"),
                      title.Finish(), MCHost::OutputText::Literal(name));
    fPredProbVars.push_back(column);
  }
  return true;
}

bool PRSMultiFactory::ScoringDataPass() {
  if (fStatus.IsError()) return false;
  if (!CreateNewVars()) return Fail(kVariablesNotMade);
  MCCommon::Assert(fpScoreRecIter == nullptr, "fpScoreRecIter == 0", kSource);
  fpScoreRecIter =
      std::make_unique<NaiveDataSourceIter>(*fpAdapter, fpSpecs, fTrainTestFlags, true, true);
  if (fpScoreRecIter->NewPass(true)) fpScoreRecIter->SetLastPass();
  if (fpScoreRecIter->GetState() == MCCommon::RecordIterator::kNoRecords) {
    (void)Fail(MCNaive::kNoRecordsFound);
    DisplayMessage(fStatus);
    return false;
  }
  return ScoreCases();
}

bool PRSMultiFactory::ScoreCases() {
  MCStopProcessor& stop = *fpSpecs->GetStopProcessorPtr();
  while (!fStatus.IsError() && fpScoreRecIter->HasMore() && !stop.IsCancel()) {
    const MCCommon::Record* recordPtr = fpScoreRecIter->NextRecord();
    MCCommon::Assert(recordPtr != nullptr, "recordPtr != 0", kSource);
    (void)SaveVarValues(fpScoreRecIter->GetProcDS(), recordPtr,
                        fpScoreRecIter->IsTrainSampleCase());
    const std::int64_t cases = fpAdapter->GetCaseNumber();
    if (cases % kReportEvery == 0) PRSProgress::Show("Scoring the cases", cases);
  }
  (void)fpScoreRecIter->Finish();
  if (fStatus.IsError()) DisplayMessage(fStatus);
  return !fStatus.IsError() && IsPassComplete(*fpScoreRecIter);
}

// A case that cannot be scored keeps missing values.
bool PRSMultiFactory::SaveVarValues(ProcDSIterator* pDataIter, const MCCommon::Record* pRecord,
                                    bool isTraining) {
  MCCommon::Assert(pDataIter != nullptr, "pDataIter != 0", kSource);
  MCCommon::Assert(pRecord != nullptr, "pRecord != 0", kSource);
  NBOutput output(fpNBAlgorithm->GetNTargetCategories());
  const MCNaive::MCStatus status = IsClassified()
                                       ? fpNBAlgorithm->ScoreAndAccum(*pRecord, output, isTraining)
                                       : fpNBAlgorithm->ScoreFullRecord(*pRecord, output);
  const std::vector<double>& predProbs = output.GetOutProbabilities();
  const int winner = output.GetWinningIndex();
  if (status.IsError()) fStatus = status;
  if (status.IsError() || winner < 0 || predProbs.empty()) return false;
  if (fPredValVar >= 0) {
    const KOVA_Value& value = fDependValues[static_cast<std::size_t>(winner)];
    const KOVA_Variable& target = fpSource->GetVariable(fpSpecs->GetDependVar());
    (void)(value.IsNumeric()
               ? pDataIter->SetColumnValue(fPredValVar, value.GetNumber())
               : pDataIter->SetColumnValue(fPredValVar, value.GetString(), target.GetType()));
  }
  const auto nSaved = static_cast<std::size_t>(fNSaveDepCats);
  MCCommon::Assert(predProbs.size() >= nSaved, "predProbs.size() >= fNSaveDepCats", kSource);
  MCCommon::Assert(fPredProbVars.size() == nSaved, "fPredProbVars.size() == fNSaveDepCats",
                   kSource);
  for (std::size_t i = 0; i < nSaved; ++i) {
    (void)pDataIter->SetColumnValue(fPredProbVars[i], predProbs[i]);
  }
  return true;
}
