#include "backend/predselect/command/PRSGrammar.h"

#include <string>
#include <vector>

#include "backend/predselect/specifications/PRSOptions.h"
#include "feature/FSCriterion.h"
#include "naivebayes/validation/NBCrossValidation.h"

namespace {

using Param = ParamDescriptor;
using SubCom = SubComDescriptor;

SubCom Variables(bool univariable) {
  Param dependent("", Param::kVariable, "The variable to be predicted.");
  dependent.setForm(Param::kBare);
  if (univariable) {
    Param level("MLEVEL", Param::kKeyword,
                "Take it as nominal, ordinal or scale, whatever its own measurement level.");
    level.addStringValue("N").addStringValue("O").addStringValue("S");
    dependent.setQualifOption(Param::kOptionalQualif).addQualifDesc(level);
  }
  return SubCom("",
                "What is predicted, and from what. Without BY and WITH every other variable is "
                "a candidate, as its measurement level says.")
      .addParamDesc(dependent)
      .addParamDesc(
          Param("BY", Param::kVariableList, "Categorical predictors.").setForm(Param::kLed))
      .addParamDesc(Param("WITH", Param::kVariableList, "Continuous predictors; numeric only.")
                        .setForm(Param::kLed));
}

SubCom Except() {
  return SubCom("EXCEPT", "Variables that are no predictors.")
      .addParamDesc(Param("VARIABLES", Param::kVariableList, "Left out of the candidates."));
}

SubCom Screening(bool univariable) {
  const PRSScreening screening;
  const auto percent = [](const char* name, const PRSThreshold& threshold, const char* help) {
    return Param(name, Param::kNumber, help)
        .setLowerBoundary(0.0, Param::kLowerExclusive)
        .setUpperBoundary(100.0, Param::kUpperInclusive)
        .setDefault(threshold.fValue);
  };
  const auto least = [](const char* name, const PRSThreshold& threshold, const char* help) {
    return Param(name, Param::kNumber, help)
        .setLowerBoundary(0.0, Param::kLowerInclusive)
        .setDefault(threshold.fValue);
  };
  return SubCom("SCREENING",
                univariable
                    ? "Which predictors are useless and left out before ranking."
                    : "Which predictors are useless and left out before the model is built, "
                      "by the training cases. None without this subcommand.")
      .addParamDesc(Param("STATUS", Param::kKeyword, "Whether predictors are screened at all.")
                        .addStringValue("ON")
                        .addStringValue("OFF")
                        .setDefault(screening.fbOn ? "ON" : "OFF"))
      .addParamDesc(percent("PCTMISSING", screening.fPctMissing,
                            "Most missing values, in percent of the cases."))
      .addParamDesc(
          percent("PCTEQUAL", screening.fPctEqual, "Most cases in one category, in percent."))
      .addParamDesc(
          percent("PCTUNEQUAL", screening.fPctUnequal, "Most categories, in percent of the cases."))
      .addParamDesc(least("CV", screening.fCoeffVariate, "Least coefficient of variation."))
      .addParamDesc(least("STDDEV", screening.fStdDev, "Least standard deviation."));
}

Param Timer() {
  return Param("TIMER", Param::kNumber, "Most minutes to work; 0 for no limit.")
      .setLowerBoundary(0.0, Param::kLowerInclusive)
      .setDefault(PRSCommonCriteria().fTimer);
}

Param RankCriteria(const char* name, Param::Kind kind, const std::string& help) {
  Param param(name, kind, help);
  for (const FSCriterion& criterion : FSCriterion::All()) {
    if (criterion.IsChoice()) param.addStringValue(criterion.fKeyword);
  }
  return param;
}

// The words of the criteria that predictors of both kinds cannot be ranked by: "A, B and C".
std::string NotForBothKinds() {
  std::vector<std::string> words;
  for (const FSCriterion& criterion : FSCriterion::All()) {
    if (criterion.IsChoice() && !criterion.Suits(true, MCFSCommon::kMixed)) {
      words.emplace_back(criterion.fKeyword);
    }
  }
  std::string list = words.front();
  for (std::size_t i = 1; i < words.size(); ++i) {
    list += (i + 1 == words.size() ? " and " : ", ") + words[i];
  }
  return list;
}

SubCom UniCriteria() {
  const std::string first = FSCriterion::Of(PRSUniCriteria().fCriterion).fKeyword;
  return SubCom("CRITERIA", "How predictors are ranked and how many are selected.")
      .addParamDesc(Timer())
      .addParamDesc(
          Param("SHOWUNSELECTED", Param::kInteger, "How many unselected predictors are shown too.")
              .setLowerBoundary(0.0, Param::kLowerInclusive)
              .setDefault(PRSCommonCriteria().fShowUnselect))
      .addParamDesc(Param("SIZE", Param::kInteger,
                          "How many predictors are selected at most. AUTO: 30, or twice the square "
                          "root of the number of candidates when that is more.")
                        .setLowerBoundary(0.0, Param::kLowerExclusive)
                        .addStringValue("AUTO")
                        .setDefault("AUTO"))
      .addParamDesc(RankCriteria("RANKING", Param::kKeyword,
                                 "The ranking statistic for a categorical dependent variable. With "
                                 "predictors of both kinds " +
                                     NotForBothKinds() + " do not apply and " + first +
                                     " takes their place.")
                        .setDefault(first))
      .addParamDesc(Param("PCUTOFF", Param::kNumber,
                          "Only predictors with a significance below are selected.")
                        .setLowerBoundary(0.0, Param::kLowerExclusive)
                        .setUpperBoundary(1.0, Param::kUpperInclusive)
                        .setDefault(PRSUniCriteria().fPCutOff))
      .addParamDesc(Param("PVALUES", Param::kKeyword,
                          "How p-values are computed. ROUNDED: as 1 minus the probability of a "
                          "smaller statistic, which is 0 below about 1e-16. EXACT: from the tail "
                          "itself at any size; predictors are ranked by its logarithm.")
                        .addStringValue("ROUNDED")
                        .addStringValue("EXACT")
                        .setDefault(PRSUniCriteria().fbExactPValues ? "EXACT" : "ROUNDED"));
}

SubCom MultiCriteria() {
  return SubCom("CRITERIA", "How the model is built.")
      .addParamDesc(Timer())
      .addParamDesc(Param("BINS", Param::kInteger, "Bins of a continuous predictor.")
                        .setLowerBoundary(1.0, Param::kLowerExclusive)
                        .setDefault(PRSMultiCriteria().fBins))
      .addParamDesc(Param("MEMALLOCATE", Param::kNumber,
                          "Kilobytes of memory for cases; more cases go to a temporary file.")
                        .setLowerBoundary(PRSMultiCriteria::kLeastMemory, Param::kLowerInclusive)
                        .setDefault(PRSMultiCriteria().fMemAllocate));
}

SubCom Force() {
  return SubCom("FORCE", "Predictors that are always kept.")
      .addParamDesc(Param("FACTORS", Param::kVariableList, "Categorical ones."))
      .addParamDesc(Param("COVARIATES", Param::kVariableList, "Continuous ones; numeric only."));
}

SubCom TrainingSample() {
  return SubCom("TRAININGSAMPLE", "Which cases train the model; the others test it.")
      .addParamDesc(
          Param("PERCENT", Param::kNumber, "So many percent of the cases, drawn at random.")
              .setLowerBoundary(0.0, Param::kLowerExclusive)
              .setUpperBoundary(100.0, Param::kUpperExclusive))
      .addParamDesc(Param("VARIABLE", Param::kVariable,
                          "A numeric variable that is 1 in the training cases."));
}

SubCom Subset() {
  return SubCom("SUBSET", "How many predictors the model gets.")
      .addParamDesc(
          Param("MAXSIZE", Param::kInteger,
                "At most so many besides the forced ones: more than there are of these, and no "
                "more than there are candidates. AUTO: as many as serve the criterion.")
              .setLowerBoundary(0.0, Param::kLowerExclusive)
              .addStringValue("AUTO")
              .setDefault("AUTO")
              .setQualifOption(Param::kOptionalQualif)
              .addQualifDesc(
                  Param("BESTSUBSET", Param::kKeyword,
                        "The criterion: pseudo-BIC, or the average log-likelihood of the "
                        "test cases.")
                      .addStringValue("PSEUDOBIC")
                      .addStringValue("TESTDATA")
                      .setDefault("PSEUDOBIC")))
      .addParamDesc(Param("EXACTSIZE", Param::kInteger,
                          "Exactly so many besides the forced ones: more than there are of these, "
                          "and fewer than there are candidates.")
                        .setLowerBoundary(0.0, Param::kLowerExclusive))
      .addParamDesc(Param("NOSELECTION", Param::kFlag, "All of them."));
}

SubCom CrossValidation() {
  return SubCom("CROSSVALIDATION",
                "Says how good such a model is on cases that it has not seen: selects and builds "
                "it again without each fold of the training cases, and predicts that fold.")
      .addParamDesc(Param("FOLDS", Param::kInteger, "So many folds.")
                        .setLowerBoundary(2.0, Param::kLowerInclusive)
                        .setUpperBoundary(NBCrossValidation::kMostFolds, Param::kUpperInclusive)
                        .setDefault(NBCrossValidation().fNFolds))
      .addParamDesc(Param("REPEATS", Param::kInteger, "So many times, with other folds each time.")
                        .setLowerBoundary(1.0, Param::kLowerInclusive)
                        .setUpperBoundary(NBCrossValidation::kMostRepeats, Param::kUpperInclusive)
                        .setDefault(NBCrossValidation().fNRepeats))
      .addParamDesc(Param("SEED", Param::kInteger, "Which folds; another number, other folds.")
                        .setLowerBoundary(0.0, Param::kLowerInclusive)
                        .setDefault(static_cast<int>(NBCrossValidation().fSeed)));
}

SubCom Save() {
  return SubCom("SAVE", "New variables in the data.")
      .addParamDesc(
          Param("PREDVAL", Param::kNewName, "The predicted value.").setDefault("PredictedValue"))
      .addParamDesc(
          Param("PREDPROB", Param::kNewNames,
                "The predicted probability of each category, so many at most: root_1, root_2, ...")
              .setDefault(PRSSave().fPredProbNumber)
              .setDefault("PredictedProbability"));
}

SubCom OutFile() {
  return SubCom("OUTFILE", "Files that are written.")
      .addParamDesc(Param("MODEL", Param::kFile, "The model, as PMML."));
}

SubCom Missing() {
  return SubCom("MISSING", "What counts as missing.")
      .addParamDesc(
          Param(
              "USERMISSING", Param::kKeyword,
              "EXCLUDE: user-missing values are missing. INCLUDE: they are values like any other.")
              .addStringValue("EXCLUDE")
              .addStringValue("INCLUDE")
              .setDefault(PRSOptions().fbMissingExclude ? "EXCLUDE" : "INCLUDE"));
}

SubCom MacroVar() {
  return SubCom("MACROVAR",
                "Macros that receive the selected predictors: !name in a later command "
                "stands for them.")
      .addParamDesc(Param("FACTORS", Param::kName, "The categorical ones."))
      .addParamDesc(Param("COVARIATES", Param::kName, "The continuous ones."));
}

SubCom Print(bool univariable) {
  SubCom print("PRINT", univariable ? "The tables that are shown. All of them but EFFECTS when "
                                      "PRINT is not given."
                                    : "The tables that are shown. All of them but EVALUATION "
                                      "when PRINT is not given.");
  print.addParamDesc(Param("NONE", Param::kFlag, "No table."))
      .addParamDesc(Param("CPS", Param::kFlag, "Case processing summary."))
      .addParamDesc(Param("EXCLUDED", Param::kFlag, "Predictors that were left out, and why."))
      .addParamDesc(Param("SELECTED", Param::kFlag, "The selected predictors."));
  if (univariable) {
    return print
        .addParamDesc(RankCriteria(
            "SUMMARY", Param::kKeywordList,
            "Rank and statistics of each predictor, with the statistics named besides."))
        .addParamDesc(Param("EFFECTS", Param::kFlag,
                            "How strong each predictor is: exact and adjusted significance, effect "
                            "size with its interval, mutual information, missing values."));
  }
  return print.addParamDesc(Param("SUMMARY", Param::kFlag, "The subsets and their criterion."))
      .addParamDesc(Param("CLASSIFICATION", Param::kFlag, "Predicted against observed categories."))
      .addParamDesc(Param("EVALUATION", Param::kFlag,
                          "How good the model is on the test cases, without a test sample on the "
                          "training cases: accuracy, AUC, log loss and others with their "
                          "intervals."));
}

SubCom Plot(bool univariable) {
  return SubCom("PLOT", "The charts that are drawn. None when PLOT is not given.")
      .addParamDesc(univariable
                        ? Param("SUMMARY", Param::kFlag, "The ranking statistic of each predictor.")
                        : Param("UNCERTAINTY", Param::kFlag, "Accepted, but no chart is drawn."));
}

}  // namespace

CommandDescriptor PRSGrammar::NewCommand(bool univariable) {
  CommandDescriptor command =
      univariable ? CommandDescriptor(kSelectPred,
                                      "Screens predictors and ranks them one by one "
                                      "against a dependent variable.")
                  : CommandDescriptor(kNaiveBayes,
                                      "Builds a Naive Bayes classifier from the best "
                                      "subset of predictors.");
  command.setKnownCommands({kSelectPred, kNaiveBayes});
  return command;
}

void PRSGrammar::Declare(CommandDescriptor& command, bool univariable) {
  command.addSubComDesc(Variables(univariable))
      .addSubComDesc(Except())
      .addSubComDesc(Screening(univariable));
  if (!univariable) {
    command.addSubComDesc(Force())
        .addSubComDesc(TrainingSample())
        .addSubComDesc(Subset())
        .addSubComDesc(CrossValidation())
        .addSubComDesc(Save())
        .addSubComDesc(OutFile());
  }
  command.addSubComDesc(univariable ? UniCriteria() : MultiCriteria())
      .addSubComDesc(Missing())
      .addSubComDesc(MacroVar())
      .addSubComDesc(Print(univariable))
      .addSubComDesc(Plot(univariable));
}
