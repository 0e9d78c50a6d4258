#include "backend/predselect/predsele.h"

#include <iostream>
#include <string>

#include "backend/predselect/PRSMessages.h"
#include "backend/predselect/PRSParser.h"
#include "backend/predselect/PRSUniFactory.h"
#include "backend/predselect/PRSValidSpecs.h"
#include "backend/predselect/SelOutput.h"
#include "host/cases/UAInpAdaptMsg.h"
#include "host/command/KOVA_TokenSequence.h"
#include "host/data/ProcedureDataSource.h"
#include "host/output/BpProcedure.h"
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
constexpr std::int64_t kAllMissingOrConstant = 80010;
constexpr std::int64_t kAllScreenedOut = 80011;

bool IsErrorSet() { return MCHost::CurrentSession().CommonBlock().IsErrorSet(); }

void RunSelectPredictors(PRSValidSpecs& specs, ProcedureDataSource& source,
                         BpProcedure& procedure) {
  PRSUniFactory factory(&specs, source);
  SelOutput output(&specs, &factory, &source, &procedure);
  output.AddToNotesTable();
  if (display_settings) specs.Display(std::cerr);
  if (IsErrorSet() || !factory.RunFSComponent() || IsErrorSet()) return;
  const std::int64_t code = factory.GetStatus().GetErrorCode();
  if (code == kAllMissingOrConstant || code == kAllScreenedOut) {
    output.SetMacros();
    if (specs.GetPrintExclude()) output.BpExcludedPred();
    return;
  }
  output.DisplayTables();
  output.SetMacros();
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
  if (!univariable) {
    PRSMessages().GenericError("No Naive Bayes engine in this build...", nullptr, nullptr, nullptr);
    return;
  }
  if (specs.GetFeatureSettingsPtr() == nullptr) return;
  if (source.ColumnCount() == 0) UAInpAdaptMsg(source).NoValidCasesForSelect();
  RunSelectPredictors(specs, source, procedure);
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
