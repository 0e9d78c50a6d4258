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

  // Screening thresholds, percentages in percent.
  void SetScreenOptions(bool on, double pctMissing, double pctEqual, double pctUnequal,
                        double coeffVariate, double stdDev);
  bool GetScreenStatusOn() const { return fbScreenStatusOn; }
  double GetScreenPCTMissing() const { return fScreenPCTMissing; }
  double GetScreenPCTEqual() const { return fScreenPCTEqual; }
  double GetScreenPCTUnequal() const { return fScreenPCTUnequal; }
  double GetScreenCoeffVariate() const { return fScreenCoeffVariate; }
  double GetScreenStdDev() const { return fScreenStdDev; }

  // The same thresholds in the user's own digits, for output. Empty for one that was not typed.
  void SetStringScreenOptions(std::string pctMissing, std::string pctEqual, std::string pctUnequal,
                              std::string coeffVariate, std::string stdDev);
  const std::string& GetStringPCTMissing() const { return fStringPCTMissing; }
  const std::string& GetStringPCTEqual() const { return fStringPCTEqual; }
  const std::string& GetStringPCTUnequal() const { return fStringPCTUnequal; }
  const std::string& GetStringCoeffVariate() const { return fStringCoeffVariate; }
  const std::string& GetStringStdDev() const { return fStringStdDev; }

  // Criteria of SELECTPRED. A size of 0 is automatic; the time limit is in minutes, 0 for none.
  void SetUniCriteria(int size, MCFSCommon::RankCriteria criterion, double pCutOff,
                      int showUnselect, double timer);
  bool GetUniSizeAuto() const { return fUniSize == 0; }
  // The number of best predictors. An automatic size is settled by the feature selection settings
  // from the number of candidates; before CompleteSpecs() it is 0.
  int GetUniSize() const;
  MCFSCommon::RankCriteria GetUniRank() const { return fUniRank; }
  double GetUniPCutOff() const { return fUniPCutOff; }
  int GetShowUnselect() const { return fShowUnselect; }
  double GetTimer() const { return fTimer; }

  // Criteria of NAIVEBAYES. Memory in kilobytes, the time limit in minutes.
  void SetMultiCriteria(int bins, double memAllocate, int showUnselect, double timer);
  int GetMultiBins() const { return fMultiBins; }
  double GetMultiMemAllocate() const { return fMultiMemAllocate; }

  // How cases are split into training and test cases: by a drawn percentage, or by a variable that
  // marks training cases. 0 and -1 mean no split.
  void SetMultiTrainSampInfo(double percent, int variable);
  double GetMultiTrainSampPCT() const { return fMultiTrainSampPCT; }
  int GetMultiTrainSampVar() const { return fMultiTrainSampVar; }
  bool GetMultiTrainSamp() const;

  // How the predictor subset is chosen. A maximum size of 0 is automatic, a negative one means that
  // none is set; an exact size of 0 means none.
  void SetMultiSubsetInfo(int maxSize, bool pseudoBIC, bool testData, int exactSize);
  int GetMultiMaxSize() const { return fMultiMaxSize; }
  bool GetMultiPseudoBIC() const { return fbMultiPseudoBIC; }
  bool GetMultiTestData() const { return fbMultiTestData; }
  int GetMultiExactSize() const { return fMultiExactSize; }
  // True when all predictors are kept: no maximum and no exact size.
  bool GetMultiNoSelection() const { return fMultiMaxSize < 0 && fMultiExactSize < 1; }

  // True: user-missing values are missing. False: they are values like any other.
  void SetMissIndicators(bool exclude) { fbMissingExclude = exclude; }
  bool IsMissingExclude() const { return fbMissingExclude; }

  // The macros that receive the selected categorical and continuous predictors.
  void SetFactorMacroVar(KovaVarName name) { fFactorMacroVar = std::move(name); }
  void SetCovariateMacroVar(KovaVarName name) { fCovariateMacroVar = std::move(name); }
  const KovaVarName& GetFactorMacroVar() const { return fFactorMacroVar; }
  const KovaVarName& GetCovariateMacroVar() const { return fCovariateMacroVar; }

  // Saved predicted probabilities: the root of their names and how many at most. Empty for none.
  void SetPredProbRoot(KovaVarName root, int number);
  const KovaVarName& GetPredProbRootName() const { return fPredProbRoot; }
  int GetPredProbNumber() const { return fPredProbNumber; }

  // Saved predicted value. With the suffix flag the name is a root that may be extended until it is
  // new; without it the name is the user's own. Empty for none.
  void SetPredValVariable(KovaVarName name, bool suffix);
  const KovaVarName& GetPredValVarName() const { return fPredValVar; }
  bool GetPredValVarSuffix() const { return fbPredValVarSuffix; }

  // The model file to write, empty for none.
  void SetModelFileName(std::string name) { fModelFileName = std::move(name); }
  const std::string& GetModelFileName() const { return fModelFileName; }

  // Appends an option; false when it was there already.
  bool AddFeaturePrintOption(FeaturePrintOption option);
  const std::vector<FeaturePrintOption>& GetFeaturePrintOptions() const {
    return fFeaturePrintOptions;
  }

  // Which tables are shown.
  void SetPrintInfo(bool cps, bool exclude, bool summary, bool select, bool classify, bool uncert);
  bool GetPrintCPS() const { return fbPrintCPS; }
  bool GetPrintExclude() const { return fbPrintExclude; }
  bool GetPrintSummary() const { return fbPrintSummary; }
  bool GetPrintSelect() const { return fbPrintSelect; }
  bool GetPrintClassify() const { return fbPrintClassify; }
  bool GetPrintUncert() const { return fbPrintUncert; }

  // Which charts are drawn.
  void SetPlotSummary(bool on) { fbPlotSummary = on; }
  void SetPlotUncert(bool on) { fbPlotUncert = on; }
  bool GetPlotSummary() const { return fbPlotSummary; }
  bool GetPlotUncert() const { return fbPlotUncert; }

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
  bool fbScreenStatusOn = true;
  double fScreenPCTMissing = 70.0;
  double fScreenPCTEqual = 95.0;
  double fScreenPCTUnequal = 90.0;
  double fScreenCoeffVariate = 0.001;
  double fScreenStdDev = 0.0;
  std::string fStringPCTMissing;
  std::string fStringPCTEqual;
  std::string fStringPCTUnequal;
  std::string fStringCoeffVariate;
  std::string fStringStdDev;
  double fTimer = 5.0;
  int fShowUnselect = 0;
  int fUniSize = 0;
  MCFSCommon::RankCriteria fUniRank{};
  double fUniPCutOff = 0.05;
  int fMultiBins = 10;
  double fMultiMemAllocate = 1024.0;
  double fMultiTrainSampPCT = 0.0;
  int fMultiTrainSampVar = -1;
  int fMultiMaxSize = 0;
  bool fbMultiPseudoBIC = false;
  bool fbMultiTestData = false;
  int fMultiExactSize = 0;
  bool fbMissingExclude = true;
  KovaVarName fFactorMacroVar;
  KovaVarName fCovariateMacroVar;
  KovaVarName fPredProbRoot;
  int fPredProbNumber = 25;
  KovaVarName fPredValVar;
  bool fbPredValVarSuffix = false;
  std::string fModelFileName;
  std::vector<FeaturePrintOption> fFeaturePrintOptions;
  bool fbPrintCPS = true;
  bool fbPrintExclude = true;
  bool fbPrintSummary = true;
  bool fbPrintSelect = true;
  bool fbPrintClassify = true;
  bool fbPrintUncert = false;
  bool fbPlotSummary = false;
  bool fbPlotUncert = false;
  std::unique_ptr<FSSettings> fpFeatureSettings;
  std::unique_ptr<NaiveBayesSettings> fpNaiveSettings;
  std::unique_ptr<UAUniformRandom> fpRandom;  // draws the training sample
  std::unique_ptr<MCStopProcessor> fpStopProcessor;
};
