// The handlers of the subcommands that set options; the variables are handled in PRSParser.cpp.
#include <algorithm>
#include <cmath>
#include <limits>
#include <string>
#include <utility>
#include <vector>

#include "backend/predselect/command/PRSParser.h"
#include "backend/predselect/specifications/PRSValidSpecs.h"
#include "common/MCAssert.h"
#include "feature/FSCriterion.h"
#include "host/output/ShowText.h"
#include "naivebayes/validation/NBCrossValidation.h"

using MCHost::KeyText;

namespace {

constexpr const char* kSource = "backend/predselect/PRSParser";

// The tables of both commands, by their keywords.
constexpr std::pair<const char*, bool PRSPrint::*> kTables[] = {
    {"CPS", &PRSPrint::fbCPS},
    {"EXCLUDED", &PRSPrint::fbExclude},
    {"SUMMARY", &PRSPrint::fbSummary},
    {"SELECTED", &PRSPrint::fbSelect},
    {"CLASSIFICATION", &PRSPrint::fbClassify},
    {"EFFECTS", &PRSPrint::fbEffects},
    {"EVALUATION", &PRSPrint::fbEvaluation},
};

// The grammar takes its words from the table of criteria.
const FSCriterion& CriterionOf(const std::string& word) {
  const FSCriterion* criterion = FSCriterion::FindKeyword(word);
  MCCommon::Assert(criterion != nullptr, "criterion != 0", kSource);
  return *criterion;
}

// The parameter's number, where it is given.
void Take(const SubComObj& subCom, const char* param, double& value) {
  const ParamObj* given = subCom.getParamObj(param);
  if (given != nullptr) value = given->getNumberValue();
}

void Take(const SubComObj& subCom, const char* param, int& value) {
  const ParamObj* given = subCom.getParamObj(param);
  if (given != nullptr) value = given->getIntegerValue();
}

}  // namespace

bool PRSParser::IsMixed() const { return HasPredictors(true) && HasPredictors(false); }

bool PRSParser::Applies(const FSCriterion& criterion) const {
  const MCFSCommon::PredictorSetType pure =
      HasPredictors(true) ? MCFSCommon::kAllCategorical : MCFSCommon::kAllContinuous;
  return criterion.Suits(fbDependCategorical, IsMixed() ? MCFSCommon::kMixed : pure);
}

bool PRSParser::ProcessUniCriteriaSubCom(const SubComObj& subCom) {
  MCCommon::Assert(fbUniVariable, "fbUniVariable", kSource);
  PRSUniCriteria& criteria = fSpecs.Options().fUniCriteria;
  if (!TakeSize(subCom, criteria.fSize)) return false;
  const FSCriterion& criterion = TakeRanking(subCom);
  criteria.fCriterion = criterion.fCode;
  ReportIdleCutOff(subCom, criterion);
  Take(subCom, "PCUTOFF", criteria.fPCutOff);
  const ParamObj* pValues = subCom.getParamObj("PVALUES");
  criteria.fbExactPValues = pValues != nullptr && pValues->isStringValueCase("EXACT");
  Take(subCom, "SHOWUNSELECTED", fSpecs.Options().fCommonCriteria.fShowUnselect);
  Take(subCom, "TIMER", fSpecs.Options().fCommonCriteria.fTimer);
  return true;
}

bool PRSParser::TakeSize(const SubComObj& subCom, int& size) const {
  const ParamObj* param = subCom.getParamObj("SIZE");
  if (param == nullptr || param->isLeadingToken("AUTO")) return true;
  size = param->getIntegerValue();
  if (static_cast<std::size_t>(size) < fPredictors.size()) return true;
  fOwnMessages.ParamLessUniquePred("CRITERIA SIZE", "SELECTPRED", true);
  return false;
}

const FSCriterion& PRSParser::TakeRanking(const SubComObj& subCom) const {
  const FSCriterion& otherwise = FSCriterion::Of(PRSUniCriteria().fCriterion);
  const ParamObj* param = subCom.getParamObj("RANKING");
  if (param == nullptr) return otherwise;
  const FSCriterion& criterion = CriterionOf(param->GetPlace().fText);
  if (Applies(criterion)) return criterion;
  IgnoreCriterion(criterion, "RANKING", "CRITERIA");
  // Where none of the words applies, the data choose the criterion and the word stays as it is.
  return Applies(otherwise) ? otherwise : criterion;
}

// A target that is scale is reason enough, whatever the predictors are.
void PRSParser::IgnoreCriterion(const FSCriterion& criterion, const char* param,
                                const char* subCom) const {
  fOwnMessages.IgnoreRankCriterion(criterion.fKeyword, param, subCom,
                                   fbDependCategorical && IsMixed());
}

// Some criteria have no significance that could be below a cut-off.
void PRSParser::ReportIdleCutOff(const SubComObj& subCom, const FSCriterion& criterion) const {
  const ParamObj* param = subCom.getParamObj("PCUTOFF");
  if (param == nullptr || criterion.HasSignificance() || !Applies(criterion)) return;
  fMessages.At(param->GetNameToken())
      .OptionIdle("CRITERIA PCUTOFF", KeyText("the ranking statistic has no significance"));
}

bool PRSParser::ProcessMultiCriteriaSubCom(const SubComObj& subCom) {
  Take(subCom, "BINS", fSpecs.Options().fMultiCriteria.fBins);
  Take(subCom, "MEMALLOCATE", fSpecs.Options().fMultiCriteria.fMemAllocate);
  Take(subCom, "TIMER", fSpecs.Options().fCommonCriteria.fTimer);
  return true;
}

bool PRSParser::ProcessScreeningSubCom(const SubComObj& subCom) {
  static constexpr std::pair<const char*, PRSThreshold PRSScreening::*> kThresholds[] = {
      {"PCTMISSING", &PRSScreening::fPctMissing}, {"PCTEQUAL", &PRSScreening::fPctEqual},
      {"PCTUNEQUAL", &PRSScreening::fPctUnequal}, {"CV", &PRSScreening::fCoeffVariate},
      {"STDDEV", &PRSScreening::fStdDev},
  };
  PRSScreening& screening = fSpecs.Options().fScreening;
  const ParamObj* status = subCom.getParamObj("STATUS");
  if (status != nullptr) screening.fbOn = status->isStringValueCase("ON");
  for (const auto& [name, threshold] : kThresholds) {
    const ParamObj* param = subCom.getParamObj(name);
    if (param == nullptr) continue;
    screening.*threshold = {param->getNumberValue(), param->GetPlace().fText};
    if (screening.fbOn) continue;
    fMessages.At(param->GetNameToken())
        .OptionIdle(std::string("SCREENING ") + name, KeyText("screening is off"));
  }
  return true;
}

bool PRSParser::ProcessMissingSubCom(const SubComObj& subCom) {
  const ParamObj* userMissing = subCom.getParamObj("USERMISSING");
  MCCommon::Assert(userMissing != nullptr, "userMissParam != 0", kSource);
  fSpecs.Options().fbMissingExclude = userMissing->isStringValueCase("EXCLUDE");
  return true;
}

bool PRSParser::ProcessMacrovarSubCom(const SubComObj& subCom) {
  const ParamObj* factors = subCom.getParamObj("FACTORS");
  const ParamObj* covariates = subCom.getParamObj("COVARIATES");
  MCCommon::Assert(factors != nullptr || covariates != nullptr, "covarParam !=0", kSource);
  KovaVarName factorName;
  KovaVarName covariateName;
  bool isValid = TakeMacroName(factors, factorName);
  isValid = TakeMacroName(covariates, covariateName) && isValid;
  if (!isValid) return false;
  if (factors != nullptr && covariates != nullptr &&
      factors->isLeadingToken(covariateName.GetName())) {
    fMessages.At(covariates->GetPlace())
        .Expecting(KeyText("another name than that of FACTORS"))
        .InvalidVarName(covariateName.GetName(), "COVARIATES", "MACROVAR");
    return false;
  }
  fSpecs.SetFactorMacroVar(factorName);
  fSpecs.SetCovariateMacroVar(covariateName);
  return true;
}

// A macro's name must be one word, or `!name` could not be written.
bool PRSParser::TakeMacroName(const ParamObj* param, KovaVarName& name) const {
  if (param == nullptr) return true;
  name = param->getVarName();
  if (TokenInfoObj::IsPlainWord(name.GetName())) return true;
  fMessages.At(param->GetPlace())
      .Expecting(KeyText("one word"))
      .InvalidVarName(name.GetName(), param->GetDescriptor().GetName(), "MACROVAR");
  return false;
}

bool PRSParser::ProcessPrintSubCom(const SubComObj& subCom) {
  if (!IsPrintConsistent(subCom)) return false;
  PRSPrint& print = fSpecs.Options().fPrint;
  bool isAnyShown = false;
  for (const auto& [name, table] : kTables) {
    const ParamObj* param = subCom.getParamObj(name);
    print.*table = param != nullptr;
    isAnyShown = (param != nullptr && IsShown(*param)) || isAnyShown;
  }
  if (!isAnyShown) fMessages.NoTableRequested();
  if (fbUniVariable && print.fbSummary) AddPrintOptions(*subCom.getParamObj("SUMMARY"));
  return true;
}

bool PRSParser::IsPrintConsistent(const SubComObj& subCom) const {
  const ParamObj* none = subCom.getParamObj("NONE");
  if (none == nullptr || subCom.getParamListSize() == 1) return true;
  fMessages.At(none->GetNameToken()).ParamExclAnyOther("NONE", "PRINT");
  return false;
}

// False, with a warning, for a table that another subcommand leaves nothing to show: two tell what
// a selection found, one what screening left out.
bool PRSParser::IsShown(const ParamObj& table) const {
  const std::string& name = table.GetDescriptor().GetName();
  const char* why = nullptr;
  if (fbUniVariable && name == "EXCLUDED" && IsScreeningOff()) why = "screening is off";
  if (!fbUniVariable && (name == "SUMMARY" || name == "SELECTED") && IsSelectionOff()) {
    why = "SUBSET asks for NOSELECTION";
  }
  if (why == nullptr) return true;
  fMessages.At(table.GetNameToken()).OptionIdle("PRINT " + name, KeyText(why));
  return false;
}

void PRSParser::AddPrintOptions(const ParamObj& summary) {
  const std::vector<std::string>& rankUpperList = summary.GetDescriptor().GetStringValues();
  const auto& all = FSCriterion::All();
  const auto nRanks = static_cast<std::size_t>(
      std::count_if(all.begin(), all.end(), [](const auto& known) { return known.IsChoice(); }));
  MCCommon::Assert(nRanks > 0 && nRanks == rankUpperList.size(),
                   "nRanks > 0 && nRanks == rankUpperList.size()", kSource);
  for (const TokenInfoObj& token : summary.getTokenList()) {
    const FSCriterion& criterion = CriterionOf(token.fText);
    if (Applies(criterion)) {
      fSpecs.AddFeaturePrintOption(criterion.fCode);
    } else {
      IgnoreCriterion(criterion, "SUMMARY", "PRINT");
    }
  }
}

bool PRSParser::ProcessPlotSubCom(const SubComObj& subCom) {
  if (fbUniVariable) {
    fSpecs.Options().fPlot.fbSummary = true;
    return true;
  }
  fSpecs.Options().fPlot.fbUncert = true;
  const ParamObj* uncertainty = subCom.getParamObj("UNCERTAINTY");
  MCCommon::Assert(uncertainty != nullptr, "uncertaintyParam != 0", kSource);
  fMessages.At(uncertainty->GetNameToken())
      .OptionIdle("PLOT UNCERTAINTY", KeyText("NAIVEBAYES draws no chart"));
  return true;
}

bool PRSParser::ProcessTrainSampSubCom(const SubComObj& subCom) {
  const ParamObj* percent = subCom.getParamObj("PERCENT");
  const ParamObj* variable = subCom.getParamObj("VARIABLE");
  if (percent != nullptr && variable != nullptr) {
    fMessages.At(variable->GetNameToken()).ParamExclusive("PERCENT", "VARIABLE", "TRAININGSAMPLE");
    return false;
  }
  if (percent != nullptr && fpWeightVar->GetNValidVars() > 0) {
    fMessages.At(percent->GetNameToken()).InvalidParamWithWeight("PERCENT", "TRAININGSAMPLE");
    return false;
  }
  if (variable != nullptr) {
    bool isValid = fpTrainVar->ValidateVariable(*variable);
    for (const VarSpecObj* role :
         {fpWeightVar.get(), fpDependVar.get(), fpFactors.get(), fpCovariates.get(),
          fpForceFactors.get(), fpForceCovariates.get()}) {
      isValid = fpTrainVar->CheckCommonVars(*role) && isValid;
    }
    if (!isValid) return false;
  }
  PRSSample& sample = fSpecs.Options().fSample;
  Take(subCom, "PERCENT", sample.fPercent);
  sample.fVariable = fpTrainVar->GetValidVarInd();
  return true;
}

bool PRSParser::ProcessSubsetSubCom(const SubComObj& subCom) {
  if (subCom.getParamListSize() > 1) {
    const std::vector<ParamObj>& given = subCom.GetParams();
    fMessages.At(given[1].GetNameToken())
        .ParamExclusive(given[0].GetDescriptor().GetName(), given[1].GetDescriptor().GetName(),
                        "SUBSET");
    return false;
  }
  const ParamObj* maxSize = subCom.getParamObj("MAXSIZE");
  const ParamObj* exactSize = subCom.getParamObj("EXACTSIZE");
  PRSSubset subset{.fMaxSize = -1};
  if (maxSize != nullptr) {
    if (!LeavesRoomBesideForced(*maxSize) || !TakeBestSubset(*maxSize, subset)) return false;
    subset.fMaxSize = maxSize->isLeadingToken("AUTO") ? 0 : maxSize->getIntegerValue();
  } else if (exactSize != nullptr) {
    if (!LeavesRoomBesideForced(*exactSize)) return false;
    subset.fbPseudoBIC = true;
    subset.fExactSize = exactSize->getIntegerValue();
  }
  fSpecs.Options().fSubset = subset;
  return true;
}

bool PRSParser::LeavesRoomBesideForced(const ParamObj& param) const {
  if (param.isLeadingToken("AUTO")) return true;
  if (static_cast<std::size_t>(param.getIntegerValue()) > fForced.size()) return true;
  const std::string name = "SUBSET " + param.GetDescriptor().GetName();
  fOwnMessages.ParamLessPossPred(name.c_str(), "FORCE", "NAIVEBAYES", false);
  return false;
}

bool PRSParser::TakeBestSubset(const ParamObj& maxSize, PRSSubset& subset) const {
  const ParamObj* best = maxSize.getQualifObj("BESTSUBSET");
  subset.fbTestData = best != nullptr && best->isStringValueCase("TESTDATA");
  subset.fbPseudoBIC = !subset.fbTestData;
  if (subset.fbPseudoBIC || fpCommand->getSubComObj("TRAININGSAMPLE") != nullptr) return true;
  fMessages.At(best->GetPlace())
      .NeedSubComForParam("TRAININGSAMPLE", "SUBSET BESTSUBSET", "TESTDATA");
  return false;
}

bool PRSParser::ProcessValidationSubCom(const SubComObj& subCom) {
  const bool isTest = fSpecs.Options().fSubset.fbTestData;
  if (isTest || IsSelectionOff()) {
    fMessages.At(subCom.GetNameToken())
        .OptionIdle("CROSSVALIDATION",
                    KeyText(isTest ? "BESTSUBSET=TESTDATA chooses by the test cases"
                                   : "SUBSET asks for NOSELECTION"));
    return true;
  }
  PRSValidation validation{.fFolds = NBCrossValidation().fNFolds};
  Take(subCom, "FOLDS", validation.fFolds);
  Take(subCom, "REPEATS", validation.fRepeats);
  Take(subCom, "SEED", validation.fSeed);
  fSpecs.Options().fValidation = validation;
  return true;
}

bool PRSParser::ProcessSaveSubCom(const SubComObj& subCom) {
  const ParamObj* predVal = subCom.getParamObj("PREDVAL");
  const ParamObj* predProb = subCom.getParamObj("PREDPROB");
  const bool isValid = predVal == nullptr || TakePredVal(*predVal);
  return (predProb == nullptr || TakePredProb(*predProb)) && isValid;
}

bool PRSParser::TakePredVal(const ParamObj& param) {
  if (param.getTokenList().empty()) {
    fSpecs.SetPredValVariable(KovaVarName(param.GetDescriptor().GetDefaultText()), true);
    return true;
  }
  const VarSpecObj role("SAVE", "PREDVAL", *fpDescriptor, fSource, false);
  if (!role.CheckNewVariable(param)) return false;
  fSpecs.SetPredValVariable(param.getVarName(), false);
  return true;
}

bool PRSParser::TakePredProb(const ParamObj& param) {
  const VarSpecObj role("SAVE", "PREDPROB", *fpDescriptor, fSource, false);
  KovaVarName root(param.GetDescriptor().GetDefaultText());
  double count = param.GetDescriptor().GetDefaultNumber();
  bool hasName = false;
  for (const TokenInfoObj& token : param.getTokenList()) {
    if (token.fType == TokenInfoObj::kNumber) {
      count = token.fNumber;
      if (count > 0.5 && std::floor(count) == count) continue;
      fMessages.At(token)
          .Expecting(KeyText("a count of at least 1"))
          .ParamNeedInteger("PREDPROB", "SAVE");
      return false;
    }
    if (!token.IsName() || hasName) {
      fMessages.At(token)
          .Expecting(param.GetDescriptor().Expectation())
          .WrongValueType("PREDPROB", "SAVE");
      return false;
    }
    if (!role.CheckRoot(token)) return false;
    root = KovaVarName(token.fText);
    hasName = true;
  }
  constexpr double kMost = std::numeric_limits<int>::max();  // more than there can be categories
  fSpecs.SetPredProbRoot(root, static_cast<int>(std::min(count, kMost)));
  return true;
}

bool PRSParser::ProcessOutFileSubCom(const SubComObj& subCom) {
  const ParamObj* model = subCom.getParamObj("MODEL");
  MCCommon::Assert(model != nullptr, "modelParam != 0", kSource);
  fSpecs.SetModelFileName(model->getFilePath());
  return true;
}
