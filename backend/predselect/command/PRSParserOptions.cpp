// The handlers of the subcommands that set options; the variables are handled in PRSParser.cpp.
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

using MCHost::KeyText;

namespace {

constexpr const char* kSource = "backend/predselect/PRSParser";

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
  PRSUniCriteria& criteria = fSpecs.Options().fUniCriteria;
  if (!TakeSize(subCom, criteria.fSize)) return false;
  const FSCriterion& criterion = TakeRanking(subCom);
  criteria.fCriterion = criterion.fCode;
  ReportIdleCutOff(subCom, criterion);
  Take(subCom, "PCUTOFF", criteria.fPCutOff);
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
  fOwnMessages.IgnoreRankCriterion(criterion.fKeyword, "RANKING", "CRITERIA", IsMixed());
  // Where none of the words applies, the data choose the criterion and the word stays as it is.
  return Applies(otherwise) ? otherwise : criterion;
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
  MCCommon::Assert(fbUniVariable, "fbUniVariable", kSource);
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
  const auto isAsked = [&subCom](const char* table) {
    return subCom.getParamObj(table) != nullptr;
  };
  const PRSPrint print{.fbCPS = isAsked("CPS"),
                       .fbExclude = isAsked("EXCLUDED"),
                       .fbSummary = isAsked("SUMMARY"),
                       .fbSelect = isAsked("SELECTED"),
                       .fbClassify = isAsked("CLASSIFICATION")};
  const bool anyTable =
      print.fbCPS || print.fbExclude || print.fbSummary || print.fbSelect || print.fbClassify;
  if (!anyTable) fMessages.NoTableRequested();
  if (!fbUniVariable && IsSelectionOff()) ReportIdleTables(subCom);
  if (fbUniVariable && print.fbSummary) AddPrintOptions(*subCom.getParamObj("SUMMARY"));
  fSpecs.Options().fPrint = print;
  return true;
}

bool PRSParser::IsPrintConsistent(const SubComObj& subCom) const {
  const ParamObj* none = subCom.getParamObj("NONE");
  if (none == nullptr || subCom.getParamListSize() == 1) return true;
  fMessages.At(none->GetNameToken()).ParamExclAnyOther("NONE", "PRINT");
  return false;
}

// Two tables show what a selection found.
void PRSParser::ReportIdleTables(const SubComObj& subCom) const {
  for (const char* table : {"SUMMARY", "SELECTED"}) {
    const ParamObj* param = subCom.getParamObj(table);
    if (param == nullptr) continue;
    fMessages.At(param->GetNameToken())
        .OptionIdle(std::string("PRINT ") + table, KeyText("SUBSET asks for NOSELECTION"));
  }
}

void PRSParser::AddPrintOptions(const ParamObj& summary) {
  for (const TokenInfoObj& token : summary.getTokenList()) {
    const FSCriterion& criterion = CriterionOf(token.fText);
    if (Applies(criterion)) {
      fSpecs.AddFeaturePrintOption(criterion.fCode);
    } else {
      fOwnMessages.IgnoreRankCriterion(criterion.fKeyword, "SUMMARY", "PRINT", IsMixed());
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
      if (count > 0.5 && std::floor(count) == count && count <= std::numeric_limits<int>::max()) {
        continue;
      }
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
  fSpecs.SetPredProbRoot(root, static_cast<int>(count));
  return true;
}

bool PRSParser::ProcessOutFileSubCom(const SubComObj& subCom) {
  const ParamObj* model = subCom.getParamObj("MODEL");
  MCCommon::Assert(model != nullptr, "modelParam != 0", kSource);
  fSpecs.SetModelFileName(model->getFilePath());
  return true;
}
