#include "backend/predselect/drivers/PRSMultiScoring.h"

#include "backend/predselect/command/PRSGrammar.h"
#include "backend/predselect/drivers/NaiveDataSourceIter.h"
#include "backend/predselect/drivers/PRSMultiRun.h"
#include "backend/predselect/drivers/PRSProgress.h"
#include "backend/predselect/output/PRSTables.h"
#include "backend/predselect/specifications/PRSValidSpecs.h"
#include "common/MCAssert.h"
#include "common/MissingValue.h"
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
#include "host/session/ISession.h"
#include "host/session/SessionScope.h"
#include "naivebayes/NBAlgorithm.h"
#include "naivebayes/encoders/NBRoundEncoder.h"
#include "naivebayes/parts/NBPartClassified.h"

namespace {

constexpr const char* kSource = PRSMultiRun::kSource;
constexpr KOVA_Format kProbabilityFormat{KOVA_Format::kNumber, 5, 3};

VarSpecObj SaveRole(const char* param, const KOVA_DataSource& source) {
  return {"SAVE", param, PRSGrammar::NewCommand(false), source, false};
}

}  // namespace

PRSMultiScoring::PRSMultiScoring(PRSMultiRun& run, INBAlgorithm& algorithm, int nSaveDepCats)
    : fRun(run),
      fSpecs(run.Specs()),
      fSource(run.Source()),
      fAlgorithm(algorithm),
      fNSaveDepCats(nSaveDepCats),
      fScored(MCHost::CurrentSession().Threads()),
      fbCurvesWanted(MCHost::CurrentSession().WantsFindings()),
      fbEvaluated(fSpecs.GetPrintEvaluation()) {
  fParserMessages.SetCommandName(PRSGrammar::kNaiveBayes);
  fParserMessages.SetProcedureTitle("NaiveBayes");
}

PRSMultiScoring::~PRSMultiScoring() = default;

bool PRSMultiScoring::IsNeeded() const {
  return !fSpecs.GetPredValVarName().IsEmpty() || fNSaveDepCats >= 1 || fRun.IsClassified() ||
         fbEvaluated;
}

bool PRSMultiScoring::CreateNewVars() {
  const int target = fSpecs.GetDependVar();
  for (int code = 0; code < fRun.Adapter().GetCatVarSize(target); ++code) {
    fDependValues.push_back(fRun.Decode(target, code));
  }
  if (!CreatePredictedValue() || !CreateProbabilities()) return false;
  const auto nSaved = static_cast<std::size_t>(fNSaveDepCats);
  MCCommon::Assert(fDependValues.size() >= nSaved, "predProbs.size() >= fNSaveDepCats", kSource);
  MCCommon::Assert(fPredProbVars.size() == nSaved, "fPredProbVars.size() == fNSaveDepCats",
                   kSource);
  fpWriter = std::make_unique<UAPredictionWriter>(
      fPredValVar, fDependValues, fSource.GetVariable(target).GetType(), fPredProbVars);
  return true;
}

bool PRSMultiScoring::CreatePredictedValue() {
  const KovaVarName& asked = fSpecs.GetPredValVarName();
  if (asked.IsEmpty()) return true;
  KovaVarName name;
  if (!SaveRole("PREDVAL", fSource).NewVarNameByRoot(asked, name)) {
    fParserMessages.InvalidVarName(asked.GetName(), "PREDVAL", "SAVE");
    return false;
  }
  const KOVA_Variable& target = fSource.GetVariable(fSpecs.GetDependVar());
  fPredValVar = fSource.MakeVariable(name.GetName(), target.GetType());
  KOVA_Variable& predicted = fSource.GetVariable(fPredValVar);
  predicted.SetFormat(target.GetFormat());
  predicted.SetWriteFormat(target.GetWriteFormat());
  predicted.SetMeasurementLevel(target.GetMeasurementLevel());
  predicted.SetAlignment(target.GetAlignment());
  predicted.SetLabel(fParserMessages.GetTranslatedText("Predicted Value"));
  AddNotes(MCHost::OutputNote::kNewVariable, BpString("Predicted Value"),
           MCHost::OutputText::Literal(name.GetName()));
  return true;
}

bool PRSMultiScoring::CreateProbabilities() {
  const KovaVarName& root = fSpecs.GetPredProbRootName();
  if (root.IsEmpty()) return true;
  std::vector<KovaVarName> names;
  if (!SaveRole("PREDPROB", fSource).NewVarNamesByRoot(root, fNSaveDepCats, names)) {
    fParserMessages.InvalidVarName(root.GetName(), "PREDPROB", "SAVE");
    return false;
  }
  const KOVA_Variable& target = fSource.GetVariable(fSpecs.GetDependVar());
  for (int i = 0; i < fNSaveDepCats; ++i) {
    const std::string& name = names[static_cast<std::size_t>(i)].GetName();
    const KOVA_Value& category = fDependValues[static_cast<std::size_t>(i)];
    const int column = fSource.MakeVariable(name, 0);
    KOVA_Variable& probability = fSource.GetVariable(column);
    probability.SetFormat(kProbabilityFormat);
    probability.SetWriteFormat(kProbabilityFormat);
    probability.SetMeasurementLevel(KOVA_Variable::kScale);
    std::string value;
    ConvertObsValToStr(&category, target, value);
    BpComposite label("Predicted Probability for ^1 with value ^2...");
    label.AddLiteral(target.GetName()).AddLiteral(value);
    probability.SetLabel(MCHost::ShowText(label.Finish()));
    BpComposite title("^1 = ^2");
    title.Add(BpVariable(target)).Add(PRSCategoryLabel(target, category));
    AddNotesWithGroup(MCHost::OutputNote::kNewVariable, BpString("Predicted Probabilities"),
                      title.Finish(), MCHost::OutputText::Literal(name));
    fPredProbVars.push_back(column);
  }
  return true;
}

void PRSMultiScoring::ConvertObsValToStr(const OBS* value, const KOVA_Variable& variable,
                                         std::string& text) {
  text = MCHost::TextId(PRSCategoryLabel(variable, *value));
}

bool PRSMultiScoring::ScoringDataPass() {
  if (fRun.GetStatus().IsError()) return false;
  if (!CreateNewVars()) return fRun.Fail(MCNaive::kVariablesNotMade);
  MCCommon::Assert(fpScoreRecIter == nullptr, "fpScoreRecIter == 0", kSource);
  fpScoreRecIter = fRun.NewStream(PRSMultiRun::Sample::kBoth);
  if (fpScoreRecIter->NewPass(true)) fpScoreRecIter->SetLastPass();
  if (fpScoreRecIter->GetState() == MCCommon::RecordIterator::kNoRecords) {
    (void)fRun.Fail(MCNaive::kNoRecordsFound);
    fRun.DisplayMessage(fRun.GetStatus());
    return false;
  }
  return ScoreCases();
}

bool PRSMultiScoring::ScoreCases() {
  MCStopProcessor& stop = *fSpecs.GetStopProcessorPtr();
  const std::size_t most = NBScoredBlock::PreferredCases(fAlgorithm.GetNTargetCategories(),
                                                         fAlgorithm.GetNumberOfInputVars());
  while (!fRun.GetStatus().IsError() && fpScoreRecIter->HasMore() && !stop.IsCancel()) {
    const MCCommon::RecordBlock& block = fpScoreRecIter->NextBlock(most);
    (void)SaveVarValues(fpScoreRecIter->GetProcDS(), block);
    PRSProgress::Show("Scoring the cases", fRun.Adapter().GetCaseNumber());
  }
  (void)fpScoreRecIter->Finish();
  if (fRun.GetStatus().IsError()) fRun.DisplayMessage(fRun.GetStatus());
  return !fRun.GetStatus().IsError() && fRun.IsPassComplete(*fpScoreRecIter);
}

// A case that cannot be scored keeps missing values.
bool PRSMultiScoring::SaveVarValues(ProcDSIterator* pDataIter, const MCCommon::RecordBlock& block) {
  MCCommon::Assert(pDataIter != nullptr, "pDataIter != 0", kSource);
  MCNaive::MCStatus status;
  const bool isCounted = fRun.IsClassified() || fbEvaluated;
  if (isCounted) fpScoreRecIter->MarkTrainSample(fTrainingMarks);
  if (fRun.IsClassified()) {
    status = fAlgorithm.ScoreAndAccumBlock(block, fScored, fTrainingMarks);
  } else {
    status = fAlgorithm.ScoreBlock(block, fScored);
  }
  if (status.IsError()) {
    fRun.SetStatus(status);
    return false;
  }
  if (isCounted && (fbCurvesWanted || fbEvaluated)) CountCases(block);
  fpWriter->Store(*pDataIter, fpScoreRecIter->GetBlockPlaces(), fScored.GetWinners(),
                  fScored.GetProbabilities());
  return true;
}

const MCCommon::ScoreCurves* PRSMultiScoring::GetCurves(bool training) const {
  const std::optional<MCCommon::ScoreCurves>& curves = fCurves[training ? 1 : 0];
  return curves ? &*curves : nullptr;
}

void PRSMultiScoring::CountCases(const MCCommon::RecordBlock& block) {
  const NBVarList& variables = fAlgorithm.GetVarList();
  const double* targets = block.Column(static_cast<std::size_t>(variables.GetTargetIndex()));
  const int weightIndex = variables.GetWeightIndex();
  const double* weights =
      weightIndex < 0 ? nullptr : block.Column(static_cast<std::size_t>(weightIndex));
  const auto* frequency =
      weightIndex < 0 ? nullptr
                      : dynamic_cast<const NBRoundEncoder*>(variables.GetEncoderAt(weightIndex));
  const auto nTargets = static_cast<std::size_t>(fAlgorithm.GetNTargetCategories());
  for (std::size_t i = 0; i < block.Cases(); ++i) {
    const bool isCounted = !MCMV::IsMissing(targets[i]) && targets[i] >= 0.0 &&
                           targets[i] < static_cast<double>(nTargets) &&
                           fScored.GetWinners()[i] >= 0;
    const double weight = frequency == nullptr ? 1.0 : frequency->Encode(weights[i]).first;
    if (!isCounted || MCMV::IsMissing(weight) || !(weight > 0.0)) continue;
    CountCase(static_cast<int>(targets[i]), {&fScored.GetProbabilities()[i * nTargets], nTargets},
              i, weight);
  }
}

void PRSMultiScoring::CountCase(int category, std::span<const double> probabilities, std::size_t i,
                                double weight) {
  const bool isTraining = fTrainingMarks[i] != 0;
  if (fbCurvesWanted && fRun.IsClassified()) {
    std::optional<MCCommon::ScoreCurves>& curves = fCurves[isTraining ? 1 : 0];
    if (!curves) curves.emplace(fAlgorithm.GetNTargetCategories());
    curves->Count(category, probabilities, weight);
  }
  if (!fbEvaluated || isTraining == fSpecs.GetMultiTrainSamp()) return;
  if (!fEvaluation) fEvaluation.emplace(probabilities.size());
  fEvaluation->Add(static_cast<std::size_t>(category),
                   static_cast<std::size_t>(fScored.GetWinners()[i]), probabilities, weight);
}

std::optional<MCCommon::Evaluation> PRSMultiScoring::FindEvaluation() {
  const auto* algorithm = dynamic_cast<const NBAlgorithm*>(&fAlgorithm);
  if (!fEvaluation || algorithm == nullptr) return {};
  return fEvaluation->Find(algorithm->GetOutput().GetPriors());
}

void PRSMultiScoring::GiveTo(NBPartClassified& classified) {
  classified.fNTargets = fAlgorithm.GetNTargetCategories();
  classified.Take(fAlgorithm.GetTrainOutStats(), fAlgorithm.GetTestOutStats());
  if (fEvaluation) fEvaluation->Settle();
  classified.fEvaluation = std::move(fEvaluation);
  for (int i = 0; i < 2; ++i) classified.fCurves[i] = std::move(fCurves[i]);
}

void PRSMultiScoring::TakeFrom(NBPartClassified& classified) {
  fAlgorithm.AddClassified(classified);
  fEvaluation = std::move(classified.fEvaluation);
  for (int i = 0; i < 2; ++i) fCurves[i] = std::move(classified.fCurves[i]);
}
