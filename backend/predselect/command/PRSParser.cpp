#include "backend/predselect/command/PRSParser.h"

#include <algorithm>
#include <iostream>
#include <iterator>
#include <utility>

#include "backend/predselect/command/PRSGrammar.h"
#include "backend/predselect/predsele.h"
#include "backend/predselect/specifications/PRSValidSpecs.h"
#include "common/MCAssert.h"
#include "host/command/UniversalParser.h"
#include "host/output/ShowText.h"
#include "host/session/HostBlocks.h"
#include "host/session/ISession.h"
#include "host/session/SessionScope.h"

namespace {

constexpr const char* kSource = "backend/predselect/PRSParser";

bool UsesAll(const ParamObj* param) {
  if (param == nullptr) return false;
  const std::vector<TokenInfoObj>& tokens = param->getTokenList();
  return std::any_of(tokens.begin(), tokens.end(),
                     [](const TokenInfoObj& token) { return token.IsWord("ALL"); });
}

void Append(const VarSpecObj& from, std::vector<int>& to) {
  to.insert(to.end(), from.GetValidVarList().begin(), from.GetValidVarList().end());
}

bool Contains(const VarSpecObj& role, int variable) {
  const std::vector<int>& held = role.GetValidVarList();
  return std::find(held.begin(), held.end(), variable) != held.end();
}

// Predictors as the two lists of the specifications.
struct Lists {
  template <typename Predictors>
  explicit Lists(const Predictors& predictors) {
    for (const auto& predictor : predictors) {
      fpVariables->push_back(predictor.fVariable);
      fbpCategorical->push_back(predictor.fbCategorical);
    }
  }

  PRSValidSpecs::IntList fpVariables = std::make_unique<std::vector<int>>();
  PRSValidSpecs::BoolList fbpCategorical = std::make_unique<std::vector<bool>>();
};

}  // namespace

PRSParser::PRSParser(KOVA_TokenSequence& tokens, PRSValidSpecs& specs,
                     const ProcedureDataSource& source)
    : fTokens(tokens), fSpecs(specs), fSource(source) {
  InitMembers();
}

PRSParser::~PRSParser() = default;

void PRSParser::InitMembers() {
  fpCommand = nullptr;
  fbDependCategorical = true;
  fPredictors.clear();
  fForced.clear();
}

bool PRSParser::GetCommandSpecifications() {
  InitMembers();
  fbUniVariable = fSpecs.GetUniVariable();
  fpDescriptor = std::make_unique<CommandDescriptor>(PRSGrammar::NewCommand(fbUniVariable));
  fMessages.SetCommandName(fpDescriptor->GetName());
  SetCommandDescriptor();
  CreateVarSpecs();
  CommandSpec spec;
  UniversalParser parser(fTokens, spec, *fpDescriptor);
  if (!parser.getCommandSpecifications() || !ProcessCommandSpec(spec)) return false;
  TakeSessionMemory(spec);
  FinalCleanUp();
  DisableSplitFile();
  return true;
}

void PRSParser::SetCommandDescriptor() { PRSGrammar::Declare(*fpDescriptor, fbUniVariable); }

void PRSParser::CreateVarSpecs() {
  const auto role = [this](const char* subCom, const char* param, bool numericOnly) {
    return std::make_unique<VarSpecObj>(subCom, param, *fpDescriptor, fSource, numericOnly);
  };
  fpWeightVar = role("", "WEIGHT", true);
  fpDependVar = role("", "", false);
  fpFactors = role("", "BY", false);
  fpCovariates = role("", "WITH", true);
  fpExceptVars = role("EXCEPT", "VARIABLES", false);
  fpForceFactors = role("FORCE", "FACTORS", false);
  fpForceCovariates = role("FORCE", "COVARIATES", true);
  fpTrainVar = role("TRAININGSAMPLE", "VARIABLE", true);
}

void PRSParser::DisableSplitFile() {
  CmnGlb& common = MCHost::CurrentSession().CommonBlock();
  if (common.IsErrorSet() || common.fSplitFile == 0) return;
  fMessages.DisableSplit();
  common.fSplitFile = 0;
}

bool PRSParser::ProcessCommandSpec(const CommandSpec& spec) { return ProcessSubCommands(spec); }

// The order is on purpose, whatever the user's: the forced lists exist before the dependent
// variable is checked against them, and the training variable is checked against every list before
// it.
bool PRSParser::ProcessSubCommands(const CommandSpec& spec) {
  static constexpr std::pair<const char*, Handler> kHandlers[] = {
      {"FORCE", &PRSParser::ProcessForceSubCom},
      {"EXCEPT", &PRSParser::ProcessExceptSubCom},
      {"", &PRSParser::ProcessNoNameSubCom},
      {"CRITERIA", nullptr},
      {"MISSING", &PRSParser::ProcessMissingSubCom},
      {"MACROVAR", &PRSParser::ProcessMacrovarSubCom},
      {"PRINT", &PRSParser::ProcessPrintSubCom},
      {"PLOT", &PRSParser::ProcessPlotSubCom},
      {"TRAININGSAMPLE", &PRSParser::ProcessTrainSampSubCom},
      {"SUBSET", &PRSParser::ProcessSubsetSubCom},
      {"CROSSVALIDATION", &PRSParser::ProcessValidationSubCom},
      {"SAVE", &PRSParser::ProcessSaveSubCom},
      {"OUTFILE", &PRSParser::ProcessOutFileSubCom},
      {"SCREENING", &PRSParser::ProcessScreeningSubCom},
  };
  fpCommand = &spec;
  TakeWeight();
  // Without a SUBSET subcommand the subset is as large as its pseudo-BIC says.
  if (!fbUniVariable) fSpecs.Options().fSubset.fbPseudoBIC = true;
  // Ranking screens by itself, a classifier when it is asked to.
  fSpecs.Options().fScreening.fbOn = fbUniVariable || spec.getSubComObj("SCREENING") != nullptr;
  const Handler criteria =
      fbUniVariable ? &PRSParser::ProcessUniCriteriaSubCom : &PRSParser::ProcessMultiCriteriaSubCom;
  bool isValid = true;
  for (const auto& [name, handler] : kHandlers) {
    const SubComObj* subCom = spec.getSubComObj(name);
    if (subCom == nullptr) continue;
    isValid = (this->*(handler == nullptr ? criteria : handler))(*subCom);
    if (!isValid) break;
  }
  fpCommand = nullptr;
  return isValid;
}

void PRSParser::TakeWeight() {
  const int weight = fSource.GetWeightVarIndex();
  if (weight >= 0 && fpWeightVar->ValidateVariable(weight)) fSpecs.SetKOVAWeightVar(weight);
}

// Asked for only where it matters, so that a session can tell whether what it gives is of use.
void PRSParser::TakeSessionMemory(const CommandSpec& spec) {
  const SubComObj* criteria = spec.getSubComObj("CRITERIA");
  const bool isStated = criteria != nullptr && criteria->getParamObj("MEMALLOCATE") != nullptr;
  if (fbUniVariable || isStated || fSpecs.GetMultiNoSelection()) return;
  const double memory = MCHost::CurrentSession().MemoryForCases();
  if (!(memory > 0.0)) return;
  fSpecs.Options().fMultiCriteria.fMemOffered = std::max(memory, PRSMultiCriteria::kLeastMemory);
}

void PRSParser::FinalCleanUp() {
  Lists predictors(fPredictors);
  fSpecs.SetPredictList(std::move(predictors.fpVariables), std::move(predictors.fbpCategorical));
  if (!fForced.empty()) {
    Lists forced(fForced);
    fSpecs.SetForcePredList(std::move(forced.fpVariables), std::move(forced.fbpCategorical));
  }
  if (fpExceptVars->GetNValidVars() > 0) {
    fSpecs.SetExceptList(std::make_unique<std::vector<int>>(fpExceptVars->GetValidVarList()));
  }
}

bool PRSParser::ProcessNoNameSubCom(const SubComObj& subCom) {
  const ParamObj* dependent = subCom.getParamObj("");
  MCCommon::Assert(dependent != nullptr, "dependParam != 0", kSource);
  bool isValid = TakeDependent(*dependent);
  isValid = TakeCandidates(subCom) && isValid;
  isValid = CheckDependent() && isValid;
  isValid = CheckCandidates() && isValid;
  if (!isValid) return false;
  CollectCandidates(subCom.getParamListSize() == 1);
  // There is nothing that could be selected from.
  if (fPredictors.empty() && !IsSelectionOff()) {
    if (display_settings) std::cerr << "No predictors available in data..." << '\n';
    fOwnMessages.NoPossPredsAvailable();
    return false;
  }
  ReportIdleExcepts(subCom);
  fSpecs.SetDependVar(fpDependVar->GetValidVarInd(), fbDependCategorical);
  return true;
}

bool PRSParser::TakeDependent(const ParamObj& param) {
  fpDependVar->SetAllowQualifiers(fbUniVariable);
  if (!fpDependVar->ValidateVariable(param)) return false;
  const int variable = fpDependVar->GetValidVarInd();
  const std::string& level = fpDependVar->GetQualifierValue();
  fbDependCategorical = level.empty() ? IsCategorical(variable) : level != "S";
  const KOVA_Variable& dependent = fSource.GetVariable(variable);
  const ParserMessage messages = fMessages.At(param.GetPlace());
  if (!fbDependCategorical && !dependent.IsNumeric()) {
    messages.StringVariableNotScale(dependent.GetName());
    return false;
  }
  if (!fbUniVariable && !fbDependCategorical) {
    messages.NeedDepVarCat(dependent.GetName());
    return false;
  }
  return true;
}

bool PRSParser::TakeCandidates(const SubComObj& subCom) {
  const ParamObj* factors = subCom.getParamObj("BY");
  const ParamObj* covariates = subCom.getParamObj("WITH");
  fpFactors->SetAllVarsByDefault(factors == nullptr && covariates == nullptr);
  return TakeLists(*fpFactors, factors, *fpCovariates, covariates);
}

// Of two lists the one that says ALL comes second, so that it leaves out what the other one names.
bool PRSParser::TakeLists(VarSpecObj& factors, const ParamObj* givenFactors, VarSpecObj& covariates,
                          const ParamObj* givenCovariates) const {
  const bool factorsLast = UsesAll(givenFactors);
  VarSpecObj& first = factorsLast ? covariates : factors;
  VarSpecObj& second = factorsLast ? factors : covariates;
  std::vector<int> leftOut = LeftOutOfAll();
  first.SetLeftOutOfAll(leftOut);
  const bool isValid = first.ValidateVariables(factorsLast ? givenCovariates : givenFactors);
  Append(first, leftOut);
  second.SetLeftOutOfAll(leftOut);
  return second.ValidateVariables(factorsLast ? givenFactors : givenCovariates) && isValid;
}

// Variables that have another place in the command. The dependent and the training variable may
// not have been validated yet; here they only count as used.
std::vector<int> PRSParser::LeftOutOfAll() const {
  std::vector<int> leftOut;
  for (const VarSpecObj* role :
       {fpWeightVar.get(), fpExceptVars.get(), fpForceFactors.get(), fpForceCovariates.get()}) {
    Append(*role, leftOut);
  }
  static constexpr std::pair<const char*, const char*> kSingles[] = {
      {"", ""}, {"TRAININGSAMPLE", "VARIABLE"}};
  for (const auto& [name, paramName] : kSingles) {
    const SubComObj* subCom = fpCommand->getSubComObj(name);
    const ParamObj* param = subCom == nullptr ? nullptr : subCom->getParamObj(paramName);
    if (param != nullptr) leftOut.push_back(fSource.FindVariable(param->getVarName().GetName()));
  }
  return leftOut;
}

bool PRSParser::CheckDependent() const {
  bool isValid = true;
  for (const VarSpecObj* role :
       {fpWeightVar.get(), fpForceFactors.get(), fpForceCovariates.get()}) {
    isValid = fpDependVar->CheckCommonVars(*role) && isValid;
  }
  return isValid;
}

// A forced predictor may be named among the candidates too, but not as another kind.
bool PRSParser::CheckCandidates() const {
  bool isValid = true;
  for (const VarSpecObj* role : {fpFactors.get(), fpCovariates.get()}) {
    isValid = role->CheckCommonVars(*fpDependVar) && isValid;
    isValid = role->CheckCommonVars(*fpWeightVar) && isValid;
  }
  isValid = fpCovariates->CheckCommonVars(*fpFactors) && isValid;
  isValid = fpFactors->CheckCommonVars(*fpForceCovariates) && isValid;
  return fpCovariates->CheckCommonVars(*fpForceFactors) && isValid;
}

void PRSParser::CollectCandidates(bool byLevel) {
  for (Predictor predictor : Merged(*fpFactors, *fpCovariates)) {
    const bool isTaken = Contains(*fpExceptVars, predictor.fVariable) ||
                         Contains(*fpForceFactors, predictor.fVariable) ||
                         Contains(*fpForceCovariates, predictor.fVariable);
    if (isTaken) continue;
    if (byLevel) predictor.fbCategorical = IsCategorical(predictor.fVariable);
    fPredictors.push_back(predictor);
  }
}

void PRSParser::ReportIdleExcepts(const SubComObj& subCom) const {
  const bool takesAll = subCom.getParamListSize() == 1 || UsesAll(subCom.getParamObj("BY")) ||
                        UsesAll(subCom.getParamObj("WITH"));
  for (const int variable : fpExceptVars->GetValidVarList()) {
    const bool hasEffect =
        takesAll ? !Contains(*fpDependVar, variable) && !Contains(*fpWeightVar, variable)
                 : Contains(*fpFactors, variable) || Contains(*fpCovariates, variable);
    if (hasEffect) continue;
    const std::string& name = fSource.GetVariable(variable).GetName();
    fMessages.At(fpExceptVars->GetPlace(variable))
        .OptionIdle("EXCEPT " + name, MCHost::KeyText("^1 is no candidate predictor", {name}));
  }
}

bool PRSParser::ProcessExceptSubCom(const SubComObj& subCom) {
  bool isValid = fpExceptVars->ValidateVariables(subCom.getParamObj("VARIABLES"));
  isValid = fpExceptVars->CheckCommonVars(*fpForceFactors) && isValid;
  return fpExceptVars->CheckCommonVars(*fpForceCovariates) && isValid;
}

bool PRSParser::ProcessForceSubCom(const SubComObj& subCom) {
  const ParamObj* factors = subCom.getParamObj("FACTORS");
  const ParamObj* covariates = subCom.getParamObj("COVARIATES");
  MCCommon::Assert(covariates != nullptr || factors != nullptr, "factorParam != 0", kSource);
  bool isValid = TakeLists(*fpForceFactors, factors, *fpForceCovariates, covariates);
  isValid = fpForceFactors->CheckCommonVars(*fpWeightVar) && isValid;
  isValid = fpForceCovariates->CheckCommonVars(*fpWeightVar) && isValid;
  isValid = fpForceCovariates->CheckCommonVars(*fpForceFactors) && isValid;
  fForced = Merged(*fpForceFactors, *fpForceCovariates);
  return isValid;
}

// In the order of the data, so that the order of names in a command changes no result.
std::vector<PRSParser::Predictor> PRSParser::Merged(const VarSpecObj& factors,
                                                    const VarSpecObj& covariates) {
  std::vector<Predictor> merged;
  for (const int variable : factors.GetValidVarList()) merged.push_back({variable, true});
  for (const int variable : covariates.GetValidVarList()) merged.push_back({variable, false});
  std::sort(merged.begin(), merged.end(), [](const Predictor& left, const Predictor& right) {
    return left.fVariable < right.fVariable;
  });
  return merged;
}

bool PRSParser::IsCategorical(int variable) const {
  return !fSource.GetVariable(variable).IsNumeric() || IsCatVar(variable, fSource);
}

bool PRSParser::IsSelectionOff() const {
  const SubComObj* subset = fpCommand->getSubComObj("SUBSET");
  return subset != nullptr && subset->getParamObj("NOSELECTION") != nullptr;
}

bool PRSParser::IsScreeningOff() const {
  const SubComObj* screening = fpCommand->getSubComObj("SCREENING");
  const ParamObj* status = screening == nullptr ? nullptr : screening->getParamObj("STATUS");
  return status != nullptr && status->isStringValueCase("OFF");
}

bool PRSParser::HasPredictors(bool categorical) const {
  return std::any_of(fPredictors.begin(), fPredictors.end(),
                     [categorical](const Predictor& p) { return p.fbCategorical == categorical; });
}
