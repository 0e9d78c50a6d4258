// The validated specifications of one command: everything the user asked for, checked.
//
// The parser fills it through the setters, CompleteSpecs() derives the engine's record and its
// settings once, and drivers, case streams and outputs read it until the run ends. It owns the
// lists it is given and the objects that CompleteSpecs() makes. Variables are given by their index
// in the active data; a list that was not given is null. There are no user messages here.
#pragma once

#include <iosfwd>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "backend/predselect/specifications/PRSOptions.h"
#include "feature/MCFSCommon.h"
#include "host/command/KovaVarName.h"

class FSSettings;
class MCStopProcessor;
class NaiveBayesSettings;
class UAUniformRandom;
class UAVarValidSpecs;

// NOLINTNEXTLINE(clang-analyzer-optin.performance.Padding): one object a run, grouped by meaning
class PRSValidSpecs {
 public:
  // A ranking statistic asked for besides the ranking criterion.
  using FeaturePrintOption = MCFSCommon::RankCriteria;
  static constexpr FeaturePrintOption kPearsonChiSquare = MCFSCommon::kPearson;
  static constexpr FeaturePrintOption kLikelihoodRatioChiSquare = MCFSCommon::kLikelihood;
  static constexpr FeaturePrintOption kCramersV = MCFSCommon::kCramer;
  static constexpr FeaturePrintOption kLambda = MCFSCommon::kLambda;

  using IntList = std::unique_ptr<std::vector<int>>;
  using BoolList = std::unique_ptr<std::vector<bool>>;

  PRSValidSpecs();
  PRSValidSpecs(const PRSValidSpecs&) = delete;
  PRSValidSpecs& operator=(const PRSValidSpecs&) = delete;
  ~PRSValidSpecs();

  // True for SELECTPRED, false for NAIVEBAYES.
  void SetUniVariable(bool univariable) { fbUniVariable = univariable; }
  bool GetUniVariable() const { return fbUniVariable; }

  // The target. -1 until it is known.
  void SetDependVar(int index, bool categorical);
  int GetDependVar() const { return fDependVar; }
  bool GetDependCatVar() const { return fbDependCatVar; }

  // The host's frequency weight variable, -1 for none.
  void SetKOVAWeightVar(int index) { fKOVAWeightVar = index; }
  int GetKOVAWeightVar() const { return fKOVAWeightVar; }

  // Candidate predictors, each with whether it is categorical.
  // REQUIRES: lists of equal length (asserted).
  void SetPredictList(IntList predictors, BoolList categorical);
  const std::vector<int>* GetPredListPtr() const { return fpPredictList.get(); }
  const std::vector<bool>* GetPredCatVarListPtr() const { return fbpPredCatVarList.get(); }
  int GetNPredictVars() const;

  // Predictors that are always kept (NAIVEBAYES). REQUIRES: as above.
  void SetForcePredList(IntList predictors, BoolList categorical);
  const std::vector<int>* GetForcePredListPtr() const { return fpForcePredList.get(); }
  const std::vector<bool>* GetForceCatVarListPtr() const { return fbpForceCatVarList.get(); }
  int GetNForcePredVars() const;

  // Variables that were taken out of the candidates.
  void SetExceptList(IntList variables);
  const std::vector<int>* GetExceptListPtr() const { return fpExceptList.get(); }
  int GetNExceptVars() const;

  // What the subcommands ask for. The setters and getters below are the same, one by one.
  PRSOptions& Options() { return fOptions; }
  const PRSOptions& Options() const { return fOptions; }

  // Screening thresholds, percentages in percent.
  void SetScreenOptions(bool on, double pctMissing, double pctEqual, double pctUnequal,
                        double coeffVariate, double stdDev);
  bool GetScreenStatusOn() const { return fOptions.fScreening.fbOn; }
  double GetScreenPCTMissing() const { return fOptions.fScreening.fPctMissing.fValue; }
  double GetScreenPCTEqual() const { return fOptions.fScreening.fPctEqual.fValue; }
  double GetScreenPCTUnequal() const { return fOptions.fScreening.fPctUnequal.fValue; }
  double GetScreenCoeffVariate() const { return fOptions.fScreening.fCoeffVariate.fValue; }
  double GetScreenStdDev() const { return fOptions.fScreening.fStdDev.fValue; }

  // Gives settings these thresholds.
  void SetThresholds(FSSettings& settings) const;

  // The same thresholds in the user's own digits, for output. Empty for one that was not typed.
  void SetStringScreenOptions(std::string pctMissing, std::string pctEqual, std::string pctUnequal,
                              std::string coeffVariate, std::string stdDev);
  const std::string& GetStringPCTMissing() const { return fOptions.fScreening.fPctMissing.fTyped; }
  const std::string& GetStringPCTEqual() const { return fOptions.fScreening.fPctEqual.fTyped; }
  const std::string& GetStringPCTUnequal() const { return fOptions.fScreening.fPctUnequal.fTyped; }
  const std::string& GetStringCoeffVariate() const {
    return fOptions.fScreening.fCoeffVariate.fTyped;
  }
  const std::string& GetStringStdDev() const { return fOptions.fScreening.fStdDev.fTyped; }

  // Criteria of SELECTPRED. A size of 0 is automatic; the time limit is in minutes, 0 for none.
  void SetUniCriteria(int size, MCFSCommon::RankCriteria criterion, double pCutOff,
                      int showUnselect, double timer);
  bool GetUniSizeAuto() const { return fOptions.fUniCriteria.fSize == 0; }
  // The number of best predictors. An automatic size is settled by the feature selection settings
  // from the number of candidates; before CompleteSpecs() it is 0.
  int GetUniSize() const;
  MCFSCommon::RankCriteria GetUniRank() const { return fOptions.fUniCriteria.fCriterion; }
  double GetUniPCutOff() const { return fOptions.fUniCriteria.fPCutOff; }
  int GetShowUnselect() const { return fOptions.fCommonCriteria.fShowUnselect; }
  double GetTimer() const { return fOptions.fCommonCriteria.fTimer; }

  // Criteria of NAIVEBAYES. Memory in kilobytes, the time limit in minutes.
  void SetMultiCriteria(int bins, double memAllocate, int showUnselect, double timer);
  int GetMultiBins() const { return fOptions.fMultiCriteria.fBins; }
  double GetMultiMemAllocate() const { return fOptions.fMultiCriteria.fMemAllocate; }
  // The least memory, in whole kilobytes, that holds so many cases.
  // REQUIRES: the specifications are complete.
  double GetMemoryToHold(int cases) const;
  // Settles the memory for so many cases, where the session offers some: as much of it as they
  // need, so that a saved state does not tell of the machine that it was made on.
  // REQUIRES: the specifications are complete.
  void TakeMemoryFor(int cases);

  // How cases are split into training and test cases: by a drawn percentage, or by a variable that
  // marks training cases. 0 and -1 mean no split.
  void SetMultiTrainSampInfo(double percent, int variable);
  double GetMultiTrainSampPCT() const { return fOptions.fSample.fPercent; }
  int GetMultiTrainSampVar() const { return fOptions.fSample.fVariable; }
  bool GetMultiTrainSamp() const { return fOptions.fSample.IsSplit(); }

  // How the predictor subset is chosen. A maximum size of 0 is automatic, a negative one means that
  // none is set; an exact size of 0 means none.
  void SetMultiSubsetInfo(int maxSize, bool pseudoBIC, bool testData, int exactSize);
  int GetMultiMaxSize() const { return fOptions.fSubset.fMaxSize; }
  bool GetMultiPseudoBIC() const { return fOptions.fSubset.fbPseudoBIC; }
  bool GetMultiTestData() const { return fOptions.fSubset.fbTestData; }
  int GetMultiExactSize() const { return fOptions.fSubset.fExactSize; }
  // True when all predictors are kept: no maximum and no exact size.
  bool GetMultiNoSelection() const { return fOptions.fSubset.IsSelectionOff(); }

  // True: user-missing values are missing. False: they are values like any other.
  void SetMissIndicators(bool exclude) { fOptions.fbMissingExclude = exclude; }
  bool IsMissingExclude() const { return fOptions.fbMissingExclude; }

  // The macros that receive the selected categorical and continuous predictors.
  void SetFactorMacroVar(KovaVarName name) { fFactorMacroVar = std::move(name); }
  void SetCovariateMacroVar(KovaVarName name) { fCovariateMacroVar = std::move(name); }
  const KovaVarName& GetFactorMacroVar() const { return fFactorMacroVar; }
  const KovaVarName& GetCovariateMacroVar() const { return fCovariateMacroVar; }

  // Saved predicted probabilities: the root of their names and how many at most. Empty for none.
  void SetPredProbRoot(KovaVarName root, int number);
  const KovaVarName& GetPredProbRootName() const { return fOptions.fSave.fPredProbRoot; }
  int GetPredProbNumber() const { return fOptions.fSave.fPredProbNumber; }

  // Saved predicted value. With the suffix flag the name is a root that may be extended until it is
  // new; without it the name is the user's own. Empty for none.
  void SetPredValVariable(KovaVarName name, bool suffix);
  const KovaVarName& GetPredValVarName() const { return fOptions.fSave.fPredVal; }
  bool GetPredValVarSuffix() const { return fOptions.fSave.fbPredValSuffix; }

  // The model file to write, empty for none.
  void SetModelFileName(std::string name) { fModelFileName = std::move(name); }
  const std::string& GetModelFileName() const { return fModelFileName; }

  // Appends an option; false when it was there already.
  bool AddFeaturePrintOption(FeaturePrintOption option);
  const std::vector<FeaturePrintOption>& GetFeaturePrintOptions() const {
    return fFeaturePrintOptions;
  }

  // Which tables are shown; without those of effects and evaluation, which Options() alone asks
  // for.
  void SetPrintInfo(bool cps, bool exclude, bool summary, bool select, bool classify, bool uncert);
  bool GetPrintCPS() const { return fOptions.fPrint.fbCPS; }
  bool GetPrintExclude() const { return fOptions.fPrint.fbExclude; }
  bool GetPrintSummary() const { return fOptions.fPrint.fbSummary; }
  bool GetPrintSelect() const { return fOptions.fPrint.fbSelect; }
  bool GetPrintClassify() const { return fOptions.fPrint.fbClassify; }
  bool GetPrintUncert() const { return fOptions.fPrint.fbUncert; }
  bool GetPrintEffects() const { return fOptions.fPrint.fbEffects; }
  bool GetPrintEvaluation() const { return fOptions.fPrint.fbEvaluation; }

  // Which charts are drawn.
  void SetPlotSummary(bool on) { fOptions.fPlot.fbSummary = on; }
  void SetPlotUncert(bool on) { fOptions.fPlot.fbUncert = on; }
  bool GetPlotSummary() const { return fOptions.fPlot.fbSummary; }
  bool GetPlotUncert() const { return fOptions.fPlot.fbUncert; }

  // Makes the engine's record, the stop processor (its clock starts now) and the settings of the
  // chosen engine. Call once, after a successful parse, with a session installed.
  void CompleteSpecs();

  // What CompleteSpecs() made; null before. The settings are null for the other command.
  UAVarValidSpecs* GetVarValidSpecsPtr() const { return fpVarValidSpecs.get(); }
  FSSettings* GetFeatureSettingsPtr() const { return fpFeatureSettings.get(); }
  NaiveBayesSettings* GetNaiveSettingsPtr() const { return fpNaiveSettings.get(); }
  MCStopProcessor* GetStopProcessorPtr() const { return fpStopProcessor.get(); }

  // Writes every field under its label, one a line, for debugging.
  void Display(std::ostream& out) const;

 private:
  void CompleteFeatureSettings(int targetPosition, int weightPosition);
  void CompleteNaiveSettings();
  void SettleRecordsInMemory();
  void DisplayVariables(std::ostream& out) const;
  void DisplayCriteria(std::ostream& out) const;
  void DisplayOutputs(std::ostream& out) const;
  static void DisplayFeaturePrintOption(std::ostream& out, const std::string& label,
                                        FeaturePrintOption option);

  std::unique_ptr<UAVarValidSpecs> fpVarValidSpecs;
  bool fbUniVariable = true;
  int fDependVar = -1;
  bool fbDependCatVar = true;
  int fKOVAWeightVar = -1;
  IntList fpPredictList;
  BoolList fbpPredCatVarList;
  IntList fpForcePredList;
  BoolList fbpForceCatVarList;
  IntList fpExceptList;
  PRSOptions fOptions;
  KovaVarName fFactorMacroVar;
  KovaVarName fCovariateMacroVar;
  std::string fModelFileName;
  std::vector<FeaturePrintOption> fFeaturePrintOptions;
  std::unique_ptr<FSSettings> fpFeatureSettings;
  std::unique_ptr<NaiveBayesSettings> fpNaiveSettings;
  std::unique_ptr<UAUniformRandom> fpRandom;  // draws the training sample
  std::unique_ptr<MCStopProcessor> fpStopProcessor;
};
