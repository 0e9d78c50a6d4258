#include "backend/predselect/predsele.h"

#include <iostream>
#include <string>

#include "backend/predselect/command/PRSParser.h"
#include "backend/predselect/drivers/PRSMultiFactory.h"
#include "backend/predselect/drivers/PRSUniFactory.h"
#include "backend/predselect/output/NaiveOutput.h"
#include "backend/predselect/output/PRSTables.h"
#include "backend/predselect/output/SelOutput.h"
#include "backend/predselect/specifications/PRSValidSpecs.h"
#include "feature/MCStatus.h"
#include "host/cases/UAInpAdaptMsg.h"
#include "host/command/KOVA_TokenSequence.h"
#include "host/data/ProcedureDataSource.h"
#include "host/output/pivot/BpProcedure.h"
#include "host/session/HostBlocks.h"
#include "host/session/HostFunctions.h"
#include "host/session/ISession.h"
#include "host/session/SessionScope.h"

extern "C" {
bool display_settings = false;
bool display_feature_select = false;
bool display_naive_bayes = false;
}

namespace {

constexpr int kOutputKind = 5;

bool IsErrorSet() { return MCHost::CurrentSession().CommonBlock().IsErrorSet(); }

void RunSelectPredictors(PRSValidSpecs& specs, ProcedureDataSource& source,
                         BpProcedure& procedure) {
  PRSUniFactory factory(&specs, source);
  SelOutput output(&specs, &factory, &source, &procedure);
  output.AddToNotesTable();
  if (display_settings) specs.Display(std::cerr);
  if (IsErrorSet() || !factory.RunFSComponent() || IsErrorSet()) return;
  const std::int64_t code = factory.GetStatus().GetErrorCode();
  if (code == MCFeature::kAllMissingOrConstant || code == MCFeature::kAllScreenedOut) {
    output.SetMacros();
    if (specs.GetPrintExclude()) output.BpExcludedPred();
    return;
  }
  output.DisplayTables();
  output.SetMacros();
}

// Room for the saved variables, in 8-byte values: wide strings take one for every 8 bytes begun.
unsigned int RoomForSavedVariables(const PRSValidSpecs& specs, const ProcedureDataSource& source) {
  unsigned int room = 0;
  if (!specs.GetPredValVarName().IsEmpty()) {
    const int type = source.GetVariable(specs.GetDependVar()).GetType();
    room = type > 8 ? static_cast<unsigned int>((type + 7) / 8) : 1;
  }
  if (!specs.GetPredProbRootName().IsEmpty()) {
    room += static_cast<unsigned int>(specs.GetPredProbNumber());
  }
  return room;
}

// What must be known of the data before the model: false when the run ends here.
bool PrepareNaiveBayes(PRSMultiFactory& factory, const PRSValidSpecs& specs,
                       const NaiveOutput& output) {
  if (IsErrorSet()) return true;
  const bool isRead = factory.PreliminaryDataPass();
  if (IsErrorSet() || !isRead) return isRead;
  if (factory.CompleteMetaData()) return true;
  if (specs.GetPrintExclude()) output.DisplayScreened();
  return false;
}

void RunNaiveBayes(PRSValidSpecs& specs, ProcedureDataSource& source, BpProcedure& procedure) {
  PRSMultiFactory factory(&specs, source);
  if (factory.AnswerPart()) return;
  NaiveOutput output(&specs, &factory, &source, &procedure);
  output.AddToNotesTable();
  const bool isPrepared = PrepareNaiveBayes(factory, specs, output);
  if (display_settings && isPrepared) specs.Display(std::cerr);
  if (IsErrorSet() || !isPrepared || !factory.RunNBComponent() || IsErrorSet()) return;
  if (factory.GetINBAlgorithm() == nullptr) return;
  output.DisplayTables();
  output.SetMacros();
  factory.ReportLostModel();
}

bool IsToBeDone(const PRSValidSpecs& specs, const ProcedureDataSource& source) {
  MCHost::CommandPlan plan;
  plan.fTarget = source.GetVariable(specs.GetDependVar()).GetName();
  plan.fModelFile = specs.GetModelFileName();
  for (std::size_t i = 0; i < specs.GetPredListPtr()->size(); ++i) {
    auto& names = (*specs.GetPredCatVarListPtr())[i] ? plan.fFactors : plan.fCovariates;
    names.push_back(source.GetVariable((*specs.GetPredListPtr())[i]).GetName());
  }
  if (MCHost::CurrentSession().BeginsWork(plan)) return true;
  PRSSetMacros(specs, plan.fFactors, plan.fCovariates);
  return false;
}

void RunCommand(ProcedureDataSource& source, PRSValidSpecs& specs) {
  const std::string word = MCHost::CurrentSession().SystemBlock().fCommandWord.substr(0, 3);
  const bool univariable = AreStringsEqualCase(word, "SEL");
  specs.SetUniVariable(univariable);
  BpProcedure procedure(univariable ? "SelectPredictors" : "NaiveBayes", kOutputKind);
  KOVA_TokenSequence tokens(true);
  if (univariable) AdjustMeasurementLevels(source);
  PRSParser parser(tokens, specs, source);
  if (!parser.GetCommandSpecifications() || IsErrorSet()) return;
  specs.CompleteSpecs();
  if (univariable ? specs.GetFeatureSettingsPtr() == nullptr
                  : specs.GetNaiveSettingsPtr() == nullptr) {
    return;
  }
  if (!IsToBeDone(specs, source)) return;
  if (source.ColumnCount() == 0) UAInpAdaptMsg(source).NoValidCasesForSelect();
  if (univariable) {
    RunSelectPredictors(specs, source, procedure);
    return;
  }
  const unsigned int room = RoomForSavedVariables(specs, source);
  if (room > 0) source.SetMaxObsAdded(room);
  RunNaiveBayes(specs, source, procedure);
}

}  // namespace

void predsele_() {
  CmnGlb& common = MCHost::CurrentSession().CommonBlock();
  const CmnGlb saved = common;
  {
    ProcedureDataSource source;
    PRSValidSpecs specs;
    RunCommand(source, specs);
  }
  common.fSplitFile = saved.fSplitFile;
  common.fMaxObsAdded = saved.fMaxObsAdded;
  common.fLastPass = saved.fLastPass;
}
